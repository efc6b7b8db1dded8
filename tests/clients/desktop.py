"""A desktop of the run's own: a display, a window manager, a session bus and a home."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time

SHORT_WAIT = 60
POLL = 0.2


class Missed(Exception):
    """Something that had to happen did not; the text is the line for people."""


def until(what, seconds, probe):
    """The first true answer of `probe`; raises `Missed` when there is none in time."""
    end = time.monotonic() + seconds
    while True:
        answer = probe()
        if answer:
            return answer
        if time.monotonic() > end:
            raise Missed(f"{what} within {seconds} s")
        time.sleep(POLL)


class Desktop:
    """Everything lies below `root`; all that was started here, by whomever, ends with it."""

    def __init__(self, stage):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="quoll-clients-"))
        self.home = self.root / "home"
        self.config = self.home / ".config"
        self.data = self.home / ".local/share"
        self.applications = self.data / "applications"
        for folder in (self.config, self.applications, self.root / "tmp", self.root / "runtime"):
            folder.mkdir(parents=True)
        (self.root / "runtime").chmod(0o700)
        self._started = []
        # What is started over the bus or as a daemon has this environment, and is found by it.
        self.environment = {
            "HOME": str(self.home),
            "USER": os.environ.get("USER", "root"),
            "LANG": "C.UTF-8",
            "PATH": f"{stage}/bin:/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin:/usr/games",
            "TMPDIR": str(self.root / "tmp"),
            "XDG_RUNTIME_DIR": str(self.root / "runtime"),
            "XDG_CONFIG_HOME": str(self.config),
            "XDG_DATA_HOME": str(self.data),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
            "XDG_DATA_DIRS": f"{stage}/share:/usr/local/share:/usr/share",
            "GSETTINGS_BACKEND": "keyfile",
            "NO_AT_BRIDGE": "1",
            # No client gets in the way with a sandbox that some containers cannot give.
            "QTWEBENGINE_DISABLE_SANDBOX": "1",
            "MOZ_LEGACY_PROFILES": "1",
            "MOZ_DISABLE_CONTENT_SANDBOX": "1",
        }

    def __enter__(self):
        try:
            self._start_display()
            self._start_bus()
            self._start_window_manager()
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    def _start_display(self):
        reading, writing = os.pipe()
        self.start("Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24",
                   "-nolisten", "tcp", "-noreset", pass_fds=(writing,))
        os.close(writing)
        with os.fdopen(reading) as numbers:
            number = numbers.readline().strip()
        if not number:
            raise Missed("no display: Xvfb did not start")
        self.environment["DISPLAY"] = f":{number}"

    def _start_bus(self):
        # Without --systemd-activation, so that all it starts is a child of this desktop.
        daemon = self.start("dbus-daemon", "--session", "--nofork", "--nopidfile",
                            f"--address=unix:dir={self.root}/runtime", "--print-address",
                            stdout=subprocess.PIPE)
        address = daemon.stdout.readline().decode().strip()
        if not address:
            raise Missed("no session bus: dbus-daemon did not start")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address

    def _start_window_manager(self):
        self.start("openbox")
        until("no window manager", SHORT_WAIT, lambda: b"window id" in self.run(
            "xprop", "-root", "_NET_SUPPORTING_WM_CHECK").stdout)

    def start(self, *arguments, **streams):
        """Starts a program in this desktop; what it says goes to a file."""
        with open(self.root / "programs.log", "ab") as log:
            streams = {"stdin": subprocess.DEVNULL, "stdout": log, "stderr": log} | streams
            process = subprocess.Popen(arguments, env=self.environment, cwd=self.home,
                                       start_new_session=True, **streams)
        self._started.append(process)
        return process

    def run(self, *arguments, seconds=SHORT_WAIT):
        """Runs a program to its end; raises `Missed` when that does not come."""
        try:
            return subprocess.run(arguments, env=self.environment, cwd=self.home,
                                  stdin=subprocess.DEVNULL, capture_output=True, timeout=seconds,
                                  check=False)
        except subprocess.TimeoutExpired as expired:
            raise Missed(f"{arguments[0]} did not end within {seconds} s") from expired

    def choose(self, entry, scheme="mailto"):
        """Makes a desktop entry the default for links of a scheme."""
        (self.config / "mimeapps.list").write_text(
            f"[Default Applications]\nx-scheme-handler/{scheme}={entry}\n")

    def titles(self):
        """The title of each window, by its number."""
        listed = self.run("wmctrl", "-l").stdout.decode(errors="replace").splitlines()
        rows = (line.split(maxsplit=3) for line in listed)
        return {str(int(row[0], 16)): row[3] for row in rows if len(row) > 3}

    def wait_for_window(self, name, seconds, besides=()):
        """A window, none of these, whose title has this regular expression."""
        def found():
            return [window for window, title in self.titles().items()
                    if window not in besides and re.search(name, title)]

        return until(f"no window called {name!r}", seconds, found)[0]

    def press(self, window, *keys):
        """Presses keys in a window, which comes to the front first."""
        self.run("xdotool", "windowactivate", window)
        until("a window did not take the keyboard", SHORT_WAIT, lambda: self._focused() == window)
        for key in keys:
            self.run("xdotool", "key", "--clearmodifiers", key)

    def _focused(self):
        return self.run("xdotool", "getactivewindow").stdout.decode().strip()

    def picture(self, path):
        """A picture of the screen; without one the run goes on."""
        self.run("import", "-window", "root", str(path))

    def processes(self, pattern="."):
        """The numbers of the processes of this desktop whose command line has a pattern."""
        mark = b"XDG_RUNTIME_DIR=" + os.fsencode(self.environment["XDG_RUNTIME_DIR"]) + b"\0"
        found = []
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                ours = mark in (folder / "environ").read_bytes() + b"\0"
                command = (folder / "cmdline").read_bytes().replace(b"\0", b" ").decode(
                    errors="replace")
            except OSError:
                continue  # it is gone, or somebody else's
            if ours and re.search(pattern, command):
                found.append(int(folder.name))
        return found

    def settle(self, seconds=SHORT_WAIT):
        """Waits until the programs here have little left to do, or that long."""
        end = time.monotonic() + seconds
        before = self._worked()
        while time.monotonic() < end:
            time.sleep(1)
            now = self._worked()
            if now - before < 0.15:
                return
            before = now

    def _worked(self):
        """Seconds of processor time that all programs here have had."""
        ticks = 0
        for number in self.processes():
            try:
                fields = pathlib.Path(f"/proc/{number}/stat").read_text().rpartition(")")[2].split()
            except OSError:
                continue
            ticks += int(fields[11]) + int(fields[12])
        return ticks / os.sysconf("SC_CLK_TCK")

    def end(self, pattern=".", how=signal.SIGTERM):
        """Ends processes of this desktop, and answers how many."""
        numbers = self.processes(pattern)
        for number in numbers:
            try:
                os.kill(number, how)
            except ProcessLookupError:
                pass
        return len(numbers)

    def close(self):
        until_gone = time.monotonic() + 20
        while self.end(how=signal.SIGKILL) and time.monotonic() < until_gone:
            for process in self._started:
                process.poll()
            time.sleep(POLL)
        for process in self._started:
            process.wait()
        shutil.rmtree(self.root, ignore_errors=True)
