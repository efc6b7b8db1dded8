"""One share into one client, in one of the ways in which it may go."""

import signal

import shared
from desktop import SHORT_WAIT, Missed, until


def share(desktop):
    """Shares everything in one call, as the person does."""
    files = shared.write_files(desktop.home / "to share")
    done = desktop.run("quoll-share", "--title", shared.SUBJECT, "--html", shared.HTML,
                       "https://example.org/", *files)
    if done.returncode != 0:
        said = done.stderr.decode(errors="replace").strip()
        raise Missed(f"quoll-share ended with {done.returncode}: {said}")


def message_files(desktop):
    return list((desktop.data / "quoll-compose/drafts").glob("[0-9]*.eml"))


def _compose(desktop):
    """Has a draft with recipients made, as a link of another program does."""
    done = desktop.run("quoll-compose", shared.compose_command())
    if done.returncode != 0:
        said = done.stderr.decode(errors="replace").strip()
        raise Missed(f"quoll-compose ended with {done.returncode}: {said}")


def _shared_and_saved(desktop, client, before_saving=lambda: None, begin=share):
    """Shares, saves what the client then shows, and answers the message that it keeps."""
    before = desktop.titles()
    begin(desktop)
    if client.window is None:
        return until(f"{client.name} was given nothing", client.seconds, client.stored)
    window = desktop.wait_for_window(client.window, client.seconds, besides=before)
    desktop.settle()
    before_saving()
    client.save(desktop, window)
    kept = []

    def is_whole():
        """A store is written in pieces: the same twice, and nothing left to do."""
        desktop.settle()
        kept.append(client.stored())
        return len(kept) > 1 and kept[-1] and kept[-1] == kept[-2]

    until(f"{client.name} saved no draft", client.seconds, is_whole)
    return kept[-1]


def cold(desktop, client):
    """The share starts the client, or opens its composer."""
    return _shared_and_saved(desktop, client)


def running(desktop, client):
    """The client has been at work for a while."""
    client.start(desktop)
    desktop.settle()
    return cold(desktop, client)


def next_share(desktop, client):
    """Something else is shared before the draft is saved, which empties the staging folder."""
    def share_more():
        done = desktop.run("quoll-share", "--title", "Another", "https://example.org/another")
        if done.returncode != 0:
            raise Missed(f"the next quoll-share ended with {done.returncode}")
        desktop.wait_for_window("Another", client.seconds)
        desktop.settle()

    client.start(desktop)
    return _shared_and_saved(desktop, client, before_saving=share_more)


def recipients(desktop, client):
    """A draft for somebody, without files."""
    return _shared_and_saved(desktop, client, begin=_compose)


def file_gone(desktop, client):
    """The message file is removed when the window is open; the client has to have it all."""
    def remove():
        files = message_files(desktop)
        if not files:
            raise Missed("there is no message file to remove")
        for file in files:
            file.unlink()

    return _shared_and_saved(desktop, client, before_saving=remove)


def killed(desktop, client):
    """The client is killed as soon as it is there; the draft that is kept has everything."""
    share(desktop)
    until(f"{client.name} was not started", client.seconds,
          lambda: desktop.end(client.program, signal.SIGKILL))
    until("a program of the client stayed", SHORT_WAIT,
          lambda: not desktop.end(client.program, signal.SIGKILL))
    listed = desktop.run("quoll-compose", "--list").stdout.decode()
    files = message_files(desktop)
    if len(files) != 1 or files[0].name not in listed:
        raise Missed(f"quoll-compose --list does not show the draft: {listed.strip() or 'nothing'}")
    return files[0].read_bytes()


def verdict(client, way, arrived):
    """"ok", or what is wrong, in a few words."""
    wrong = []
    if not arrived.subject:
        wrong.append("subject")
    if arrived.body() != ("HTML" if client.keeps_html or way == "killed" else "text"):
        wrong.append("body")
    if way == "recipients" and arrived.recipients != "all":
        wrong.append(f"recipients: {arrived.recipients}")
    if arrived.lost:
        wrong.append("lost " + ", ".join(map(repr, arrived.lost)))
    if arrived.unknown:
        wrong.append("names nobody gave: " + ", ".join(map(repr, arrived.unknown)))
    if arrived.new_line_breaks and not client.writes_line_breaks:
        wrong.append("line breaks of files")
    return "; ".join(wrong) or "ok"


WAYS = {"cold": cold, "running": running, "next share": next_share, "file gone": file_gone,
        "recipients": recipients, "killed": killed}
