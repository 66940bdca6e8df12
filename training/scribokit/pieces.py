"""Pieces that stand around characters: small print, emblems, and the box around a line."""
import cv2
import numpy as np

from .faces import CAP_HEIGHT
from .scene import set_line

SMALL_LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-"


def shrunk(mask, factor):
    size = max(1, int(mask.shape[1] * factor)), max(1, int(mask.shape[0] * factor))
    return cv2.resize(mask, size, interpolation=cv2.INTER_AREA)


def small_print(face, dice, letters, count):
    """A short piece of other print as a mask at CAP_HEIGHT, or None."""
    text = "".join(dice.choice(letters) for _ in range(count)).strip() or "A"
    line = set_line(text, face, spacing=dice.uniform(0, 0.3))
    return line[0] if line else None


def emblem(scene, layer, x, y, radius, dice):
    """A seal, dot, crest or star between or beside characters; nothing that looks like a mark of the alphabet, such as
    two dots one above the other."""
    kind = dice.randrange(4)
    if kind == 0:
        scene.disc(layer, x, y, radius)
    elif kind == 1:
        scene.disc(layer, x, y, radius, max(1, radius * 0.3))
        scene.disc(layer, x, y, radius * 0.4)
    elif kind == 2:
        corners = dice.randint(3, 8)
        turns = np.sort(np.array([dice.uniform(0, 6.28) for _ in range(corners)]))
        reach = radius * np.array([dice.uniform(0.6, 1.2) for _ in range(corners)])
        points = np.stack([x + reach * np.cos(turns), y + reach * np.sin(turns)], 1)
        cv2.fillPoly(scene.planes[layer], [np.int32(points)], 255, cv2.LINE_AA)
    else:
        scene.box(layer, x - radius * 0.7, y - radius, x + radius * 0.7, y + radius, dice.choice((-1, 2)))


def text_box(scene, dice, low, high):
    """The box (x0, y0, x1, y1) around the text, each side `low` to `high` cap heights away."""
    return tuple(v + s * CAP_HEIGHT * dice.uniform(low, high) for v, s in
                 ((scene.left, -1), (scene.top, -1), (scene.right, 1), (scene.bottom, 1)))
