"""Freight containers: their numbers and types painted on ribbed steel, as a scene and the box that
a crop shows of it."""
from . import marks
from .backgrounds import printed_edge, ribs
from .boxes import Wish, airs, draw_box
from .faces import CAP_HEIGHT
from .pieces import CROPS, margins, shrunk, small_print
from .scene import BASELINE, CLUTTER, FAINT, TEXT, Scene, set_line
from .codes import size_and_type


def container(text, face, small_face, dice, noise):
    """A line on a container: (scene, box), or None when the face lacks a character. A check digit,
    the one digit behind the last gap, mostly stands in a box."""
    wish = None
    parts = text.split(" ")
    if len(parts) > 1 and len(parts[-1]) == 1 and dice.random() < 0.85:
        wish = Wish(len(text) - 1, len(text) - 1, CAP_HEIGHT * dice.uniform(0.1, 0.35))
    stencilled = dice.random() < 0.08
    line = set_line(
        text,
        face,
        spacing=dice.choice((dice.uniform(-0.02, 0.15), dice.uniform(0.1, 0.6))),
        gap=dice.choice((dice.uniform(0.15, 0.5), dice.uniform(0.4, 1.3))),
        each=(lambda glyph: marks.stencil(glyph, dice)) if stencilled else None,
        airs=airs(wish),
    )
    if line is None:
        return None
    mask = line.mask
    if not stencilled and dice.random() < 0.35:
        worn = marks.worn(mask, dice, noise)
        mask = worn if marks.shows_all(mask, worn) else mask
    scene = Scene(mask.shape[1], len(text))
    scene.stamp(TEXT, mask, scene.left, scene.top - BASELINE + CAP_HEIGHT)
    spans = line.spans_in(scene)
    if wish:
        draw_box(scene, spans, wish, dice)
    _fill_gaps(scene, text, spans, dice)
    if dice.random() < 0.7:
        ribs(scene, dice)
    if dice.random() < 0.12:
        printed_edge(scene, dice)
    if dice.random() < 0.5:
        _next_line(scene, face, dice)
    if dice.random() < 0.2:
        _plate_beside(scene, small_face, dice)
    return scene, margins(scene, dice, dice.choices(CROPS, (3, 5, 5, 3))[0])


def _fill_gaps(scene, text, spans, dice):
    """A bar of the door or a hinge in a gap that has room for it."""
    for place, character in enumerate(text[:-1]):
        if character != " " or not spans[place - 1] or not spans[place + 1]:
            continue
        x0, x1 = spans[place - 1][1] + 4, spans[place + 1][0] - 4
        if place + 1 == len(text) - 1:
            x1 -= CAP_HEIGHT * 0.3
        if x1 - x0 < 0.15 * CAP_HEIGHT or dice.random() < 0.4:
            continue
        half = min((x1 - x0) / 2, CAP_HEIGHT * dice.uniform(0.08, 0.35))
        middle = dice.uniform(x0 + half, x1 - half)
        if dice.random() < 0.6:
            _bar(scene, middle, half, dice)
        else:
            height = CAP_HEIGHT * dice.uniform(0.2, 0.9)
            y = dice.uniform(scene.top - 0.3 * CAP_HEIGHT, scene.bottom)
            layer = dice.choice((CLUTTER, FAINT))
            scene.box(layer, middle - half, y, middle + half, y + height, dice.choice((-1, 2)))


def _bar(scene, middle, half, dice):
    """A round bar from top to foot: bright in its middle, dark at its sides."""
    x0, x1 = max(0, int(middle - half)), int(middle + half) + 1
    if dice.random() < 0.5:
        scene.box(FAINT, x0, 0, x1, scene.height)
    shade = scene.shaded()
    for x in range(x0, min(x1, scene.width)):
        shade[:, x] *= 1.3 - 0.7 * abs(x - middle) / max(half, 1)
    if dice.random() < 0.5:
        scene.line(CLUTTER, x1, 0, x1, scene.height, 1)


def _next_line(scene, face, dice):
    """The line below or above in the same letters, of which a crop shows the edge."""
    text = dice.choice((size_and_type(dice), "GW 30480 KG", "TARE 2230", "CU CAP 33.2", "USG1"))
    line = set_line(text, face, spacing=dice.uniform(0, 0.3))
    if line is None:
        return
    mask = shrunk(line.mask, dice.uniform(0.55, 1.0))
    distance = CAP_HEIGHT * dice.uniform(0.22, 0.6)
    x = scene.left + dice.uniform(-30, max(1, scene.right - scene.left - 40))
    if dice.random() < 0.7:
        scene.stamp(CLUTTER, mask, x, scene.bottom + distance - 12)
    else:
        scene.stamp(CLUTTER, mask, x, scene.top - distance - mask.shape[0] + 12)


def _plate_beside(scene, face, dice):
    """Small print of another kind at a side."""
    mask = small_print(face, dice, "ABCDEFGHKLMNOPRSTUVXZ0123456789 .", dice.randint(4, 16))
    if mask is not None:
        mask = shrunk(mask, dice.uniform(0.2, 0.4))
        y = dice.choice((scene.top - mask.shape[0] - 4, scene.bottom + 5))
        scene.stamp(CLUTTER, mask, dice.uniform(scene.left - 20, scene.right), y)
