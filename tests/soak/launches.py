"""The launches as they arrive: every file is looked at before the call goes on, and again before it
is answered."""

import asyncio
import contextlib
import os
import pathlib
import time
import urllib.parse

import record


class Launches:
    def __init__(self, home, figures, random, sharers):
        self.home, self.figures, self.random, self.sharers = home, figures, random, sharers
        self.front = ""  # the process that stands on the bus
        self.handed_on = asyncio.Event()  # set whenever the receiver behind is called
        self.killed = set()  # those that did; whom they had not answered was told so, and is gone
        self._under_way = {}  # call -> Share
        self._taken = {}  # call -> what the receiver behind said
        self._server = None

    async def listen(self):
        # The address of a draft of many files is longer than a stream's line usually may be.
        self._server = await asyncio.start_unix_server(self._serve, self.home.socket, limit=1 << 24)

    def close(self):
        self._server.close()

    async def _serve(self, reader, writer):
        """One receiver, until it ends or is killed."""
        calls = {}
        with contextlib.suppress(ConnectionError):
            while line := (await reader.readline()).decode().strip():
                what, number, *rest = line.split(" ", 2)
                if what == "hello":
                    self.front = process = number
                elif what == "call":
                    call = (process, number)
                    calls[call] = asyncio.create_task(self._handle(call, rest[0], writer))
                else:
                    self._taken[(process, number)].set_result(line)
        for call, task in calls.items():
            if not task.done():
                task.cancel()
            elif task.exception():
                self.figures.loss(f"the harness itself: {task.exception()!r}")
            self._under_way.pop(call, None)
            self._taken.pop(call, None)
        writer.close()

    async def _handle(self, call, url, writer):
        if call[0] in self.killed:
            return
        query = urllib.parse.urlsplit(url).query
        pairs = [pair.split("=", 1) for pair in query.split("&")]
        values = {key: urllib.parse.unquote(value) for key, value in pairs}
        share = self.sharers.known.get(int(values["subject"]))
        paths = [value for key, value in values.items() if key.startswith("attachment_")]
        self.figures.counts["calls"] += 1
        self._enter(call, share)
        whole = self._check(share, paths, True)
        taken = self._taken[call] = asyncio.get_running_loop().create_future()
        writer.write(f"go {call[1]}\n".encode())
        went_on = time.monotonic()
        self.handed_on.set()
        answer = await taken
        await asyncio.sleep(self.random.choice((0, 0, 0.01)))
        if call[0] in self.killed:
            return
        if not answer.startswith("taken"):
            self._refuse(call, share, went_on, answer)
            writer.write(f"fail {call[1]}\n".encode())
            return
        whole = self._check(share, paths, False) and whole
        if share.is_excused():
            self.figures.counts["late"] += 1
        elif whole:
            share.answered += 1
        self.figures.counts["answered"] += 1
        self._under_way.pop(call, None)
        writer.write(f"answer {call[1]}\n".encode())

    def _refuse(self, call, share, went_on, answer):
        """Only a receiver that was killed does not answer. One that was asked to end takes its
        time, and refuses what comes then."""
        self._under_way.pop(call, None)
        share.was_refused = True
        self.figures.counts["refused"] += 1
        if not share.is_excused() and self.sharers.receiver_killed_at < went_on - 3:
            self.figures.loss(f"share {share.number}: the receiver behind said: {answer}")

    def _enter(self, call, share):
        """Two at once hold the turn at once, unless one is dead and its launcher still asks."""
        alive = [one for at, one in self._under_way.items() if at[0] not in self.killed]
        for other in alive:
            if not other.is_excused() and not share.is_excused():
                self.figures.loss(f"shares {other.number} and {share.number} hold the turn at once")
        self._under_way[call] = share

    def _check(self, share, paths, first):
        """True when what the share reported is there and whole, and nobody else's is there. Of a
        killed share it may be gone or another's, but what is there is whole, without any lock."""
        found = set()
        for path in paths:
            try:
                data = pathlib.Path(path).read_bytes()
                owner, part = record.read(data)
            except FileNotFoundError:
                if share.is_excused():
                    self.figures.counts["gone"] += 1
                else:
                    self.figures.loss(f"share {share.number}: {path} is gone")
                continue
            except record.NotWhole as what:
                self.figures.loss(f"share {share.number}: {path} is not whole: {what}")
                continue
            if owner == share.number:
                found.add(part)
            elif not share.is_excused():
                self.figures.loss(f"share {share.number}: {path} is of share {owner}")
            if first:
                self.figures.counts["verified"] += 1
                self.figures.counts["bytes"] += len(data)
        if share.is_excused():
            return False
        share.missing = share.parts - found
        self._check_others(share, paths)
        return len(found) == len(paths)

    def _check_others(self, share, paths):
        """What else lies in the folder can only be the share's own, which came too late."""
        for path in {entry.path for entry in os.scandir(self.home.staging)} - set(paths):
            with contextlib.suppress(FileNotFoundError):
                owner, _ = record.read(pathlib.Path(path).read_bytes())
                if owner != share.number:
                    self.figures.loss(f"share {share.number}: {path} of {owner} is there too")
