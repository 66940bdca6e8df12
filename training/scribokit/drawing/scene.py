"""A scene: what lies in front of the camera, as four layers of coverage at the cap height of the
faces.

Layer TEXT holds the characters to read, CLUTTER all other sharp marks, OUTSIDE what lies beyond the
edge of the body that carries them (a plate, a label), FAINT the print behind. All four are planes
of one picture, so that the camera warps them in one step. Ribs, folds and bars change how bright
things are, which a plane of its own says: `shade`, the factor of each pixel, or None.
"""
from collections import namedtuple

import cv2
import numpy as np

from .faces import CAP_HEIGHT

TEXT, CLUTTER, OUTSIDE, FAINT = range(4)
_MARGIN = 60
MAX_WIDTH = 740


class Line(namedtuple("Line", "mask emblems spans")):
    """A line as it is set: mask of CAP_HEIGHT above and 14 pixels below the baseline, the x of its
    emblems, and for each character of the text where its ink is (x from, x to), None for a gap."""

    def spans_in(self, scene):
        """The spans in a scene that has the line at its left."""
        return [span and (span[0] + scene.left, span[1] + scene.left) for span in self.spans]


class Scene:
    def __init__(self, text_width, characters):
        """Room for a line of this width (pixels at CAP_HEIGHT) and so many characters, gaps counted
        in, and for its surroundings."""
        self.pitch = text_width / characters
        self.width = int(text_width) + 2 * _MARGIN
        self.height = CAP_HEIGHT + 2 * _MARGIN
        self.planes = [np.zeros((self.height, self.width), np.uint8) for _ in range(4)]
        self.left, self.top = _MARGIN, _MARGIN
        self.right, self.bottom = self.width - _MARGIN, _MARGIN + CAP_HEIGHT
        self.shade = None

    def shaded(self):
        """The plane of factors, to be changed in place."""
        if self.shade is None:
            self.shade = np.ones((self.height, self.width), np.float32)
        return self.shade

    def stamp(self, layer, mask, x, y):
        """Lays a mask over a layer at (x, y), cut at the edges."""
        x, y = int(x), int(y)
        plane = self.planes[layer]
        x0, y0, x1, y1 = (
            max(x, 0),
            max(y, 0),
            min(x + mask.shape[1], self.width),
            min(y + mask.shape[0], self.height),
        )
        if x1 > x0 and y1 > y0:
            target = plane[y0:y1, x0:x1]
            np.maximum(target, mask[y0 - y : y1 - y, x0 - x : x1 - x], out=target)

    def line(self, layer, x0, y0, x1, y1, thickness):
        cv2.line(
            self.planes[layer],
            (int(x0), int(y0)),
            (int(x1), int(y1)),
            255,
            max(1, int(thickness)),
            cv2.LINE_AA,
        )

    def box(self, layer, x0, y0, x1, y1, thickness=-1):
        cv2.rectangle(
            self.planes[layer], (int(x0), int(y0)), (int(x1), int(y1)), 255, int(thickness)
        )

    def disc(self, layer, x, y, radius, thickness=-1):
        cv2.circle(
            self.planes[layer],
            (int(x), int(y)),
            max(1, int(radius)),
            255,
            int(thickness),
            cv2.LINE_AA,
        )


def set_line(text, face, spacing=0.0, gap=0.45, emblem=0.35, pitch=None, each=None, airs=None):
    """Sets a text as a Line, or None when the face lacks a character or the line is too long.
    Spacing, gap (for ' ') and emblem (for '*') in cap heights; with a pitch every character takes
    that many cap heights. `each` changes the mask of single characters, `airs` moves those at these
    places away from the one before, by so many pixels."""
    pen, placed, emblems, spans = 2.0, [], [], []
    airs = airs or {}
    for place, character in enumerate(text):
        pen += airs.get(place, 0)
        spans.append(None)
        if character in " *":
            if character == "*":
                emblems.append(pen + emblem * CAP_HEIGHT / 2)
            pen += (gap if character == " " else emblem) * CAP_HEIGHT
            continue
        glyph = face.glyph(character)
        if glyph is None:
            return None
        advance = glyph.advance + spacing * CAP_HEIGHT
        if pitch:
            placed.append((glyph, pen + (pitch * CAP_HEIGHT - glyph.mask.shape[1]) / 2))
            pen += max(pitch * CAP_HEIGHT, glyph.mask.shape[1])
        else:
            placed.append((glyph, pen + glyph.left))
            pen += advance
        x = max(0, int(placed[-1][1]))
        spans[-1] = (x, x + glyph.mask.shape[1])
    width = int(max((x + glyph.mask.shape[1] for glyph, x in placed), default=0)) + 3
    if not placed or width > MAX_WIDTH:
        return None
    mask = np.zeros((CAP_HEIGHT + 28, width), np.uint8)
    for glyph, x in placed:
        ink = each(glyph.mask) if each else glyph.mask
        y = max(0, CAP_HEIGHT + 12 + glyph.top)
        ink = ink[: mask.shape[0] - y]
        x = max(0, int(x))
        target = mask[y : y + ink.shape[0], x : x + ink.shape[1]]
        np.maximum(target, ink[:, : target.shape[1]], out=target)
    return Line(mask, emblems, spans)


BASELINE = CAP_HEIGHT + 12
