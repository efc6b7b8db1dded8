"""The processes that share, each again and again, and what each of them shared."""

import asyncio
import dataclasses
import time

import record


@dataclasses.dataclass
class Share:
    number: int
    parts: set  # the parts that have to arrive
    began: float
    process: object = None
    disturbed: str = ""  # what was killed of it
    was_refused: bool = False  # the receiver was killed, so its launcher was told so
    status: int = -1  # how it ended
    answered: int = 0  # launches of it that were answered with every reported file whole
    missing: set = dataclasses.field(default_factory=set)  # parts that were not reported

    def is_excused(self):
        """Nothing has to stand any more once the share or its launcher was killed."""
        return self.disturbed in ("share", "launcher")


class Sharers:
    def __init__(self, home, figures, random, count):
        self.home, self.figures, self.random, self.count = home, figures, random, count
        self.known = {}  # number -> Share, for as long as somebody may ask
        self.running = {}  # slot -> Share
        self.ended_at = time.monotonic()  # when the last share ended
        self.receiver_killed_at = 0.0
        self._next = 0

    async def serve(self, slot, stop):
        """Shares until `stop` is set."""
        while not stop.is_set():
            await self.share(slot)

    async def share(self, slot):
        self._next += 1
        share = Share(self._next, set(), time.monotonic())
        arguments, given = self._items(slot, share)
        self.known[share.number] = self.running[slot] = share
        self.figures.counts["shares"] += 1
        pipe = asyncio.subprocess.PIPE
        share.process = await self.home.start("share", *arguments, stdin=pipe, stderr=pipe)
        _, errors = await share.process.communicate(given)
        del self.running[slot]
        self.ended_at = time.monotonic()
        self._judge(share, share.process.returncode, errors.decode(errors="replace"))
        return share

    def _items(self, slot, share):
        """The command line and the standard input. Several files have one name; a link carries the
        title, which is the share's number; sometimes there is a picture or there are bytes."""
        arguments = ["--title", share.number, "https://example.org/"]
        for part in range(self.random.randrange(1, 5)):
            folder = self.home.root / f"sources/{slot}/{part}"
            folder.mkdir(parents=True, exist_ok=True)
            file = folder / self.random.choice(("note.txt", "photo.jpg", "a b;c%41.tar.gz"))
            file.write_bytes(self._record(share, part, 2_000_000 if part == 3 else 40_000))
            arguments.append(file)
        given = b""
        kind = self.random.randrange(4)
        if kind < 2:
            given = self._record(share, 9, 4_000)
            arguments.append("-")
        if kind == 0:
            given = record.picture(given)
        return arguments, given

    def _record(self, share, part, most):
        share.parts.add(part)
        return record.make(share.number, part, self.random.randbytes(self.random.randrange(most)))

    def _judge(self, share, status, errors):
        counts, share.status = self.figures.counts, status
        if share.disturbed == "share":
            counts["killed"] += 1
            return
        took = time.monotonic() - share.began
        if status in (0, 3):
            counts["opened"] += 1
            if not share.disturbed:
                self.figures.waits.append(took)
            if share.answered != 1:
                self.figures.loss(f"share {share.number} was opened, but {share.answered} launches "
                                  f"of it were answered with its files whole")
            self._judge_left_out(share, errors.splitlines())
        elif share.disturbed or share.was_refused or share.began < self.receiver_killed_at:
            counts["not opened"] += 1
            if not errors.startswith("not opened: "):
                self.figures.loss(f"share {share.number} failed without a reason: {errors!r}")
        else:
            self.figures.loss(f"share {share.number} ended with {status} after {took:.1f} s "
                              f"though nothing of it was killed: {errors}")

    def _judge_left_out(self, share, lines):
        """Only what took too long may be left out, and each by name."""
        late = [line for line in lines if line.endswith(": it took too long")]
        self.figures.counts["late items"] += len(late)
        if len(lines) != len(share.missing) or len(lines) != len(late):
            self.figures.loss(f"share {share.number} went without {share.missing} and said {lines}")
