"""The camera: turns a scene into a picture as a lens, a sensor and a file give it."""
import math

import cv2
import numpy as np

from .conditions import HIGHEST
from .faces import CAP_HEIGHT
from .inputs import HEIGHT, WIDEST
from .marks import INKED
from .scene import CLUTTER, FAINT, OUTSIDE, TEXT

# Pixels that a capital has to have in height, and a character with its gap in width, to be told from others: the
# smallest letters in use are drawn in seven rows, and in three columns and a gap.
_LEAST_HEIGHT, _LEAST_PITCH = 7, 4
# What has to be left of them in the network's input: all lines of a sample that had less, because they stood askew or
# among much else, were misread.
_LEAST_INPUT_HEIGHT, _LEAST_INPUT_PITCH = 8, 7
# How deep the arc of a can is for its curvature, in heights of the picture.
_DEPTH = 0.3


def shoot(scene, box, view, paint, dice, noise):
    """A picture (height×width×3 bytes, BGR) of the scene's box (x0, y0, x1, y1), as `view` and `paint` say; None when
    its characters would be too small for anybody to read, on the highest picture or in the network's input."""
    seen = _project(scene, box, view, dice)
    if seen is None:
        return None
    planes, capitals = seen
    picture = _coloured(planes, paint, dice, noise)
    picture = _lit(picture, view, dice, noise)
    return _recorded(picture, view, capitals, dice, noise)


def _project(scene, box, view, dice):
    """Warps the layers so that the box's outline, turned and seen at an angle, fills the picture, which is taken larger
    when its characters would be too small, and shows more where it would cut them off. The layers and the height of a
    capital in pixels, or None when that makes the picture higher than any or they take too little of it."""
    x0, y0, x1, y1 = box
    source = np.float32([[x0, y0], [x1, y0], [x1, y1], [x0, y1]])
    seen = _seen(source - source.mean(0), view, dice)
    low, high = _frame(seen, view, dice)
    low, high = _with_all_of(_ink_as_seen(scene, source, seen), low, high, view.curvature)
    size = np.maximum(high - low, 8)
    least = max(_LEAST_HEIGHT / CAP_HEIGHT, _LEAST_PITCH / (scene.pitch * view.stretch)) / view.detail
    height = max(view.height, math.ceil(size[1] * least))
    if height > HIGHEST:
        return None
    width = int(max(8, min(round(size[0] / size[1] * height), 12 * height)))
    scale = np.array([width, height]) / size
    if not _is_legible(scene.pitch * view.stretch * scale[0], CAP_HEIGHT * scale[1], width, height):
        return None
    # A pixel's coordinates are those of its middle.
    target = (seen - low) * scale - 0.5
    planes = cv2.merge(scene.planes)
    if scale[1] < 0.62:
        half = 0.5
        planes = cv2.resize(planes, None, fx=half, fy=half, interpolation=cv2.INTER_AREA)
        source = (source + 0.5) * half - 0.5
    matrix = cv2.getPerspectiveTransform(source, np.float32(target))
    planes = cv2.warpPerspective(planes, matrix, (width, height), flags=cv2.INTER_LINEAR, borderMode=cv2.BORDER_REPLICATE)
    return (_curved(planes, view.curvature) if view.curvature else planes), CAP_HEIGHT * scale[1]


def _seen(corners, view, dice):
    """Where the corners of the box, given about its centre, lie for the camera."""
    angle = math.radians(dice.gauss(0, view.tilt))
    shear, slope = dice.gauss(0, view.shear), dice.gauss(0, view.slope)
    turn = np.array([[math.cos(angle), -math.sin(angle)], [math.sin(angle), math.cos(angle)]])
    seen = corners @ (turn @ np.array([[view.stretch, shear], [slope * view.stretch, 1.0]])).T
    for axis in (0, 1):
        keystone = dice.gauss(0, view.keystone)
        seen *= 1 + keystone * seen[:, axis:axis + 1] / max(np.abs(seen[:, axis]).max(), 1)
    return seen


