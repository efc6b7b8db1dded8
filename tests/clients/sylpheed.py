"""Sylpheed: settings like those of Claws Mail; drafts in its MH folder."""

from claws import ACCOUNT, FOLDERS, Claws


class Sylpheed(Claws):
    name = "Sylpheed"
    package = "sylpheed"
    program = r"^sylpheed "
    entry = "sylpheed.desktop"
    keeps_no = ("bcc",)
    window = "^Sübject.* - Compose"

    def set_up(self, desktop):
        folder = desktop.home / ".sylpheed-2.0"
        folder.mkdir()
        self.drafts = desktop.home / "Mail/draft"
        for name in ("inbox", "draft", "queue", "trash", "sent"):
            (desktop.home / "Mail" / name).mkdir(parents=True)
        (folder / "folderlist.xml").write_text(FOLDERS)
        (folder / "accountrc").write_text(ACCOUNT)
        (folder / "sylpheedrc").write_text("[Common]\n")

    def start(self, desktop):
        desktop.start("sylpheed")
        desktop.wait_for_window("Sylpheed", self.seconds)
