"""A home of the run's own: a bus, a group container, and the programs as they were built."""

import asyncio
import os
import pathlib
import shutil
import tempfile
import time

from receivers import install_client

GROUP = "K7Q2M9XT4B.quoll"
FRONT = "it.vorlent.quoll2"
BEHIND = "it.vorlent.quoll2.Behind"

BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir={root}</listen>
  <servicedir>{root}/services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


class Home:
    """Everything lies below `root`, which is removed at the end."""

    def __init__(self, build):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="quoll-soak-"))
        self.programs = {
            "share": build / "bin/quoll-share",
            "compose": build / "bin/quoll-compose",
            "control": build / "bin/quollctl",
            "helper": build / "libexec/quoll/quoll-image-helper",
            "receiver": build / "bin/soak_receiver",
            "resident": build / "bin/soak_resident",
        }
        for name in ("home", "data", "tmp", "containers", "services", "system-data", "sources"):
            (self.root / name).mkdir()
        # Of the system's data only the file types, or its applications would open the drafts.
        (self.root / "system-data/mime").symlink_to("/usr/share/mime")
        self.container = self.root / "containers" / GROUP
        self.container.mkdir()
        self.staging = self.container / "SharedData/Share"
        self.taken = self.root / "data/quoll-compose/taken"
        self.drafts = self.root / "data/quoll-compose/drafts"
        self.given = self.root / "given"  # what the mail client writes down
        self.socket = self.root / "socket"
        self.environment = self._environment()
        self.desktop = {}  # what a program needs to find the mail client
        self.bus = None
        self._started = []

    def _environment(self):
        unwanted = ("DISPLAY", "WAYLAND_DISPLAY", "XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID",
                    "QUOLL_BUNDLE_IDENTIFIER", "XDG_CURRENT_DESKTOP")
        kept = {name: value for name, value in os.environ.items() if name not in unwanted}
        return kept | {
            "HOME": str(self.root / "home"),
            "TMPDIR": str(self.root / "tmp"),
            "XDG_DATA_HOME": str(self.root / "data"),
            "XDG_DATA_DIRS": str(self.root / "system-data"),
            "XDG_CONFIG_HOME": str(self.root / "home"),
            "QUOLL_GROUP_CONTAINERS": str(self.root / "containers"),
            "QUOLL_IMAGE_HELPER": str(self.programs["helper"]),
        }

    async def start_bus(self):
        """The bus starts both receivers for whoever asks for them."""
        self.desktop = install_client(self.root)
        (self.root / "bus.conf").write_text(BUS.format(root=self.root))
        (self.root / f"services/{FRONT}.service").write_text(
            f"[D-BUS Service]\nName={FRONT}\n"
            f"Exec={self.programs['receiver']} {FRONT} {BEHIND} {self.socket}\n"
        )
        desktop = " ".join(f"{name}={value}" for name, value in self.desktop.items())
        (self.root / f"services/{BEHIND}.service").write_text(
            f"[D-BUS Service]\nName={BEHIND}\n"
            f"Exec=/usr/bin/env QUOLL_BUNDLE_IDENTIFIER={BEHIND} {desktop} "
            f"{self.programs['compose']} --service --idle 86400\n"
        )
        self.bus = await self.start(
            "dbus-daemon", f"--config-file={self.root}/bus.conf", "--nofork", "--nopidfile",
            "--print-address", stdout=asyncio.subprocess.PIPE, stderr=asyncio.subprocess.DEVNULL)
        address = await self.bus.stdout.readline()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address.decode().strip()

    async def start(self, program, *arguments, more=None, **streams):
        """Starts one of the programs, or any other, in this home."""
        path = self.programs.get(program, program)
        process = await asyncio.create_subprocess_exec(
            path, *map(str, arguments), env=self.environment | (more or {}), **streams)
        self._started = [one for one in self._started if one.returncode is None] + [process]
        return process

    async def wait_for_drafts(self):
        """Until the receiver has written all that it took. What it does not write in a minute is
        left to whoever looks at the folder."""
        began = time.monotonic()
        while self.taken.exists() and os.listdir(self.taken) and time.monotonic() < began + 60:
            await asyncio.sleep(0.01)

    async def close(self):
        for process in self._started:
            if process.returncode is None:
                process.kill()
                await process.wait()
        shutil.rmtree(self.root)