def _frame(seen, view, dice):
    """What the picture shows, from `low` to `high`: the box, its sides misplaced as those of a region set up by hand."""
    low, high = seen.min(0), seen.max(0)
    size = high - low
    for edge in (low, high):
        edge += size * np.array([dice.gauss(0, view.jitter * 0.4), dice.gauss(0, view.jitter)])
    return low, high


def _ink_as_seen(scene, source, seen):
    """Both ends of the characters' ink in each row of the scene, where they lie for the camera."""
    inked = scene.planes[TEXT] >= INKED
    rows = np.flatnonzero(inked.any(1))
    inked = inked[rows]
    first = inked.argmax(1) - 0.5
    last = scene.width - inked[:, ::-1].argmax(1) - 0.5
    ends = np.concatenate([np.stack([columns, rows + side], 1) for columns in (first, last) for side in (-0.5, 0.5)])
    return cv2.perspectiveTransform(np.float32(ends)[None], cv2.getPerspectiveTransform(source, np.float32(seen)))[0]


def _with_all_of(ink, low, high, curvature):
    """The frame from `low` to `high` made larger where it would cut the ink off: a Q without its tail is a 0. The ends of a
    line round a can sink, and need room for that."""
    low, high = np.minimum(low, ink.min(0)), np.maximum(high, ink.max(0))
    left = 1 - _sinking(curvature)
    if curvature > 0:
        high[1] = max(high[1], low[1] + (ink[:, 1].max() - low[1]) / left)
    else:
        low[1] = min(low[1], high[1] - (high[1] - ink[:, 1].min()) / left)
    return low, high


def _is_legible(pitch, capitals, width, height):
    """Whether the network's input shows characters of this pitch and height in a picture of this size large enough."""
    along, up = min(HEIGHT / height, WIDEST / width), HEIGHT / height
    return pitch * along >= _LEAST_INPUT_PITCH and capitals * up >= _LEAST_INPUT_HEIGHT


def _curved(planes, curvature):
    """Seen round a can: columns squeezed to the sides and sunk along an arc."""
    height, width = planes.shape[:2]
    x = np.linspace(-1, 1, width, dtype=np.float32)
    span = _span(curvature)
    across = (np.arcsin(x * math.sin(span)) / span * 0.5 + 0.5) * (width - 1)
    sink = (np.sqrt(1 - (x * math.sin(span)) ** 2) - 1) * curvature * height * _DEPTH
    map_x = np.repeat(across[None], height, 0).astype(np.float32)
    map_y = (np.arange(height, dtype=np.float32)[:, None] + sink[None]).astype(np.float32)
    return cv2.remap(planes, map_x, map_y, cv2.INTER_LINEAR)


def _span(curvature):
    """Half the angle of the can that the picture shows."""
    return math.asin(min(0.95, abs(curvature)))


def _sinking(curvature):
    """How far the ends of a line round a can sink, as a part of the picture's height."""
    return (1 - math.cos(_span(curvature))) * abs(curvature) * _DEPTH


def _coloured(planes, paint, dice, noise):
    """The layers painted one over the other, as floats. Colours are planes until the end, because numpy is slow at pixels
    of three values."""
    cover = [plane.astype(np.float32) for plane in cv2.split(planes)]
    shape = planes.shape[:2]
    picture = np.empty((3,) + shape, np.float32)
    picture[:] = _as_planes(paint.surface)
    if paint.grain:
        picture += noise.field(shape, dice, dice.choice((1, 2, 4, 8))) * paint.grain
    _lay(picture, cover[FAINT], _as_planes(paint.faint))
    if cover[OUTSIDE].any():
        _lay(picture, cover[OUTSIDE], _as_planes(paint.outside) + noise.field(shape, dice, 8) * paint.outside_grain)
    _lay(picture, cover[CLUTTER], _as_planes(paint.clutter))
    text = cover[TEXT]
    if paint.relief:
        blurred = cv2.GaussianBlur(text, (0, 0), max(0.5, shape[0] / 40))
        picture += (np.roll(blurred, paint.relief_shift, (0, 1)) - blurred) * (paint.relief / 255)
        text = text * paint.relief_ink
    _lay(picture, text, _as_planes(paint.ink))
    return cv2.merge(list(picture))


