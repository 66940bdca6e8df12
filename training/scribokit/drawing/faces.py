"""Faces: the characters of one font as masks, all at one cap height, drawn once and kept."""
from collections import namedtuple

import cv2
import numpy as np
from PIL import Image, ImageDraw, ImageFont

CAP_HEIGHT = 40

# mask: height×width bytes, 255 is ink; left and top place it against the pen and the baseline;
# advance moves the pen.
Glyph = namedtuple("Glyph", "mask left top advance")


class FontFace:
    """A font file at CAP_HEIGHT. Characters are rendered when first asked for; None for those it
    lacks. `capitals_only` tells whether its small letters are its capitals, or missing."""

    def __init__(self, path):
        self.name = path
        size = CAP_HEIGHT * 1.4
        for _ in range(2):
            font = ImageFont.truetype(path, max(8, round(size)))
            left, top, right, bottom = font.getbbox("H", anchor="ls")
            if bottom - top < 4:
                raise ValueError(f"{path}: no capital H")
            size *= CAP_HEIGHT / -top if top < 0 else 1
        self._font = font
        self._missing = bytes(font.getmask("\uffff"))
        self._glyphs = {}
        self.capitals_only = all(self._same_ink(letter, letter.upper()) for letter in "aeg")

    def glyph(self, character):
        if character not in self._glyphs:
            self._glyphs[character] = self._render(character)
        return self._glyphs[character]

    def _same_ink(self, one, other):
        one, other = self.glyph(one), self.glyph(other)
        return (
            one is None
            or other is None
            or (
                one.mask.shape == other.mask.shape
                and np.mean(cv2.absdiff(one.mask, other.mask)) < 8
            )
        )

    def _render(self, character):
        left, top, right, bottom = self._font.getbbox(character, anchor="ls")
        if (
            right <= left
            or bottom <= top
            or (self._missing and bytes(self._font.getmask(character)) == self._missing)
        ):
            return None
        picture = Image.new("L", (right - left, bottom - top))
        ImageDraw.Draw(picture).text(
            (-left, -top), character, font=self._font, fill=255, anchor="ls"
        )
        mask = np.array(picture)
        if mask.max() < 128:
            return None
        return Glyph(mask, left, top, self._font.getlength(character))


# Each character as strokes: points of a unit box, x to the right, y down, y 1 on the baseline. A
# stroke that ends where it began is a loop; corners are rounded by the face.
STROKES = {
    "A": ["0,1 .5,0 1,1", ".2,.66 .8,.66"],
    "A'": ["0,1 0,.2 .2,0 .8,0 1,.2 1,1", "0,.58 1,.58"],
    "B": ["0,0 .85,0 .85,.47 0,.47", ".6,.47 1,.47 1,1 0,1", "0,0 0,1"],
    "B'": ["0,0 1,0 1,.47 0,.47", "0,.47 1,.47 1,1 0,1", "0,0 0,1"],
    "C": ["1,.22 1,0 0,0 0,1 1,1 1,.78"],
    "D": ["0,0 1,0 1,1 0,1", "0,0 0,1"],
    "E": ["1,0 0,0 0,1 1,1", "0,.48 .85,.48"],
    "F": ["1,0 0,0 0,1", "0,.5 .85,.5"],
    "G": ["1,.22 1,0 0,0 0,1 1,1 1,.52 .55,.52"],
    "H": ["0,0 0,1", "1,0 1,1", "0,.48 1,.48"],
    "I": [".5,0 .5,1"],
    "I'": [".5,0 .5,1", ".2,0 .8,0", ".2,1 .8,1"],
    "J": ["1,0 1,1 0,1 0,.7"],
    "J'": [".3,0 1,0 1,1 0,1 0,.7"],
    "K": ["0,0 0,1", "1,0 0,.58", ".3,.42 1,1"],
    "L": ["0,0 0,1 1,1"],
    "M": ["0,1 0,0 .5,.6 1,0 1,1"],
    "M'": ["0,1 0,0 .5,.95 1,0 1,1"],
    "N": ["0,1 0,0 1,1 1,0"],
    "O": ["0,0 1,0 1,1 0,1 0,0"],
    "P": ["0,1 0,0 1,0 1,.54 0,.54"],
    "Q": ["0,0 1,0 1,1 0,1 0,0", ".6,.72 1.05,1.06"],
    "R": ["0,1 0,0 1,0 1,.52 0,.52", ".5,.52 1,1"],
    "S": ["1,.22 1,0 0,0 0,.48 1,.48 1,1 0,1 0,.78"],
    "S'": ["1,.15 .8,0 .2,0 0,.15 0,.35 1,.62 1,.85 .8,1 .2,1 0,.85"],
    "T": ["0,0 1,0", ".5,0 .5,1"],
    "U": ["0,0 0,1 1,1 1,0"],
    "V": ["0,0 .5,1 1,0"],
    "W": ["0,0 .25,1 .5,.35 .75,1 1,0"],
    "W'": ["0,0 0,1 .5,.4 1,1 1,0"],
    "X": ["0,0 1,1", "1,0 0,1"],
    "Y": ["0,0 .5,.5 1,0", ".5,.5 .5,1"],
    "Z": ["0,0 1,0 0,1 1,1"],
    "0": ["0,0 1,0 1,1 0,1 0,0"],
    "0'": ["0,0 1,0 1,1 0,1 0,0", ".2,.8 .8,.2"],
    "1": [".25,.2 .6,0 .6,1"],
    "1'": [".2,.22 .55,0 .55,1", ".15,1 .95,1"],
    '1"': [".5,0 .5,1"],
    "2": ["0,.22 0,0 1,0 1,.45 0,1 1,1"],
    "2'": ["0,0 1,0 1,.48 0,.48 0,1 1,1"],
    "3": ["0,0 1,0 1,1 0,1", ".3,.47 1,.47"],
    "3'": ["0,0 1,0 .45,.42 1,.55 1,1 0,1 0,.8"],
    "4": [".75,1 .75,0 0,.72 1,.72"],
    "4'": ["0,0 0,.55 1,.55", ".8,.2 .8,1"],
    '4"': [".45,0 0,.7 1,.7", ".72,.4 .72,1"],
    "4^": [".62,0 0,.76 1,.76", ".78,.56 .78,1"],
    "5": ["1,0 0,0 0,.42 1,.42 1,1 0,1 0,.8"],
    "6": ["1,.2 1,0 0,0 0,1 1,1 1,.45 0,.45"],
    "6'": [".7,0 0,.55 0,1 1,1 1,.5 .1,.5"],
    "7": ["0,0 1,0 .35,1"],
    "7'": ["0,.12 0,0 1,0 1,.25 .4,.6 .4,1"],
    "8": ["0,0 1,0 1,.47 0,.47 0,0", "0,.47 1,.47 1,1 0,1 0,.47"],
    "8'": [".08,0 .92,0 .92,.45 .08,.45 .08,0", "0,.45 1,.45 1,1 0,1 0,.45"],
    "9": ["0,.8 0,1 1,1 1,0 0,0 0,.55 1,.55"],
    "9'": [".3,1 1,.45 1,0 0,0 0,.5 .9,.5"],
    "-": ["0,.52 1,.52"],
}
_NARROW = {
    "I": 0.45,
    "1": 0.7,
    "J": 0.85,
    "-": 0.5,
    "L": 0.9,
    "E": 0.92,
    "F": 0.92,
    "M": 1.25,
    "W": 1.35,
    "4": 1.05,
}


