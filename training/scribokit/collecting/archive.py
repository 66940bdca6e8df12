"""The picture archive as the inspection plug-in writes it, read back.

    AISavePic/ or AISavePic_DATE/
        MODEL_TOOL/
            OK/           TOOLROIn_MMdd_HHmmss_zzz_READING.bmp
            NG/ng/        the same
            NG/ng_notype/ the same
"""
import os
import re
from collections import namedtuple
from pathlib import Path

# path, the model's and the tool's name of the folder (not split, both may hold underscores),
# verdict "OK" or "NG", the reading in the file name (may be empty; bytes that are not UTF-8 are
# replaced).
ArchivedPicture = namedtuple("ArchivedPicture", "path source verdict reading")

_NAME = re.compile(
    r"^(?P<tool>.*)ROI(?P<number>\d+)_(?P<time>\d{4}_\d{6}_\d{3})_(?P<reading>.*)\.bmp$", re.DOTALL
)


def reading_of(file_name):
    """The reading in an archived picture's name, or None when the name is no archive's."""
    match = _NAME.match(file_name)
    return match.group("reading") if match else None


def archived_pictures(folder):
    """All pictures below a folder that lie in OK, NG/ng or NG/ng_notype and carry an archive's
    name, in path order. Those of ng_notype could not be read: where others have the reading they
    have a message, and nothing was read of them.
    """
    found = []
    for path in sorted(Path(folder).rglob("*.bmp")):
        reading = reading_of(os.fsencode(path.name).decode("utf-8", "replace"))
        verdict_folder = path.parent if path.parent.name == "OK" else path.parent.parent
        known = path.parent.name == "OK" or (
            path.parent.name in ("ng", "ng_notype") and verdict_folder.name == "NG"
        )
        if reading is not None and known:
            read = "" if path.parent.name == "ng_notype" else reading
            found.append(
                ArchivedPicture(path, verdict_folder.parent.name, verdict_folder.name, read)
            )
    return found
