"""aerc, in a terminal: the postponed message in its Maildir."""

ACCOUNT = """[Quoll]
source = maildir://{mail}
from = Quoll <quoll@example.org>
postpone = Drafts
outgoing = /bin/true
"""


class Aerc:
    name = "aerc"
    package = "aerc"
    program = r"^(/usr/bin/)?aerc "
    entry = "aerc.desktop"
    keeps_html = False
    writes_line_breaks = False
    window = "^aerc"
    ways = ("cold", "recipients", "killed")
    seconds = 60

    def set_up(self, desktop):
        mail = desktop.home / "Mail"
        self.drafts = mail / "Drafts"
        for box in ("INBOX", "Drafts"):
            for part in ("cur", "new", "tmp"):
                (mail / box / part).mkdir(parents=True)
        settings = desktop.config / "aerc"
        settings.mkdir()
        (settings / "accounts.conf").write_text(ACCOUNT.format(mail=mail))
        (settings / "accounts.conf").chmod(0o600)
        (settings / "aerc.conf").write_text("[compose]\neditor=true\n")

    def save(self, desktop, window):
        desktop.press(window, "p")

    def stored(self):
        messages = sorted(self.drafts.glob("[cn]*/*"), key=lambda path: path.stat().st_mtime)
        return messages[-1].read_bytes() if messages else None
