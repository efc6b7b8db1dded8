"""Kills one of them all about once a second."""

import asyncio
import os
import pathlib
import signal
import time

KINDS = {"share": 5, "share at work": 4, "launcher": 2, "front": 2, "writer": 2, "reader": 2}


def turn_holder(container):
    """The process that holds the turn, by the kernel's own list; 0 when none does, or no such list
    is to be had."""
    try:
        wanted = str(os.stat(container / ".locks/turn").st_ino)
        locks = pathlib.Path("/proc/locks").read_text()
    except OSError:
        return 0
    for line in locks.splitlines():
        words = line.split()
        if words[1] == "FLOCK" and words[5].endswith(":" + wanted):
            return int(words[4])
    return 0


def children(process):
    """The child processes of its first thread, in the order of their start."""
    try:
        text = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text()
    except OSError:
        return []
    return list(map(int, text.split()))


def end(process, by=signal.SIGKILL):
    """False when it has ended already."""
    try:
        os.kill(process, by)
    except ProcessLookupError:
        return False
    return True


class Killing:
    def __init__(self, home, figures, random, sharers, launches, stores):
        self.home, self.figures, self.random = home, figures, random
        self.sharers, self.launches, self.stores = sharers, launches, stores

    async def kill(self, stop):
        began, number = time.monotonic(), 0
        while not stop.is_set():
            number += 1
            wait = began + number + self.random.uniform(-0.5, 0.5) - time.monotonic()
            await asyncio.sleep(max(0, wait))
            killed = ""
            while not killed and not stop.is_set():  # there is not one of every kind at any time
                kind = self.random.choices(list(KINDS), list(KINDS.values()))[0]
                killed = kind if await getattr(self, "_kill_" + kind.replace(" ", "_"))() else ""
                await asyncio.sleep(0.001)
            if killed:
                self.figures.kills[killed] += 1

    def _running(self):
        return [share for share in self.sharers.running.values()
                if share.process and share.process.returncode is None and not share.disturbed]

    def _at_work(self):
        holder = turn_holder(self.home.container)
        return next((share for share in self._running() if share.process.pid == holder), None)

    async def _kill_share(self):
        running = self._running()
        return bool(running) and self._kill_one(self.random.choice(running))

    async def _kill_share_at_work(self):
        await asyncio.sleep(self.random.uniform(0, 0.2))
        share = self._at_work()
        return bool(share) and self._kill_one(share)

    def _kill_one(self, share):
        share.disturbed = "share"
        return end(share.process.pid)

    async def _kill_launcher(self):
        """The launcher is the first process that a share starts."""
        share = self._at_work() if self.random.random() < 0.7 else None
        running = self._running()
        share = share or (self.random.choice(running) if running else None)
        started = children(share.process.pid) if share else []
        if not started:
            return False
        share.disturbed = "launcher"
        return end(started[0])

    async def _kill_front(self):
        """Whoever is launching now is told that it has ended; none of the others may notice."""
        front, self.launches.front = self.launches.front, ""
        if not front:
            return False
        self.launches.killed.add(front)
        self.sharers.receiver_killed_at = time.monotonic()
        return end(int(front))

    async def _kill_writer(self):
        return self._kill_of_stores(self.stores.replacing)

    async def _kill_reader(self):
        readings = list(self.stores.readings)
        return bool(readings) and self._kill_of_stores(self.random.choice(readings))

    def _kill_of_stores(self, process):
        if process in self.stores.killed or process.returncode is not None:
            return False
        self.stores.killed.add(process)
        return end(process.pid)
