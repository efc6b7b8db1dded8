"""What people are told on a Wayland desktop."""

import json
import os
import subprocess

from desktop import Desktop, Missing, wait_for
from front import install_mail_program

IDENTIFIER = "it.vorlent.quoll2"


def names_on_bus():
    said = Desktop.ask("dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
                       "/", "org.freedesktop.DBus.ListNames")
    return said.split('"')[1::2]


class Notification:
    """Of a share that failed, and of a draft that no mail program was given, by the button of which
    it is opened."""
    package = "mako-notifier"
    entry = "a failed share; a kept draft, opened by its button"

    def drive(self, scene):
        desktop = scene.desktop
        desktop.start("mako")
        wait_for(lambda: "org.freedesktop.Notifications" in names_on_bus(), "the daemon")
        self._share("--clipboard")
        self._expect("Nothing was shared", "it is empty")
        desktop.ask("makoctl", "dismiss")
        install_mail_program(desktop, "message/rfc822")
        shared = desktop.home / "words.txt"
        shared.write_text("words")
        self._share(shared)
        draft = scene.wait_for_draft()
        number = self._expect("The draft is kept", "Nobody")
        desktop.ask("makoctl", "invoke", "-n", str(number), "open")
        wait_for(lambda: desktop.screen.windows(".eml"), "the window of the draft")
        return draft

    @staticmethod
    def _share(what):
        subprocess.run(["quoll-share", "--notify", what], stdin=subprocess.DEVNULL,
                       capture_output=True, check=False)

    @staticmethod
    def _expect(summary, words):
        """The number of the only notification."""
        def told():
            return json.loads(Desktop.ask("makoctl", "list"))["data"][0]

        (one,) = wait_for(told, "a notification")
        if one["summary"]["data"] != summary or words not in one["body"]["data"]:
            raise Missing(f"the notification is {one}")
        return one["id"]["data"]


class Doctor:
    """What quollctl says of the displays, each set of variables as some desktop has it; the bus has
    the compositor's."""
    package = "wl-clipboard"
    entry = "quollctl doctor"
    KNOWN = {"display": "good: known"}
    OURS = {"environment": "good: that of this program"}

    def drive(self, scene):
        by_wayland = {"clipboard": "good: read by wl-paste"}
        self._expect({}, self.KNOWN | self.OURS | by_wayland)
        other = {"environment": "note: other than this program's: DISPLAY"}
        self._expect({"DISPLAY": ":7"}, self.KNOWN | other | by_wayland)
        none = {"clipboard": "good: there is no display"}
        self._expect({"WAYLAND_DISPLAY": ""}, self.KNOWN | self.OURS | none)
        self._end_mail_application()
        scene.desktop.ask("dbus-update-activation-environment", "WAYLAND_DISPLAY=")
        unknown = {"display": "note: the bus does not know this display, so no window and no "
                              "notification is shown"}
        self._expect({}, unknown | by_wayland)

    @staticmethod
    def _expect(displays, wanted):
        done = subprocess.run(["quollctl", "doctor", "--json"], env=dict(os.environ) | displays,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              check=False)
        said = {one["step"]: f"{one['state']}: {one['found']}"
                for one in json.loads(done.stdout)["steps"]}
        found = {step: said.get(step) for step in wanted}
        if found != wanted:
            raise Missing(f"with {displays} it says {found}")

    @staticmethod
    def _end_mail_application():
        """It keeps the environment that it was started with."""
        wait_for(lambda: IDENTIFIER not in names_on_bus(), "the end of quoll-compose")
