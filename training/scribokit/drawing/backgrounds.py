"""What crosses the characters from behind or lies over them without hiding any: bands of glare,
seams and folds of film, printed edges, ribs of sheet metal."""
import math

import cv2
import numpy as np

from .faces import CAP_HEIGHT
from .scene import FAINT


def crossed(scene, dice):
    """One such thing across the line."""
    dice.choice((printed_edge, printed_edge, glare_band, seam, folds, ribs))(scene, dice)


def printed_edge(scene, dice):
    """The edge of a printed field, straight or round, with the line across it."""
    x = dice.uniform(scene.left, scene.right)
    shade = np.zeros_like(scene.planes[FAINT])
    if dice.random() < 0.7:
        lean = dice.choice((0, dice.uniform(-60, 60)))
        side = dice.choice((0, scene.width))
        points = [(x + lean, 0), (x - lean, scene.height), (side, scene.height), (side, 0)]
        if dice.random() < 0.4:
            y = dice.uniform(scene.top, scene.bottom)
            points = [(0, y + lean / 4), (scene.width, y - lean / 4)] + [
                (scene.width, scene.height),
                (0, scene.height),
            ]
        cv2.fillPoly(shade, [np.int32(points)], 255, cv2.LINE_AA)
    else:
        centre = int(x), int(dice.uniform(scene.top - 40, scene.bottom + 40))
        thickness = dice.choice((-1, dice.randint(4, 20)))
        cv2.circle(shade, centre, dice.randint(20, 120), 255, thickness, cv2.LINE_AA)
    scene.stamp(FAINT, shade, 0, 0)


def _across(scene, dice):
    """How far each pixel of the scene lies from a line that crosses the characters, signed."""
    angle = dice.uniform(-0.9, 0.9) if dice.random() < 0.7 else dice.uniform(1.2, 1.9)
    x, y = np.meshgrid(
        np.arange(scene.width, dtype=np.float32), np.arange(scene.height, dtype=np.float32)
    )
    centre = dice.uniform(scene.left, scene.right), dice.uniform(scene.top, scene.bottom)
    return (x - centre[0]) * math.cos(angle) + (y - centre[1]) * math.sin(angle)


def glare_band(scene, dice):
    """A band of light, as foil and film throw it back."""
    width = CAP_HEIGHT * dice.uniform(0.1, 1.0)
    band = np.exp(-((_across(scene, dice) / width) ** 2) / 2)
    scene.shaded()[:] *= 1 + band * dice.uniform(0.25, 0.9)


def seam(scene, dice):
    """Where film is joined: a thin bright and dark line, and a step of brightness."""
    across = _across(scene, dice)
    shade = scene.shaded()
    shade *= np.where(across > 0, 1 + dice.uniform(-0.2, 0.2), 1)
    width = dice.uniform(0.8, 3)
    for place, strength in ((-width, dice.uniform(0.1, 0.5)), (width, -dice.uniform(0.1, 0.5))):
        shade *= 1 + strength * np.exp(-(((across - place) / width) ** 2))


def folds(scene, dice):
    """Waves of film or of a bag."""
    across = _across(scene, dice)
    period = CAP_HEIGHT * dice.uniform(0.6, 3)
    waves = np.sin(across / period * 2 * math.pi + np.sin(across / period) * dice.uniform(0, 2))
    scene.shaded()[:] *= 1 + waves * dice.uniform(0.08, 0.3)


def ribs(scene, dice, slope=None):
    """Upright ribs of sheet metal: flats that face the light less and more, with slopes between."""
    period = CAP_HEIGHT * dice.uniform(1.2, 4.5)
    x = (np.arange(scene.width) / period + dice.random()) % 1
    slope = dice.uniform(0.06, 0.2)
    profile = np.interp(
        x,
        (0, slope, 0.5, 0.5 + slope, 1),
        (1, 1 + dice.uniform(0.1, 0.4), 1, 1 - dice.uniform(0.1, 0.45), 1),
    )
    flat = 1 - dice.uniform(0, 0.2)
    profile = profile * np.where((x > slope) & (x < 0.5), flat, 1)
    scene.shaded()[:] *= cv2.blur(profile[None].astype(np.float32), (3, 1))
