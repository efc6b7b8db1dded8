"""The real receiver: it is killed every second, and started again by the bus for whoever calls it,
or by a login. A mail client stands by that writes down what it is given."""

import asyncio
import os
import pathlib
import signal
import time

from killing import children, end

CLIENT = """#!/bin/sh
printf '%s\\n' "$1" >> '{record}'
"""
ENTRY = """[Desktop Entry]
Type=Application
Name=The Bird
Exec=thunderbird %u
MimeType=x-scheme-handler/mailto;
"""
DEFAULT = """[Default Applications]
x-scheme-handler/mailto=thunderbird.desktop
"""
# What is done to it: the program or the process that writes for it is killed, or a logout ends it.
KINDS = {"receiver": 7, "receiver's writer": 1, "receiver asked to end": 2}


def install_client(root):
    """The client is the default for mail links. Answers what a program needs to find it."""
    for folder in ("bin", "data/applications"):
        (root / folder).mkdir(parents=True)
    program = root / "bin/thunderbird"
    program.write_text(CLIENT.format(record=root / "given"))
    program.chmod(0o700)
    (root / "data/applications/thunderbird.desktop").write_text(ENTRY)
    (root / "home/mimeapps.list").write_text(DEFAULT)
    # The modules of this machine's desktop are not what is looked at.
    return {"DISPLAY": ":99", "PATH": f"{root}/bin:{os.environ['PATH']}",
            "GIO_MODULE_DIR": str(root / "no-modules")}


class Receivers:
    def __init__(self, home, figures, random, sharers, launches):
        self.home, self.figures, self.random = home, figures, random
        self.sharers, self.launches = sharers, launches

    async def kill(self, stop):
        """Once a second, until `stop` is set: at any moment, or soon after a call was handed on."""
        began, number = time.monotonic(), 0
        while not stop.is_set():
            number += 1
            wait = began + number + self.random.uniform(-0.5, 0.5) - time.monotonic()
            await asyncio.sleep(max(0, wait))
            killed = ""
            while not killed and not stop.is_set():  # it runs from the next call on
                if self.random.random() < 0.7:
                    await self._next_call()
                kind = self.random.choices(list(KINDS), list(KINDS.values()))[0]
                killed = kind if self._kill(kind) else ""
                await asyncio.sleep(0.001)
            if killed:
                self.figures.kills[killed] += 1

    async def log_in(self, stop):
        """What a login does, again and again, beside the service; half of these are killed too."""
        while not stop.is_set():
            await asyncio.sleep(self.random.uniform(1, 4))
            process = await self._resume()
            if self.random.random() < 0.5:
                await asyncio.sleep(self.random.uniform(0, 0.1))
                if process.returncode is None and end(process.pid):
                    self.figures.kills["login"] += 1
            await self._judge(process)

    async def finish(self):
        """The last login, which nobody disturbs."""
        await self._judge(await self._resume())

    async def close(self):
        """A receiver outlives its bus for as long as it may be idle."""
        while running := self._running():
            end(running)
            await asyncio.sleep(0.01)

    async def _resume(self):
        with open(self.home.root / "login", "wb") as told:
            return await self.home.start("compose", "--resume", more=self.home.desktop, stdout=told)

    async def _judge(self, process):
        status = await process.wait()
        self.figures.counts["logins"] += 1
        if status in (0, -signal.SIGKILL):
            return
        told = (self.home.root / "login").read_text().splitlines()
        # What a killed share took away with it is missing from its draft, and rightly said.
        is_left_out = any(line.startswith("Left out: ") for line in told)
        reasons = [line for line in told if " waits: " in line or " set aside: " in line]
        if status != 1 or reasons or not is_left_out:
            self.figures.loss(f"quoll-compose --resume ended with {status}: {reasons}")

    async def _next_call(self):
        self.launches.handed_on.clear()
        try:
            await asyncio.wait_for(self.launches.handed_on.wait(), 0.5)
        except asyncio.TimeoutError:
            return
        await asyncio.sleep(self.random.uniform(0, 0.08))

    def _running(self):
        """The receiver that the bus started, of this home; 0 when there is none."""
        home = f"HOME={self.home.root}/home".encode()
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if (os.readlink(folder / "exe") == str(self.home.programs["compose"])
                        and b"--service" in (folder / "cmdline").read_bytes().split(b"\0")
                        and home in (folder / "environ").read_bytes().split(b"\0")
                        and not self._is_writer(folder)):
                    return int(folder.name)
            except OSError:
                pass  # it has just ended
        return 0

    @staticmethod
    def _is_writer(folder):
        """The process that writes for a receiver is a child of one."""
        parent = (folder / "stat").read_text().rsplit(")", 1)[1].split()[1]
        return pathlib.Path(f"/proc/{parent}/comm").read_text() == "quoll-compose\n"

    def _kill(self, kind):
        victim = self._running()
        if victim and kind == "receiver's writer":
            victim = next(iter(children(victim)), 0)
        if not victim:
            return False
        self.sharers.receiver_killed_at = time.monotonic()
        return end(victim, signal.SIGTERM if kind == "receiver asked to end" else signal.SIGKILL)
