"""The digits of seven-segment displays."""
import cv2
import numpy as np

from .faces import CAP_HEIGHT, Glyph

# The lit segments of each character: a top, b and c right, d foot, e and f left, g middle.
SEGMENTS = {
    "0": "abcdef",
    "1": "bc",
    "2": "abged",
    "3": "abgcd",
    "4": "fgbc",
    "5": "afgcd",
    "6": "afgedc",
    "6'": "fgedc",
    "7": "abc",
    "7'": "fabc",
    "8": "abcdefg",
    "9": "abcdfg",
    "9'": "abcfg",
    "-": "g",
}
_SHIFT = 6


class SegmentFace:
    """One display, drawn at random once from a seed: how wide its digits are, how thick its
    segments, how they end and lean, and the forms of 6, 7 and 9."""

    capitals_only = True

    def __init__(self, seed):
        dice = np.random.default_rng(seed)
        self.name = f"segments-{seed}"
        self.width = CAP_HEIGHT * dice.uniform(0.44, 0.68)
        self.thickness = CAP_HEIGHT * dice.uniform(0.08, 0.19)
        self.lean = dice.choice((0.0, dice.uniform(0.03, 0.2)))
        self._gap = dice.uniform(0.2, 2.0)
        # How much of its half thickness a segment's end is cut to a point.
        self._point = dice.choice((0.0, 0.5, 1.0))
        tails = {digit: dice.random() < 0.15 for digit in "679"}
        self._lit = {
            character: SEGMENTS[f"{character}'" if tails.get(character) else character]
            for character in "0123456789-"
        }
        # The point: its half width, how far it stands from the digit, and whether it is round.
        self.dot = max(1.3, self.thickness * dice.uniform(0.3, 0.6))
        self.dot_room = CAP_HEIGHT * dice.uniform(0.06, 0.22)
        self.round_dots = dice.random() < 0.5
        self._glyphs = {}

    def glyph(self, character):
        """A digit or a dash as a glyph of one width; None for others."""
        if character not in self._lit:
            return None
        if character not in self._glyphs:
            self._glyphs[character] = self._render(self._lit[character])
        return self._glyphs[character]

    def _render(self, lit):
        room = int(np.ceil(self.lean * CAP_HEIGHT)) + 2
        mask = np.zeros((CAP_HEIGHT + 2, int(self.width) + 2 * room), np.uint8)
        for segment in lit:
            points = self._outline(segment)
            points[:, 0] += room + (CAP_HEIGHT / 2 - points[:, 1]) * self.lean
            points[:, 1] += 1
            cv2.fillPoly(mask, [np.int32(np.round(points * 2**_SHIFT))], 255, cv2.LINE_AA, _SHIFT)
        return Glyph(mask, -room, -CAP_HEIGHT - 1, self.width)

    def _outline(self, segment):
        """A segment's corners (x, y) from the digit's upper left corner."""
        half = self.thickness / 2
        left, right = half, self.width - half
        top, middle, foot = half, CAP_HEIGHT / 2, CAP_HEIGHT - half
        ends = {
            "a": ((left, top), (right, top)),
            "b": ((right, top), (right, middle)),
            "c": ((right, middle), (right, foot)),
            "d": ((left, foot), (right, foot)),
            "e": ((left, middle), (left, foot)),
            "f": ((left, top), (left, middle)),
            "g": ((left, middle), (right, middle)),
        }[segment]
        start, end = (np.array(point, float) for point in ends)
        along = (end - start) / np.linalg.norm(end - start)
        start, end = start + along * self._gap, end - along * self._gap
        across = np.array([-along[1], along[0]]) * half
        cut = along * half * self._point
        return np.array(
            [
                start - along * half * 0.2,
                start + across + cut,
                end + across - cut,
                end + along * half * 0.2,
                end - across - cut,
                start - across + cut,
            ]
        )
