"""What has to stay as it is while the programs run: progress, memory, the number of files."""

import asyncio
import os
import pathlib
import time

# Far longer than the slowest machine makes 64 shares wait for one another.
PATIENCE = 300
# One lock file for each item that somebody locks, and the turn.
LOCKS = {"turn", "%2F.lock", "%2FSharedData.lock", "%2FSharedData%2FShare.lock",
         "%2FSharedData%2FResident.lock", "%2FSharedData%2FAccounts.plist.lock",
         "%2FSharedData%2FContacts.lock", "%2FSharedData%2FContacts%2FAddresses.plist.lock",
         "%2FSharedData%2FContacts%2FGroups.plist.lock"}


def resident_kilobytes(process):
    """0 when the process has ended."""
    try:
        pages = int(pathlib.Path(f"/proc/{process}/statm").read_text().split()[1])
    except OSError:
        return 0
    return pages * os.sysconf("SC_PAGE_SIZE") // 1024


def dump(processes):
    """What a person needs who looks for a deadlock."""
    files = ["locks"]
    files += [f"{process}/{what}" for process in processes for what in ("comm", "wchan", "syscall")]
    for name in files:
        try:
            text = pathlib.Path("/proc", name).read_text().strip()
        except OSError as error:
            text = str(error)
        print(name, text)


class Watching:
    def __init__(self, home, figures, sharers, programs):
        """`programs` names the processes that live throughout."""
        self.home, self.figures, self.sharers, self.programs = home, figures, sharers, programs
        self.began = time.monotonic()

    async def watch(self):
        while True:
            at = time.monotonic() - self.began
            for name, process in self.programs.items():
                if size := resident_kilobytes(process.pid):
                    self.figures.memory[name].append((at, size))
                if process.returncode is not None:
                    self.figures.loss(f"{name} ended by itself with {process.returncode}")
                    return
            self._count_entries()
            for aside in self.home.taken.glob("*/aside"):
                self.figures.loss(f"set aside: {aside}")
            if self._is_stuck():
                return
            await asyncio.sleep(1)

    def _folders(self):
        return {".incoming": self.home.container / ".incoming",
                ".locks": self.home.container / ".locks",
                "Share": self.home.staging,
                "the temporary folder": self.home.root / "tmp",
                "the receiver's folder": self.home.taken}

    def _count_entries(self):
        for name, folder in self._folders().items():
            if folder.exists():
                self.figures.most[name] = max(self.figures.most[name], len(os.listdir(folder)))

    def _is_stuck(self):
        now = time.monotonic()
        late = [share for share in self.sharers.running.values() if now - share.began > PATIENCE]
        if not late and now - self.sharers.ended_at < PATIENCE:
            return False
        dump([share.process.pid for share in late or self.sharers.running.values()])
        self.figures.loss(f"{len(late)} shares do not end; no share ended for "
                          f"{now - self.sharers.ended_at:.0f} s")
        return True

    def check_folders(self):
        """After a last share that nobody disturbed: nothing is left of those that were killed."""
        for name, folder in self._folders().items():
            left = set(os.listdir(folder)) if folder.exists() else set()
            if name == ".locks":
                left -= LOCKS
            if left and name != "Share":
                self.figures.loss(f"left in {name}: {left}")
        if left := [path.name for path in self.home.drafts.iterdir()]:
            self.figures.loss(f"left among the drafts: {left}")
