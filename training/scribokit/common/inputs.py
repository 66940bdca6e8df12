"""What the network gets of a picture, and its sizes: every picture is made HEIGHT pixels high, and
NARROWEST to WIDEST pixels wide."""
import cv2
import numpy as np

HEIGHT, NARROWEST, WIDEST = 32, 32, 320


def stretched(width, below):
    """The columns that a network's convolutions see of a picture `width` wide: one narrower than
    `below` is stretched half of the way to that. Narrow pictures mostly hold narrow characters."""
    return max(width, (width + below) // 2)


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
