"""Layouts of printed lines: the text with what surrounds it, as a scene and the box that a crop
shows of it."""
import cv2
import numpy as np

from . import marks
from .backgrounds import crossed
from .boxes import airs, draw_box, draw_wish
from .dots import DotFace
from .faces import CAP_HEIGHT
from .pieces import CROPS, SMALL_LETTERS, emblem, margins, shrunk, small_print
from .scene import BASELINE, CLUTTER, FAINT, TEXT, Scene, set_line


def printed(text, face, small_face, dice, noise, level):
    """A line as an industrial printer leaves it: (scene, box), or None when the face lacks a
    character."""
    dotted = isinstance(face, DotFace)
    stencilled = not dotted and dice.random() < 0.05
    wish = draw_wish(text, dice) if dice.random() < 0.05 + 0.12 * level else None
    line = set_line(
        text,
        face,
        spacing=_spacing(dice),
        gap=dice.uniform(0.25, 0.6) if dice.random() < 0.75 else dice.uniform(0.6, 1.4),
        emblem=0.4,
        each=(lambda glyph: marks.stencil(glyph, dice)) if stencilled else None,
        airs=airs(wish),
    )
    if line is None:
        return None
    mask = line.mask
    if dotted:
        mask = marks.wavy(mask, dice)
        mask = mask if wish else marks.slanted(mask, dice)
    elif not stencilled and not wish:
        mask = marks.marked(mask, dice, noise)
    scene = Scene(mask.shape[1], len(text))
    scene.stamp(TEXT, mask, scene.left, scene.top - BASELINE + CAP_HEIGHT)
    if wish:
        draw_box(scene, line.spans_in(scene), wish, dice)
    if dice.random() < 0.5 * level:
        _neighbours(scene, small_face, dice)
    if dice.random() < 0.18 * level:
        _print_behind(scene, small_face, dice)
    if dice.random() < 0.22 * level:
        _furniture(scene, dice)
    if dice.random() < 0.25 * level:
        crossed(scene, dice)
    box = margins(scene, dice, dice.choices(CROPS, (3, 5, 5, 4))[0])
    if any(character in "gjpqy()/" for character in text):
        box = box[:3] + (box[3] + CAP_HEIGHT * 0.22,)
    return scene, box


def _spacing(dice):
    """What stands between two characters besides their own sides, in cap heights: little mostly,
    much in some lines."""
    kind = dice.random()
    if kind < 0.55:
        return 0
    return dice.uniform(-0.03, 0.3) if kind < 0.85 else dice.uniform(0.3, 1.1)


def _neighbours(scene, face, dice):
    """Parts of the lines above and below."""
    for sign in dice.choice(((-1,), (1,), (-1, 1))):
        mask = small_print(face, dice, SMALL_LETTERS + "abcdefghij  ", dice.randint(4, 16))
        if mask is None:
            continue
        mask = shrunk(mask, dice.uniform(0.4, 1.1))
        distance = CAP_HEIGHT * dice.uniform(0.22, 0.6)
        y = scene.top - distance - mask.shape[0] + 6 if sign < 0 else scene.bottom + distance - 6
        scene.stamp(CLUTTER, mask, scene.left + dice.uniform(-50, 40), y)


def _print_behind(scene, face, dice):
    mask = small_print(face, dice, SMALL_LETTERS, dice.randint(2, 6))
    if mask is not None and dice.random() < 0.6:
        scene.stamp(
            FAINT,
            cv2.resize(mask, None, fx=2, fy=2),
            dice.uniform(0, scene.width / 2),
            dice.uniform(0, 60),
        )
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
        scene.box(
            CLUTTER,
            scene.left - gap,
            scene.top - gap,
            scene.right + gap,
            scene.bottom + gap,
            dice.randint(1, 3),
        )
    elif kind == 1:
        for y in (scene.top - gap, scene.bottom + gap):
            scene.line(CLUTTER, 0, y, scene.width, y, dice.randint(1, 4))
    elif kind == 2:
        for x in (scene.left - gap - 6, scene.right + gap + 6):
            scene.disc(
                CLUTTER, x, (scene.top + scene.bottom) / 2, dice.uniform(3, 9), dice.choice((-1, 2))
            )
    else:
        emblem(
            scene,
            CLUTTER,
            scene.left - gap - 10,
            (scene.top + scene.bottom) / 2,
            dice.uniform(6, 14),
            dice,
        )
