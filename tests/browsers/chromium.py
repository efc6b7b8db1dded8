"""Chromium, spoken to over its remote control for what is no part of the test."""

import json
import time
import urllib.request

import websocket

from browser import Browser
from desktop import Missing, wait_for


EXTENSION = "Quoll Share"


class Chromium(Browser):
    package = "chromium"
    front_tab = 12  # of twelve that are selected: the last one that was clicked

    def start(self, kind=""):
        self.profile = self.desktop.home / f"chromium{time.monotonic_ns()}"
        self._has_extension = kind != "bare"
        # In pictures without its bar about being root.
        self._launch(*{"private": ["--incognito"], "bare": ["--disable-extensions"],
                        "pictures": ["--test-type"]}.get(kind, ()))

    def _launch(self, *options):
        told = self.profile / "DevToolsActivePort"
        told.unlink(missing_ok=True)  # of an earlier start
        self.run("chromium", "--no-sandbox", f"--user-data-dir={self.profile}", "--remote-debugging-port=0",
                 "--remote-allow-origins=*", "--no-first-run", "--password-store=basic",
                 "--force-renderer-accessibility", *options, "about:blank")
        port = wait_for(lambda: told.exists() and told.read_text().split(), "Chromium's remote control", 60)
        self._port = int(port[0])
        wait_for(lambda: self._pages() and (not self._has_extension or self.worker()),
                 "Chromium's window, and the extension in it", 60)
        time.sleep(1)  # the entries come a moment later

    def _fetch(self, what):
        with urllib.request.urlopen(f"http://127.0.0.1:{self._port}/json/{what}", timeout=20) as told:
            return told.read()

    def _targets(self):
        return json.loads(self._fetch("list"))

    def _pages(self):
        return [one for one in self._targets() if one["type"] == "page"]

    def _ask(self, target, method, parameters=None):
        """One question to a page, a worker or another part."""
        connection = websocket.create_connection(target["webSocketDebuggerUrl"], timeout=60)
        try:
            connection.send(json.dumps({"id": 1, "method": method, "params": parameters or {}}))
            while True:
                answer = json.loads(connection.recv())
                if answer.get("id") == 1:
                    if "error" in answer:
                        raise Missing(f"Chromium refused {method}: {answer['error']['message']}")
                    return answer["result"]
        finally:
            connection.close()

    def page(self):
        """The page in front."""
        pages = self._pages()
        if len(pages) == 1:
            return pages[0]
        shown = [one for one in pages if self.evaluate("document.visibilityState", one) == "visible"]
        return next((one for one in shown if self.evaluate("document.hasFocus()", one)), shown[0])

    def evaluate(self, script, target=None):
        result = self._ask(target or self.page(), "Runtime.evaluate",
                           {"expression": script, "returnByValue": True, "awaitPromise": True})
        if "exceptionDetails" in result:
            raise Missing(f"the page refused: {result['exceptionDetails']}")
        return result["result"].get("value")

    def worker(self):
        return next((one for one in self._targets() if one["type"] == "service_worker"), None)

    def open(self, address):
        """Opens it in the only tab."""
        front = self.page()
        for one in self._pages():
            if one["id"] != front["id"]:
                self._ask(one, "Page.close")
        wait_for(lambda: len(self._pages()) == 1, "the end of other tabs")
        self._ask(self.page(), "Page.navigate", {"url": address})
        wait_for(lambda: self.evaluate("document.readyState === 'complete' && location.href") == address,
                 f"the page {address}")

    def addresses(self):
        return [one["url"] for one in self._pages()]

    def button(self):
        worker = self.worker()
        return worker and self.evaluate("""(async () => {
            const [tab] = await chrome.tabs.query({active: true, lastFocusedWindow: true});
            return [await chrome.action.getBadgeText({tabId: tab.id}), await chrome.action.getTitle({tabId: tab.id})];
        })()""", worker)

    def open_tabs(self, addresses):
        """Opens them in tabs of one window, all of which are selected."""
        self.open(addresses[0])
        first = self.page()
        for address in addresses[1:]:
            self._ask(first, "Target.createTarget", {"url": address, "background": True})
        wait_for(lambda: sum(one["title"].startswith("Tab") for one in self._pages()) == len(addresses), "the tabs")
        time.sleep(1)  # the strip of tabs moves
        for key, name in (("", "Tab 1 ..."), ("shift", f"Tab {len(addresses)} ...")):
            place = self.menus.place(name, "page tab")
            self.desktop.ask("xdotool", *(["keydown", key] if key else []), "mousemove", *map(str, place), "click", "1",
                             *(["keyup", key] if key else []))

    def choose_for_tabs(self, label):
        """The entry is in the menu of the toolbar button, which the list of extensions opens."""
        self.menus.click("Extensions")
        self.menus.click(f"More options for {EXTENSION}")
        self.menus.click(label, "menu item")

    def open_window(self, address):
        self._ask(self.page(), "Target.createTarget", {"url": address, "newWindow": True})
        self._second = wait_for(lambda: [one for one in self._pages() if one["url"] == address and one["title"]],
                                "the window")[0]
        time.sleep(1)

    def close_window(self):
        """Closes the second window, whatever its page does."""
        self._fetch("close/" + self._second["id"])
        wait_for(lambda: len(self._pages()) == 1, "the end of the window")

    def allow_private(self):
        """As the switch in the list of extensions does. Chromium then loads the extension anew, and turns it
        off, since it comes from no store; so it is until the next start, or until developers' mode is on."""
        self.open("chrome://extensions/")
        told = """(async () => (await chrome.developerPrivate.getExtensionsInfo()).find((one) => one.name === "Quoll Share"))()"""
        self.evaluate(f"""(async () => {{
            const {{id: extensionId}} = await {told};
            await chrome.developerPrivate.updateExtensionConfiguration({{extensionId, incognitoAccess: true}});
        }})()""")
        wait_for(lambda: self.evaluate(told)["incognitoAccess"]["isActive"], "the leave for private windows")
        self.close()
        self._launch()
        self.open("chrome://extensions/")
        wait_for(lambda: self.evaluate(told)["state"] == "ENABLED", "the extension")
        self.open("about:blank")

    def open_private(self, address):
        before = {one["id"] for one in self._pages()}
        self.menus.press("ctrl+shift+n")
        new = wait_for(lambda: [one for one in self._pages() if one["id"] not in before], "the private window")[0]
        self._ask(new, "Page.navigate", {"url": address})
        wait_for(lambda: any(one["url"] == address and one["title"].startswith("Ein") for one in self._pages()), "the page")
        time.sleep(1)

    def other_window(self):
        self.menus.press("alt+Tab")
        time.sleep(0.3)

    def _help(self):
        return next((one for one in self._pages() if "/help.html" in one["url"]), None)

    def help_link(self):
        return self._help() and self.evaluate("document.getElementById('link')?.href", self._help())

    def help_says(self):
        words = self.evaluate("document.getElementById('what').textContent", self._help())
        return "noHost" if "did not reach" in words else "broken" if "ended before" in words else words

    def close_help(self):
        self._ask(self._help(), "Page.close")
        wait_for(lambda: not self._help(), "the end of the page that helps")

    def has_entry(self, label):
        return label in self.menus.names("menu item")
