"""The compositors of GNOME and Plasma without a monitor, for what needs no hands."""

import os
import shutil

from gi.repository import Gio, GLib

from desktop import Missing, wait_for
from wayland_screen import SESSION

DISPLAY = "wayland-0"
HANDS = "org.gnome.Mutter.RemoteDesktop"
CONTROL = 0xFFE3


class DesktopScreen:
    def __init__(self, desktop, *command):
        self.bus = desktop.start_bus()  # of its own, as it has to be there first
        desktop.start("env", f"DBUS_SESSION_BUS_ADDRESS={self.bus}", *command)
        wait_for((desktop.root / "runtime" / DISPLAY).exists, "the compositor")
        os.environ.update(SESSION | {"WAYLAND_DISPLAY": DISPLAY})

    def screenshot(self, _path):
        """They let nobody take one."""


class MutterScreen(DesktopScreen):
    """Shows the clipboard only to the program in front, so that `wl-paste` opens a window for a
    moment."""

    def __init__(self, desktop):
        super().__init__(desktop, "mutter", "--wayland", "--headless", "--no-x11",
                         "--virtual-monitor", "1280x1000", "--wayland-display", DISPLAY)
        self._connection = Gio.DBusConnection.new_for_address_sync(
            self.bus, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
            Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
        self._add_keyboard()

    def _add_keyboard(self):
        """Without one no program is in front."""
        def session():
            try:
                return self._call("/org/gnome/Mutter/RemoteDesktop", HANDS, "CreateSession")[0]
            except GLib.Error:
                return None  # it is not there yet

        path = wait_for(session, "the keyboard")
        self._call(path, f"{HANDS}.Session", "Start")
        for is_down in (True, False):
            self._call(path, f"{HANDS}.Session", "NotifyKeyboardKeysym",
                       GLib.Variant("(ub)", (CONTROL, is_down)))

    def _call(self, path, interface, method, arguments=None):
        return self._connection.call_sync(HANDS, path, interface, method, arguments, None,
                                          Gio.DBusCallFlags.NONE, -1, None).unpack()


class KWinScreen(DesktopScreen):
    def __init__(self, desktop):
        installed = shutil.which("kwin_wayland")
        if not installed:
            raise Missing("kwin_wayland is not installed")
        # Without the right to a higher priority, with which it does not start in a container.
        copy = shutil.copy(installed, desktop.root / "kwin_wayland")
        super().__init__(desktop, "KWIN_COMPOSE=Q", "QT_QUICK_BACKEND=software", copy, "--virtual",
                         "--width", "1280", "--height", "1000", "--no-lockscreen", "--socket",
                         DISPLAY)
