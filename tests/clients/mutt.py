"""mutt, in a terminal: the postponed message in its Maildir."""

import subprocess

from desktop import SHORT_WAIT, Missed, until

SETTINGS = """set realname="Quoll"
set from="quoll@example.org"
set folder="{home}/Mail"
set spoolfile="{home}/Mail"
set postponed="{home}/Mail/postponed"
set mbox_type=Maildir
set editor="{editor}"
"""
# Somebody who writes one word more, as an editor is there for; mutt gives up what was not changed.
EDITOR = """#!/bin/sh
cp "$1" "{seen}"
echo more >>"$1"
"""


class Mutt:
    name = "mutt"
    package = "mutt"
    program = r"^(/usr/bin/)?mutt "
    entry = "mutt.desktop"
    keeps_html = False
    writes_line_breaks = False
    window = "^mutt"
    ways = ("cold", "recipients", "killed")
    seconds = 60

    def set_up(self, desktop):
        mail = desktop.home / "Mail"
        mail.mkdir()
        self.postponed = mail / "postponed"
        self.seen = desktop.root / "edited"
        editor = desktop.root / "editor"
        editor.write_text(EDITOR.format(seen=self.seen))
        editor.chmod(0o700)
        settings = SETTINGS.format(home=desktop.home, editor=editor)
        (desktop.home / ".muttrc").write_text(settings)

    def save(self, desktop, window):
        """Answers what it asks for, recipient and subject, lets the text be edited, postpones."""
        until("mutt asked for nothing", SHORT_WAIT, lambda: self._asks(desktop))
        if not self.seen.exists():
            nobody = desktop.processes(self.program + r".*-- $")
            self._type(desktop, window, "quoll@example.org" if nobody else "", "Return")
            self._type(desktop, window, "", "Return")  # the subject stays
        until("mutt did not have the text edited", SHORT_WAIT, self.seen.exists)
        until("mutt went nowhere", SHORT_WAIT, lambda: self._asks(desktop))
        self._type(desktop, window, "P")

    def _type(self, desktop, window, text, *keys):
        desktop.press(window)
        if text:
            desktop.run("xdotool", "type", "--delay", "20", text)
        desktop.press(window, *keys)

    def _asks(self, desktop):
        """True when it waits for keys: its terminal gives each as it comes."""
        for number in desktop.processes(self.program):
            try:
                with open(f"/proc/{number}/fd/0", "rb") as terminal:
                    state = subprocess.run(["stty", "-a"], stdin=terminal, capture_output=True,
                                           check=False)
            except OSError:
                continue
            return b"-icanon" in state.stdout
        raise Missed("mutt is not there any more")

    def stored(self):
        messages = sorted(self.postponed.glob("[cn]*/*"), key=lambda path: path.stat().st_mtime)
        return messages[-1].read_bytes() if messages else None
