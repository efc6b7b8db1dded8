"""Whether the window of the draft comes to the front, in front of the program that shared."""

import pathlib
from dataclasses import dataclass

from clipboard import copy
from desktop import Missing, wait_for
from file_managers import Nautilus
from sources import Content

HERE = pathlib.Path(__file__).parent.resolve()
PROGRAM = HERE / "mail_program"
SHARING = "sharing program"
MAIL = "mail program"
PRESENTED = ".eml presented"


def install_mail_program(desktop, opens="x-scheme-handler/mailto"):
    """Its name is that of a client to which message files are given."""
    (desktop.home / ".local/share/applications/like-thunderbird.desktop").write_text(
        f"[Desktop Entry]\nType=Application\nName=Mail\nExec={PROGRAM} %u\nMimeType={opens};\n")
    with (desktop.home / ".config/mimeapps.list").open("a") as defaults:
        defaults.write(f"{opens}=like-thunderbird.desktop\n")


def expect_front(screen, is_wanted):
    wait_for(lambda: screen.windows(PRESENTED), "the window of the draft")
    front = screen.in_front()
    if front.endswith(PRESENTED) != is_wanted:
        raise Missing(f"in front is {front!r}")


@dataclass
class Front:
    """A program shares when a key is pressed in it."""
    entry: str
    way: str
    is_running: bool = False  # the mail program
    is_wanted: bool = True
    package: str = "sway"

    def drive(self, scene):
        desktop, screen = scene.desktop, scene.desktop.screen
        install_mail_program(desktop)
        shared = desktop.home / "words.txt"
        shared.write_text("words")
        command = ["quoll-share", str(shared)]
        if self.way == "entry":
            copy("text/uri-list", shared.as_uri().encode())
            command = ["it.vorlent.quoll2.Quoll-Share.desktop"]
        if self.is_running:
            desktop.start(str(PROGRAM))
            wait_for(lambda: screen.windows(MAIL), "the mail program")
        desktop.start(str(HERE / "sharing_program"), self.way, *command)
        wait_for(lambda: screen.in_front() == SHARING, "the sharing program")
        screen.press("Return")
        expect_front(screen, self.is_wanted)
        draft = scene.wait_for_draft()
        draft.content.expect(Content([(shared.name, shared.read_bytes())]))
        return draft


class FrontOfNautilus(Nautilus):
    def drive(self, scene):
        install_mail_program(scene.desktop)
        draft = super().drive(scene)
        expect_front(scene.desktop.screen, True)
        return draft


FRONTS = {
    "front-no-token": Front("no token: it stays behind", "no-token", is_wanted=False),
    "front-started": Front("quoll-share starts the mail program", "token"),
    "front-running": Front("quoll-share, the mail program runs", "token", is_running=True),
    "front-entry": Front("the entry Quoll Share of a menu of programs", "entry"),
    "front-nautilus": FrontOfNautilus("nautilus", ("New Message with Quoll",)),
}
