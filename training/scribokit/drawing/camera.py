"""The camera: turns a scene into a picture as a lens, a sensor and a file give it."""
import math
from collections import namedtuple

import cv2
import numpy as np

from .conditions import HIGHEST
from .faces import CAP_HEIGHT
from .legibility import LEAST_HEIGHT, LEAST_PITCH, all_stand_out, is_large_enough, marks_of
from .marks import INKED
from .noise import WIDEST_PICTURE
from .scene import CLUTTER, FAINT, OUTSIDE, TEXT

# How deep the arc of a can is for its curvature, in heights of the picture.
_DEPTH = 0.3

# planes: the layers as the picture shows them, height×width×4 bytes; shade: the scene's factors of
# brightness there, height×width floats, or None; capitals: the height of one in pixels; places and
# owners: the pixels (x, y) of the line's marks in the picture and the mark that each belongs to.
_Projection = namedtuple("_Projection", "planes shade capitals places owners")
# What light makes of a colour, height×width×3 floats each: colour × gain + added.
_Light = namedtuple("_Light", "gain added")


def shoot(scene, box, view, paint, dice, noise):
    """A picture (height×width×3 bytes, BGR) of the scene's box (x0, y0, x1, y1), as `view` and
    `paint` say; None when nobody could read it: its characters would be too small, on the highest
    picture or in the network's input, or one of its marks would hardly stand out."""
    shot = _shoot(scene, box, view, paint, dice, noise, 0.0)
    return shot and shot[0]


def shoot_around(scene, box, view, paint, dice, noise, room):
    """The same with `room` cap heights more on all sides, at the same scale: (picture, the line's
    own box in it: left, top, right and bottom in whole pixels); None as for shoot()."""
    return _shoot(scene, box, view, paint, dice, noise, room)


def _shoot(scene, box, view, paint, dice, noise, room):
    seen = _project(scene, box, view, dice, room)
    if seen is None:
        return None
    painted = _coloured(seen.planes, paint, dice, noise)
    light = _light(seen.planes.shape[:2], view, dice, noise)
    if seen.shade is not None:
        light = light._replace(gain=light.gain * seen.shade[:, :, None])
    blurred = _lens(view, seen.capitals, seen.planes.shape[0], dice)
    picture, bare = (blurred(picture * light.gain + light.added) for picture in painted)
    unsure = view.noise + 0.6 * paint.rough
    if not all_stand_out(seen.places, seen.owners, picture, bare, seen.capitals, unsure):
        return None
    return _recorded(picture, view, dice, noise), _bounds(seen.places, picture.shape[:2])


def _bounds(places, size):
    """The box around places (x, y) in a picture of this size (height, width)."""
    most = size[1], size[0]
    low, high = np.floor(places.min(0)), np.ceil(places.max(0)) + 1
    return tuple(int(value) for value in (*np.clip(low, 0, most), *np.clip(high, 0, most)))


def _project(scene, box, view, dice, room):
    """Warps the layers so that the box's outline, turned and seen at an angle, fills the picture,
    which is taken larger when its characters would be too small, and shows more where it would cut
    them off. None when that makes the picture higher than any or the characters take too little of
    it."""
    x0, y0, x1, y1 = box
    source = np.float32([[x0, y0], [x1, y0], [x1, y1], [x0, y1]])
    seen = _seen(source - source.mean(0), view, dice)
    low, high = _frame(seen, view, dice)
    ink = _ink_as_seen(scene, source, seen)
    low, high = _with_all_of(ink, low, high, view.curvature, view.cut * CAP_HEIGHT)
    size = np.maximum(high - low, 8)
    least = max(LEAST_HEIGHT / CAP_HEIGHT, LEAST_PITCH / (scene.pitch * view.stretch)) / view.detail
    height = max(view.height, math.ceil(size[1] * least))
    if height > HIGHEST:
        return None
    width = int(max(8, min(round(size[0] / size[1] * height), 12 * height)))
    scale = np.array([width, height]) / size
    if not is_large_enough(
        scene.pitch * view.stretch * scale[0], CAP_HEIGHT * scale[1], width, height
    ):
        return None
    if room:
        low = low - room * CAP_HEIGHT
        width, height = (int(v) for v in (width, height) + 2 * room * CAP_HEIGHT * scale)
        if max(width, height) > WIDEST_PICTURE:
            return None
    # A pixel's coordinates are those of its middle.
    target = (seen - low) * scale - 0.5
    places, owners = marks_of(scene.planes[TEXT])
    places = cv2.perspectiveTransform(
        places[None], cv2.getPerspectiveTransform(source, np.float32(target))
    )[0]
    planes, shade = cv2.merge(scene.planes), scene.shade
    if scale[1] < 0.62:
        half = 0.5
        planes, shade = (
            part
            if part is None
            else cv2.resize(part, None, fx=half, fy=half, interpolation=cv2.INTER_AREA)
            for part in (planes, shade)
        )
        source = (source + 0.5) * half - 0.5
    matrix = cv2.getPerspectiveTransform(source, np.float32(target))
    planes, shade = (
        part
        if part is None
        else cv2.warpPerspective(
            part, matrix, (width, height), flags=cv2.INTER_LINEAR, borderMode=cv2.BORDER_REPLICATE
        )
        for part in (planes, shade)
    )
    if view.curvature:
        map_x, map_y, places = _curved(planes.shape[:2], places, view.curvature)
        planes, shade = (
            part if part is None else cv2.remap(part, map_x, map_y, cv2.INTER_LINEAR)
            for part in (planes, shade)
        )
    return _Projection(planes, shade, CAP_HEIGHT * scale[1], places, owners)


