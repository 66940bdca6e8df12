"""Variations of pictures: stretched sideways, or cropped tighter or wider around their lines."""
import cv2
import numpy as np


def sideways(picture, factor):
    """A picture stretched to `factor` times its width."""
    height, width = picture.shape[:2]
    size = max(1, round(width * factor)), height
    way = cv2.INTER_AREA if factor < 1 else cv2.INTER_CUBIC
    return cv2.resize(picture, size, interpolation=way)


def with_margin(picture, box, margin):
    """The part of a picture around a box (left, top, right, bottom), on each side `margin` heights
    of the box away from it, or that much inside it when negative; not beyond the picture."""
    left, top, right, bottom = box
    room = margin * (bottom - top)
    height, width = picture.shape[:2]
    x0, x1 = _inside(left - room, right + room, width)
    y0, y1 = _inside(top - room, bottom + room, height)
    return np.ascontiguousarray(picture[y0:y1, x0:x1])


def _inside(first, last, size):
    """A range as whole numbers within 0 and `size`, of one pixel at least."""
    first = min(max(0, round(first)), size - 1)
    return first, min(max(first + 1, round(last)), size)
