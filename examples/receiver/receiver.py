#!/usr/bin/python3
"""The mail application's side of a share, small and whole: answers the name on the session bus, takes the staged files under
the locks, shows each draft, and writes the stores that extensions read.

Usage: receiver.py              answers org.freedesktop.Application until it is stopped
       receiver.py --stores     writes Accounts.plist and Contacts/Addresses.plist, and ends

A draft becomes a folder in ${XDG_DATA_HOME:-~/.local/share}/receiver-example, with the files and draft.txt. What a line is for
stands in docs/command-url.md, container.md and dictionaries.md.
"""

import contextlib
import errno
import fcntl
import os
import plistlib
import shutil
import stat
import sys
import tempfile
import urllib.parse

import gi
gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

NAME = "it.vorlent.quoll2"
SHARED = ("SharedData", "SharedDataBeta")
COMMANDS = {"archive", "delete", "reply", "message", "compose", "send", "open"}
INTERFACE = """<node><interface name="org.freedesktop.Application">
  <method name="Activate"><arg type="a{sv}" direction="in"/></method>
  <method name="Open"><arg type="as" direction="in"/><arg type="a{sv}" direction="in"/></method>
  <method name="ActivateAction"><arg type="s" direction="in"/><arg type="av" direction="in"/><arg type="a{sv}" direction="in"/></method>
</interface></node>"""

DATA = os.environ.get("XDG_DATA_HOME") or os.path.expanduser("~/.local/share")
CONTAINER = os.path.normpath(os.environ.get("QUOLL_GROUP_CONTAINERS", DATA + "/group-containers")) + "/K7Q2M9XT4B.quoll"
DRAFTS = DATA + "/receiver-example"


def lock_file(item):
    """The name of the lock file of an item, by its path below the container ("/" for the container itself)."""
    name = urllib.parse.quote(item, safe="") + ".lock"
    if len(name) <= 255:
        return name
    number = 0xcbf29ce484222325  # FNV-1a
    for byte in name.encode():
        number = (number ^ byte) * 0x100000001b3 % 2**64
    return f"h{number:016x}.lock"


@contextlib.contextmanager
def access(item):
    """Nobody else works on the item, or on anything in it."""
    os.makedirs(CONTAINER + "/.locks", 0o700, exist_ok=True)
    parts = item.strip("/").split("/")
    above = ["/"] + ["/" + "/".join(parts[:n]) for n in range(1, len(parts))]
    with contextlib.ExitStack() as held:
        for path, how in [(one, fcntl.LOCK_SH) for one in above] + [(item, fcntl.LOCK_EX)]:
            flags = os.O_RDWR | os.O_CREAT | os.O_CLOEXEC | os.O_NOFOLLOW
            lock = os.open(f"{CONTAINER}/.locks/{lock_file(path)}", flags, 0o600)
            held.callback(os.close, lock)
            fcntl.flock(lock, how)
        yield


def write_store(item, values):
    """Replaces a store by one rename; the new file is complete before it has its name."""
    os.makedirs(CONTAINER + "/.incoming", 0o700, exist_ok=True)
    with tempfile.NamedTemporaryFile(dir=CONTAINER + "/.incoming", prefix=".quoll-incoming-", delete=False) as file:
        fcntl.flock(file, fcntl.LOCK_EX)  # who tidies up leaves it alone
        plistlib.dump(values, file)
        file.flush()
        with access(os.path.dirname(item)):
            os.makedirs(os.path.dirname(CONTAINER + item), exist_ok=True)
        with access(item):
            os.replace(file.name, CONTAINER + item)


def write_stores():
    write_store("/SharedData/Accounts.plist", [
        {"mail": "ann@example.org", "name": "Ann Lee", "type": 1, "enabled": True,
         "aliases": [{"mail": "office@example.org", "name": "The Office", "account": "ann@example.org"}]}])
    write_store("/SharedData/Contacts/Addresses.plist", [
        {"mail": "zoe@example.org", "firstName": "Zoë", "lastName": "Müller", "company": "", "nickname": "", "rank": 1}])


def decoded(text):
    """Raises when an escape is malformed, or when the bytes are not UTF-8."""
    pieces = text.replace("+", " ").split("%")
    if not all(len(one) >= 2 and set(one[:2]) <= set("0123456789abcdefABCDEF") for one in pieces[1:]):
        raise ValueError("a malformed escape")
    return urllib.parse.unquote_to_bytes(text.replace("+", " ")).decode("utf-8")


