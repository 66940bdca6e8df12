"""Whether a picture can be read: how large its characters are, and what light, lens and faint ink
leave of every letter, point and dash."""
from functools import reduce

import cv2
import numpy as np

from ..common.inputs import HEIGHT, WIDEST

# Pixels that a capital has to have in height, and a character with its gap in width, to be told
# from others: the smallest letters in use are drawn in seven rows, and N needs four columns, so
# that they do with a gap.
LEAST_HEIGHT, LEAST_PITCH = 7, 5
# What has to be left of them in the network's input: all lines of a sample that had less, because
# they stood askew or among much else, were misread.
_LEAST_INPUT_HEIGHT, _LEAST_INPUT_PITCH = 8, 7
# Grey levels by which ink has to differ from what the picture would show without it, besides noise,
# and the part of a mark that has to: chosen by eye, so that nearly all of what is rejected has a
# mark that cannot be seen.
_LEAST_CONTRAST, _LEAST_PART = 12, 0.75
# Every second pixel along and across says enough of a mark, and leaves out specks of flaked ink.
_STEP = 2


def is_large_enough(pitch, capitals, width, height):
    """Whether the network's input shows characters of this pitch and height (pixels) in a picture
    of this size large enough."""
    along, up = min(HEIGHT / height, WIDEST / width), HEIGHT / height
    return pitch * along >= _LEAST_INPUT_PITCH and capitals * up >= _LEAST_INPUT_HEIGHT


def marks_of(ink):
    """The connected marks of a layer: pixels of theirs (x, y), count×2, and the mark that each
    belongs to, from 0 on."""
    labels = cv2.connectedComponents((ink > 127).view(np.uint8))[1][::_STEP, ::_STEP]
    rows, columns = np.nonzero(labels)
    return _STEP * np.stack([columns, rows], 1).astype(np.float32), labels[rows, columns] - 1


def all_stand_out(places, owners, picture, bare, capitals, noise):
    """Whether of each mark enough pixels, which lie at these places (x, y) of the picture, differ
    from `bare`, the picture as it were without the line, or have one beside them that does, as in a
    relief, which shows its edges. Capitals are so many pixels high; noise is the standard deviation
    of what the camera adds. Pictures are height×width×3 floats, and white from 255 on."""
    contrast = reduce(
        cv2.max, cv2.split(cv2.absdiff(*(np.clip(image, 0, 255) for image in (picture, bare))))
    )
    reach = 2 * max(1, round(capitals / 16)) + 1
    contrast = cv2.dilate(contrast, np.ones((reach, reach), np.uint8))
    height, width = contrast.shape
    columns, rows = np.rint(places).astype(np.intp).T
    seen = contrast[rows.clip(0, height - 1), columns.clip(0, width - 1)] >= _LEAST_CONTRAST + noise
    # Where the picture's side cuts a mark, that part of it is not seen.
    seen &= (rows >= -1) & (rows <= height) & (columns >= -1) & (columns <= width)
    return bool((np.bincount(owners, seen) >= _LEAST_PART * np.bincount(owners)).all())