class StrokeFace:
    """The letters of a number plate press: strokes of one thickness with rounded corners, drawn at
    random once from a seed (proportions, thickness, corners, and which form of A, I, M, W, 0, 1, 4,
    6, 7, 9 ...). Capitals and digits.
    """

    capitals_only = True

    # How wide its letters are and how thick their strokes, in cap heights.
    _widths, _thicknesses = (0.36, 0.62), (0.10, 0.20)

    def __init__(self, seed):
        dice = np.random.default_rng(seed)
        self.name = f"strokes-{seed}"
        self._width = CAP_HEIGHT * dice.uniform(*self._widths)
        thickness = CAP_HEIGHT * dice.uniform(*self._thicknesses)
        self._thickness = int(round(min(thickness, self._width * 0.36)))
        # With sharper corners 8 and 0 could not be told from B and D.
        self._radius = CAP_HEIGHT * dice.uniform(0.12, 0.26)
        self._spacing = CAP_HEIGHT * dice.uniform(0.06, 0.22)
        self._fixed_pitch = dice.random() < 0.4
        self._forms = {}
        for form in sorted(STROKES):
            self._forms.setdefault(form[0], []).append(form)
        self._forms = {
            character: forms[dice.integers(len(forms))] for character, forms in self._forms.items()
        }
        self._glyphs = {character: self._render(character) for character in self._forms}

    def glyph(self, character):
        return self._glyphs.get(character)

    def _render(self, character):
        shift = 8.0
        narrow = _NARROW.get(character, 1.0)
        if self._fixed_pitch and narrow >= 0.7:
            narrow = 1.0
        thickness = self._thickness
        width = max(self._width * narrow - thickness, 3.0)
        height = CAP_HEIGHT - thickness
        half = thickness / 2
        mask = np.zeros((CAP_HEIGHT + 4, int(width + thickness) + 5), np.uint8)
        for stroke in STROKES[self._forms[character]]:
            points = np.array([[float(v) for v in point.split(",")] for point in stroke.split()])
            points = rounded(points * [width, height], self._radius) + half + 1
            cv2.polylines(
                mask,
                [np.int32(np.round(points * 2**shift))],
                False,
                255,
                thickness,
                cv2.LINE_AA,
                int(shift),
            )
        return Glyph(
            mask, int(self._spacing / 2), -CAP_HEIGHT - 1, mask.shape[1] - 3 + self._spacing
        )


class WideFace(StrokeFace):
    """The same with the wide, heavy letters of some plates and of containers."""

    _widths, _thicknesses = (0.6, 0.95), (0.16, 0.27)


def rounded(points, radius):
    """The polyline with each inner corner (and the joint of a loop) replaced by a curve of at most
    this radius."""
    closed = np.allclose(points[0], points[-1])
    corners = points[:-1] if closed else points
    count = len(corners)
    result = []
    for index, corner in enumerate(corners):
        if not closed and index in (0, count - 1):
            result.append(corner)
            continue
        before, after = corners[index - 1], corners[(index + 1) % count]
        reach = min(radius, np.linalg.norm(before - corner) / 2, np.linalg.norm(after - corner) / 2)
        start = corner + (before - corner) * reach / max(np.linalg.norm(before - corner), 1e-6)
        end = corner + (after - corner) * reach / max(np.linalg.norm(after - corner), 1e-6)
        for t in (0.0, 0.33, 0.67, 1.0):
            result.append((1 - t) ** 2 * start + 2 * t * (1 - t) * corner + t * t * end)
    if closed:
        result.append(result[0])
    return np.array(result)