def read_command(url):
    """The command word and the parameters of a command URL, which anyone may have written."""
    before, _, fragment = url.partition("#")
    if not before.startswith("quoll://") or "#" in fragment or ("?" in fragment and "?" not in before):
        raise ValueError("not a command URL")
    word, _, query = before.removeprefix("quoll://").partition("?")
    if word not in COMMANDS:
        raise ValueError("no command")
    found = {}
    for piece in query.split("&"):
        key, equals, value = piece.partition("=")
        if equals:
            found[decoded(key).removesuffix("[]")] = decoded(value.partition("=")[0])
    return word, found


def attachments(parameters):
    def number(key):
        rest = key.removeprefix("attachment_")
        return int(rest) if rest.isascii() and rest.isdigit() else sys.maxsize
    return [parameters[key] for key in sorted(filter(lambda one: one.startswith("attachment_"), parameters), key=number)]


def open_share(shared):
    """A descriptor of the staging folder; no link leads there."""
    folder = os.open(CONTAINER, os.O_PATH | os.O_DIRECTORY | os.O_CLOEXEC)
    for name in shared, "Share":
        above, folder = folder, os.open(name, os.O_RDONLY | os.O_DIRECTORY | os.O_NOFOLLOW | os.O_CLOEXEC, dir_fd=folder)
        os.close(above)
    return folder


def take(path, draft):
    """Takes one staged file into the draft; raises OSError when it is none."""
    folder, _, name = path.rpartition("/")
    shared = os.path.basename(os.path.dirname(folder))
    if shared not in SHARED or folder != f"{CONTAINER}/{shared}/Share" or name in ("", ".", ".."):
        raise OSError(errno.EPERM, "it is outside the shared folder")
    with access(f"/{shared}/Share"), contextlib.ExitStack() as opened:
        share = open_share(shared)
        opened.callback(os.close, share)
        with open(os.open(name, os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK | os.O_CLOEXEC, dir_fd=share), "rb") as staged:
            if not stat.S_ISREG(os.fstat(staged.fileno()).st_mode):
                raise OSError(errno.EINVAL, "it is no regular file")
            try:
                os.link(f"/proc/self/fd/{staged.fileno()}", f"{draft}/{name}", follow_symlinks=True)
            except OSError:  # on another disk, for one
                with open(f"{draft}/{name}", "xb") as copy:
                    shutil.copyfileobj(staged, copy)


def visible(text):
    return "".join(one if one.isprintable() else one.encode("unicode_escape").decode() for one in text)


def show(word, parameters, taken):
    lines = [f"command: {word}"] + [f"{key}: {visible(value)}" for key, value in parameters.items()
                                    if not key.startswith("attachment_")]
    return "\n".join(lines + [f"attached: {visible(name)}" for name in taken]) + "\n"


def receive(url):
    """Takes what a command says. Answers the path of the draft, and a line for each file that was left out."""
    word, parameters = read_command(url)
    os.makedirs(DRAFTS, 0o700, exist_ok=True)
    draft, left_out = tempfile.mkdtemp(dir=DRAFTS), []
    for path in attachments(parameters):
        try:
            take(path, draft)
        except OSError as error:
            left_out.append(f"{visible(os.path.basename(path))}: {error.strerror}")
    text = show(word, parameters, sorted(os.listdir(draft)))
    with open(draft + "/draft.txt", "x", encoding="utf-8") as file:
        file.write(text)
    print(text, end="", flush=True)
    return draft, left_out


def called(_bus, _sender, _path, _interface, method, arguments, invocation):
    if method != "Open":
        invocation.return_value(None)
        return
    uris, wishes = arguments.unpack()
    try:
        received = [receive(uri) for uri in uris]
    except (ValueError, OSError) as error:  # nothing was taken
        invocation.return_dbus_error("org.freedesktop.DBus.Error.Failed", str(error))
        return
    told = "\n\n".join("\n".join([draft, *left_out]) for draft, left_out in received)
    if wishes.get("quoll-report") and any(left_out for _, left_out in received):
        invocation.return_dbus_error(NAME + ".Error.LeftOut", told)
    elif wishes.get("quoll-draft") and not any(left_out for _, left_out in received):
        invocation.return_dbus_error(NAME + ".Error.Taken", received[0][0] if received else "")
    else:
        invocation.return_value(None)


def main():
    if sys.argv[1:] == ["--stores"]:
        write_stores()
        return
    interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
    Gio.bus_own_name(Gio.BusType.SESSION, NAME, Gio.BusNameOwnerFlags.NONE,
                     lambda bus, name: bus.register_object("/" + name.replace(".", "/"), interface, called, None, None),
                     None, lambda *_: sys.exit("the name is taken, or there is no session bus"))
    GLib.MainLoop().run()


if __name__ == "__main__":
    main()
