"""Programs with KDE's share menu that are no file managers."""

import json
import struct
import subprocess

from desktop import Missing
from sources import Content, write_sources

MENU_ENTRY = "New Message with Quoll"


class Gwenview:
    """Shows an image, which is shared from the button above it."""
    package = "gwenview"
    entry = f"Share > {MENU_ENTRY}"

    def drive(self, scene):
        folder = scene.desktop.home / "what is shared"
        folder.mkdir()
        image = folder / "it's 50%20, #1 日本.png"
        scene.desktop.ask("convert", "-size", "640x480", "-seed", "1", "plasma:red-blue",
                          "-define", "png:exclude-chunks=date,time", str(image))
        wanted = Content.of_folder(folder)
        scene.start("gwenview", str(image))
        scene.menus.choose(lambda: scene.menus.click("Share"), (MENU_ENTRY,))
        draft = scene.wait_for_draft()
        draft.content.expect(wanted)
        return draft


class Spectacle:
    """Takes a picture of the screen and shares the file that it makes of it for that."""
    package = "kde-spectacle"
    entry = f"Export > Share > {MENU_ENTRY}"

    def drive(self, scene):
        scene.start("spectacle", "--fullscreen")
        scene.menus.choose(lambda: scene.menus.click("Export"), ("Share", MENU_ENTRY))
        draft = scene.wait_for_draft()
        (made,) = (scene.desktop.root / "tmp").glob("Spectacle*/*.png")
        draft.content.expect(Content([(made.name, made.read_bytes())]))
        return draft


class PurposeHost:
    """The smallest program that has the menu, built here: it says what it is told of the share."""
    package = "libkf5purpose-bin"
    entry = "it.vorlent.quoll2.share"

    def drive(self, scene):
        folder = scene.desktop.home / "what is shared"
        wanted = write_sources(folder)
        said = self._share(scene, *folder.iterdir())
        if said[-1:] != ['output {"url":""}'] or not said[0].startswith("percent "):
            raise Missing(f"the program was told {said}")
        draft = scene.wait_for_draft()
        draft.content.expect(wanted)
        self._share_what_is_not_there(scene, folder)
        return draft

    def _share_what_is_not_there(self, scene, folder):
        said = self._share(scene, folder / "gone.txt")
        if not said[0].startswith("error 100 left out: ") or "gone.txt: no such" not in said[0]:
            raise Missing(f"of a file that is gone the program was told {said}")

    def _share(self, scene, *files):
        command = [scene.purpose_host, self.entry, *files]
        return scene.desktop.ask(*command).splitlines()


class Browsers:
    """Plasma's part for browsers, spoken to as their extension does: a page with a marked text."""
    package = "plasma-browser-integration"
    entry = MENU_ENTRY
    PAGE = {"url": "https://example.org/?a=1&b=it's", "title": "Ein Titel, 日本",
            "text": "marked: text"}

    def drive(self, scene):
        host = scene.start("plasma-browser-integration-host", stdin=subprocess.PIPE)
        self._say(host, {"subsystem": "settings", "event": "changed", "purpose": {"enabled": True}})
        scene.menus.choose(
            lambda: self._say(host, {"subsystem": "purpose", "event": "share", "serial": 2,
                                     "data": self.PAGE, "mimeType": "text/html"}),
            (MENU_ENTRY,))
        draft = scene.wait_for_draft()
        for where, what in ((draft.subject, self.PAGE["title"]), (draft.body, self.PAGE["text"]),
                            (draft.body, 'href="https://example.org/?a=1&amp;b=it')):
            if what not in where:
                raise Missing(f"{what!r} is not in {where!r}")
        return draft

    @staticmethod
    def _say(host, message):
        text = json.dumps(message).encode()
        host.stdin.write(struct.pack("=I", len(text)) + text)
        host.stdin.flush()
