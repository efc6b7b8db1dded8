"""What another program has copied, shared by `quoll-share --clipboard`."""

import os
import signal
import subprocess
from dataclasses import dataclass

from desktop import Desktop, Missing, wait_for
from desktop_screens import KWinScreen, MutterScreen
from file_managers import FILE_MANAGERS, FileManager
from sources import Content, write_sources

PACKAGE = "wl-clipboard"
SHARE = ("quoll-share", "--clipboard")
LONGEST = 15  # seconds; a program that does not answer is waited for 5


def share_clipboard():
    """The exit code, and what was said."""
    try:
        done = subprocess.run(SHARE, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=LONGEST, check=False)
    except subprocess.TimeoutExpired:
        raise Missing(f"{SHARE[0]} did not end within {LONGEST} s") from None
    return done.returncode, done.stderr.strip()


def draft_of_clipboard(scene):
    code, said = share_clipboard()
    if code != 0:
        raise Missing(f"{SHARE[0]} ended with {code}: {said}")
    return scene.wait_for_draft()


def copy(media_type, data):
    """A program holds it from now on, in the background."""
    subprocess.run(["wl-copy", "--type", media_type], input=data, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, timeout=LONGEST, check=True)


def stop_holder():
    """It has come to the process that inherits what programs leave behind."""
    holder = Desktop.ask("pgrep", "--parent", str(os.getppid()), "--exact", "wl-copy")
    os.kill(int(holder), signal.SIGSTOP)


@dataclass
class Copied:
    """Something of one type, by which it is called."""
    entry: str
    package = PACKAGE

    def drive(self, scene):
        data, check = self.prepare(scene.desktop.home)
        copy(self.entry, data)
        draft = draft_of_clipboard(scene)
        check(draft)
        return draft


@dataclass
class CopiedFiles(Copied):
    before: str = ""

    def prepare(self, home):
        folder = home / "what is shared"
        wanted = write_sources(folder)
        lines = [self.before] * bool(self.before) + [path.as_uri() for path in folder.iterdir()]
        return "\r\n".join(lines).encode(), lambda draft: draft.content.expect(wanted)


class CopiedPicture(Copied):
    """The draft has the same pixels: pictures are written anew."""

    def prepare(self, home):
        picture = home / "picture.png"
        subprocess.run(["convert", "-size", "640x480", "-seed", "1", "plasma:red-blue", "-define",
                        "png:exclude-chunks=date,time", picture], check=True)
        data = picture.read_bytes()

        def check(draft):
            ((name, arrived),) = draft.attachments
            if not name.endswith(".png") or self._pixels(arrived) != self._pixels(data):
                raise Missing(f"{name} is another picture")

        return data, check

    @staticmethod
    def _pixels(png):
        return subprocess.run(["identify", "-format", "%#", "png:-"], input=png,
                              capture_output=True, check=True).stdout


@dataclass
class CopiedWords(Copied):
    """The draft has each of the parts in its body."""
    words: str
    parts: tuple

    def prepare(self, _home):
        def check(draft):
            for part in self.parts:
                if part not in draft.body:
                    raise Missing(f"{part!r} is not in {draft.body!r}")

        return self.words.encode(), check


@dataclass
class CopiedInFileManager:
    """All files of a folder, by the keys for that."""
    host: FileManager
    entry = "Ctrl+C"

    @property
    def package(self):
        return self.host.package

    def drive(self, scene):
        wanted = self.host.select(scene)
        scene.menus.press("ctrl+c")
        wait_for(lambda: "text/uri-list" in scene.desktop.ask("wl-paste", "--list-types"),
                 "what was copied")
        draft = draft_of_clipboard(scene)
        draft.content.expect(wanted)
        return draft


@dataclass
class NotShared:
    """There is no draft, and it is said why."""
    entry: str
    why: str
    package: str = PACKAGE

    def drive(self, scene):
        if self.entry == "the owner hangs":
            copy("text/plain;charset=utf-8", b"words")
            stop_holder()
        code, said = share_clipboard()
        if code == 0 or f"the clipboard: {self.why}" not in said:
            raise Missing(f"{SHARE[0]} ended with {code}: {said}")
        if list(scene.desktop.drafts.glob("*")):
            raise Missing("there is a draft all the same")


@dataclass
class OnScreen:
    """The same on the screen of another desktop."""
    screen: type
    package: str
    host: object

    @property
    def entry(self):
        return self.host.entry

    def drive(self, scene):
        return self.host.drive(scene)


MARKED = '<p>Read <b>this</b>: <a href="https://example.org/?a=1&amp;b=2">a link</a>, 日本</p>'
WRITTEN = {
    "uri-list": CopiedFiles("text/uri-list"),
    "file-manager": CopiedFiles("x-special/gnome-copied-files", "copy"),
    "picture": CopiedPicture("image/png"),
    "styled-text": CopiedWords("text/html", MARKED, ("<b>this</b>", "?a=1&amp;b=2", "日本")),
    "plain-text": CopiedWords("text/plain;charset=utf-8", "Two lines,\n日本 & <all>",
                              ("Two lines,", "日本 &amp; &lt;all&gt;")),
    "hung-owner": NotShared("the owner hangs", "the program that holds it does not answer"),
    "nothing": NotShared("nothing was copied", "it is empty"),
}
CLIPBOARDS = WRITTEN | {
    "copy-dolphin": CopiedInFileManager(FILE_MANAGERS["dolphin"]),
    "copy-nautilus": CopiedInFileManager(FILE_MANAGERS["nautilus"]),
} | {f"{screen}-{name}": OnScreen(kind, package, host)
     for screen, kind, package in (("gnome", MutterScreen, "mutter"),
                                   ("plasma", KWinScreen, "kwin-wayland"))
     for name, host in WRITTEN.items()}