def _seen(corners, view, dice):
    """Where the corners of the box, given about its centre, lie for the camera."""
    angle = math.radians(dice.gauss(0, view.tilt))
    shear, slope = dice.gauss(0, view.shear), dice.gauss(0, view.slope)
    turn = np.array([[math.cos(angle), -math.sin(angle)], [math.sin(angle), math.cos(angle)]])
    seen = corners @ (turn @ np.array([[view.stretch, shear], [slope * view.stretch, 1.0]])).T
    for axis in (0, 1):
        keystone = dice.gauss(0, view.keystone)
        seen *= 1 + keystone * seen[:, axis : axis + 1] / max(np.abs(seen[:, axis]).max(), 1)
    return seen


def _frame(seen, view, dice):
    """What the picture shows, from `low` to `high`: the box, its sides misplaced as those of a
    region set up by hand."""
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
    ends = np.concatenate(
        [np.stack([columns, rows + side], 1) for columns in (first, last) for side in (-0.5, 0.5)]
    )
    return cv2.perspectiveTransform(
        np.float32(ends)[None], cv2.getPerspectiveTransform(source, np.float32(seen))
    )[0]


def _with_all_of(ink, low, high, curvature, cut):
    """The frame from `low` to `high` made larger where it would cut more than `cut` off the ink: a
    Q without its tail is a 0. The ends of a line round a can sink, and need room for that."""
    first, last = ink.min(0) + cut, ink.max(0) - cut
    low, high = np.minimum(low, first), np.maximum(high, last)
    left = 1 - _sinking(curvature)
    if curvature > 0:
        high[1] = max(high[1], low[1] + (last[1] - low[1]) / left)
    else:
        low[1] = min(low[1], high[1] - (high[1] - first[1]) / left)
    return low, high


def _curved(size, places, curvature):
    """Where each pixel of a picture of this size (height, width) comes from when it is seen round a
    can, columns squeezed to the sides and sunk along an arc: the maps of cv2.remap(), and where
    these places (x, y) come to lie."""
    height, width = size
    x = np.linspace(-1, 1, width, dtype=np.float32)
    span = _span(curvature)
    across = (np.arcsin(x * math.sin(span)) / span * 0.5 + 0.5) * (width - 1)
    sink = (np.sqrt(1 - (x * math.sin(span)) ** 2) - 1) * curvature * height * _DEPTH
    map_x = np.repeat(across[None], height, 0).astype(np.float32)
    map_y = (np.arange(height, dtype=np.float32)[:, None] + sink[None]).astype(np.float32)
    columns = np.interp(places[:, 0], across, np.arange(width))
    rows = places[:, 1] - np.interp(columns, np.arange(width), sink)
    return map_x, map_y, np.stack([columns, rows], 1)


def _span(curvature):
    """Half the angle of the can that the picture shows."""
    return math.asin(min(0.95, abs(curvature)))


def _sinking(curvature):
    """How far the ends of a line round a can sink, as a part of the picture's height."""
    return (1 - math.cos(_span(curvature))) * abs(curvature) * _DEPTH


def _coloured(planes, paint, dice, noise):
    """The layers painted one over the other, as floats, with the characters and without. Colours
    are planes until the end, because numpy is slow at pixels of three values."""
    cover = [plane.astype(np.float32) for plane in cv2.split(planes)]
    shape = planes.shape[:2]
    picture = np.empty((3,) + shape, np.float32)
    picture[:] = _as_planes(paint.surface)
    if paint.grain:
        picture += noise.field(shape, dice, dice.choice((1, 2, 4, 8))) * paint.grain
    if paint.rough:
        field = noise.field(shape, dice, dice.choice((1, 2, 4)))
        picture += (np.roll(field, 1, (0, 1)) - field) * paint.rough
    _lay(picture, cover[FAINT], _as_planes(paint.faint))
    if cover[OUTSIDE].any():
        _lay(
            picture,
            cover[OUTSIDE],
            _as_planes(paint.outside) + noise.field(shape, dice, 8) * paint.outside_grain,
        )
    _lay(picture, cover[CLUTTER], _ink(paint.clutter, paint, cover[FAINT]))
    bare = cv2.merge(list(picture))
    text = cover[TEXT]
    if paint.relief:
        blurred = cv2.GaussianBlur(text, (0, 0), max(0.5, shape[0] / 40))
        picture += (np.roll(blurred, paint.relief_shift, (0, 1)) - blurred) * (paint.relief / 255)
        text = text * paint.relief_ink
    if paint.glow:
        around = cv2.GaussianBlur(text, (0, 0), max(0.8, shape[0] / 16))
        text = np.maximum(text, around * paint.glow)
    _lay(picture, text, _ink(paint.ink, paint, cover[FAINT]))
    return cv2.merge(list(picture)), bare