def _as_planes(colour):
    return np.float32(colour)[:, None, None]


def _lay(picture, cover, colour):
    """Paints a colour, or planes of colour, over the picture where `cover` (0 to 255) is."""
    if cover.any():
        picture += (colour - picture) * (cover * np.float32(1 / 255))


def _lit(picture, view, dice, noise):
    height, width = picture.shape[:2]
    if view.uneven:
        lamp = np.array([[1 + dice.gauss(0, view.uneven) for _ in range(3)] for _ in range(2)], np.float32)
        picture *= cv2.resize(lamp, (width, height), interpolation=cv2.INTER_LINEAR)[:, :, None]
    if dice.random() < view.shadow:
        mask = np.zeros((height, width), np.float32)
        x, lean = dice.uniform(0, width), dice.uniform(-2, 2) * height
        side = dice.choice((0, width))
        cv2.fillPoly(mask, [np.int32([[x, 0], [x + lean, height], [side, height], [side, 0]])], 1)
        if dice.random() < 0.5:
            edge = int(dice.uniform(0.1, 0.5) * height)
            mask[:edge] = 1
        picture *= 1 - (cv2.blur(mask, (3, 3)) * dice.uniform(0.2, 0.6))[:, :, None]
    if dice.random() < view.glare:
        mask = np.zeros((height, width), np.float32)
        centre = int(dice.uniform(0, width)), int(dice.uniform(0, height))
        cv2.ellipse(mask, centre, (int(height * dice.uniform(0.3, 1.5)), int(height * dice.uniform(0.1, 0.5))), dice.uniform(0, 180),
                    0, 360, dice.uniform(40, 160), -1)
        picture += cv2.GaussianBlur(mask, (0, 0), max(0.8, height * 0.12))[:, :, None]
    if dice.random() < view.dirt:
        spots = np.clip(noise.field((height, width), dice, dice.choice((4, 8))) - dice.uniform(1.0, 2.0), 0, 1)
        picture += (spots * dice.uniform(0.3, 1))[:, :, None] * (dice.uniform(20, 140) - picture)
    return picture


def _recorded(picture, view, capitals, dice, noise):
    """What the sensor and the file make of it. Blur ends where it would close the gaps of a capital, `capitals` pixels
    high: at a deviation of a tenth and a motion of a fifth of that."""
    height, width = picture.shape[:2]
    if view.blur > 0:
        picture = cv2.GaussianBlur(picture, (0, 0), min(view.blur * height / 32, capitals / 10))
    if view.motion > 1:
        length = max(2, int(round(min(view.motion * height / 32, capitals / 5))))
        kernel = np.zeros((length, length), np.float32)
        if dice.random() < 0.7:
            kernel[length // 2] = 1 / length
        else:
            kernel[:, length // 2] = 1 / length
        picture = cv2.filter2D(picture, -1, kernel, borderType=cv2.BORDER_REPLICATE)
    if view.noise:
        grain = noise.grain((height, width), dice)
        picture = picture + (grain if view.colour_noise else grain[:, :, :1]) * view.noise
    picture = np.clip(picture, 0, 255).astype(np.uint8)
    if view.grey:
        picture = cv2.cvtColor(cv2.cvtColor(picture, cv2.COLOR_BGR2GRAY), cv2.COLOR_GRAY2BGR)
    if view.detail < 1:
        small = cv2.resize(picture, None, fx=view.detail, fy=view.detail, interpolation=cv2.INTER_AREA)
        picture = cv2.resize(small, (width, height), interpolation=dice.choice((cv2.INTER_LINEAR, cv2.INTER_CUBIC)))
    if view.jpeg:
        _, data = cv2.imencode(".jpg", picture, (cv2.IMWRITE_JPEG_QUALITY, view.jpeg))
        picture = cv2.imdecode(data, cv2.IMREAD_COLOR)
    return picture
