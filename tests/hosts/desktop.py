"""A desktop of the run's own: a screen of some kind, a session bus and a home, with the installed
tree in its paths."""

import os
import pathlib
import subprocess
import time

# What the user's own session would lend to the programs.
UNWANTED = ("DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID", "GTK_MODULES",
            "QT_PLUGIN_PATH", "QT_QPA_PLATFORM", "GTK_PATH", "SESSION_MANAGER", "XAUTHORITY",
            "QUOLL_GROUP_CONTAINERS", "QUOLL_BUNDLE_IDENTIFIER", "LANGUAGE", "LC_ALL")

# A mail client that takes no drafts, so that they stay in the receiver's folder.
NOBODY = """[Desktop Entry]
Type=Application
Name=Nobody
Exec=true %u
NoDisplay=true
MimeType=x-scheme-handler/mailto;
"""
SYSTEM_DATA = "/usr/local/share:/usr/share"


class Missing(Exception):
    """What was waited for did not come, or a host is not there; says what."""


def wait_for(condition, what, seconds=30):
    """Answers the first true answer of `condition`."""
    end = time.monotonic() + seconds
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise Missing(f"{what} did not come within {seconds} s")
        time.sleep(0.05)


class Desktop:
    """Everything lies below `root`; whoever started the process ends what is left of it. `kind` is
    the class of the screen."""

    def __init__(self, root, stage, kind):
        self.root = root
        self.home = root / "home"
        self.drafts = self.home / ".local/share/quoll-compose/drafts"
        for folder in ("home/.config", "home/.local/share/applications", "tmp"):
            (root / folder).mkdir(parents=True)
        (root / "runtime").mkdir(mode=0o700)
        (self.home / ".local/share/applications/nobody.desktop").write_text(NOBODY)
        (self.home / ".config/mimeapps.list").write_text(
            "[Default Applications]\nx-scheme-handler/mailto=nobody.desktop\n")
        self._log = (root / "log").open("ab")
        kept = {name: value for name, value in os.environ.items()
                if name not in UNWANTED and not name.startswith("XDG_")}
        os.environ.clear()
        os.environ.update(kept | {
            "HOME": str(self.home),
            "LANG": "C.UTF-8",
            "TMPDIR": str(root / "tmp"),
            "XDG_RUNTIME_DIR": str(root / "runtime"),
            "XDG_DATA_DIRS": f"{stage}/share:{SYSTEM_DATA}",
            "PATH": f"{stage}/bin:{kept['PATH']}",
            "GIO_USE_VFS": "local",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
        })
        self.screen = kind(self)  # before the bus, whose services are shown there
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = self.start_bus()
        self._let_programs_be_read()

    def start(self, *command, stdin=subprocess.DEVNULL):
        try:
            return subprocess.Popen(command, stdin=stdin, stdout=self._log, stderr=self._log,
                                    cwd=self.home)
        except FileNotFoundError:
            raise Missing(f"{command[0]} is not installed") from None

    @staticmethod
    def ask(*command):
        """What a small program says; empty when it does not know."""
        return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=20, check=False).stdout.strip()

    def first_word(self, *command):
        """Starts a program that says where it is found."""
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=self._log, text=True)
        return process.stdout.readline().strip()

    def start_bus(self):
        return self.first_word("dbus-daemon", "--session", "--nofork", "--nopidfile",
                               "--print-address")

    def _let_programs_be_read(self):
        """Programs tell what they show only when somebody is said to be reading it."""
        for name in ("IsEnabled", "ScreenReaderEnabled"):
            self.ask("dbus-send", "--session", "--print-reply", "--dest=org.a11y.Bus",
                     "/org/a11y/bus", "org.freedesktop.DBus.Properties.Set",
                     "string:org.a11y.Status", f"string:{name}", "variant:boolean:true")
