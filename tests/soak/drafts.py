"""The drafts that the receiver behind wrote: the whole road of every file."""

import asyncio
import collections
import email
import email.policy
import pathlib
import urllib.parse

import record


class Drafts:
    def __init__(self, home, figures, sharers):
        self.home, self.figures, self.sharers = home, figures, sharers
        self._arrived = {}  # share -> parts
        self._names = {}  # draft -> share

    async def watch(self):
        while True:
            self.take()
            await asyncio.sleep(0.2)

    def take(self):
        """Looks at each draft that is finished, and removes it."""
        for path in self.home.drafts.glob("[0-9]*.eml"):
            if not (self.home.taken / path.stem).exists():
                self._take(path)

    def _take(self, path):
        message = email.message_from_bytes(path.read_bytes(), policy=email.policy.default)
        path.unlink()
        share = int(message["Subject"])
        if share in self._arrived:
            self.figures.loss(f"the draft of share {share} was written twice")
        files = self._arrived[share] = set()
        self._names[path.stem] = share
        for attachment in message.iter_attachments():
            try:
                files.add(record.read(attachment.get_payload(decode=True)))
                self.figures.counts["draft files"] += 1
            except record.NotWhole as what:
                self.figures.loss(f"the draft of share {share}: {what}")
        self.figures.counts["drafts"] += 1

    def check(self):
        """At the end: whatever was answered became a draft with all its files and no others. What
        was not answered may have become one all the same."""
        for share in self.sharers.known.values():
            wanted = {(share.number, part) for part in share.parts - share.missing}
            arrived = self._arrived.get(share.number)
            if (share.answered or share.status in (0, 3)) and arrived != wanted:
                self.figures.loss(f"the draft of share {share.number} holds {arrived}")
            if share.status == 1 and arrived is not None:
                self.figures.counts["unknown"] += 1
        self._check_given()

    def _check_given(self):
        """No client got a draft twice, or one that is not there."""
        lines = self.home.given.read_text().splitlines() if self.home.given.exists() else []
        given = [pathlib.Path(urllib.parse.urlsplit(line).path).stem for line in lines]
        self.figures.counts["given"] += len(given)
        for draft, times in collections.Counter(given).items():
            if times > 1:
                self.figures.loss(f"the draft {draft} was given {times} times")
            if draft not in self._names:
                self.figures.loss(f"{draft} was given, and there is no such draft")
