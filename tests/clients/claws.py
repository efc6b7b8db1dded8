"""Claws Mail: an account and a local mailbox; drafts in its MH folder."""

FOLDERS = """<?xml version="1.0" encoding="UTF-8"?>
<folderlist>
<folder type="mh" name="Mail" path="Mail" sort="0" collapsed="0">
<folderitem type="inbox" name="inbox" path="inbox"/>
<folderitem type="draft" name="draft" path="draft"/>
<folderitem type="queue" name="queue" path="queue"/>
<folderitem type="trash" name="trash" path="trash"/>
<folderitem type="outbox" name="sent" path="sent"/>
</folder>
</folderlist>
"""
ACCOUNT = """[Account: 1]
account_name=quoll
is_default=1
name=Quoll
address=quoll@example.org
protocol=0
receive_server=127.0.0.1
smtp_server=127.0.0.1
user_id=quoll
local_inbox=#mh/Mail/inbox
"""
SETTINGS = "[Common]\nenable_aspell=0\nautosave=0\nupdate_stepwise=0\n"


class Claws:
    name = "Claws Mail"
    package = "claws-mail"
    program = r"^claws-mail "
    entry = "claws-mail.desktop"
    keeps_html = False
    writes_line_breaks = True
    window = "^Sübject.* - Compose message"
    ways = ("cold", "running", "next share", "recipients", "killed")
    seconds = 60

    def set_up(self, desktop):
        folder = desktop.home / ".claws-mail"
        folder.mkdir()
        self.drafts = desktop.home / "Mail/draft"
        for name in ("inbox", "draft", "queue", "trash", "sent"):
            (desktop.home / "Mail" / name).mkdir(parents=True)
        (folder / "folderlist.xml").write_text(FOLDERS)
        (folder / "accountrc").write_text(ACCOUNT)
        (folder / "clawsrc").write_text(SETTINGS)

    def start(self, desktop):
        desktop.start("claws-mail")
        desktop.wait_for_window("Claws Mail", self.seconds)

    def save(self, desktop, window):
        desktop.press(window, "ctrl+s")

    def stored(self):
        messages = [path for path in self.drafts.iterdir() if path.name.isdigit()]
        return max(messages, key=lambda path: int(path.name)).read_bytes() if messages else None
