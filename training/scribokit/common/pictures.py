"""Picture files: reading and writing them."""
from pathlib import Path

import cv2
import numpy as np


def load_picture(path):
    """A picture as BGR bytes. OSError when the file cannot be read, ValueError when it is no
    picture."""
    # Not by OpenCV, which ends the program at a name that is not UTF-8.
    data = np.frombuffer(Path(path).read_bytes(), np.uint8)
    picture = cv2.imdecode(data, cv2.IMREAD_COLOR) if data.size else None
    if picture is None:
        raise ValueError(f"{path}: not a picture")
    return picture


def write_picture(path, picture):
    """Writes a picture file. OSError when that fails, of which OpenCV says nothing."""
    if not cv2.imwrite(str(path), picture):
        raise OSError(f"{path} cannot be written")
