"""Plates: a code with the seals, small print, frames and bodywork around it, as a scene and the box
that a crop shows of it."""
import cv2
import numpy as np

from . import marks
from .faces import CAP_HEIGHT
from .pieces import (
    LOOSE,
    SMALL_LETTERS,
    TIGHT,
    USUAL,
    emblem,
    margins,
    scenery,
    shrunk,
    small_print,
)
from .scene import BASELINE, CLUTTER, FAINT, OUTSIDE, TEXT, Scene, set_line

_SLOGAN_LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZ abcdefghijklmnopqrstuvwxyz"


def plate(text, face, small_face, dice):
    """A number plate or a tag: (scene, box), or None when the face lacks a character."""
    scene = _lettered(text, face, small_face, dice)
    if scene is None:
        return None
    edge = _furnished(scene, small_face, dice)
    outside = scene.planes[OUTSIDE]
    outside[:] = 255
    cv2.rectangle(outside, *_corners(edge), 0, -1)
    if dice.random() < 0.35:
        edge = frame(scene, small_face, edge, dice)
    if dice.random() < 0.4:
        bodywork(scene, edge, dice)
    if dice.random() < 0.25:
        return scene, margins(scene, dice, dice.choice((TIGHT, USUAL, USUAL, LOOSE)))
    loose = 0.5 if dice.random() < 0.4 else 0.1
    return scene, tuple(
        v + side * CAP_HEIGHT * dice.uniform(-0.02, loose) for v, side in zip(edge, (-1, -1, 1, 1))
    )


def _lettered(text, face, small_face, dice):
    """The characters and what stands in their gaps."""
    width = dice.uniform(0.25, 0.75)
    line = set_line(
        text,
        face,
        spacing=dice.uniform(-0.02, 0.16),
        gap=dice.uniform(0.2, 0.7),
        emblem=width,
        pitch=dice.uniform(0.6, 0.85) if dice.random() < 0.15 else None,
    )
    if line is None:
        return None
    mask, emblems = line.mask, line.emblems
    mask = marks.heavier(mask, dice) if dice.random() < 0.12 else mask
    scene = Scene(mask.shape[1], len(text))
    scene.stamp(TEXT, mask, scene.left, scene.top - BASELINE + CAP_HEIGHT)
    for x in emblems:
        kind = dice.random()
        if kind < 0.12:
            _name_in_gap(scene, small_face, scene.left + x, width * CAP_HEIGHT, dice)
        elif kind < 0.32:
            seals(scene, scene.left + x, width, dice)
        elif kind < 0.88:
            radius = width * CAP_HEIGHT * dice.uniform(0.12, 0.42)
            emblem(
                scene,
                dice.choice((CLUTTER, FAINT)),
                scene.left + x,
                dice.uniform(scene.top + 8, scene.bottom - 14),
                radius,
                dice,
            )
    return scene


def _name_in_gap(scene, face, x, width, dice):
    """Small print in a gap of this width around x, such as a state's or a town's name: too small to
    be taken for a character of the plate."""
    mask = small_print(face, dice, _SLOGAN_LETTERS, dice.randint(2, 6))
    if mask is None:
        return
    mask = shrunk(mask, min(0.34, 0.9 * width / mask.shape[1]))
    rows = dice.choice((1, 1, 2))
    for row in range(rows):
        y = dice.uniform(scene.top, scene.bottom - mask.shape[0])
        y = y if rows == 1 else scene.top + row * (CAP_HEIGHT - mask.shape[0])
        scene.stamp(CLUTTER, mask, x - mask.shape[1] / 2, y)


