"""The other application's writers, and readers of what they write."""

import asyncio
import json
import pathlib
import plistlib
import sys

WRITER = pathlib.Path(__file__).with_name("mail_application.py")


class Stores:
    def __init__(self, home, figures, random):
        self.home, self.figures, self.random = home, figures, random
        self.replacing = None  # the writer that may be killed
        self.overwriting = None
        self.readings = set()  # processes that read
        self.killed = set()  # processes that were killed

    async def start(self):
        self.replacing = await self._writer("replace")
        self.overwriting = await self._writer("in-place")

    async def write(self, stop):
        """Counts what is written; a writer that was killed is started again."""
        await asyncio.gather(self._count("replacing", "replace", stop),
                             self._count("overwriting", "in-place", stop))

    async def read(self, kind, stop):
        """Reads by `quollctl` until `stop` is set."""
        last = 0
        while not stop.is_set():
            pipe = asyncio.subprocess.PIPE
            process = await self.home.start("control", kind, "--json", stdout=pipe, stderr=pipe)
            self.readings.add(process)
            output, errors = await process.communicate()
            self.readings.discard(process)
            if process in self.killed:
                self.killed.discard(process)
                self.figures.counts["reads killed"] += 1
            elif process.returncode == 0:
                told = json.loads(output)
                records = told if kind == "accounts" else told["addresses"]
                name = "name" if kind == "accounts" else "firstName"
                self.figures.counts["reads"] += 1
                last = self._check([entry[name] for entry in records], kind, last)
            else:
                self.figures.loss(f"quollctl {kind} ended with {process.returncode}: {errors}")
            await asyncio.sleep(self.random.uniform(0, 0.03))

    async def read_unlocked(self, stop):
        """A file that is replaced by a rename can be read without a lock."""
        last = 0
        while not stop.is_set():
            file = self.home.container / "SharedData/Accounts.plist"
            records = plistlib.loads(file.read_bytes())
            last = self._check([account["name"] for account in records], "unlocked", last)
            self.figures.counts["unlocked reads"] += 1
            await asyncio.sleep(self.random.uniform(0, 0.05))

    def _check(self, marks, what, last):
        """Each record says which writing it is of, and of how many records. Answers the writing."""
        writings = {int(mark.split()[0]) for mark in marks}
        if len(writings) != 1 or len(marks) != int(marks[0].split()[1]):
            self.figures.loss(f"a reading of {what} is not whole: {len(marks)} of {marks[:1]}")
            return last
        self.figures.counts["records"] += len(marks)
        writing = writings.pop()
        if writing < last:
            self.figures.loss(f"a reading of {what} is older than the one before")
        return writing

    async def _writer(self, how):
        process = await self.home.start(
            sys.executable, WRITER, self.home.container, how, self.random.random(),
            stdout=asyncio.subprocess.PIPE)
        await process.stdout.readline()
        return process

    async def _count(self, which, how, stop):
        while not stop.is_set():
            process = getattr(self, which)
            line = await process.stdout.readline()
            if line.endswith(b"\n"):
                self.figures.counts["writes"] += 1
                self.figures.counts["written bytes"] += int(line)
            elif process in self.killed:
                await process.wait()
                setattr(self, which, await self._writer(how))
            else:
                self.figures.loss(f"the {how} writer ended by itself")
                return
