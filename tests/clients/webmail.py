"""A browser that is the default for mail links, played by a script that notes what it was given.
The message is what such a page makes of the link, with the files that the person finds laid out."""

import email.message
import email.policy
import mimetypes
import os
import urllib.parse

ENTRY = """[Desktop Entry]
Type=Application
Name=Webmail
Exec={program} %u
MimeType=text/html;x-scheme-handler/http;x-scheme-handler/https;x-scheme-handler/mailto;
"""
PROGRAM = """#!/bin/sh
printf '%s' "$1" >'{noted}.part'
mv '{noted}.part' '{noted}'
"""
KEYS = ("to", "cc", "bcc", "subject")


class Webmail:
    name = "a browser"
    package = None
    program = "^never"
    entry = "webmail.desktop"
    keeps_html = False
    writes_line_breaks = False
    bare = ("to",)
    window = None  # there is nothing to save
    ways = ("cold", "recipients")
    seconds = 60

    def set_up(self, desktop):
        self.noted = desktop.root / "link"
        self.given = desktop.data / "quoll-compose/given"
        program = desktop.root / "webmail"
        program.write_text(PROGRAM.format(noted=self.noted))
        program.chmod(0o700)
        (desktop.applications / self.entry).write_text(ENTRY.format(program=program))

    def stored(self):
        if not self.noted.exists():
            return None
        to, _, query = self.noted.read_text().removeprefix("mailto:").partition("?")
        fields = dict(urllib.parse.parse_qsl(query.replace("+", "%2B")))
        fields["to"] = urllib.parse.unquote(to)
        message = email.message.EmailMessage(policy=email.policy.SMTP)
        for key in KEYS:
            if fields.get(key):
                message[key] = fields[key]
        message.set_content(fields.get("body", ""))
        for path in sorted(self.given.glob("*/to-attach/*")):
            kind = mimetypes.guess_type(path.name)[0] or "application/octet-stream"
            message.add_attachment(path.read_bytes(), *kind.split("/"),
                                   filename=os.fsdecode(path.name))
        return message.as_bytes()
