"""Thunderbird: a profile with a dummy account; drafts in the mbox of that account."""

import mailbox

PREFERENCES = {
    "mail.accountmanager.accounts": "account1",
    "mail.accountmanager.defaultaccount": "account1",
    "mail.account.account1.identities": "id1",
    "mail.account.account1.server": "server1",
    "mail.identity.id1.fullName": "Quoll",
    "mail.identity.id1.useremail": "quoll@example.org",
    "mail.identity.id1.smtpServer": "smtp1",
    "mail.identity.id1.draft_folder": "mailbox://quoll@127.0.0.1/Drafts",
    "mail.identity.id1.valid": True,
    "mail.server.server1.type": "pop3",
    "mail.server.server1.hostname": "127.0.0.1",
    "mail.server.server1.userName": "quoll",
    "mail.server.server1.name": "Quoll",
    "mail.server.server1.check_new_mail": False,
    "mail.server.server1.login_at_startup": False,
    "mail.server.server1.directory-rel": "[ProfD]Mail/127.0.0.1",
    "mail.smtpservers": "smtp1",
    "mail.smtpserver.smtp1.hostname": "127.0.0.1",
    "mail.smtpserver.smtp1.username": "quoll",
    "mail.provider.suppress_dialog_on_startup": True,
    "mail.shell.checkDefaultClient": False,
    "mail.spotlight.firstRunDone": True,
    "mail.rights.version": 1,
    "mailnews.start_page.enabled": False,
    "mail.compose.autosave": False,
    "mailnews.database.global.indexer.enabled": False,
    "app.donation.eoy.version.viewed": 999,
    "app.update.enabled": False,
    "browser.cache.disk.enable": False,
    "datareporting.policy.dataSubmissionPolicyBypassNotification": True,
    "offline.startup_state": 3,
    "toolkit.telemetry.reportingpolicy.firstRun": False,
}


class Thunderbird:
    name = "Thunderbird"
    package = "thunderbird"
    program = r"^/usr/lib/thunderbird/"
    entry = "thunderbird.desktop"
    keeps_html = True
    writes_line_breaks = False
    window = "^Write: Sübject"
    ways = ("cold", "running", "file gone", "recipients", "killed")
    seconds = 120

    def set_up(self, desktop):
        folder = desktop.home / ".thunderbird"
        profile = folder / "quoll"
        self.drafts = profile / "Mail/127.0.0.1/Drafts"
        self.drafts.parent.mkdir(parents=True)
        (folder / "profiles.ini").write_text(
            "[Profile0]\nName=quoll\nIsRelative=1\nPath=quoll\nDefault=1\n"
            "[General]\nStartWithLastProfile=1\nVersion=2\n")
        (profile / "user.js").write_text("".join(
            f'user_pref("{name}", {_script(value)});\n' for name, value in PREFERENCES.items()))

    def start(self, desktop):
        desktop.start("thunderbird")
        desktop.wait_for_window("^Quoll - ", self.seconds)

    def save(self, desktop, window):
        desktop.press(window, "ctrl+s")

    def stored(self):
        if not self.drafts.exists():
            return None
        box = mailbox.mbox(self.drafts, create=False)
        messages = [box.get_bytes(key) for key in box.keys()]
        box.close()
        return messages[-1] if messages else None


def _script(value):
    return str(value).lower() if isinstance(value, (bool, int)) else f'"{value}"'
