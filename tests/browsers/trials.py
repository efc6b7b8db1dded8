"""What is tried in each browser. A trial raises `Missing` with the difference; it answers what the
table shows of the draft."""

import json
import struct
import time

from desktop import Missing, wait_for
from web import png

PAGE, LINK, SELECTION, PICTURE, TABS = (
    "New Message with This Page", "New Message with This Link", "New Message with the Selection",
    "New Message with This Picture", "New Message with the Selected Tabs")

# The words of the page as it looks, written down by hand: every browser gives the same.
LOOK = "font-family: 'Georgia'; font-size: {size}; color: {colour}{more}"


def styled_body(address):
    def run(text, size="12pt", colour="#000000", more="", tag=""):
        text = f"<{tag}>{text}</{tag}>" if tag else text
        return f'<span style="{LOOK.format(size=size, colour=colour, more=more)}">{text}</span>'

    gap = run(" ")
    return ("<div>" + run("hello ") + run("bold", tag="b") + gap + run("red", colour="#c80000", tag="i") + gap +
            run("big", size="18pt") + gap + run("marked", more="; background-color: #ffff00") + gap +
            run("under", tag="u") + gap + run("struck", tag="s") + gap +
            f'<a href="{address}/x?a=1&amp;b=2">' + run("a link", colour="#0000ee", tag="u") + "</a>" +
            run(" &lt;script&gt; 日本") + "</div>\r\n<br>" + anchor(f"{address}/styled"))


def anchor(address):
    return f'<a href="{address}">{address}</a>'


def body_of(html):
    """What stands in the body of a draft, without the frame that every draft has."""
    begin, end = "<body>\r\n", "\r\n</body>\r\n</html>\r\n"
    return html[html.index(begin) + len(begin):-len(end)] if html.endswith(end) else html


def same(found, wanted, what):
    if found != wanted:
        raise Missing(f"{what} is {found!r:.1500}, not {wanted!r:.1500}")


