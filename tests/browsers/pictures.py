"""One share from Chromium's menu to Thunderbird, with a picture of each: those of docs/hosts.md."""

import pathlib
import sys
import time

from desktop import wait_for
from trials import SELECTION

sys.path.append(str(pathlib.Path(__file__).parent.parent / "clients"))

from thunderbird import Thunderbird  # noqa: E402

# For the desktop, before it begins. Without them Thunderbird shows its sandbox's troubles in some containers.
ENVIRONMENT = {"MOZ_LEGACY_PROFILES": "1", "MOZ_DISABLE_CONTENT_SANDBOX": "1"}
TITLE = "Walks around the lake"


class Pictures:
    def __init__(self, scene, folder):
        self._scene = scene
        self._folder = folder

    def take(self, browser, address):
        desktop, menus = self._scene.desktop, self._scene.menus
        mail = Thunderbird()
        mail.set_up(desktop)
        (desktop.home / ".config/mimeapps.list").write_text(
            f"[Default Applications]\nx-scheme-handler/mailto={mail.entry}\n")
        browser.start("pictures")
        browser.open(address + "/walks")
        self._place(desktop, TITLE, 780, 560)
        browser.mark("#walk")
        browser.menu("#walk")
        menus.place(SELECTION, "menu item")
        time.sleep(1)  # the menu fades in
        self._shoot(desktop, "browser-menu", "780x480+20+20")
        menus.click(SELECTION, "menu item")
        window = f"Write: {TITLE}"
        wait_for(lambda: menus.windows(window), "the window of the draft", mail.seconds)
        self._place(desktop, window, 700, 430)
        time.sleep(10)  # it goes on drawing, and nothing tells when it is done
        self._shoot(desktop, "browser-draft", "702x456+20+19")

    @staticmethod
    def _place(desktop, title, width, height):
        wait_for(lambda: desktop.ask("wmctrl", "-l").count(title), f"the window {title!r}")
        desktop.ask("wmctrl", "-r", title, "-b", "remove,maximized_vert,maximized_horz")
        desktop.ask("wmctrl", "-r", title, "-e", f"0,20,20,{width},{height}")
        time.sleep(1)

    def _shoot(self, desktop, name, part):
        path = self._folder / f"{name}.png"
        desktop.screen.screenshot(path)
        desktop.ask("mogrify", "-crop", part, "+repage", "-strip", "+dither", "-colors", "64", str(path))
