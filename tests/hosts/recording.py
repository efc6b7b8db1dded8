"""Notes what each host hands over: the installed tree with a recorder before its programs."""

import os
import pathlib
import shutil
import tempfile

# The same in every recording, as the names of files are in what is handed over.
ROOT = pathlib.Path(tempfile.gettempdir()) / "recorded"


def make_recording(build, records):
    """Answers a folder to drive in the place of `build`; what is handed over is added to `records`,
    a JSON text a line."""
    folder = build / "recording"
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(build / "stage", folder / "stage", symlinks=True)
    (folder / "purpose_host").symlink_to(build / "purpose_host")
    for program in ("quoll-share", "quoll-share-purpose"):
        (folder / "stage/bin" / program).unlink()
        (folder / "stage/bin" / program).symlink_to(pathlib.Path(__file__).parent / "recorder")
    os.environ["QUOLL_RECORDED_STAGE"] = str(build / "stage")
    os.environ["QUOLL_RECORDS"] = str(records.resolve())
    return folder
