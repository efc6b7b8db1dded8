"""Evolution: an account without a server; drafts in its local Maildir."""

ACCOUNT = """[Data Source]
DisplayName=Quoll
Enabled=true
Parent=

[Mail Account]
BackendName=none
IdentityUid=quoll-identity
"""
IDENTITY = """[Data Source]
DisplayName=Quoll
Enabled=true
Parent=quoll-account

[Mail Identity]
Address=quoll@example.org
Name=Quoll

[Mail Composition]
DraftsFolder=folder://local/Drafts

[Mail Submission]
SentFolder=folder://local/Sent
TransportUid=quoll-transport
"""
TRANSPORT = """[Data Source]
DisplayName=Quoll
Enabled=true
Parent=quoll-account

[Mail Transport]
BackendName=sendmail
"""


class Evolution:
    name = "Evolution"
    package = "evolution"
    program = r"^evolution mailto"
    entry = "org.gnome.Evolution.desktop"
    keeps_html = False
    writes_line_breaks = False
    window = "Sübject"
    ways = ("cold", "running", "next share", "recipients", "killed")
    seconds = 120

    def set_up(self, desktop):
        sources = desktop.config / "evolution/sources"
        sources.mkdir(parents=True)
        for uid, text in (("account", ACCOUNT), ("identity", IDENTITY), ("transport", TRANSPORT)):
            (sources / f"quoll-{uid}.source").write_text(text)
        self.drafts = desktop.data / "evolution/mail/local/.Drafts"

    def start(self, desktop):
        desktop.start("evolution")
        desktop.wait_for_window("Evolution$|^Mail$", self.seconds)

    def save(self, desktop, window):
        desktop.press(window, "ctrl+s")

    def stored(self):
        messages = sorted(self.drafts.glob("[cn]*/*"), key=lambda path: path.stat().st_mtime)
        return messages[-1].read_bytes() if messages else None