def _furnished(scene, face, dice):
    """Everything else on the plate; gives its edge."""
    above, below = (CAP_HEIGHT * dice.uniform(0.08, 0.3) for _ in range(2))
    before, after = (CAP_HEIGHT * dice.uniform(0.08, 0.45) for _ in range(2))
    if dice.random() < 0.15:
        scenery(scene, dice)
    if dice.random() < 0.45:
        above = CAP_HEIGHT * dice.uniform(0.3, 0.7)
        if dice.random() < 0.3:
            scene.box(FAINT, 0, scene.top - above, scene.width, scene.top - dice.uniform(3, 6))
        _slogan(scene, face, scene.top - above + 3, above - 7, dice)
    if dice.random() < 0.35:
        below = CAP_HEIGHT * dice.uniform(0.3, 0.7)
        _slogan(scene, face, scene.bottom + 4, below - 7, dice)
    if dice.random() < 0.35:
        before = _band(scene, face, dice)
    elif dice.random() < 0.12:
        before = CAP_HEIGHT * dice.uniform(0.75, 0.98)
        _foreign_letter(scene, scene.left - before + 4, scene.left - 3, dice)
    if dice.random() < 0.12:
        after = CAP_HEIGHT * dice.uniform(0.4, 0.75)
        scene.box(FAINT, scene.right + 4, scene.top - 8, scene.right + after, scene.bottom + 8)
    if dice.random() < 0.12:
        _stickers(scene, face, dice)
    edge = scene.left - before, scene.top - above, scene.right + after, scene.bottom + below
    if dice.random() < 0.5:
        inset = dice.uniform(1, 4)
        scene.box(
            CLUTTER,
            edge[0] + inset,
            edge[1] + inset,
            edge[2] - inset,
            edge[3] - inset,
            dice.choice((1, 1, 2, 3)),
        )
    if dice.random() < 0.4:
        y = dice.choice((edge[1] + 5, edge[3] - 5, (edge[1] + edge[3]) / 2))
        for x in (edge[0] + dice.uniform(4, 16), edge[2] - dice.uniform(4, 16)):
            scene.disc(CLUTTER, x, y, dice.uniform(1.5, 4))
    return edge


def _foreign_letter(scene, x0, x1, dice):
    """A letter of another script, as tall as the others: a thicket of strokes."""
    for _ in range(dice.randint(5, 9)):
        if dice.random() < 0.5:
            y = dice.uniform(scene.top, scene.bottom)
            scene.line(
                CLUTTER,
                x0 + dice.uniform(0, 8),
                y,
                x1 - dice.uniform(0, 8),
                y + dice.uniform(-3, 3),
                dice.randint(2, 5),
            )
        else:
            x = dice.uniform(x0, x1)
            scene.line(
                CLUTTER,
                x,
                scene.top + dice.uniform(0, 20),
                x + dice.uniform(-8, 8),
                scene.bottom - dice.uniform(0, 20),
                dice.randint(2, 5),
            )


def _slogan(scene, face, y, height, dice):
    """Small print of this height across the plate: a state, a web address, a dealer."""
    mask = small_print(
        face,
        dice,
        dice.choice((SMALL_LETTERS, _SLOGAN_LETTERS, _SLOGAN_LETTERS.upper())),
        dice.randint(4, 20),
    )
    if mask is None:
        return
    mask = shrunk(mask, max(0.12, min(0.9, height / mask.shape[0] * 1.3)))
    x = (scene.left + scene.right - mask.shape[1]) / 2 + dice.gauss(0, 12)
    if mask.shape[1] < scene.right - scene.left + 40:
        scene.stamp(dice.choice((CLUTTER, CLUTTER, FAINT)), mask, x, y)


def _band(scene, face, dice):
    """A country's band at the left with its small letters and a ring of stars; gives its width."""
    width = CAP_HEIGHT * dice.uniform(0.35, 0.6)
    x0 = scene.left - width
    scene.box(
        FAINT,
        x0,
        scene.top - CAP_HEIGHT * 0.3,
        scene.left - dice.uniform(4, 9),
        scene.bottom + CAP_HEIGHT * 0.3,
    )
    mask = small_print(face, dice, "ABCDEFGHIKLMNOPRSTUZ", dice.randint(1, 3))
    if mask is not None:
        mask = shrunk(mask, min(dice.uniform(0.2, 0.4), 0.75 * width / mask.shape[1]))
        scene.stamp(CLUTTER, mask, x0 + width * 0.15, scene.bottom - mask.shape[0])
    if dice.random() < 0.7:
        scene.disc(CLUTTER, x0 + width * 0.4, scene.top + 8, width * 0.22, dice.choice((1, 2, -1)))
    return width + dice.uniform(0, 6)


