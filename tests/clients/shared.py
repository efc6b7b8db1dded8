"""What is shared, and how much of it a message has."""

import dataclasses
import email
import email.policy
import email.utils
import hashlib
import os
import random
import re
import urllib.parse

SUBJECT = "Sübject, it's \"q\" & 100% ✓"
HTML = ("<p>Read <b>this</b> first: <a href=\"https://example.org/?a=1&amp;b=2\">a link</a></p>"
        "<ul><li>naïve, 日本</li></ul>")
WORDS = ("Read", "this", "first", "a link", "naïve, 日本")

RECIPIENTS = {"to": ("Ann Example <ann@example.org>", "bob+lists@example.org"),
              "cc": ("\"Doe, Jörg\" <joerg@example.org>",), "bcc": ("carol@example.org",)}


@dataclasses.dataclass(frozen=True)
class File:
    """A file to share: its name on the disk, and the names that it may arrive under."""
    on_disk: bytes
    arrives_as: tuple
    content: bytes


def _plain(name, content):
    return File(os.fsencode(name), (name,), content)


def _files():
    noise = random.Random(13).randbytes
    return (
        _plain("space in name.txt", b"one\ntwo\n"),
        _plain("co,mma.txt", b"one\r\ntwo\r\n"),
        _plain("apo'strophe.txt", b"no line break at the end"),
        # One client cannot quote a quote; it is given another sign.
        File(b'quo"te.txt', ('quo"te.txt', "quo\u201dte.txt"),
             b"blanks at the end  \n\tand a tab\t\n"),
        _plain("eq=ual.txt", b"From the beginning\n.\n"),
        _plain("am&p.txt", "naïve 日本\n".encode()),
        _plain("ha#sh.bin", noise(70_000)),
        _plain("per%20cent.txt", b"a line of " + 2000 * b"x" + b"\n"),
        _plain("pl+us.pdf", b"%PDF-1.4\n" + noise(5000)),
        _plain("semi;colon.txt", b"caf\xe9\n"),
        _plain("naïve 日本.png", b"\x89PNG\r\n\x1a\n" + noise(3000)),
        # A header has no line breaks: whoever writes it puts one sign in its place.
        File(b"line\nbreak.txt", ("line\nbreak.txt", "line\u240abreak.txt", "line break.txt",
                                  "line_break.txt"), b"three\n\nlines\n"),
        # Staging writes bytes that are no UTF-8 in percent signs.
        File(b"caf\xe9.txt", ("caf%E9.txt",), b"four\n"),
    )


FILES = _files()


def write_files(folder):
    """Writes the files into a folder; answers their paths, as bytes."""
    folder.mkdir()
    paths = []
    for file in FILES:
        path = os.fsencode(folder) + b"/" + file.on_disk
        with open(path, "wb") as out:
            out.write(file.content)
        paths.append(path)
    return paths


def compose_command():
    """The command URL of a draft with recipients and without files, as other programs send it."""
    fields = {"subject": SUBJECT, "htmlBody": HTML}
    fields |= {key: "".join(f"{one};" for one in all_of) for key, all_of in RECIPIENTS.items()}
    return "quoll://compose?" + "&".join(
        f"{key}={urllib.parse.quote(value, safe='')}" for key, value in fields.items())


@dataclasses.dataclass
class Arrived:
    """What a message has of what was shared; the numbers are of files."""
    subject: bool
    recipients: str  # "all" when there are those of RECIPIENTS and no others, else who they are
    html: bool
    words: bool
    names: int
    exact: int
    new_line_breaks: int  # the same text, with line breaks of another kind or a last one more
    lost: list
    unknown: list

    def body(self):
        if not self.words:
            return "lost"
        return "HTML" if self.html else "text"


def _recipients(message, without, bare):
    # One client writes the quotes of a name into the letters that it encodes.
    found = {key: sorted((one.display_name.strip('"'), one.addr_spec)
                         for one in message[key].addresses)
             if message[key] else [] for key in RECIPIENTS}
    sent = {key: email.utils.getaddresses(() if key in without else all_of)
            for key, all_of in RECIPIENTS.items()}
    expected = {key: sorted(("" if key in bare else name, address) for name, address in all_of)
                for key, all_of in sent.items()}
    return "all" if found == expected else str(found)


def _name(part):
    """The name of an attachment. Python reads no apostrophe in a name without quotes, where it may
    stand."""
    written = dict(part.raw_items()).get("Content-Disposition", "")
    bare = re.search(r"""filename=([^\s;"]+)""", str(written))
    return part.get_filename() or (bare.group(1) if bare else "")


def _attachments(message):
    return [(_name(part), part.get_payload(decode=True))
            for part in message.walk() if not part.is_multipart() and _is_attachment(part)]


def _is_attachment(part):
    return part.get_filename() is not None or part.get_content_disposition() == "attachment"


def _body(message, kind):
    texts = [part.get_content() for part in message.walk()
             if part.get_content_type() == kind and not _is_attachment(part)]
    return texts[0] if texts else ""


def _sum(content):
    return hashlib.sha256(content).hexdigest()


def _text(content):
    return content.replace(b"\r\n", b"\n").rstrip(b"\n")


def read_message(source, files=FILES, without=(), bare=()):
    """Compares a message, as bytes, with what was shared. A client may be known to take no recipients
    `without`, and those that are `bare` without their names."""
    message = email.message_from_bytes(source, policy=email.policy.default)
    attachments = _attachments(message)
    names = [name for name, _ in attachments]
    arrived = Arrived(subject=message["Subject"] == SUBJECT, html=False, words=False, names=0,
                      exact=0, new_line_breaks=0, lost=[], unknown=[],
                      recipients=_recipients(message, without, bare))
    for file in files:
        contents = [content for name, content in attachments if name in file.arrives_as]
        arrived.names += len(contents) == 1
        if _sum(file.content) in map(_sum, contents):
            arrived.exact += 1
        elif _text(file.content) in map(_text, contents):
            arrived.new_line_breaks += 1
        else:
            arrived.lost.append(os.fsdecode(file.on_disk))
    expected = {name for file in files for name in file.arrives_as}
    arrived.unknown = [name for name in names if name not in expected]
    html = _body(message, "text/html")
    flat = " ".join((html or _body(message, "text/plain")).split())
    arrived.words = all(word in flat for word in WORDS)
    arrived.html = "<b>this</b>" in html and "https://example.org/?a=1&amp;b=2" in html
    return arrived
