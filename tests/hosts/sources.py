"""What is shared, and whether a draft holds it."""

import email
import email.policy
import hashlib
import random

from desktop import Missing

# Each has what some file manager, shell or mail client is known to trip over.
NAMES = ("a b,c.txt", "it's.txt", "#1.txt", "50%20.txt", "am&p=1+2.txt", "日本 naïve.txt",
         'say "q".txt', "$(id) `id`;.txt", "-n.txt", "back\\slash.txt")
BIG = ("big.bin", 16 * 1024 * 1024)


def write_sources(folder):
    """Fills the folder with files that are the same in every run."""
    folder.mkdir()
    sizes = {name: 1000 + index for index, name in enumerate(NAMES)} | dict([BIG])
    for name, size in sizes.items():
        (folder / name).write_bytes(random.Random(name).randbytes(size))
    return Content.of_folder(folder)


class Content:
    """Names with their bytes, of files or of attachments."""

    def __init__(self, files):
        self.files = sorted((name, hashlib.sha256(data).hexdigest(), len(data))
                            for name, data in files)
        self.bytes = sum(size for _, _, size in self.files)

    @classmethod
    def of_folder(cls, folder):
        return cls((path.name, path.read_bytes()) for path in folder.iterdir())

    @property
    def digest(self):
        """The same for the same names and bytes, in whatever order they came."""
        lines = "".join(f"{digest} {name}\n" for name, digest, _ in self.files)
        return hashlib.sha256(lines.encode()).hexdigest()[:16]

    def expect(self, wanted):
        """Raises with the first difference."""
        if self.files == wanted.files:
            return
        names = [name for name, _, _ in self.files]
        for name, digest, _ in wanted.files:
            if name not in names:
                raise Missing(f"{name!r} is not in the draft, which has {names}")
            if (name, digest) not in [one[:2] for one in self.files]:
                raise Missing(f"{name!r} has other bytes in the draft")
        raise Missing(f"the draft has more than was shared: {names}")


class Draft:
    """What a message file holds, as a mail client would see it."""

    def __init__(self, path):
        message = email.message_from_bytes(path.read_bytes(), policy=email.policy.default)
        self.subject = message["Subject"] or ""
        body = message.get_body(("html", "plain"))
        self.body = body.get_content() if body else ""
        self.attachments = [(part.get_filename(), part.get_payload(decode=True))
                            for part in message.iter_attachments()]
        self.content = Content(self.attachments)

    @property
    def digest(self):
        """Of the attachments, or of the words when there are none."""
        if self.content.files:
            return self.content.digest
        return hashlib.sha256(f"{self.subject}\n{self.body}".encode()).hexdigest()[:16]
