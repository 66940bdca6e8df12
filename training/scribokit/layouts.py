"""Layouts: a line of text with what surrounds it, as a scene and the box that a crop shows of it."""
from .dots import DotFace
from .faces import CAP_HEIGHT
from .scene import BASELINE, CLUTTER, FAINT, OUTSIDE, TEXT, Scene, set_line
from . import marks

import cv2
import numpy as np

SMALL_LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-"
SLOGAN_LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZ abcdefghijklmnopqrstuvwxyz"


def _shrunk(mask, factor):
    size = max(1, int(mask.shape[1] * factor)), max(1, int(mask.shape[0] * factor))
    return cv2.resize(mask, size, interpolation=cv2.INTER_AREA)


def _small_print(face, dice, letters, count):
    """A short piece of other print as a mask at CAP_HEIGHT, or None."""
    text = "".join(dice.choice(letters) for _ in range(count)).strip() or "A"
    line = set_line(text, face, spacing=dice.uniform(0, 0.3))
    return line[0] if line else None


def _emblem(scene, layer, x, y, radius, dice):
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


def _foreign_letter(scene, x0, x1, dice):
    """A letter of another script, as tall as the others: a thicket of strokes."""
    for _ in range(dice.randint(5, 9)):
        if dice.random() < 0.5:
            y = dice.uniform(scene.top, scene.bottom)
            scene.line(CLUTTER, x0 + dice.uniform(0, 8), y, x1 - dice.uniform(0, 8), y + dice.uniform(-3, 3), dice.randint(2, 5))
        else:
            x = dice.uniform(x0, x1)
            scene.line(CLUTTER, x, scene.top + dice.uniform(0, 20), x + dice.uniform(-8, 8), scene.bottom - dice.uniform(0, 20), dice.randint(2, 5))


def plate(text, face, small_face, dice):
    """A number plate or a tag: (scene, box), or None when the face lacks a character."""
    emblem = dice.uniform(0.25, 0.75)
    line = set_line(text, face, spacing=dice.uniform(-0.02, 0.16), gap=dice.uniform(0.2, 0.7), emblem=emblem,
                    pitch=dice.uniform(0.6, 0.85) if dice.random() < 0.15 else None)
    if line is None:
        return None
    mask, emblems = line
    mask = marks.heavier(mask, dice) if dice.random() < 0.12 else mask
    scene = Scene(mask.shape[1], len(text))
    scene.stamp(TEXT, mask, scene.left, scene.top - BASELINE + CAP_HEIGHT)
    for x in emblems:
        if dice.random() < 0.85:
            radius = emblem * CAP_HEIGHT * dice.uniform(0.12, 0.42)
            _emblem(scene, dice.choice((CLUTTER, FAINT)), scene.left + x, dice.uniform(scene.top + 8, scene.bottom - 14), radius, dice)
    above, below = (CAP_HEIGHT * dice.uniform(0.08, 0.3) for _ in range(2))
    before, after = (CAP_HEIGHT * dice.uniform(0.08, 0.45) for _ in range(2))
    if dice.random() < 0.45:
        above = CAP_HEIGHT * dice.uniform(0.3, 0.62)
        _slogan(scene, small_face, scene.top - above + 3, above - 7, dice)
    if dice.random() < 0.35:
        below = CAP_HEIGHT * dice.uniform(0.3, 0.62)
        _slogan(scene, small_face, scene.bottom + 4, below - 7, dice)
    if dice.random() < 0.28:
        before = _band(scene, small_face, dice)
    elif dice.random() < 0.12:
        before = CAP_HEIGHT * dice.uniform(0.75, 0.98)
        _foreign_letter(scene, scene.left - before + 4, scene.left - 3, dice)
    if dice.random() < 0.12:
        after = CAP_HEIGHT * dice.uniform(0.4, 0.75)
        scene.box(FAINT, scene.right + 4, scene.top - 8, scene.right + after, scene.bottom + 8)
    if dice.random() < 0.12:
        _stickers(scene, small_face, dice)
    edge = [scene.left - before, scene.top - above, scene.right + after, scene.bottom + below]
    if dice.random() < 0.5:
        inset = dice.uniform(1, 4)
        scene.box(CLUTTER, edge[0] + inset, edge[1] + inset, edge[2] - inset, edge[3] - inset, dice.choice((1, 1, 2, 3)))
    if dice.random() < 0.4:
        y = dice.choice((edge[1] + 5, edge[3] - 5, (edge[1] + edge[3]) / 2))
        for x in (edge[0] + dice.uniform(4, 16), edge[2] - dice.uniform(4, 16)):
            scene.disc(CLUTTER, x, y, dice.uniform(1.5, 4))
    outside = scene.planes[OUTSIDE]
    outside[:] = 255
    cv2.rectangle(outside, (int(edge[0]), int(edge[1])), (int(edge[2]), int(edge[3])), 0, -1)
    if dice.random() < 0.3:
        return scene, _text_box(scene, dice, 0.05, 0.25)
    grow = dice.uniform(-0.02, 0.10) * CAP_HEIGHT
    return scene, (edge[0] - grow, edge[1] - grow, edge[2] + grow, edge[3] + grow)


def _text_box(scene, dice, low, high):
    return tuple(v + s * CAP_HEIGHT * dice.uniform(low, high) for v, s in
                 ((scene.left, -1), (scene.top, -1), (scene.right, 1), (scene.bottom, 1)))


