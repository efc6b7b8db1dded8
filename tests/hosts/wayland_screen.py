"""A Wayland compositor without a monitor, and the hands before it; no X anywhere."""

import json
import os

from desktop import wait_for
from wayland_hands import WaylandHands

WIDTH, HEIGHT = 1280, 1000
# Every window fills the screen. A window comes to the front when it has a token for that; the mail
# program's do so in no other way.
SETTINGS = f"""xwayland disable
output HEADLESS-1 resolution {WIDTH}x{HEIGHT} position 0 0
default_border none
workspace_layout stacking
focus_on_window_activation focus
no_focus [app_id="it.vorlent.StandIn.Mail"]
"""
COMPOSITOR = {"WLR_BACKENDS": "headless", "WLR_LIBINPUT_NO_DEVICES": "1",
              "WLR_RENDERER": "pixman"}
# What a session on Wayland says to its programs.
SESSION = {"XDG_SESSION_TYPE": "wayland", "QT_QPA_PLATFORM": "wayland", "GDK_BACKEND": "wayland"}


class WaylandScreen:
    lists_menus = False  # among its windows

    def __init__(self, desktop):
        self._ask = desktop.ask
        settings = desktop.home / "compositor"
        settings.write_text(SETTINGS)
        runtime = desktop.root / "runtime"
        os.environ["SWAYSOCK"] = str(runtime / "sway.sock")
        # It refuses to be root.
        somebody = ("unshare", "--user", "--map-user=1000", "--map-group=1000")
        named = [f"{name}={value}" for name, value in COMPOSITOR.items()]
        desktop.start(*(somebody if os.geteuid() == 0 else ()), "env", *named,
                      "sway", "--config", str(settings))
        wait_for(lambda: self._ask("swaymsg", "--type", "get_outputs"), "the compositor")
        (display,) = runtime.glob("wayland-?")
        os.environ.update(SESSION | {"WAYLAND_DISPLAY": display.name})
        self._hands = WaylandHands(str(display), WIDTH, HEIGHT)
        self.press = self._hands.press

    def click(self, x, y):
        """At that place of the window in front: programs do not know where it is on the screen."""
        for window in self._everything():
            if window["focused"]:
                self._hands.click(x + window["rect"]["x"], y + window["rect"]["y"])

    def click_in_corner(self):
        """Clicks into the lower right corner of the window in front, where nothing is."""
        self._hands.click(WIDTH - 60, HEIGHT - 60)

    def windows(self, title=""):
        """All windows that are shown, or those whose title has these words; no menus."""
        return {window["id"] for window in self._everything() if title in (window["name"] or "")}

    def in_front(self):
        """The title of the window that has the keyboard; empty when none has."""
        return "".join(window["name"] or "" for window in self._everything() if window["focused"])

    def screenshot(self, path):
        path.parent.mkdir(parents=True, exist_ok=True)
        self._ask("grim", str(path))

    def _everything(self):
        """The windows."""
        waiting = [json.loads(self._ask("swaymsg", "--raw", "--type", "get_tree"))]
        while waiting:
            node = waiting.pop()
            waiting += node["nodes"] + node["floating_nodes"]
            if node.get("pid"):
                yield node
