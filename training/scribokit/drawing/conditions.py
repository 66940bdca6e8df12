"""How a scene is painted and seen. A level from 0 (studio) to 1 (the worst that a reader is asked
for) scales all."""
from dataclasses import dataclass

# Heights of the pictures in pixels.
LOWEST, HIGHEST = 12, 60


@dataclass
class Paint:
    """Colours are BGR bytes; relief is the brightness of an embossed edge, relief_ink how much ink
    is left on it."""

    surface: tuple
    ink: tuple
    clutter: tuple
    faint: tuple
    outside: tuple
    grain: float = 0.0
    outside_grain: float = 10.0
    relief: float = 0.0
    relief_ink: float = 1.0
    relief_shift: int = 1
    # What the ink's colour is where the layer FAINT covers the surface, if it is another there.
    ink_on_faint: tuple = None
    # How bright the light around a lit character is, as a part of its own.
    glow: float = 0.0
    # How rough the surface is, in grey levels between the lit and the dark side of its grains.
    rough: float = 0.0


@dataclass
class View:
    """Angles in degrees; shear and slope, what the line leans and climbs for each pixel up and
    along, as things seen from above and from the side do; blur, motion in pixels at a height of 32,
    noise in grey levels, shadow, glare, dirt as chances.
    """

    height: int
    tilt: float = 0.0
    shear: float = 0.0
    slope: float = 0.0
    stretch: float = 1.0
    keystone: float = 0.0
    curvature: float = 0.0
    jitter: float = 0.0
    uneven: float = 0.0
    shadow: float = 0.0
    glare: float = 0.0
    dirt: float = 0.0
    blur: float = 0.0
    motion: float = 0.0
    noise: float = 0.0
    colour_noise: bool = True
    grey: bool = False
    detail: float = 1.0
    jpeg: int = 0
    # The part of a capital's height that the picture's sides may cut off a character.
    cut: float = 0.0


# How wide characters may be, as a multiple of what is usual for their kind.
NARROW, WIDE = 0.4, 2.5
_ODD_WIDTHS = 0.45


def draw_stretch(dice, usual):
    """How much wider than in its font a line is drawn: mostly the usual, otherwise anything from
    NARROW to WIDE, half as wide as often as twice as wide."""
    if dice.random() < _ODD_WIDTHS:
        return NARROW * (WIDE / NARROW) ** dice.random()
    return dice.uniform(*usual)


def draw_view(dice, level, stretch=(0.75, 1.3), askew=0.2):
    """Conditions of this level. Heights are drawn so that small pictures are as frequent as large
    ones; `askew` is the part, at level 1, that is seen from the side or by a camera held askew."""
    height = int(round(LOWEST * (HIGHEST / LOWEST) ** (dice.random() ** (0.8 + 0.5 * (1 - level)))))
    view = View(height)
    view.tilt = dice.choice((0.4, 1.5, 3.5)) * (0.3 + level)
    if dice.random() < askew * level:
        view.tilt, view.slope = dice.choice(((6.0, 0.03), (3.0, 0.07), (1.0, 0.12)))
    view.shear = 0.10 * level * dice.random()
    view.stretch = draw_stretch(dice, stretch)
    view.cut = 0.08 * dice.random() if dice.random() < 0.3 else 0.0
    view.keystone = 0.07 * level * dice.random()
    view.jitter = 0.045 * level
    view.uneven = dice.random() * 0.25 * (0.3 + level)
    view.shadow, view.glare, view.dirt = 0.18 * level, 0.12 * level, 0.15 * level
    view.blur = dice.choice((0.0, 0.4, 0.8, 1.3)) * dice.random() * (0.6 + 0.6 * level)
    if dice.random() < 0.15 * level:
        view.motion = dice.uniform(1.5, 4.5)
    view.noise = dice.choice((0, 2, 5, 10)) * dice.random() * (0.4 + level)
    view.colour_noise = dice.random() < 0.5
    view.grey = dice.random() < 0.4
    if dice.random() < 0.3 * level:
        view.detail = dice.uniform(max(0.35, 10 / height) if height > 12 else 1, 1)
    if dice.random() < 0.45:
        view.jpeg = dice.randint(int(70 - 45 * level), 95)
    return view


def _tint(dice, brightness, colourful):
    return tuple(min(255.0, max(0.0, brightness + dice.gauss(0, colourful))) for _ in range(3))


