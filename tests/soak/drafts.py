"""The drafts that the receiver behind wrote: the whole road of every file."""

import asyncio
import email
import email.policy

import record


class Drafts:
    def __init__(self, home, figures, sharers):
        self.home, self.figures, self.sharers = home, figures, sharers
        self._arrived = {}  # share -> parts

    async def watch(self):
        while True:
            self.take()
            await asyncio.sleep(0.2)

    def take(self):
        """Looks at each draft that is finished, and removes it."""
        for path in self.home.drafts.glob("[0-9]*.eml"):
            message = email.message_from_bytes(path.read_bytes(), policy=email.policy.default)
            path.unlink()
            files = self._arrived.setdefault(int(message["Subject"]), set())
            for attachment in message.iter_attachments():
                try:
                    files.add(record.read(attachment.get_payload(decode=True)))
                    self.figures.counts["draft files"] += 1
                except record.NotWhole as what:
                    self.figures.loss(f"the draft of share {message['Subject']}: {what}")
            self.figures.counts["drafts"] += 1

    def check(self):
        """At the end: whatever was answered became a draft with all its files and no others."""
        for share in self.sharers.known.values():
            wanted = {(share.number, part) for part in share.parts - share.missing}
            arrived = self._arrived.get(share.number, set())
            if share.answered and arrived != wanted:
                self.figures.loss(f"the draft of share {share.number} holds {arrived}")
