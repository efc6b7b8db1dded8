"""File managers: all files of a folder are selected, and the entry is chosen in their menu."""

import os
import pathlib
from dataclasses import dataclass

from desktop import Missing, wait_for
from sources import write_sources

NEW_MESSAGE = "New Message with Quoll"


@dataclass
class FileManager:
    package: str
    labels: tuple  # the way through the menu
    command: tuple = ()  # the package's name unless given

    @property
    def entry(self):
        return " > ".join(self.labels)

    def drive(self, scene):
        wanted = self.select(scene)
        scene.menus.choose(lambda: scene.menus.press("Menu"), self.labels)
        draft = scene.wait_for_draft()
        draft.content.expect(wanted)
        return draft

    def select(self, scene):
        """Shows a folder with all its files selected, and answers what they are."""
        folder = scene.desktop.home / "what is shared"
        wanted = write_sources(folder)
        self.open(scene, folder)
        count = len(wanted.files)
        selected = rf"(^|\D){count} (items?|files?|item\(s\)) selected|Selection: {count} "

        def select_all():
            self.get_ready(scene)
            scene.menus.press("ctrl+a")
            return scene.menus.shows(selected)

        wait_for(select_all, f"a window that says that {count} files are selected")
        return wanted

    def open(self, scene, folder):
        """Starts it until its window is there: one that waits for itself for ever is none."""
        for _ in range(3):
            host = scene.start(*self.program(scene), str(folder))
            try:
                wait_for(lambda: scene.menus.windows(folder.name), "a window of the folder", 20)
                return
            except Missing:
                host.kill()
        raise Missing("a window of the folder did not come in three starts")

    def get_ready(self, _scene):
        """Before keys are pressed."""

    def program(self, _scene):
        return self.command or (self.package,)


class Nautilus(FileManager):
    """Reads extensions from the system's folder only: the installed tree's is put over it, where no
    other program sees that."""

    def program(self, scene):
        if os.geteuid() != 0:
            raise Missing("putting an extension before nautilus needs root")
        extensions = sorted(scene.stage.glob("lib/**/nautilus/extensions-4"))
        if not extensions:
            raise Missing("the installed tree has no extension for nautilus")
        (place,) = pathlib.Path("/usr/lib").glob("*/nautilus/extensions-4")
        return ("unshare", "--mount", "sh", "-c", 'mount --bind "$1" "$2" && exec nautilus "$3"',
                "sh", extensions[0], place)

    def get_ready(self, scene):
        """The keys do not go to the files before somebody clicked there."""
        scene.desktop.screen.click_in_corner()


FILE_MANAGERS = {
    "dolphin": FileManager("dolphin", ("Share", NEW_MESSAGE)),
    "nemo": FileManager("nemo", (NEW_MESSAGE,)),
    "thunar": FileManager("thunar", ("Send To", NEW_MESSAGE)),
    "caja": FileManager("caja", ("Caja-Actions actions", NEW_MESSAGE)),
    # Tells its names through a module of the toolkit that is not loaded by itself.
    "pcmanfm": FileManager("pcmanfm", (NEW_MESSAGE,),
                           ("env", "GTK_MODULES=gail:atk-bridge", "pcmanfm")),
    "pcmanfm-qt": FileManager("pcmanfm-qt", (NEW_MESSAGE,)),
    "nautilus": Nautilus("nautilus", (NEW_MESSAGE,)),
}
