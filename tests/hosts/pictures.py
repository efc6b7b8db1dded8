"""One share from the menu to the mail program, with a picture of each: those that README shows."""

import os
import pathlib
import sys
import time

from desktop import wait_for
from file_managers import FILE_MANAGERS, NEW_MESSAGE

sys.path.append(str(pathlib.Path(__file__).parent.parent / "clients"))

from thunderbird import Thunderbird  # noqa: E402

PHOTOS = {"Mountains.jpg": "gradient:skyblue-darkolivegreen",
          "Sunset.jpg": "gradient:orange-midnightblue"}
NOTES = "Packing list.txt"
# Without them it shows its sandbox's troubles in some containers.
ENVIRONMENT = {"MOZ_LEGACY_PROFILES": "1", "MOZ_DISABLE_CONTENT_SANDBOX": "1"}


class Pictures:
    package = "thunar"
    entry = "Thunar, then Thunderbird"

    def __init__(self, folder):
        self._folder = folder
        os.environ.update(ENVIRONMENT)

    def drive(self, scene):
        desktop = scene.desktop
        mail = Thunderbird()
        mail.set_up(desktop)
        (desktop.home / ".config/mimeapps.list").write_text(
            f"[Default Applications]\nx-scheme-handler/mailto={mail.entry}\n")
        folder = desktop.home / "Holiday"
        folder.mkdir()
        (folder / NOTES).write_text("Boots, map, camera\n" * 40)
        for name, colours in PHOTOS.items():
            desktop.ask("convert", "-size", "1200x800", colours, str(folder / name))

        FILE_MANAGERS["thunar"].open(scene, folder)
        self._place(desktop, folder.name, 460)

        def select_all():
            scene.menus.press("ctrl+a")
            return scene.menus.shows("3 files selected|Selection: 3 ")

        def open_menu():
            desktop.ask("xdotool", "mousemove", "235", "245")
            scene.menus.press("Menu")

        wait_for(select_all, "a window that says that the files are selected")
        # Without what it says to somebody who is root.
        scene.menus.choose(open_menu, ("Send To", NEW_MESSAGE),
                           lambda: self._take(desktop, "menu", "530x340+190+143"))
        draft = scene.wait_for_draft()
        title = "Write: Mountains.jpg and 2 more"
        wait_for(lambda: scene.menus.windows(title), "the window of the draft", mail.seconds)
        self._place(desktop, title, 380)
        time.sleep(10)  # it goes on drawing, and nothing tells when it is done
        self._take(desktop, "draft", "702x406+20+19")
        return draft

    @staticmethod
    def _place(desktop, title, height):
        desktop.ask("wmctrl", "-r", title, "-b", "remove,maximized_vert,maximized_horz")
        desktop.ask("wmctrl", "-r", title, "-e", f"0,20,20,700,{height}")

    def _take(self, desktop, name, part):
        path = self._folder / f"{name}.png"
        desktop.screen.screenshot(path)
        desktop.ask("mogrify", "-crop", part, "+repage", "-strip", "+dither", "-colors", "64",
                    str(path))
