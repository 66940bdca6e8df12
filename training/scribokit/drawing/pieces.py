"""Pieces that stand around characters: small print, emblems, and the box around a line."""
import cv2
import numpy as np

from .faces import CAP_HEIGHT
from .scene import FAINT, set_line

SMALL_LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-"


def shrunk(mask, factor):
    size = max(1, int(mask.shape[1] * factor)), max(1, int(mask.shape[0] * factor))
    return cv2.resize(mask, size, interpolation=cv2.INTER_AREA)


def small_print(face, dice, letters, count):
    """A short piece of other print as a mask at CAP_HEIGHT, or None."""
    text = "".join(dice.choice(letters) for _ in range(count)).strip() or "A"
    line = set_line(text, face, spacing=dice.uniform(0, 0.3))
    return line.mask if line else None


def emblem(scene, layer, x, y, radius, dice):
    """A seal, dot, crest or star between or beside characters; nothing that looks like a mark of
    the alphabet, such as two dots one above the other."""
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
        scene.box(
            layer, x - radius * 0.7, y - radius, x + radius * 0.7, y + radius, dice.choice((-1, 2))
        )


def scenery(scene, dice):
    """A picture behind the characters in soft shades: a sky that fades, a range of hills, a sun or
    a stripe."""
    shade = np.zeros_like(scene.planes[FAINT])
    strength = dice.uniform(80, 230)
    kind = dice.randrange(4)
    if kind == 0:
        first, last = dice.choice(((strength, 0), (0, strength)))
        shade[:] = np.linspace(first, last, scene.height)[:, None]
    elif kind == 1:
        peaks = dice.randint(3, 9)
        heights = [dice.uniform(scene.top - 20, scene.bottom) for _ in range(peaks)]
        outline = list(zip(np.linspace(0, scene.width, peaks), heights))
        cv2.fillPoly(
            shade, [np.int32([*outline, (scene.width, scene.height), (0, scene.height)])], strength
        )
    elif kind == 2:
        centre = int(dice.uniform(scene.left, scene.right)), int(
            dice.uniform(scene.top, scene.bottom)
        )
        cv2.circle(shade, centre, int(CAP_HEIGHT * dice.uniform(0.3, 1.2)), strength, -1)
    else:
        ends = [(x, int(dice.uniform(scene.top, scene.bottom))) for x in (0, scene.width)]
        cv2.line(shade, *ends, strength, int(CAP_HEIGHT * dice.uniform(0.15, 0.8)))
    scene.stamp(FAINT, cv2.GaussianBlur(shade, (0, 0), dice.uniform(1, 10)), 0, 0)


# How the sides of a crop lie about a line: the least and the most room, in cap heights.
TIGHT, USUAL, LOOSE, WIDE = CROPS = (-0.08, 0.1), (0.03, 0.25), (0.1, 0.45), (0.2, 0.62)


def margins(scene, dice, crop):
    """A box (x0, y0, x1, y1) around the text as people draw them, each side for itself, so that the
    line stands off centre in it. A crop may be TIGHT at one side or several."""
    sides = [
        dice.uniform(*(USUAL if crop is TIGHT and dice.random() < 0.4 else crop)) for _ in range(4)
    ]
    edges = scene.left, scene.top, scene.right, scene.bottom
    return tuple(
        value + sign * CAP_HEIGHT * side for value, sign, side in zip(edges, (-1, -1, 1, 1), sides)
    )