def draw_paint(dice, level):
    """Ink on a surface in either polarity, their contrast from 220 grey levels down to 45 (at level
    1)."""
    contrast = dice.uniform(110 - 65 * level, 215)
    dark = dice.uniform(0, 250 - contrast)
    light = dark + contrast
    surface, ink = (dark, light) if dice.random() < 0.3 else (light, dark)
    colourful = dice.choice((2, 8, 22))
    surface_colour = _tint(dice, surface, colourful)
    clutter = dice.choice((ink, ink, dice.uniform(0, 255)))
    faint = surface + dice.uniform(-0.35, 0.35) * contrast
    return Paint(
        surface_colour,
        _tint(dice, ink, colourful / 2),
        _tint(dice, clutter, colourful),
        _tint(dice, faint, colourful),
        _tint(dice, dice.uniform(10, 230), 20),
        grain=dice.random() ** 2 * 0.12 * contrast * (0.3 + level),
        outside_grain=dice.uniform(0, 30),
    )


def emboss(paint, view, dice):
    """Makes of print a mark pressed out of or into the surface: edges lit from one side and little
    ink or none. The surface is neither black nor white, where one of the two edges could not be
    seen, and the edges are as wide on a large picture as on a small one."""
    paint.relief = dice.choice((-1, 1)) * dice.uniform(90, 200)
    paint.relief_ink = dice.uniform(0, 0.5)
    paint.relief_shift = max(1, round(view.height / 24))
    brightness = sum(paint.surface) / 3
    lift = min(max(brightness, 70), 185) - brightness
    paint.surface, paint.ink, paint.faint = (
        tuple(value + lift for value in colour)
        for colour in (paint.surface, paint.ink, paint.faint)
    )


def steel(paint, view, dice):
    """Makes of print a mark in cast, sand-blasted or coarse metal: a rough surface, edges with deep
    shadows."""
    emboss(paint, view, dice)
    paint.relief_ink = dice.uniform(0.0, 0.8)
    paint.relief_shift = max(1, round(view.height / dice.uniform(12, 24)))
    paint.rough = dice.uniform(6, 30)
    grey = dice.uniform(70, 185)
    paint.surface = tuple(grey + dice.gauss(0, 6) for _ in range(3))
    paint.ink = tuple(max(0.0, value - dice.uniform(30, 110)) for value in paint.surface)
    view.uneven = max(view.uneven, dice.uniform(0.05, 0.25))


# Plate colours in use, surface then ink (BGR): dark on white and yellow, the reverse, and the
# coloured ones.
PLATE_COLOURS = (
    ((235, 235, 235), (25, 25, 25)),
    ((225, 228, 228), (30, 28, 26)),
    ((215, 215, 210), (120, 40, 20)),
    ((220, 220, 225), (40, 40, 170)),
    ((60, 190, 235), (25, 25, 25)),
    ((40, 200, 240), (30, 30, 30)),
    ((215, 220, 220), (70, 100, 20)),
    ((30, 30, 30), (225, 225, 225)),
    ((150, 70, 20), (235, 235, 235)),
    ((35, 30, 160), (235, 235, 235)),
    ((70, 120, 30), (235, 235, 235)),
    ((160, 200, 160), (30, 30, 30)),
    ((225, 215, 190), (90, 40, 20)),
    ((40, 160, 220), (110, 30, 20)),
    ((150, 160, 165), (40, 40, 40)),
    ((120, 220, 240), (60, 30, 20)),
    ((200, 150, 60), (230, 230, 230)),
    ((195, 195, 230), (60, 60, 140)),
)
_PLATE_WEIGHTS = (10, 10, 5, 3, 4, 4, 3, 3, 3, 2, 1.5, 2, 3, 1.5, 3, 2, 1, 1)


def draw_plate_paint(dice, level):
    surface, ink = dice.choices(PLATE_COLOURS, _PLATE_WEIGHTS)[0]
    light = dice.uniform(1.0 - 0.65 * level, 1.08)
    haze = dice.uniform(0, 70 * level) * dice.random()
    shade = [
        tuple(min(255.0, max(0.0, (v + dice.gauss(0, 10)) * light + haze)) for v in colour)
        for colour in (surface, ink)
    ]
    clutter = (
        shade[1] if dice.random() < 0.6 else tuple(dice.uniform(0, 255) * light for _ in range(3))
    )
    faint = dice.choice(
        ((150, 60, 10), (40, 40, 190), (60, 140, 60), (120, 150, 200), (60, 60, 60))
    )
    if dice.random() < 0.5:
        faint = tuple(s + dice.uniform(-50, 30) for s in shade[0])
    paint = Paint(
        shade[0],
        shade[1],
        clutter,
        tuple(min(255.0, max(0.0, v * light)) for v in faint),
        _tint(dice, dice.uniform(5, 210) * light, 15),
        grain=dice.random() ** 2 * 18 * level * light,
        outside_grain=dice.uniform(2, 25) * light,
    )
    if dice.random() < 0.5:
        paint.relief = dice.choice((-1, 1)) * dice.uniform(20, 120) * light
        paint.relief_ink = dice.choice((1.0, 1.0, 0.9, dice.uniform(0.3, 0.9)))
    return paint
