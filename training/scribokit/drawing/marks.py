"""What a marking process makes of clean letters: each function takes a mask (bytes, 255 is ink) and
gives a mask."""
import math
from functools import partial

import cv2
import numpy as np

# From this coverage on a pixel counts as inked.
INKED = 64
_CROSS = cv2.getStructuringElement(cv2.MORPH_CROSS, (3, 3))


def heavier(mask, dice):
    return cv2.dilate(mask, _CROSS, iterations=dice.choice((1, 1, 2)))


def lighter(mask, dice):
    thin = cv2.erode(mask, _CROSS)
    return thin if thin.any() else mask


def dot_matrix(mask, dice):
    """Ink-jet and needle printers of many rows: the letters of a font sampled to 13 rows of dots.
    Printers of fewer rows have letters made for them (DotFace), because those of a font cannot be
    told apart in so few dots.
    """
    pitch = len(_CROSS)
    size = max(1, mask.shape[1] // pitch), max(1, mask.shape[0] // pitch)
    _, dots = cv2.threshold(
        cv2.resize(mask, size, interpolation=cv2.INTER_AREA),
        dice.randint(70, 110),
        255,
        cv2.THRESH_BINARY,
    )
    drops = np.kron(dots, _CROSS)
    result = np.zeros_like(mask)
    result[: drops.shape[0], : drops.shape[1]] = drops[: mask.shape[0], : mask.shape[1]]
    return result


def slanted(mask, dice):
    """Leaning to either side, as rows of dots on a moving product may, in three lines of ten; wider
    by what it leans."""
    if dice.random() >= 0.3:
        return mask
    height, width = mask.shape
    shift = dice.uniform(-0.25, 0.25)
    room = math.ceil(abs(shift) * height / 2)
    matrix = np.float32([[1, shift, room - shift * height / 2], [0, 1, 0]])
    return cv2.warpAffine(mask, matrix, (width + 2 * room, height))


def wavy(mask, dice):
    """A baseline that goes up and down a little, in three lines of ten, as on a product that
    shakes."""
    if dice.random() >= 0.3:
        return mask
    height, width = mask.shape
    columns = np.arange(width, dtype=np.float32)
    period, phase = dice.uniform(60, 400), dice.uniform(0, 2 * math.pi)
    shift = dice.uniform(0.5, 2.5) * np.sin(columns / period * 2 * math.pi + phase)
    map_y = np.arange(height, dtype=np.float32)[:, None] + shift[None].astype(np.float32)
    return cv2.remap(mask, np.repeat(columns[None], height, 0), map_y, cv2.INTER_LINEAR)


def missing_columns(mask, dice):
    """Thermal transfer with dead heater elements: thin lines along the print without ink."""
    mask = mask.copy()
    for _ in range(dice.randint(1, 3)):
        row = dice.randrange(mask.shape[0])
        mask[row : row + dice.randint(1, 2)] = 0
    if dice.random() < 0.5:
        column = dice.randrange(mask.shape[1])
        mask[:, column : column + dice.randint(1, 3)] = 0
    return mask


def scan_lines(mask, dice):
    """A laser that writes line by line."""
    mask = mask.copy()
    mask[:: dice.randint(3, 4)] //= dice.randint(2, 6)
    return mask


def worn(mask, dice, noise):
    """Ink or paint that has flaked off in spots."""
    return np.where(
        noise.field(mask.shape, dice, dice.choice((2, 4, 8))) > dice.uniform(0.9, 1.6),
        mask // dice.choice((3, 8)),
        mask,
    )


def outlined(mask, dice):
    return cv2.subtract(mask, cv2.erode(mask, _CROSS, iterations=2))


def stencil(glyph_mask, dice):
    """The bridges of a stencil: an upright gap through the middle of a letter."""
    mask = glyph_mask.copy()
    middle = mask.shape[1] // 2
    mask[:, middle - 1 : middle + 2] = 0
    return mask if np.count_nonzero(mask) > 0.55 * np.count_nonzero(glyph_mask) else glyph_mask


def marked(mask, dice, noise):
    """The line as one of the processes marks it, or as it is when the process would lose a whole
    mark, a point or a dash, or fill the inside of a letter: the label names it, so the picture has
    to show it. Dots may lean besides.
    """
    processes = (
        None,
        heavier,
        dot_matrix,
        missing_columns,
        partial(worn, noise=noise),
        scan_lines,
        lighter,
        outlined,
    )
    process = dice.choices(processes, (52, 10, 8, 8, 8, 6, 6, 2))[0]
    if not process:
        return mask
    result = process(mask, dice)
    if not (shows_all(mask, result) and shows_all(255 - mask, 255 - result)):
        return mask
    return slanted(result, dice) if process is dot_matrix else result


def shows_all(before, after):
    """Whether a fifth or more of every connected mark is still inked."""
    count, labels = cv2.connectedComponents((before > 127).view(np.uint8))
    areas = np.bincount(labels.ravel(), minlength=count)
    kept = np.bincount(labels[after >= INKED], minlength=count)
    return bool((kept[1:] >= 0.2 * areas[1:]).all())
