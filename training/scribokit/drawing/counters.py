"""Wheel counters: a digit on each wheel, seen through a window, as a scene and the box that a crop
shows of it."""
import math

import cv2
import numpy as np

from .faces import CAP_HEIGHT
from .pieces import small_print, shrunk
from .scene import CLUTTER, FAINT, OUTSIDE, TEXT, Scene

_LARGEST_LIFT = 0.14


def counter(text, face, small_face, dice):
    """A counter with its digits: (scene, box), or None when the face lacks one."""
    glyphs = [face.glyph(digit) for digit in "0123456789"]
    if None in glyphs or any(character not in "0123456789" for character in text):
        return None
    widest = max(glyph.mask.shape[1] for glyph in glyphs)
    pitch = max(CAP_HEIGHT * dice.uniform(0.75, 2.3), widest + 4)
    window = dice.uniform(max(widest + 3, 0.6 * pitch), pitch - 1), CAP_HEIGHT * dice.uniform(
        1.16, 1.75
    )
    wheels = _Wheels(glyphs, window, dice)
    scene = Scene(int(pitch * len(text)), len(text))
    outside = scene.planes[OUTSIDE]
    outside[:] = 255
    middle = (scene.top + scene.bottom) / 2
    # The last wheels are of another colour: tenths, or litres.
    tail = dice.choice((0, 1, 1, 1, 2, 3))
    top, foot = int(middle - window[1] / 2), int(middle + window[1] / 2)
    for place, digit in enumerate(text):
        centre = scene.left + pitch * (place + 0.5)
        sides = int(centre - window[0] / 2), int(centre + window[0] / 2)
        cv2.rectangle(outside, (sides[0], top), (sides[1], foot), 0, -1)
        ink, beside = wheels.seen(int(digit))
        scene.stamp(TEXT, ink, centre - ink.shape[1] / 2, middle - ink.shape[0] / 2)
        scene.stamp(CLUTTER, beside, centre - ink.shape[1] / 2, middle - ink.shape[0] / 2)
        if place >= len(text) - tail:
            scene.box(FAINT, sides[0], top, sides[1], foot)
    edge = (
        scene.left + (pitch - window[0]) / 2,
        top,
        scene.right - (pitch - window[0]) / 2,
        foot,
    )
    _light_the_wheels(scene, top, foot, dice)
    _housing(scene, edge, pitch, window, len(text), dice)
    if dice.random() < 0.3:
        _unit(scene, edge, small_face, dice)
    tight = -CAP_HEIGHT * 0.12
    loose = CAP_HEIGHT * dice.choice((0.05, 0.2, 0.5))
    box = tuple(
        value + sign * dice.uniform(tight, loose) for value, sign in zip(edge, (-1, -1, 1, 1))
    )
    return scene, box


class _Wheels:
    """What the windows show of wheels with these digits."""

    def __init__(self, glyphs, window, dice):
        self._glyphs = glyphs
        self._dice = dice
        self._apart = max(window[1] * dice.uniform(0.75, 1.1), CAP_HEIGHT * 1.15)
        self._runs_up = dice.random() < 0.5
        # All wheels of a counter are a little high or low, and each one a little more.
        self._lift = dice.gauss(0, 0.04) * CAP_HEIGHT
        height, width = int(window[1]), max(glyph.mask.shape[1] for glyph in glyphs) + 2
        self._size = height, width
        span = dice.uniform(0.25, 0.95)
        radius = height / 2 / math.sin(span)
        rows = np.arange(height, dtype=np.float32) - (height - 1) / 2
        self._rows = radius * np.arcsin(rows / radius)
        self._columns = np.arange(width, dtype=np.float32)

    def seen(self, digit):
        """(the digit, what is seen of the ones before and behind it), masks of one window."""
        limit = min(_LARGEST_LIFT * CAP_HEIGHT, max(0.0, (self._size[0] - CAP_HEIGHT) / 2))
        lift = self._lift + self._dice.gauss(0, 0.035) * CAP_HEIGHT
        lift = max(-limit, min(limit, lift))
        step = self._apart if self._runs_up else -self._apart
        ink = self._placed(digit, lift)
        beside = np.maximum(
            self._placed((digit + 1) % 10, lift + step), self._placed((digit - 1) % 10, lift - step)
        )
        return ink, np.minimum(beside, 255 - cv2.dilate(ink, np.ones((3, 3), np.uint8)))

    def _placed(self, digit, lift):
        """A digit's mask in the window, its middle `lift` above that of the window."""
        mask = self._glyphs[digit].mask
        middle = -self._glyphs[digit].top - CAP_HEIGHT / 2
        rows = self._rows + middle + lift
        left = (self._size[1] - mask.shape[1]) // 2
        map_x = np.repeat(self._columns[None] - left, self._size[0], 0)
        map_y = np.repeat(rows[:, None].astype(np.float32), self._size[1], 1)
        return cv2.remap(mask, map_x, map_y, cv2.INTER_LINEAR, borderValue=0)


def _light_the_wheels(scene, top, foot, dice):
    """Wheels are bright where they face the light and dark where they turn away; the housing throws
    its shadow on them from above."""
    rows = np.linspace(-1, 1, max(2, foot - top))
    turned = np.cos((rows + dice.uniform(-0.3, 0.7)) * dice.uniform(0.3, 1.2))
    deep = dice.uniform(0, 0.5)
    gain = 1 - deep + deep * turned / max(turned.max(), 0.1)
    shadow = dice.choice((0, dice.uniform(0.1, 0.3)))
    gain[: int(len(gain) * shadow)] *= dice.uniform(0.4, 0.85)
    scene.shaded()[top : top + len(gain)] *= gain[:, None].astype(np.float32)
    plane = scene.shaded()
    outside = scene.planes[OUTSIDE] > 0
    plane[outside] = 1


def _housing(scene, edge, pitch, window, count, dice):
    """The frames of the windows, or thin lines between wheels in one window."""
    x0, y0, x1, y1 = edge
    kind = dice.random()
    if kind < 0.35:
        scene.planes[OUTSIDE][int(y0) : int(y1), int(x0) : int(x1)] = 0
        for place in range(1, count):
            x = scene.left + pitch * place
            scene.line(CLUTTER, x, y0, x, y1, dice.choice((1, 1, 2)))
    elif kind < 0.6:
        thickness = dice.choice((1, 1, 2, 3))
        for place in range(count):
            x = scene.left + pitch * (place + 0.5)
            scene.box(CLUTTER, x - window[0] / 2, y0, x + window[0] / 2, y1, thickness)
    if dice.random() < 0.3:
        reach = dice.uniform(2, 9)
        scene.box(CLUTTER, x0 - reach, y0 - reach, x1 + reach, y1 + reach, dice.choice((1, 2, 3)))


def _unit(scene, edge, face, dice):
    """Small print on the housing: a unit behind the wheels, or names below them."""
    mask = small_print(face, dice, "mkWhCUBICMETER", dice.randint(2, 5))
    if mask is None:
        return
    mask = shrunk(mask, dice.uniform(0.2, 0.42))
    if dice.random() < 0.5:
        scene.stamp(CLUTTER, mask, edge[2] + dice.uniform(4, 12), edge[3] - mask.shape[0])
    else:
        scene.stamp(CLUTTER, mask, dice.uniform(edge[0], edge[2]), edge[3] + dice.uniform(3, 9))
