"""What the network gets of a picture, and its sizes: every picture is made HEIGHT pixels high, and NARROWEST to WIDEST
pixels wide."""
import cv2
import numpy as np

HEIGHT, NARROWEST, WIDEST = 32, 32, 320


def stretched(width, below):
    """The columns that a network's convolutions see of a picture `width` wide: one narrower than `below` is stretched half
    of the way to that. Narrow pictures mostly hold narrow characters."""
    return max(width, (width + below) // 2)


def network_input(picture, width=None):
    """The picture as the detector gives it to the network: stretched to HEIGHT and to a width that keeps its proportions
    as far as the limits let it, bilinear. Bytes; `width` overrides the width."""
    rows, columns = picture.shape[:2]
    width = width or min(max(int(columns / rows * HEIGHT), NARROWEST), WIDEST)
    return cv2.resize(np.ascontiguousarray(picture), (width, HEIGHT), interpolation=cv2.INTER_LINEAR)