def _slogan(scene, face, y, height, dice):
    """Small print of this height across the plate: a state, a web address, a dealer."""
    mask = _small_print(face, dice, dice.choice((SMALL_LETTERS, SLOGAN_LETTERS, SLOGAN_LETTERS.upper())), dice.randint(4, 20))
    if mask is None:
        return
    mask = _shrunk(mask, max(0.12, min(0.9, height / mask.shape[0] * 1.3)))
    x = (scene.left + scene.right - mask.shape[1]) / 2 + dice.gauss(0, 12)
    if mask.shape[1] < scene.right - scene.left + 40:
        scene.stamp(dice.choice((CLUTTER, CLUTTER, FAINT)), mask, x, y)


def _band(scene, face, dice):
    """A country's band at the left with its small letters and a ring of stars; gives its width."""
    width = CAP_HEIGHT * dice.uniform(0.35, 0.6)
    x0 = scene.left - width
    scene.box(FAINT, x0, scene.top - CAP_HEIGHT * 0.3, scene.left - dice.uniform(4, 9), scene.bottom + CAP_HEIGHT * 0.3)
    mask = _small_print(face, dice, "ABCDEFGHIKLMNOPRSTUZ", dice.randint(1, 3))
    if mask is not None:
        mask = _shrunk(mask, min(dice.uniform(0.2, 0.4), 0.75 * width / mask.shape[1]))
        scene.stamp(CLUTTER, mask, x0 + width * 0.15, scene.bottom - mask.shape[0])
    if dice.random() < 0.7:
        scene.disc(CLUTTER, x0 + width * 0.4, scene.top + 8, width * 0.22, dice.choice((1, 2, -1)))
    return width + dice.uniform(0, 6)


def _stickers(scene, face, dice):
    for x in dice.sample((scene.left - 6, scene.right - 16, scene.left + 20, scene.right - 40), 2):
        y = dice.choice((scene.top - 20, scene.bottom + 4))
        scene.box(FAINT, x, y, x + 22, y + 16)
        mask = _small_print(face, dice, SMALL_LETTERS, 2)
        if mask is not None:
            scene.stamp(CLUTTER, _shrunk(mask, 0.25), x + 3, y + 2)


def printed(text, face, small_face, dice, noise, level):
    """A line as an industrial printer leaves it: (scene, box), or None when the face lacks a character."""
    dotted = isinstance(face, DotFace)
    stencilled = not dotted and dice.random() < 0.05
    line = set_line(text, face, spacing=dice.choice((0, 0, dice.uniform(-0.03, 0.3))), gap=dice.uniform(0.25, 0.6), emblem=0.4,
                    each=(lambda glyph: marks.stencil(glyph, dice)) if stencilled else None)
    if line is None:
        return None
    mask = line[0]
    if dotted:
        mask = marks.slanted(mask, dice)
    elif not stencilled:
        mask = marks.marked(mask, dice, noise)
    scene = Scene(mask.shape[1], len(text))
    scene.stamp(TEXT, mask, scene.left, scene.top - BASELINE + CAP_HEIGHT)
    if dice.random() < 0.45 * level:
        _neighbours(scene, small_face, dice)
    if dice.random() < 0.18 * level:
        _print_behind(scene, small_face, dice)
    if dice.random() < 0.22 * level:
        _furniture(scene, dice)
    box = _text_box(scene, dice, 0.02 if level > 0.5 else 0.1, dice.choice((0.15, 0.3, 0.55)))
    if any(character in "gjpqy()/" for character in text):
        box = box[:3] + (box[3] + CAP_HEIGHT * 0.22,)
    return scene, box


def _neighbours(scene, face, dice):
    """Parts of the lines above and below."""
    for sign in dice.choice(((-1,), (1,), (-1, 1))):
        mask = _small_print(face, dice, SMALL_LETTERS + "abcdefghij  ", dice.randint(4, 16))
        if mask is None:
            continue
        mask = _shrunk(mask, dice.uniform(0.4, 1.1))
        distance = CAP_HEIGHT * dice.uniform(0.22, 0.6)
        y = scene.top - distance - mask.shape[0] + 6 if sign < 0 else scene.bottom + distance - 6
        scene.stamp(CLUTTER, mask, scene.left + dice.uniform(-50, 40), y)


def _print_behind(scene, face, dice):
    mask = _small_print(face, dice, SMALL_LETTERS, dice.randint(2, 6))
    if mask is not None and dice.random() < 0.6:
        scene.stamp(FAINT, cv2.resize(mask, None, fx=2, fy=2), dice.uniform(0, scene.width / 2), dice.uniform(0, 60))
        return
    step = dice.uniform(10, 50)
    lean = dice.choice((0, 0, dice.uniform(-60, 60)))
    for x in np.arange(-40, scene.width + 40, step):
        scene.line(FAINT, x, 0, x + lean, scene.height, dice.randint(1, 6))


def _furniture(scene, dice):
    """A frame, rules, bolts or a logo beside the line."""
    kind = dice.randrange(4)
    gap = CAP_HEIGHT * dice.uniform(0.15, 0.4)
    if kind == 0:
        scene.box(CLUTTER, scene.left - gap, scene.top - gap, scene.right + gap, scene.bottom + gap, dice.randint(1, 3))
    elif kind == 1:
        for y in (scene.top - gap, scene.bottom + gap):
            scene.line(CLUTTER, 0, y, scene.width, y, dice.randint(1, 4))
    elif kind == 2:
        for x in (scene.left - gap - 6, scene.right + gap + 6):
            scene.disc(CLUTTER, x, (scene.top + scene.bottom) / 2, dice.uniform(3, 9), dice.choice((-1, 2)))
    else:
        _emblem(scene, CLUTTER, scene.left - gap - 10, (scene.top + scene.bottom) / 2, dice.uniform(6, 14), dice)
