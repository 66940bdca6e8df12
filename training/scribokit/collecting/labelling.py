"""Correcting labels with keys in a terminal: every picture in coloured half blocks, its text below
to confirm or change."""
import contextlib
import csv
import os
import shutil
import termios
import tty

import cv2

from ..common.labels import CSV_NAME, PICTURE_TEXT, load_rows
from ..common.pictures import load_picture

KEYS = """\
Enter           the text is right, go on          Ctrl-D     leave the picture out
letters         put in at the cursor              Ctrl-U     clear the text
← → Backspace   move the cursor, take one away    ↑          back to the picture before
Ctrl-C          stop; what is confirmed is saved, and the next time begins behind it"""
CHECKED = "checked"
ENTER, BACKSPACE, LEAVE_OUT, CLEAR = "enter", "backspace", "leave out", "clear"
UP, DOWN, RIGHT, LEFT = "up", "down", "right", "left"
_CONTROLS = {
    b"\r": ENTER,
    b"\n": ENTER,
    b"\x7f": BACKSPACE,
    b"\x08": BACKSPACE,
    b"\x04": LEAVE_OUT,
    b"\x15": CLEAR,
}
_ARROWS = {b"A": UP, b"B": DOWN, b"C": RIGHT, b"D": LEFT}
_TALLEST = 32


def keys(descriptor):
    """The keys typed into a file descriptor, as they come: characters, or the names above. Ends
    with the input; keys without a meaning here are left out."""
    while first := os.read(descriptor, 1):
        if first in _CONTROLS:
            yield _CONTROLS[first]
        elif first == b"\x1b":
            key = _ARROWS.get(_escape(descriptor))
            if key:
                yield key
        elif first >= b" ":
            following = (
                3 if first >= b"\xf0" else 2 if first >= b"\xe0" else 1 if first >= b"\xc0" else 0
            )
            yield (first + b"".join(os.read(descriptor, 1) for _ in range(following))).decode(
                "utf-8", "ignore"
            )


def _escape(descriptor):
    """The last byte of an escape sequence whose first byte is read; nothing for one that has more
    than that byte."""
    if os.read(descriptor, 1) not in (b"[", b"O"):
        return b""
    last, length = os.read(descriptor, 1), 1
    while last and not (b"@" <= last <= b"~"):
        last, length = os.read(descriptor, 1), length + 1
    return last if length == 1 else b""


@contextlib.contextmanager
def each_key_at_once(descriptor):
    """Keys come unbuffered and are not echoed, where the input is a terminal; as it was before at
    the end."""
    if not os.isatty(descriptor):
        yield
        return
    before = termios.tcgetattr(descriptor)
    tty.setcbreak(descriptor)
    try:
        yield
    finally:
        termios.tcsetattr(descriptor, termios.TCSADRAIN, before)


class Line:
    """A line of text with a cursor. Takes characters of the alphabet only."""

    def __init__(self, text, alphabet):
        self.text, self.cursor, self._alphabet = text, len(text), alphabet

    def press(self, key):
        """Whether the key changed or moved something."""
        before = self.text, self.cursor
        if key == LEFT:
            self.cursor = max(0, self.cursor - 1)
        elif key == RIGHT:
            self.cursor = min(len(self.text), self.cursor + 1)
        elif key == CLEAR:
            self.text, self.cursor = "", 0
        elif key == BACKSPACE and self.cursor > 0:
            self.text = self.text[: self.cursor - 1] + self.text[self.cursor :]
            self.cursor -= 1
        elif len(key) == 1 and key in self._alphabet:
            self.text = self.text[: self.cursor] + key + self.text[self.cursor :]
            self.cursor += 1
        return before != (self.text, self.cursor)

    def is_readable(self):
        return set(self.text) <= set(self._alphabet)


def half_blocks(picture, columns):
    """A picture as lines of text: every character is two pixels, one above the other, in 24-bit
    colours."""
    height, width = picture.shape[:2]
    scale = min(columns / width, _TALLEST / height)
    rows = max(2, int(height * scale) // 2 * 2)
    small = cv2.resize(
        picture,
        (max(1, int(width * scale)), rows),
        interpolation=cv2.INTER_AREA if scale < 1 else cv2.INTER_LINEAR,
    )
    lines = []
    for upper, lower in zip(small[::2], small[1::2]):
        cells = (
            f"\x1b[38;2;{a[2]};{a[1]};{a[0]}m\x1b[48;2;{b[2]};{b[1]};{b[0]}m▀"
            for a, b in zip(upper.tolist(), lower.tolist())
        )
        lines.append("".join(cells) + "\x1b[0m")
    return lines


def correct(folder, alphabet, descriptor, screen):
    """Goes through the pictures of a labelled folder that are not confirmed yet, with the keys of a
    file descriptor, and shows them on a text stream. labels.csv is written after every picture.
    Gives (confirmed, all).
    """
    table = folder / CSV_NAME
    rows = load_rows(table)
    number = next((n for n, row in enumerate(rows) if not row.get(CHECKED)), len(rows))
    with each_key_at_once(descriptor), contextlib.suppress(KeyboardInterrupt):
        typed = keys(descriptor)
        while number < len(rows):
            row = rows[number]
            _show(folder, row, f"{number + 1} of {len(rows)}", screen)
            key, text = _edited(row["text"], alphabet, typed, screen)
            if key is None:
                break
            if key == UP:
                number = max(0, number - 1)
                continue
            row["text"], row[CHECKED] = text, "yes"
            _save(table, rows)
            number += 1
    return sum(bool(row.get(CHECKED)) for row in rows), len(rows)


def _show(folder, row, place, screen):
    try:
        lines = half_blocks(load_picture(folder / row["file"]), shutil.get_terminal_size().columns)
    except (OSError, ValueError) as error:
        lines = [str(error)]
    screen.write("\n".join(["", f"{row['file']}, {place}", *lines, ""]))


def _edited(text, alphabet, typed, screen):
    """(the key that ended it, the text then); (None, text) at the end of the input."""
    line = Line(text, alphabet)
    _draw(line, screen)
    for key in typed:
        if key == UP:
            return key, text
        if key == LEAVE_OUT:
            screen.write("\r\x1b[Kleft out\n")
            return key, ""
        if key == ENTER and line.is_readable():
            screen.write("\n")
            return key, line.text
        if not line.press(key):
            screen.write("\a")
        _draw(line, screen)
    return None, text


def _draw(line, screen):
    back = len(line.text) - line.cursor
    screen.write(f"\r\x1b[K> {line.text}" + (f"\x1b[{back}D" if back else ""))
    screen.flush()


def _save(table, rows):
    """Writes beside the old file and renames, so that a stop in the middle leaves the old one."""
    beside = table.with_suffix(".part")
    with open(beside, "w", newline="", encoding="utf-8") as file:
        writer = csv.DictWriter(file, (*PICTURE_TEXT, CHECKED), extrasaction="ignore", restval="")
        writer.writeheader()
        writer.writerows(rows)
    os.replace(beside, table)