class Trials:
    """The trials of one browser, in one run of it where they can be."""

    def __init__(self, browser, web, scene):
        self.browser = browser
        self.web = web
        self.scene = scene

    def page(self):
        self.open("/styled")
        self.browser.choose("#styled", PAGE)
        return self.expect("Ein Titel, 日本 <b>", anchor(self.web.address + "/styled"))

    def page_by_key(self):
        self.open("/styled")
        self.scene.menus.press("alt+shift+q")
        return self.expect("Ein Titel, 日本 <b>", anchor(self.web.address + "/styled"))

    def link(self):
        self.open("/styled")
        self.browser.choose("#link", LINK)
        return self.expect("there it is", anchor(self.web.address + "/there?q=it%27s"))

    def selection(self):
        self.open("/styled")
        self.browser.mark("#styled")
        self.browser.choose("#styled", SELECTION)
        return self.expect("Ein Titel, 日本 <b>", styled_body(self.web.address))

    def selection_in_a_field(self):
        self.open("/field")
        self.browser.evaluate("document.getElementById('field').select()")
        self.browser.choose("#field", SELECTION)
        draft = self.scene.wait_for_draft()
        same("words &amp; more in a field" in draft.body, True, "whether the words are in the draft")
        return draft

    def selection_without_what_cannot_be_marked(self):
        self.open("/field")
        self.browser.mark("#part")
        self.browser.choose("#part", SELECTION)
        draft = self.scene.wait_for_draft()
        same(["wanted" in draft.body, "number" in draft.body], [True, False], "which words are in the draft")
        return draft

    def page_without_an_address(self):
        """A page of the browser itself; the desktop says it as well, since the program is told."""
        self.browser.open("about:blank")
        self.scene.menus.press("alt+shift+q")
        self.said("it has no address that others can open")
        same(self.scene.count_drafts(), 0, "the number of drafts")

    def picture(self, name, wanted):
        self.open("/pictures")
        self.browser.choose(f"#{name}", PICTURE)
        return self.expect("Pictures", "", [self.scene.as_png(wanted)])

    def picture_of_the_site(self):
        return self.picture("own", png(10))

    def picture_behind_a_cookie(self):
        return self.picture("behind", png(99))

    def picture_behind_a_redirect(self):
        return self.picture("redirect", png(10))

    def picture_of_a_blob(self):
        return self.picture("blob", png(10))

    def picture_in_a_data_link(self):
        return self.picture("data", png(10))

    def picture_of_a_canvas(self):
        self.open("/pictures")
        self.browser.choose("#drawn", PICTURE)
        draft = self.scene.wait_for_draft()
        same(draft.subject, "Pictures", "the subject")
        (picture,) = draft.pictures
        same(self.scene.colour_of(picture), "10,200,30", "the colour of the picture")
        return draft

    def picture_that_is_none(self):
        self.open("/pictures")
        self.browser.choose("#none", PICTURE)
        draft = self.expect("Pictures", anchor(self.web.address + "/none.png"))
        self.said("the picture")
        return draft

    def picture_redirected_elsewhere(self):
        self.open("/pictures")
        self.browser.choose("#away", PICTURE)
        draft = self.expect("Pictures", anchor(self.web.address + "/away.png"))
        self.said("the picture")
        return draft

    def picture_of_another_site_refused(self):
        self.open("/pictures")
        self.browser.choose("#other", PICTURE)
        self.browser.answer("Deny")
        draft = self.expect("Pictures", anchor(self.web.other + "/own.png"))
        self.said("the picture")
        return draft

    def picture_after_a_rest(self):
        """Browsers end an extension that has nothing to do for 30 seconds; the next click starts it anew, and it
        may ask for leave then."""
        time.sleep(45)
        return self.picture_of_another_site_refused()

    def picture_of_another_site(self):
        self.open("/pictures")
        self.browser.choose("#other", PICTURE)
        self.browser.answer("Allow")
        return self.expect("Pictures", "", [self.scene.as_png(png(10))])

    def picture_without_an_end(self):
        """Of a camera, what it shows at that moment."""
        self.open("/camera")
        wait_for(lambda: self.browser.evaluate("document.getElementById('camera').naturalWidth"), "the camera")
        self.browser.choose("#camera", PICTURE)
        draft = self.scene.wait_for_draft(40)
        same([self.scene.colour_of(one) for one in draft.pictures], [self.scene.colour_of(png(10))], "the colours")
        return draft

    def tabs_refused(self):
        self.tabs("Deny")
        number = self.browser.front_tab
        draft = self.expect(f"Tab {number} & <b>", anchor(f"{self.web.address}/tab{number}"))
        self.said("the other tabs")
        return draft

    def twelve_tabs(self):
        addresses = self.tabs("Allow")
        draft = self.scene.wait_for_draft()
        same(draft.subject, "Tab 1 & <b> and 11 more", "the subject")
        found = [part.split('"')[0] for part in body_of(draft.body).split('<a href="')[1:]]
        same(found, addresses, "the list of links")
        if "Tab 12 &amp; &lt;b&gt;" not in draft.body:
            raise Missing("the title of a tab is not in the draft")
        return draft

    def tabs(self, answer):
        addresses = [f"{self.web.address}/tab{number}" for number in range(1, 13)]
        self.browser.open_tabs(addresses)
        self.browser.choose_for_tabs(TABS)
        self.browser.answer(answer)
        return addresses

    def selection_of_50_megabytes(self):
        self.open("/huge?50000000")
        self.browser.mark("#huge")
        self.browser.choose("#huge", SELECTION)
        draft = self.expect("Huge", anchor(self.web.address + "/huge?50000000"), seconds=120)
        self.said("the selection")
        return draft

    def selection_too_large_for_styles(self):
        """Little text with so many styles that its HTML has more than 4 million characters."""
        self.open("/dense?60000")
        self.browser.mark("#dense")
        self.browser.choose("#dense", SELECTION)
        draft = self.scene.wait_for_draft(120)
        same(draft.body.count("word"), 60000, "the number of words")
        self.said("the styles")
        return draft

    def selection_that_hides_its_parts(self):
        """The form's field stands in the place of the form's property, so the text alone is shared, and said so."""
        self.open("/form")
        self.browser.mark("#form")
        self.browser.choose("#form", SELECTION)
        draft = self.scene.wait_for_draft()
        for word in ("before", "inside"):
            if word not in draft.body:
                raise Missing(f"{word!r} is not in the draft: {draft.body}")
        if "<b>" not in draft.body:
            self.said("the styles")
        return draft

    def page_that_navigates_away(self):
        self.open("/styled")
        self.browser.mark("#styled")
        # It goes the moment that the menu is closed, before anything could be asked of it.
        self.browser.evaluate("setTimeout(() => {}, 0), addEventListener('focus', () => location.replace('/tab1')),"
                              "addEventListener('blur', () => location.replace('/tab1')), true")
        self.browser.choose("#styled", SELECTION)
        draft = self.scene.wait_for_draft()
        if "hello bold" not in draft.body and "hello " not in draft.body:
            raise Missing(f"the selection is not in the draft: {draft.body}")
        return draft

    def page_that_closes(self):
        self.open("/tab1")
        self.browser.open_window(self.web.address + "/styled")
        self.browser.mark("#styled")
        # It answers nothing once the menu is closed.
        self.browser.evaluate("addEventListener('focus', () => { for (const end = Date.now() + 3000; Date.now() < end;); })")
        self.browser.choose("#styled", SELECTION)
        self.browser.close_window()
        draft = self.scene.wait_for_draft()
        if "hello " not in draft.body:
            raise Missing(f"the selection is not in the draft: {draft.body}")
        return draft

    def large_selection_without_the_extension(self):
        """Chromium itself ends when a menu is opened on six million marked characters."""
        self.open("/huge?6000000")
        self.browser.mark("#huge")
        self.browser.menu("#huge")
        wait_for(self.browser.has_ended, "the browser's end, so large selections can be tried in it;")

    def hostile_page(self):
        """Nothing of what a page tries starts the program or opens a page of the extension. The person's key does
        both on the same page, so either would have been seen."""
        mark = self.scene.desktop.root / "started"
        with self.scene.program(f"open({str(mark)!r}, 'w')\n"):
            self.open("/hostile")
            wait_for(lambda: self.browser.evaluate("document.title") == "Hostile, done", "the page")
            time.sleep(3)
            same(mark.exists(), False, "whether the program was started")
            same([one for one in self.browser.addresses() if "extension:" in one], [], "the list of opened pages")
            self.scene.menus.press("alt+shift+q")
            wait_for(mark.exists, "the program")
            wait_for(self.browser.help_link, "the page that helps")
            same([one.count("/help.html") for one in self.browser.addresses() if "extension:" in one], [1],
                 "the list of opened pages")
        self.browser.close_help()

    def two_windows_at_once(self):
        self.open("/styled")
        self.browser.open_window(self.web.address + "/tab2")
        for _ in range(2):
            self.scene.menus.press("alt+shift+q")
            self.browser.other_window()
        subjects = sorted([draft.subject for draft in self.scene.wait_for_drafts(2)])
        same(subjects, ["Ein Titel, 日本 <b>", "Tab 2 & <b>"], "the list of subjects")

    def program_missing(self):
        return self.helped("noHost", None)

    def program_that_dies(self):
        self.helped("noHost", "import sys\n")
        progress = json.dumps({"progress": 1}).encode()
        return self.helped("broken", f"import os\nos.write(1, {struct.pack('=I', len(progress)) + progress!r})\n")

    def program_that_takes_40_seconds(self):
        """Longer than a browser lets an extension be that has nothing to do."""
        end = json.dumps({"end": {"opened": False, "title": "Nothing was shared", "body": "It took long"}}).encode()
        with self.scene.program(f"import os, time\ntime.sleep(40)\n"
                                f"os.write(1, {struct.pack('=I', len(end)) + end!r})\ntime.sleep(5)\n"):
            self.open("/styled")
            self.browser.choose("#styled", PAGE)
            time.sleep(39)
            self.said("It took long")

    def program_of_another_version(self):
        end = json.dumps({"end": {"opened": False, "title": "Nothing was shared", "body": "Another version"}}).encode()
        with self.scene.program(f"import os, time\nos.write(1, {struct.pack('=I', len(end)) + end!r})\ntime.sleep(5)\n"):
            self.open("/styled")
            self.browser.choose("#styled", PAGE)
            self.said("Another version")

    def helped(self, failed, program):
        with self.scene.program(program):
            self.open("/styled")
            self.browser.choose("#styled", PAGE)
            link = wait_for(lambda: self.browser.help_link(), "the page that helps")
        same(link, "quoll://compose?subject=Ein%20Titel%2C%20%E6%97%A5%E6%9C%AC%20%3Cb%3E&plainBody=" +
             (self.web.address + "/styled").replace(":", "%3A").replace("/", "%2F"), "the link")
        same(self.browser.help_says(), failed, "what the page says")
        self.browser.close_help()

    def private_without_leave(self):
        self.open("/styled")
        self.browser.menu("#styled")
        time.sleep(2)
        same(self.browser.has_entry(PAGE), False, "whether there is an entry")
        self.scene.menus.press("Escape")
        self.scene.menus.press("alt+shift+q")
        time.sleep(2)
        same(self.scene.count_drafts(), 0, "the number of drafts")

    def private_with_leave(self):
        """The page of a private window is shared, and the link of a picture from elsewhere, for which no leave is
        asked; the browser's folder has nothing of them."""
        mark = "kept-nowhere-7531"
        self.browser.allow_private()
        self.browser.open_private(f"{self.web.address}/styled?{mark}")
        self.scene.menus.press("alt+shift+q")
        draft = self.expect("Ein Titel, 日本 <b>", anchor(f"{self.web.address}/styled?{mark}"))
        self.scene.begin()
        self.open("/pictures?" + mark)
        self.browser.choose("#other", PICTURE)
        self.expect("Pictures", anchor(self.web.other + "/own.png"))  # without a question: leave is remembered
        self.said("the picture")
        self.browser.close()
        found = self.scene.desktop.ask("grep", "--recursive", "--files-with-matches", "--binary-files=text", mark,
                                       str(self.browser.profile))
        same(found, "", "the list of files that name the page")
        return draft

    def time_to_the_draft(self):
        """How long it takes until a mail client is started: by the key, with a draft of the page, and by a click on
        a `mailto:` link of the same words; the middle one of seven each, in milliseconds."""
        self.open("/mailto")
        place = self.browser.place_of("#mail")
        taken = {"share": [], "mailto": []}
        for _ in range(7):
            for name, begin in (("share", lambda: self.scene.menus.press("alt+shift+q")),
                                ("mailto", lambda: self.scene.desktop.screen.click(*place))):
                self.scene.mail_was_opened()  # once more by the last one, if it was slow
                started = time.monotonic()
                begin()
                wait_for(self.scene.mail_was_opened, "the mail client")
                taken[name].append(time.monotonic() - started)
                time.sleep(2)
        same(self.scene.count_drafts(), 7, "the number of drafts")
        middle = {name: round(1000 * sorted(all_)[3]) for name, all_ in taken.items()}
        print(f"share {middle['share']} ms, mailto {middle['mailto']} ms", flush=True)

    def open(self, path):
        self.browser.open(self.web.address + path)

    def said(self, words):
        """The toolbar button shows it, and the desktop does."""
        def told():
            badge, title = self.browser.button() or ("", "")
            return badge == "!" and words in title

        wait_for(told, f"{words!r} on the button")

    def expect(self, subject, body, pictures=(), seconds=30):
        draft = self.scene.wait_for_draft(seconds)
        same(draft.subject, subject, "the subject")
        same(body_of(draft.body), body, "the body")
        same([len(one) for one in draft.pictures], [len(one) for one in pictures], "the size of the pictures")
        same(list(draft.pictures), list(pictures), "what the pictures hold")
        return draft


NOT_TRIED = {"firefox-esr": ("large_selection_without_the_extension",),
             "chromium": ("selection_of_50_megabytes",)}

RUNS = {
    "": ("page", "page_by_key", "link", "selection", "selection_in_a_field",
         "selection_without_what_cannot_be_marked", "page_without_an_address", "picture_of_the_site", "picture_behind_a_cookie",
         "picture_behind_a_redirect", "picture_of_a_blob", "picture_in_a_data_link", "picture_of_a_canvas",
         "picture_that_is_none", "picture_redirected_elsewhere", "picture_of_another_site_refused",
         "picture_after_a_rest", "picture_of_another_site", "picture_without_an_end", "tabs_refused", "twelve_tabs",
         "selection_that_hides_its_parts", "page_that_navigates_away", "page_that_closes",
         "two_windows_at_once", "program_missing", "program_that_dies",
         "program_that_takes_40_seconds", "program_of_another_version", "hostile_page"),
    "huge": ("selection_too_large_for_styles", "selection_of_50_megabytes"),
    "bare": ("large_selection_without_the_extension",),
    "time": ("time_to_the_draft",),
    "private": ("private_without_leave",),
    "allowed": ("private_with_leave",),
}
