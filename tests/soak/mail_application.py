#!/usr/bin/env python3
"""Writes the accounts or the contacts again and again, as the mail application does.

Usage: mail_application.py CONTAINER replace|in-place SEED

Made from docs/container.md alone, by the rules that its author would follow. `replace` writes
Accounts.plist by a rename, and may be killed at any time; `in-place` writes the two files of the
contacts over themselves, piece by piece, so that they are half files for most of the time. Every
record of a file holds the number of its writing and how many records there are. Each writing is
one line on standard output, its bytes.
"""

import contextlib
import fcntl
import os
import plistlib
import random
import sys
import time
import urllib.parse


def lock_name(inside):
    return urllib.parse.quote(inside, safe="-._~") + ".lock"


@contextlib.contextmanager
def locked(container, inside):
    """Everything above is locked for others who read it, the item itself for all."""
    folder = os.path.join(container, ".locks")
    os.makedirs(folder, mode=0o700, exist_ok=True)
    above = ["/"] + [inside[:at] for at in range(1, len(inside)) if inside[at] == "/"]
    held = []
    try:
        for item in above + [inside]:
            flags = os.O_RDWR | os.O_CREAT | os.O_CLOEXEC
            held.append(os.open(os.path.join(folder, lock_name(item)), flags, 0o600))
            fcntl.flock(held[-1], fcntl.LOCK_EX if item == inside else fcntl.LOCK_SH)
        yield
    finally:
        for lock in held:
            os.close(lock)


def document(records):
    kind = random.choice((plistlib.FMT_XML, plistlib.FMT_BINARY))
    return plistlib.dumps(records, fmt=kind)


def accounts():
    writing, count = time.monotonic_ns(), random.randint(1, 200)
    return document(
        [
            {"mail": f"{at}@x.org", "name": f"{writing} {count}", "type": 1, "enabled": at % 2 == 0}
            for at in range(count)
        ]
    )


def addresses():
    writing, count = time.monotonic_ns(), random.randint(1, 200)
    return document(
        [
            {"mail": f"{at}@x.org", "firstName": f"{writing} {count}", "lastName": "L", "rank": at}
            for at in range(count)
        ]
    )


def replace(container):
    data = accounts()
    with locked(container, "/SharedData/Accounts.plist"):
        # The same hidden name each time: what a killed writer left is written over.
        hidden = os.path.join(container, "SharedData/.Accounts.new")
        with open(hidden, "wb") as file:
            file.write(data)
        os.rename(hidden, os.path.join(container, "SharedData/Accounts.plist"))
    return len(data)


def overwrite(container, name):
    data = addresses()
    inside = "/SharedData/Contacts/" + name
    with locked(container, inside):
        with open(container + inside, "wb", buffering=0) as file:
            for at in range(0, len(data), 4096):
                file.write(data[at : at + 4096])
                time.sleep(0.0005)
    return len(data)


def main(container, how, seed):
    random.seed(seed)
    os.makedirs(os.path.join(container, "SharedData/Contacts"), mode=0o700, exist_ok=True)
    while True:
        if how == "replace":
            size = replace(container)
        else:
            size = overwrite(container, random.choice(("Addresses.plist", "Groups.plist")))
        print(size, flush=True)
        time.sleep(random.uniform(0, 0.04))


if __name__ == "__main__":
    try:
        main(*sys.argv[1:])
    except (KeyboardInterrupt, BrokenPipeError):
        sys.exit(0)
