"""Labelled pictures in a folder: labels from a CSV file beside them, or from the file names."""
import csv
import re
from pathlib import Path

CSV_NAME = "labels.csv"
PICTURE_TEXT = ("file", "text")
BOX = ("left", "top", "right", "bottom")
PICTURE_SUFFIXES = (".png", ".jpg", ".jpeg", ".bmp", ".tif", ".tiff")


def read_labels(folder, table=None):
    """(path, label) pairs of a folder. With a CSV file (the given one, or labels.csv in the folder;
    columns `file` and `text`) its rows, else every picture whose name is LABEL or LABEL_NUMBER.
    ValueError when there is none.
    """
    folder = Path(folder)
    if table or (folder / CSV_NAME).exists():
        table = Path(table or folder / CSV_NAME)
        pairs = _from_table(folder, table)
    else:
        pairs = [
            (path, label_of_name(path.name))
            for path in sorted(folder.iterdir())
            if path.suffix.lower() in PICTURE_SUFFIXES
        ]
    if not pairs:
        raise ValueError(f"{folder}: no labelled pictures")
    return pairs


def _from_table(folder, table):
    return [
        (folder / row["file"], row["text"])
        for row in load_rows(table)
        if row["file"] and row["text"]
    ]


def read_boxes(folder, table=None):
    """{path: (left, top, right, bottom)} of a folder whose labels.csv, or the given CSV file, says
    where in each picture the line is, in pixels. OSError or ValueError when it does not."""
    folder = Path(folder)
    table = Path(table or folder / CSV_NAME)
    boxes = {}
    for row in load_rows(table):
        try:
            box = tuple(int(row[name]) for name in BOX)
        except (KeyError, ValueError):
            raise ValueError(
                f"{table}: every row needs whole numbers in the columns {', '.join(BOX)}, "
                "which make-pictures --around writes"
            ) from None
        if box[0] >= box[2] or box[1] >= box[3]:
            raise ValueError(f"{table}: the box of {row['file']} is empty")
        boxes[folder / row["file"]] = box
    return boxes


def load_rows(table):
    """The rows of a CSV file of labels as dictionaries of texts. The fields are separated by
    commas, or by the semicolons or tabs of some spreadsheets. OSError when it cannot be read,
    ValueError when it is not UTF-8 or lacks a column.
    """
    try:
        with open(table, newline="", encoding="utf-8-sig") as file:
            head = file.readline()
            file.seek(0)
            rows = csv.DictReader(
                file, delimiter=next((mark for mark in ";\t" if mark in head), ",")
            )
            if not set(PICTURE_TEXT) <= set(rows.fieldnames or ()):
                raise ValueError(f"{table}: the first row must name the columns file and text")
            return [{name: row[name] or "" for name in rows.fieldnames} for row in rows]
    except UnicodeDecodeError:
        raise ValueError(f"{table}: not in UTF-8, which the spreadsheet can save") from None
    except csv.Error as error:
        raise ValueError(f"{table}: {error}") from None


def label_of_name(name):
    """The label in a file name: what stands before the suffix and an underscore with a number."""
    return re.sub(r"_\d+$", "", Path(name).stem)


def write_labels(table, rows):
    """Writes (file, text) rows, or rows of these and a box, as a CSV file that read_labels and
    read_boxes take."""
    with open(table, "w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file)
        writer.writerow(PICTURE_TEXT + (BOX if rows and len(rows[0]) > 2 else ()))
        writer.writerows(rows)
