"""Boxes, rounded boxes and underlines around one character, a group or a whole line, such as mark a
check digit or an important part of a code."""
import re
from collections import namedtuple

import cv2
import numpy as np

from .faces import CAP_HEIGHT
from .scene import CLUTTER

# first, last: the places of the characters in the text; air: pixels that a line leaves free on both
# sides of them.
Wish = namedtuple("Wish", "first last air")


def draw_wish(text, dice):
    """Which characters of a text get a box: one (most often the last), a group, or all."""
    places = [place for place, character in enumerate(text) if character not in " *"]
    kind = dice.random()
    air = CAP_HEIGHT * dice.uniform(0.12, 0.4)
    if kind < 0.45:
        place = places[-1] if dice.random() < 0.6 else dice.choice(places)
        return Wish(place, place, air)
    if kind < 0.7:
        group = dice.choice([found.span() for found in re.finditer(r"[^ *]+", text)])
        return Wish(group[0], group[1] - 1, air)
    return Wish(places[0], places[-1], air)


def airs(wish):
    """How much further than usual each character stands from the one before it: what set_line()
    asks for."""
    return {wish.first: wish.air, wish.last + 1: wish.air} if wish else {}


def draw_box(scene, spans, wish, dice):
    """Draws what was wished for around characters, whose ink takes these spans (x from, x to) of
    the scene. A box keeps clear of the characters inside and beside it."""
    inner = [span for span in spans[wish.first : wish.last + 1] if span]
    gap = min(wish.air - 1.5, CAP_HEIGHT * dice.uniform(0.06, 0.35))
    x0, x1 = inner[0][0] - gap, inner[-1][1] + gap
    thickness = dice.choice((1, 1, 2, 2, 3))
    above, below = (thickness / 2 + CAP_HEIGHT * dice.uniform(0.08, 0.3) for _ in range(2))
    y0, y1 = scene.top - above, scene.bottom + below
    kind = dice.random()
    if kind < 0.62:
        scene.box(CLUTTER, x0, y0, x1, y1, thickness)
    elif kind < 0.8:
        # A larger radius would cut across the corners of the characters.
        clear = 3 * (min(gap, above, below) - thickness / 2 - 1)
        radius = max(1, min(clear, CAP_HEIGHT * dice.uniform(0.1, 0.4)))
        _rounded(scene, (x0, y0, x1, y1), radius, thickness)
    elif kind < 0.95:
        scene.line(CLUTTER, x0, y1, x1, y1, thickness)
    else:
        for y in (y0, y1):
            scene.line(CLUTTER, x0, y, x1, y, thickness)


def _rounded(scene, box, radius, thickness):
    x0, y0, x1, y1 = box
    radius = min(radius, (x1 - x0) / 2, (y1 - y0) / 2)
    turns = np.linspace(0, np.pi / 2, 6)
    arc = np.stack([np.cos(turns), np.sin(turns)], 1) * radius
    corners = ((x1, y1, 1, 1), (x0, y1, -1, 1), (x0, y0, -1, -1), (x1, y0, 1, -1))
    points = []
    for x, y, right, down in corners:
        bend = arc * (right, down) + (x - right * radius, y - down * radius)
        points.append(bend if right == down else bend[::-1])
    cv2.polylines(
        scene.planes[CLUTTER],
        [np.int32(np.round(np.concatenate(points)))],
        True,
        255,
        thickness,
        cv2.LINE_AA,
    )
