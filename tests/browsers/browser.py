"""A browser on the desktop of the run, with the installed tree laid over the system's folders, so
that it finds the extension and the program as those who install the package do."""

import pathlib
import subprocess
import time

from desktop import wait_for

# Seen by the browser and by what it starts, and by nobody else. Each is a folder of the stage and
# the folder of the system that it is laid over.
OVERLAYS = (("share", "/usr/share"), ("lib", "/usr/lib"), ("etc", "/etc"))


class Browser:
    package = ""

    def __init__(self, desktop, menus, stage):
        self.desktop = desktop
        self.menus = menus
        self._stage = pathlib.Path(stage)
        self._process = None

    def run(self, *command):
        script = "".join(f'mount -t overlay overlay -o "lowerdir={self._stage}/{below}:{above}" {above} && '
                         for below, above in OVERLAYS)
        self._process = self.desktop.start("unshare", "--mount", "sh", "-c", script + 'exec "$@"',
                                           "sh", *command)

    def has_ended(self):
        return self._process.poll() is not None

    def close(self):
        if self._process:
            self._process.terminate()
            try:
                self._process.wait(20)
            except subprocess.TimeoutExpired:
                self._process.kill()
            self._process = None

    def mark(self, selector):
        """Marks all that an element holds."""
        self.evaluate(f"""(() => {{
            const range = document.createRange();
            range.selectNodeContents(document.querySelector({selector!r}));
            getSelection().removeAllRanges();
            getSelection().addRange(range);
            return true;
        }})()""")

    def place_of(self, selector):
        """Where the middle of an element's first line is on the screen."""
        return wait_for(lambda: self.evaluate(f"""(() => {{
            const element = document.querySelector({selector!r});
            element.scrollIntoView({{block: "start"}});
            const place = element.getClientRects()[0];
            const left = window.mozInnerScreenX ?? screenX + (outerWidth - innerWidth) / 2;
            const top = window.mozInnerScreenY ?? screenY + (outerHeight - innerHeight);
            return [Math.round(left + place.left + Math.min(place.width / 2, 20)),
                    Math.round(top + place.top + Math.min(place.height / 2, 8))];
        }})()"""), f"the place of {selector}")

    def menu(self, selector):
        """Opens the menu of an element with the mouse."""
        x, y = self.place_of(selector)
        self.desktop.ask("xdotool", "mousemove", str(x), str(y), "click", "3")

    def choose(self, selector, label):
        """Chooses an entry in the menu of an element. With the mouse: Chromium's menus do not tell which entry
        has the focus, and in Firefox's the mouse that has opened them may take it."""
        self.menu(selector)
        self.menus.click(label, "menu item")

    def answer(self, label):
        """Answers the question for a permission. Browsers take no click that comes soon after it."""
        self.menus.place(label, "push button")
        wait_for(lambda: self._is_answered(label), "the end of the question")

    def _is_answered(self, label):
        time.sleep(1)
        if label not in self.menus.names("push button", shown=True):
            return True
        self.menus.click(label)
        return False
