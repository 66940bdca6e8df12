"""What the network gets of a picture, and its sizes: every picture is made HEIGHT pixels high, and
NARROWEST to WIDEST pixels wide."""
from collections import namedtuple

import cv2
import numpy as np

HEIGHT, NARROWEST, WIDEST = 32, 32, 320


class Stretch(namedtuple("Stretch", "below more", defaults=(0, 0))):
    """How a network stretches its pictures before it reads them: by `more` columns, and one that is
    narrower than `below` at least half of the way to that. Narrow pictures mostly hold narrow
    characters."""

    def columns(self, width):
        """The columns that the network's convolutions see of a picture `width` wide."""
        return max(width + self.more, (width + self.below) // 2)


def network_input(picture, width=None):
    """The picture as the detector gives it to the network: stretched to HEIGHT and to a width that
    keeps its proportions as far as the limits let it, bilinear. Bytes, 3×HEIGHT×width; `width`
    overrides the width. The planes are red, green and blue, as a line's pictures are handed over;
    the kit's own pictures are blue, green, red, as OpenCV reads them.
    """
    rows, columns = picture.shape[:2]
    width = width or min(max(int(columns / rows * HEIGHT), NARROWEST), WIDEST)
    small = cv2.resize(
        np.ascontiguousarray(picture), (width, HEIGHT), interpolation=cv2.INTER_LINEAR
    )
    return np.ascontiguousarray(small[:, :, ::-1].transpose(2, 0, 1))


def as_picture(planes):
    """A network's input as a picture again."""
    return np.ascontiguousarray(planes[::-1].transpose(1, 2, 0))
