"""Balsa: an identity and local mailboxes; drafts in an mbox. It runs before anything is shared:
2.6.4 ends with a fault when a mail link starts it."""

import mailbox

BOXES = ("Inbox", "Outbox", "Sentbox", "Draftbox", "Trash")
BOX = """[mailbox-{name}]
Path={folder}/{name}
Type=LibBalsaMailboxMbox
Name={name}

"""
SETTINGS = """[identity]
CurrentIdentity=Default Identity

[identity-Default Identity]
FullName=Quoll
Address=quoll@example.org
SmtpServer=Default

[smtp-server-Default]
Server=127.0.0.1

[Globals]
MailDir={folder}
"""


class Balsa:
    name = "Balsa"
    package = "balsa"
    program = r"^balsa"
    entry = "balsa-mailto-handler.desktop"
    keeps_html = False
    writes_line_breaks = False
    window = "^New message to.*Sübject"
    ways = ("recipients", "killed")  # it stops at a text that is not UTF-8, to ask for its letters
    seconds = 60

    def set_up(self, desktop):
        folder = desktop.home / "mail"
        folder.mkdir()
        for name in BOXES:
            (folder / name).touch()
        self.drafts = folder / "Draftbox"
        settings = desktop.home / ".balsa"
        settings.mkdir()
        (settings / "config").write_text(
            "".join(BOX.format(name=name, folder=folder) for name in BOXES)
            + SETTINGS.format(folder=folder))
        desktop.start("balsa")
        desktop.wait_for_window("^Balsa$", self.seconds)
        desktop.settle()

    def start(self, desktop):
        """It runs already."""

    def save(self, desktop, window):
        desktop.press(window, "ctrl+s")

    def stored(self):
        box = mailbox.mbox(self.drafts, create=False)
        messages = [box.get_bytes(key) for key in box.keys()]
        box.close()
        return messages[-1] if messages else None
