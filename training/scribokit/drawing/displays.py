"""Seven-segment displays: digits in cells of one width, points at their feet, segments that are off
faintly seen, as a scene and the box that a crop shows of it."""
import cv2
import numpy as np

from .faces import CAP_HEIGHT
from .pieces import CROPS, margins, small_print, shrunk
from .scene import BASELINE, CLUTTER, FAINT, OUTSIDE, TEXT, Scene, set_line
from .segments import SegmentFace

_UNITS = "VAWkgChHzmbarPs%"


def display(text, face, small_face, dice):
    """A display: (scene, box), or None when the face lacks a character."""
    scene = _segments(text, face, dice) if isinstance(face, SegmentFace) else _set(text, face, dice)
    if scene is None:
        return None
    box = margins(scene, dice, dice.choices(CROPS, (3, 5, 4, 3))[0])
    if dice.random() < 0.35:
        box = box[:2] + (_unit(scene, small_face, dice),) + box[3:]
    if dice.random() < 0.35:
        _bezel(scene, dice)
    return scene, box


def _set(text, face, dice):
    """A display in a font, whose points take no room of their own."""
    line = set_line(text, face, spacing=dice.uniform(0.02, 0.35))
    if line is None:
        return None
    scene = Scene(line.mask.shape[1], len(text))
    scene.stamp(TEXT, line.mask, scene.left, scene.top - BASELINE + CAP_HEIGHT)
    return scene


def _segments(text, face, dice):
    spacing = CAP_HEIGHT * dice.choice((dice.uniform(0.14, 0.35), dice.uniform(0.3, 0.9)))
    # The points of most displays stand between digits that keep their distance.
    dot_room = max(3.0, min(face.dot_room, spacing / 2 - face.dot))
    widens = dice.random() < 0.3 or spacing < 2 * face.dot + 6
    colon = CAP_HEIGHT * dice.uniform(0.25, 0.4)
    cells, dots, pen = [], [], 2.0
    for character in text:
        if character == ".":
            dots.append((pen - spacing + dot_room + face.dot, CAP_HEIGHT - face.dot * 0.9))
            pen += 2 * face.dot + dot_room if widens else 0
        elif character == ":":
            dots += [(pen + colon / 2 - spacing / 2, CAP_HEIGHT * y) for y in (0.3, 0.7)]
            pen += colon
        elif face.glyph(character) is None:
            return None
        else:
            cells.append((character, pen))
            pen += face.width + spacing
    # Room for a lean and for a point at the end.
    width = int(pen - spacing + CAP_HEIGHT * 0.45)
    scene = Scene(width, len(cells) + 0.3 * len(dots))
    for character, x in cells:
        _stamp(scene, TEXT, face.glyph(character), x)
    for x, y in dots:
        _dot(scene, TEXT, face, x, y)
    scene.right = int(scene.left + pen - spacing + (CAP_HEIGHT * 0.3 if text[-1] == "." else 4))
    if dice.random() < 0.5:
        _show_what_is_off(scene, face, cells, (spacing, dot_room), dice)
    return scene


def _stamp(scene, layer, glyph, x):
    scene.stamp(layer, glyph.mask, scene.left + x + glyph.left, scene.bottom + glyph.top)


def _dot(scene, layer, face, x, y):
    x, y = scene.left + x + (CAP_HEIGHT / 2 - y) * face.lean, scene.top + y
    if face.round_dots:
        scene.disc(layer, x, y, face.dot)
    else:
        scene.box(layer, x - face.dot, y - face.dot, x + face.dot, y + face.dot)


def _show_what_is_off(scene, face, cells, rooms, dice):
    """All segments and points of all digits, and of some digits more before them. `rooms`: between
    two digits, and before a point."""
    spacing, dot_room = rooms
    has_dots = dice.random() < 0.6
    pitch = face.width + spacing
    extra = dice.choice((0, 0, 1, 2))
    places = [x for _, x in cells] + [cells[0][1] - n * pitch for n in range(1, extra + 1)]
    for x in places:
        _stamp(scene, FAINT, face.glyph("8"), x)
        if has_dots:
            x += face.width + dot_room + face.dot
            _dot(scene, FAINT, face, x, CAP_HEIGHT - face.dot * 0.9)


def _unit(scene, face, dice):
    """The first part of a unit to the right of the digits, where the crop ends; gives its edge."""
    mask = small_print(face, dice, _UNITS, dice.randint(1, 2))
    x = scene.right + CAP_HEIGHT * dice.uniform(0.15, 0.35)
    if mask is None:
        return x
    mask = shrunk(mask, dice.uniform(0.3, 0.6))
    y = dice.choice((scene.top - mask.shape[0] * 0.2, scene.bottom - mask.shape[0] * 0.8))
    scene.stamp(CLUTTER, mask, x, y)
    return x + min(mask.shape[1] * dice.uniform(0.1, 0.55), CAP_HEIGHT * 0.4)


def _bezel(scene, dice):
    """The frame around the glass."""
    room = [CAP_HEIGHT * dice.uniform(0.2, 0.6) for _ in range(4)]
    outside = scene.planes[OUTSIDE]
    outside[:] = 255
    corners = (
        (int(scene.left - room[0]), int(scene.top - room[1])),
        (int(scene.right + room[2]), int(scene.bottom + room[3])),
    )
    cv2.rectangle(outside, *corners, 0, -1)
    if dice.random() < 0.5:
        np.copyto(outside, cv2.GaussianBlur(outside, (0, 0), dice.uniform(0.5, 2)))