def _ink(colour, paint, faint):
    """A colour of the ink as planes: another one where the layer FAINT lies, if it has one."""
    planes = _as_planes(colour)
    if paint.ink_on_faint is None:
        return planes
    return planes + (_as_planes(paint.ink_on_faint) - planes) * (faint * np.float32(1 / 255))


def _as_planes(colour):
    return np.float32(colour)[:, None, None]


def _lay(picture, cover, colour):
    """Paints a colour, or planes of colour, over the picture where `cover` (0 to 255) is."""
    if cover.any():
        picture += (colour - picture) * (cover * np.float32(1 / 255))


def _light(shape, view, dice, noise):
    """What lamps, shadows, reflections and dirt make of a picture (height, width) before the
    camera."""
    height, width = shape
    gain, added = np.ones(shape + (3,), np.float32), np.zeros(shape + (3,), np.float32)
    if view.uneven:
        lamp = np.array(
            [[1 + dice.gauss(0, view.uneven) for _ in range(3)] for _ in range(2)], np.float32
        )
        gain *= cv2.resize(lamp, (width, height), interpolation=cv2.INTER_LINEAR)[:, :, None]
    if dice.random() < view.shadow:
        mask = np.zeros(shape, np.float32)
        x, lean = dice.uniform(0, width), dice.uniform(-2, 2) * height
        side = dice.choice((0, width))
        cv2.fillPoly(mask, [np.int32([[x, 0], [x + lean, height], [side, height], [side, 0]])], 1)
        if dice.random() < 0.5:
            edge = int(dice.uniform(0.1, 0.5) * height)
            mask[:edge] = 1
        gain *= 1 - (cv2.blur(mask, (3, 3)) * dice.uniform(0.2, 0.6))[:, :, None]
    if dice.random() < view.glare:
        mask = np.zeros(shape, np.float32)
        centre = int(dice.uniform(0, width)), int(dice.uniform(0, height))
        cv2.ellipse(
            mask,
            centre,
            (int(height * dice.uniform(0.3, 1.5)), int(height * dice.uniform(0.1, 0.5))),
            dice.uniform(0, 180),
            0,
            360,
            dice.uniform(40, 160),
            -1,
        )
        added += cv2.GaussianBlur(mask, (0, 0), max(0.8, height * 0.12))[:, :, None]
    if dice.random() < view.dirt:
        spots = np.clip(
            noise.field(shape, dice, dice.choice((4, 8))) - dice.uniform(1.0, 2.0), 0, 1
        )
        spots = (spots * dice.uniform(0.3, 1))[:, :, None]
        gain *= 1 - spots
        added += spots * (dice.uniform(20, 140) - added)
    return _Light(gain, added)


def _lens(view, capitals, height, dice):
    """The function that blurs a picture of this height as focus and motion do. Blur ends where it
    would close the gaps of a capital, `capitals` pixels high: at a deviation of a tenth and a
    motion of a fifth of that."""
    deviation = min(view.blur * height / 32, capitals / 10)
    streak = (
        _streak(max(2, int(round(min(view.motion * height / 32, capitals / 5)))), dice)
        if view.motion > 1
        else None
    )

    def blurred(picture):
        if deviation > 0:
            picture = cv2.GaussianBlur(picture, (0, 0), deviation)
        return (
            picture
            if streak is None
            else cv2.filter2D(picture, -1, streak, borderType=cv2.BORDER_REPLICATE)
        )

    return blurred


def _streak(length, dice):
    """What a motion along or across the line makes of a point."""
    kernel = np.zeros((length, length), np.float32)
    if dice.random() < 0.7:
        kernel[length // 2] = 1 / length
    else:
        kernel[:, length // 2] = 1 / length
    return kernel


def _recorded(picture, view, dice, noise):
    """What the sensor and the file make of it."""
    height, width = picture.shape[:2]
    if view.noise:
        grain = noise.grain((height, width), dice)
        picture = picture + (grain if view.colour_noise else grain[:, :, :1]) * view.noise
    picture = np.clip(picture, 0, 255).astype(np.uint8)
    if view.grey:
        picture = cv2.cvtColor(cv2.cvtColor(picture, cv2.COLOR_BGR2GRAY), cv2.COLOR_GRAY2BGR)
    if view.detail < 1:
        small = cv2.resize(
            picture, None, fx=view.detail, fy=view.detail, interpolation=cv2.INTER_AREA
        )
        picture = cv2.resize(
            small, (width, height), interpolation=dice.choice((cv2.INTER_LINEAR, cv2.INTER_CUBIC))
        )
    if view.jpeg:
        _, data = cv2.imencode(".jpg", picture, (cv2.IMWRITE_JPEG_QUALITY, view.jpeg))
        picture = cv2.imdecode(data, cv2.IMREAD_COLOR)
    return picture
