"""Firefox, spoken to over its remote control for what is no part of the test: opening pages, and
asking what they show. Clicks and keys come from the screen."""

import json
import socket
import time

from browser import Browser
from desktop import Missing, wait_for

PREFERENCES = {
    "browser.aboutwelcome.enabled": False, "browser.shell.checkDefaultBrowser": False,
    "datareporting.policy.dataSubmissionEnabled": False, "app.update.enabled": False,
    "browser.startup.page": 0, "toolkit.telemetry.reportingpolicy.firstRun": False,
    "termsofuse.bypassNotification": True, "browser.tabs.warnOnClose": False,
    "accessibility.force_disabled": -1, "dom.disable_open_during_load": True, "network.protocol-handler.warn-external.mailto": False,
}


class Firefox(Browser):
    package = "firefox-esr"
    front_tab = 1

    def start(self, kind=""):
        profile = self.desktop.home / f"firefox{time.monotonic_ns()}"
        profile.mkdir()
        self.profile = profile
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            self._port = free.getsockname()[1]
        (profile / "user.js").write_text("".join(
            f"user_pref({json.dumps(name)}, {json.dumps(value)});\n"
            for name, value in (PREFERENCES | {"marionette.port": self._port}).items()))
        self.run("firefox-esr", "--profile", str(profile), "--marionette",
                 "--remote-allow-system-access", *(["--private-window"] if kind == "private" else []))
        self._connect()
        self._say("WebDriver:NewSession", {})

    def _connect(self):
        def connected():
            try:
                self._socket = socket.create_connection(("127.0.0.1", self._port), timeout=60)
                return True
            except OSError:
                return False

        wait_for(connected, "Firefox's remote control", 60)
        self._file = self._socket.makefile("rwb")
        self._number = 0
        self._read()

    def _read(self):
        length = b""
        while (one := self._file.read(1)) != b":":
            if not one:
                raise Missing("Firefox ended")
            length += one
        return json.loads(self._file.read(int(length)))

    def _say(self, command, parameters):
        self._number += 1
        text = json.dumps([0, self._number, command, parameters]).encode()
        self._file.write(b"%d:%s" % (len(text), text))
        self._file.flush()
        _, _, error, result = self._read()
        if error:
            raise Missing(f"Firefox refused {command}: {error['message']}")
        return result

    def evaluate(self, script):
        return self._say("WebDriver:ExecuteScript", {"script": f"return {script}", "args": []})["value"]

    def in_browser(self, script):
        """The same in the browser itself."""
        self._say("Marionette:SetContext", {"value": "chrome"})
        try:
            return self._say("WebDriver:ExecuteScript", {"script": script, "args": []})["value"]
        finally:
            self._say("Marionette:SetContext", {"value": "content"})

    def open(self, address):
        self._say("WebDriver:Navigate", {"url": address})

    def open_tabs(self, addresses):
        """Opens them in tabs of one window, all of which are selected."""
        self.open(addresses[0])
        self.in_browser("""
            const win = Services.wm.getMostRecentWindow("navigator:browser");
            const {gBrowser} = win;
            gBrowser.clearMultiSelectedTabs();
            gBrowser.removeAllTabsBut(gBrowser.selectedTab);
            for (const address of %s) {
              gBrowser.addTab(address, {triggeringPrincipal: Services.scriptSecurityManager.getSystemPrincipal()});
            }""" % json.dumps(addresses[1:]))
        wait_for(lambda: self.in_browser("""
            const {gBrowser} = Services.wm.getMostRecentWindow("navigator:browser");
            return gBrowser.tabs.every((tab) => !tab.hasAttribute("busy") && tab.label.startsWith("Tab"));"""),
            "the tabs")
        self.in_browser("""
            const {gBrowser} = Services.wm.getMostRecentWindow("navigator:browser");
            gBrowser.selectAllTabs ? gBrowser.selectAllTabs() : gBrowser.tabs.forEach((t) => gBrowser.addToMultiSelectedTabs(t));""")

    def button(self):
        """What the toolbar button says for the page in front: its badge and its words."""
        return self.in_browser("""
            const {ExtensionParent} = ChromeUtils.importESModule("resource://gre/modules/ExtensionParent.sys.mjs");
            const extension = ExtensionParent.GlobalManager.getExtension("share@quoll2.vorlent.it");
            const {gBrowser} = Services.wm.getMostRecentWindow("navigator:browser");
            const shown = ExtensionParent.apiManager.global.browserActionFor(extension).action
              .getContextData(gBrowser.selectedTab);
            return [shown.badgeText, shown.title];""")

    def addresses(self):
        return self.in_browser("""
            return [...Services.wm.getEnumerator("navigator:browser")].flatMap((win) =>
              win.gBrowser.browsers.map((one) => one.currentURI.spec));""")

    def choose_for_tabs(self, label):
        place = self.in_browser("""
            const win = Services.wm.getMostRecentWindow("navigator:browser");
            const at = win.gBrowser.selectedTab.getBoundingClientRect();
            return [win.mozInnerScreenX + at.left + 20, win.mozInnerScreenY + at.top + at.height / 2];""")
        self.desktop.ask("xdotool", "mousemove", *(str(round(one)) for one in place), "click", "3")
        self.menus.click(label, "menu item")

    def open_window(self, address):
        self._windows = [self._say("WebDriver:GetWindowHandle", {})["value"]]
        new = self._say("WebDriver:NewWindow", {"type": "window", "focus": True})["handle"]
        self._windows.append(new)
        self._say("WebDriver:SwitchToWindow", {"handle": new})
        self.open(address)
        self._at = 1

    def close_window(self):
        """Closes the second window, whatever its page does."""
        self.in_browser("""Services.wm.getMostRecentWindow("navigator:browser")
            .gBrowser.removeCurrentTab({skipPermitUnload: true});""")
        self._say("WebDriver:SwitchToWindow", {"handle": self._windows[0]})

    def other_window(self):
        self._at = 1 - self._at
        self._say("WebDriver:SwitchToWindow", {"handle": self._windows[self._at], "focus": True})
        time.sleep(0.3)

    def allow_private(self):
        """As the switch in the list of extensions does."""
        self.in_browser("""
            const {ExtensionPermissions} = ChromeUtils.importESModule("resource://gre/modules/ExtensionPermissions.sys.mjs");
            const {AddonManager} = ChromeUtils.importESModule("resource://gre/modules/AddonManager.sys.mjs");
            return (async () => {
              await ExtensionPermissions.add("share@quoll2.vorlent.it",
                {permissions: ["internal:privateBrowsingAllowed"], origins: []});
              await (await AddonManager.getAddonByID("share@quoll2.vorlent.it")).reload();
            })();""")

    def open_private(self, address):
        handle = self._say("WebDriver:NewWindow", {"type": "window", "focus": True, "private": True})["handle"]
        self._say("WebDriver:SwitchToWindow", {"handle": handle})
        self.open(address)
        time.sleep(1)

    def _help_tab(self, script):
        return self.in_browser("""
            for (const win of Services.wm.getEnumerator("navigator:browser")) {
              for (const tab of win.gBrowser.tabs) {
                if (tab.linkedBrowser.currentURI.spec.includes("/help.html")) { %s }
              }
            }
            return null;""" % script)

    def help_link(self):
        """The link that the page offers, read as a person reads it: from what is shown."""
        return self._on_help('document.getElementById("link")?.href')

    def help_says(self):
        words = self._on_help('document.getElementById("what").textContent')
        return "noHost" if "did not reach" in words else "broken" if "ended before" in words else words

    def _on_help(self, script):
        if not self._help_tab("return true;"):
            return None
        self._say("Marionette:SetContext", {"value": "content"})
        here = self._say("WebDriver:GetWindowHandle", {})["value"]
        try:
            for handle in self._say("WebDriver:GetWindowHandles", {}):
                self._say("WebDriver:SwitchToWindow", {"handle": handle, "focus": False})
                if "/help.html" in self.evaluate("location.href"):
                    return self.evaluate(script)
            return None
        finally:
            self._say("WebDriver:SwitchToWindow", {"handle": here, "focus": False})

    def close_help(self):
        self._help_tab("win.gBrowser.removeTab(tab); return true;")

    def has_entry(self, label):
        return self.in_browser("""
            const win = Services.wm.getMostRecentWindow("navigator:browser");
            return [...win.document.querySelectorAll("#contentAreaContextMenu menuitem")].some((one) => one.label === %s);"""
            % json.dumps(label))