def _stickers(scene, face, dice):
    for x in dice.sample((scene.left - 6, scene.right - 16, scene.left + 20, scene.right - 40), 2):
        y = dice.choice((scene.top - 20, scene.bottom + 4))
        scene.box(FAINT, x, y, x + 22, y + 16)
        mask = small_print(face, dice, SMALL_LETTERS, 2)
        if mask is not None:
            scene.stamp(CLUTTER, shrunk(mask, 0.25), x + 3, y + 2)


def seals(scene, x, width, dice):
    """Two seals one above the other in a gap of this width (cap heights), larger than the dots of a
    colon."""
    radius = min(CAP_HEIGHT * dice.uniform(0.13, 0.22), width * CAP_HEIGHT * 0.45)
    middle = (scene.top + scene.bottom) / 2 + dice.uniform(-4, 4)
    apart = radius * dice.uniform(1.2, 2.0)
    for y in (middle - apart, middle + apart):
        scene.disc(dice.choice((CLUTTER, FAINT)), x, y, radius, dice.choice((-1, -1, 2)))


def frame(scene, face, edge, dice):
    """The holder of a plate, a dealer's name cut out of its lower bar; gives its outer edge."""
    side, above, below = (
        CAP_HEIGHT * dice.uniform(low, high)
        for low, high in ((0.05, 0.2), (0.05, 0.2), (0.08, 0.45))
    )
    outer = [edge[0] - side, edge[1] - above, edge[2] + side, edge[3] + below]
    inner = [value + dice.uniform(-1, 3) * sign for value, sign in zip(edge, (1, 1, -1, -1))]
    holder = np.zeros_like(scene.planes[CLUTTER])
    cv2.rectangle(holder, *_corners(outer), 255, -1)
    cv2.rectangle(holder, *_corners(inner), 0, -1)
    name = (
        small_print(face, dice, _SLOGAN_LETTERS, dice.randint(4, 20))
        if below > 0.2 * CAP_HEIGHT
        else None
    )
    if name is not None:
        name = shrunk(name, 0.8 * below / name.shape[0])
        x, y = max(0, int((inner[0] + inner[2] - name.shape[1]) / 2)), int(edge[3] + 0.1 * below)
        bar = holder[y : y + name.shape[0], x : x + name.shape[1]]
        np.minimum(bar, 255 - name[: bar.shape[0], : bar.shape[1]], out=bar)
    scene.stamp(CLUTTER, holder, 0, 0)
    return outer


def bodywork(scene, edge, dice):
    """Edges and gaps of what carries the plate, all around it and none across."""
    lines = np.zeros_like(scene.planes[CLUTTER])
    for _ in range(dice.randint(1, 4)):
        y = dice.choice((dice.uniform(0, edge[1]), dice.uniform(edge[3], scene.height)))
        ends = (0, int(y + dice.gauss(0, 8))), (scene.width, int(y + dice.gauss(0, 8)))
        if dice.random() < 0.3:
            x = dice.choice((dice.uniform(0, edge[0]), dice.uniform(edge[2], scene.width)))
            ends = (int(x + dice.gauss(0, 15)), 0), (int(x + dice.gauss(0, 15)), scene.height)
        cv2.line(lines, *ends, dice.randint(120, 255), dice.randint(1, 16), cv2.LINE_AA)
    cv2.rectangle(lines, *_corners(edge), 0, -1)
    scene.stamp(CLUTTER, lines, 0, 0)


def _corners(box):
    return (int(box[0]), int(box[1])), (int(box[2]), int(box[3]))
