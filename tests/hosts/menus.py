"""Menus of any toolkit, walked with the keyboard by the name of what has the focus, which each
program tells. To be imported once the desktop stands, as the names come over its bus."""

import collections
import re
import time

import gi

gi.require_version("Atspi", "2.0")

from gi.repository import Atspi, GLib  # noqa: E402

from desktop import Missing, wait_for  # noqa: E402

FOCUS = ("object:state-changed:focused", "focus:")
SHOWN = "object:state-changed:showing"


class Menus:
    def __init__(self, desktop):
        self._screen = desktop.screen
        self._focused = collections.deque()
        self._listener = Atspi.EventListener.new(self._on_event)
        self._opened = 0  # menus, as far as programs tell
        for event in (*FOCUS, SHOWN):
            self._listener.register(event)
        # A program that looks for the registry while it starts itself is never heard of again.
        Atspi.get_desktop(0).get_child_count()

    def press(self, key):
        self._focused.clear()
        self._screen.press(key)

    def windows(self, title=""):
        """All windows that are shown, or those whose title has these words; those of menus, too,
        where they are windows."""
        return self._screen.windows(title)

    def click(self, name, role="push button"):
        """Clicks on the button of that name, or on what has another role."""
        self._screen.click(*self.place(name, role))

    def place(self, name, role):
        """Waits until it is shown, and answers where its middle is on the screen. A name that ends with
        three dots is the beginning of one."""
        def shown():
            for one in self._everything():
                shown_name = one.get_name() or ""
                is_named = shown_name.startswith(name[:-3]) if name.endswith("...") else shown_name == name
                if is_named and one.get_role_name() == role and \
                        one.get_state_set().contains(Atspi.StateType.SHOWING):
                    return one.get_extents(Atspi.CoordType.SCREEN)
            return None

        place = wait_for(shown, f"a {role} {name!r}")
        return place.x + place.width // 2, place.y + place.height // 2

    def names(self, role, shown=False):
        """The names of everything that has a role, or of what of it is shown."""
        return [one.get_name() for one in self._everything() if one.get_role_name() == role and
                (not shown or one.get_state_set().contains(Atspi.StateType.SHOWING))]

    def choose(self, opening, labels, before_choosing=lambda: None):
        """Opens a menu by calling `opening`, and does what a click on the last label does; each
        label but the last is a menu's in it."""
        before = self._shown()
        opening()
        wait_for(lambda: self._shown() != before, "a menu")
        for label in labels[:-1]:
            self._go_to(label)
            self.press("Right")
        self._go_to(labels[-1])
        before_choosing()
        self.press("Return")

    def shows(self, pattern):
        """Whether a program shows a text in which the pattern is found, now or in a moment."""
        end = time.monotonic() + 1
        while time.monotonic() < end:
            if any(re.search(pattern, one.get_name() or "", re.IGNORECASE)
                   for one in self._everything()):
                return True
        return False

    def _shown(self):
        """What is other when a menu has opened."""
        if self._screen.lists_menus:
            return self.windows()
        while self._listen():
            pass
        return self._opened

    def _go_to(self, label):
        seen = []
        while True:
            if name := self._next_focus(1):
                if name.startswith(label):
                    return
                if seen.count(name) > 1:
                    raise Missing(f"{label!r} is not in the menu, which has {sorted(set(seen))}")
                seen.append(name)
            elif seen.count("") > 2:
                raise Missing(f"the menu with {label!r} does not take keys")
            else:
                seen.append("")
            self.press("Down")

    def _next_focus(self, seconds):
        end = time.monotonic() + seconds
        while not self._focused and time.monotonic() < end:
            if not self._listen():
                time.sleep(0.01)
        return self._focused.popleft() if self._focused else ""

    @staticmethod
    def _listen():
        """Whether there was something to hear."""
        return GLib.MainContext.default().iteration(False)

    def _on_event(self, event):
        try:
            gained = event.type == "focus:" or event.detail1
            if not gained or "menu" not in event.source.get_role_name():
                return
            self._opened += 1
            if event.type != SHOWN and event.source.get_name():
                self._focused.append(event.source.get_name())
        except GLib.Error:  # it went away
            pass

    def _everything(self, below=None, depth=25):
        try:
            parent = below or Atspi.get_desktop(0)
            for index in range(min(parent.get_child_count(), 200)):
                child = parent.get_child_at_index(index)
                if child is not None:
                    yield child
                    if depth:
                        yield from self._everything(child, depth - 1)
        except GLib.Error:  # it went away
            return
