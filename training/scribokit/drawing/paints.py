"""How containers, counters and displays are painted. Colours are BGR."""
from .conditions import Paint

# Steel of containers: blue, green, red, brown, orange, grey, white.
_CONTAINERS = (
    (120, 60, 20),
    (150, 90, 30),
    (80, 90, 30),
    (60, 110, 50),
    (40, 40, 150),
    (50, 60, 110),
    (40, 50, 80),
    (30, 90, 200),
    (130, 130, 125),
    (100, 95, 90),
    (210, 215, 215),
    (190, 200, 200),
)
# Wheels and their ink, from the plain black to the yellowed white ones.
_WHEELS = (
    ((25, 25, 25), (235, 235, 235)),
    ((40, 38, 36), (220, 225, 225)),
    ((20, 20, 20), (200, 215, 220)),
    ((225, 230, 230), (25, 25, 25)),
    ((190, 205, 210), (35, 35, 40)),
    ((60, 60, 60), (230, 230, 230)),
)
_TAIL_REDS = ((35, 30, 170), (40, 40, 200), (60, 60, 140), (30, 50, 190))
_HOUSINGS = (
    (30, 30, 30),
    (70, 70, 70),
    (160, 160, 160),
    (220, 220, 220),
    (90, 130, 150),
    (60, 40, 20),
)
# Liquid crystals: the glass, and the segments on it.
_CRYSTALS = (
    ((130, 160, 140), (45, 55, 45)),
    ((150, 165, 155), (50, 50, 50)),
    ((110, 150, 120), (35, 50, 40)),
    ((60, 190, 130), (20, 50, 30)),
    ((40, 160, 230), (20, 40, 60)),
    ((170, 90, 25), (245, 235, 225)),
    ((190, 110, 40), (250, 245, 235)),
    ((200, 170, 120), (60, 40, 30)),
    ((190, 190, 185), (40, 40, 40)),
    ((60, 50, 40), (220, 215, 200)),
)
# Light-emitting segments: their glow on a dark front.
_DIODES = (
    (50, 40, 255),
    (60, 60, 250),
    (90, 120, 255),
    (70, 240, 90),
    (110, 250, 160),
    (255, 150, 60),
    (50, 170, 255),
    (245, 245, 245),
)


def _varied(colour, dice, spread=12, light=1.0):
    return tuple(min(255.0, max(0.0, (value + dice.gauss(0, spread)) * light)) for value in colour)


def _mixed(one, other, part):
    return tuple(a + (b - a) * part for a, b in zip(one, other))


def draw_container_paint(dice, level):
    light = dice.uniform(1 - 0.5 * level, 1.1)
    surface = _varied(dice.choice(_CONTAINERS), dice, 14, light)
    brightness = sum(surface) / 3
    if brightness > 150:
        ink = _varied(dice.choice(((30, 30, 30), (110, 50, 20), (40, 40, 130))), dice, 10, light)
    else:
        ink = _varied((225, 228, 228), dice, 12, light)
    # Old paint has faded towards the steel.
    ink = _mixed(ink, surface, dice.random() ** 2 * 0.5 * level)
    faint = _mixed(
        surface, dice.choice(((30, 50, 90), (20, 20, 20), (180, 180, 180))), dice.uniform(0.1, 0.5)
    )
    return Paint(
        surface,
        ink,
        ink if dice.random() < 0.85 else _varied((128, 128, 128), dice, 60),
        faint,
        _varied((60, 60, 60), dice, 30),
        grain=dice.random() ** 2 * 16 * (0.3 + level),
    )


def draw_counter_paint(dice, level):
    light = dice.uniform(1 - 0.55 * level, 1.1)
    surface, ink = (_varied(colour, dice, 8, light) for colour in dice.choice(_WHEELS))
    dark = sum(surface) < sum(ink)
    if dice.random() < 0.7:
        tail, tail_ink = dice.choice(_TAIL_REDS), (225, 230, 235)
    elif dark:
        tail, tail_ink = (225, 228, 228), dice.choice(((25, 25, 25), (40, 35, 180)))
    else:
        tail, tail_ink = (30, 30, 30), (230, 230, 230)
    housing = _varied(dice.choice(_HOUSINGS), dice, 15, light)
    clutter = dice.choice((ink, ink, housing, _varied((128, 128, 128), dice, 60, light)))
    return Paint(
        surface,
        ink,
        clutter,
        _varied(tail, dice, 10, light),
        housing,
        grain=dice.random() ** 2 * 8 * (0.3 + level),
        outside_grain=dice.uniform(1, 14),
        ink_on_faint=_varied(tail_ink, dice, 8, light),
    )


def draw_display_paint(dice, level):
    if dice.random() < 0.55:
        glass, ink = (_varied(colour, dice, 12) for colour in dice.choice(_CRYSTALS))
        light = dice.uniform(1 - 0.45 * level, 1.15)
        # What the angle of sight leaves of the contrast.
        left = dice.uniform(1 - 0.72 * level, 1.0)
        ink, glass = _mixed(glass, ink, left), _varied(glass, dice, 0, light)
        ink, glow = _varied(ink, dice, 0, light), 0.0
    else:
        glass = _varied((22, 20, 20), dice, 10, dice.uniform(0.5, 2.5))
        ink = _varied(dice.choice(_DIODES), dice, 15)
        # The camera is blinded by bright segments, which turn white.
        ink = _mixed(ink, (255, 255, 255), dice.random() ** 2 * 0.9)
        ink = _mixed(glass, ink, dice.uniform(1 - 0.6 * level, 1.0))
        glow = dice.choice((0.0, dice.uniform(0.1, 0.6)))
    return Paint(
        glass,
        ink,
        dice.choice((ink, _varied((128, 128, 128), dice, 60))),
        _mixed(glass, ink, dice.uniform(0.03, 0.25)),
        _varied(dice.choice(_HOUSINGS), dice, 20),
        grain=dice.random() ** 2 * 8 * (0.3 + level),
        glow=glow,
    )
