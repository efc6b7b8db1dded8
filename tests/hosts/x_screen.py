"""A screen of X with a window manager, and the hands before it."""

import os
import re

from desktop import wait_for

# Every window fills the screen, so that no text in it is cut short.
WINDOWS = """<openbox_config xmlns="http://openbox.org/3.4/rc"><applications>
<application type="normal"><maximized>true</maximized></application>
</applications></openbox_config>
"""


class XScreen:
    lists_menus = True  # among its windows

    def __init__(self, desktop):
        self._ask = desktop.ask
        os.environ["DISPLAY"] = ":" + desktop.first_word(
            "Xvfb", "-displayfd", "1", "-screen", "0", "1280x1000x24", "-nolisten", "tcp",
            "-noreset")
        settings = desktop.home / "rc.xml"
        settings.write_text(WINDOWS)
        desktop.start("openbox", "--sm-disable", "--config-file", str(settings))
        wait_for(lambda: self._ask("xprop", "-root", "_NET_SUPPORTING_WM_CHECK").count("window id"),
                 "the window manager")

    def press(self, key):
        self._ask("xdotool", "key", key)

    def click(self, x, y):
        self._ask("xdotool", "mousemove", str(x), str(y), "click", "1")

    def click_in_corner(self):
        """Clicks into the lower right corner of the window in front, where nothing is."""
        window = self._ask("xdotool", "getactivewindow")
        place = self._ask("xdotool", "getwindowgeometry", "--shell", window)
        width, height = (int(re.search(rf"{side}=(\d+)", place)[1]) for side in ("WIDTH", "HEIGHT"))
        self._ask("xdotool", "mousemove", "--window", window, str(width - 60), str(height - 60),
                  "click", "1")

    def windows(self, title=""):
        """All windows and menus that are shown, or those whose title has these words."""
        return set(self._ask("xdotool", "search", "--onlyvisible", "--name",
                             title or ".*").split())

    def screenshot(self, path):
        path.parent.mkdir(parents=True, exist_ok=True)
        self._ask("import", "-window", "root", str(path))
