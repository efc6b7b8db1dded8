"""KMail: an identity, and a Maildir that Akonadi has known for a while; drafts in that."""

from desktop import until

RESOURCE = "akonadi_maildir_resource"
SETTINGS = {
    "akonadi/akonadiserverrc": "[%General]\nDriver=QSQLITE\n",
    # Left alone, the first start now and then ends without folders.
    "akonadi/agentsrc": f"[InstanceCounters]\n{RESOURCE}\\InstanceCounter=1\n\n"
                        f"[Instances]\n{RESOURCE}_0\\AgentType={RESOURCE}\n",
    f"{RESOURCE}_0rc": "[General]\nPath[$e]=$HOME/.local/share/local-mail\n"
                       "TopLevelIsContainer=true\n",
    "specialmailcollectionsrc": f"[SpecialCollections]\nDefaultResourceId={RESOURCE}_0\n",
    "emailidentities": "[Identity #0]\nEmail Address=quoll@example.org\nIdentity=Quoll\n"
                       "Name=Quoll\nuoid=1\n\n[General]\nDefault Identity=1\n",
    "mailtransports": "[General]\ndefault-transport=1\n\n"
                      "[Transport 1]\nid=1\nidentifier=SMTP\nname=Quoll\nhost=127.0.0.1\n",
    "kmail2rc": "[General]\nfirst-start=false\n\n[Composer]\nautosave=0\n\n"
                "[Startup Behavior]\nRunAccountWizard=false\n",
}
FOLDERS = ("", "inbox", "outbox", "sent-mail", "drafts", "templates", "trash")


class KMail:
    name = "KMail"
    package = "kmail"
    program = r"^(/usr/bin/)?kmail "
    entry = "org.kde.kmail2.desktop"
    keeps_html = False
    writes_line_breaks = False
    window = "KMail$"  # the first window of the program has the title that its entry says
    ways = ("cold", "running", "next share", "recipients", "killed")
    seconds = 120

    def set_up(self, desktop):
        (desktop.config / "akonadi").mkdir()
        for name, text in SETTINGS.items():
            (desktop.config / name).write_text(text)
        for folder in FOLDERS:
            for part in ("new", "cur", "tmp"):
                (desktop.data / "local-mail" / folder / part).mkdir(parents=True)
        self.drafts = desktop.data / "local-mail/drafts"
        # KMail gives up when it comes before Akonadi has looked into the folders.
        desktop.start("akonadictl", "start")
        until("Akonadi did not start the Maildir's resource", self.seconds,
              lambda: self._is_on_bus(desktop))
        desktop.settle()

    def _is_on_bus(self, desktop):
        listed = desktop.run("dbus-send", "--session", "--print-reply",
                             "--dest=org.freedesktop.DBus", "/", "org.freedesktop.DBus.ListNames")
        return f"org.freedesktop.Akonadi.Resource.{RESOURCE}_0" in listed.stdout.decode()

    def start(self, desktop):
        desktop.start("kmail")
        desktop.wait_for_window("^KMail$", self.seconds)

    def save(self, desktop, window):
        desktop.press(window, "ctrl+s")
        until("the composer did not close", self.seconds, lambda: window not in desktop.titles())

    def stored(self):
        messages = sorted(self.drafts.glob("[cn]*/*"), key=lambda path: path.stat().st_mtime)
        return messages[-1].read_bytes() if messages else None
