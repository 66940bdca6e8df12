"""Batches for training: pictures of one width each, collected while others of that width are drawn.
"""
import numpy as np

from ..common.ctc import steps_needed
from ..common.inputs import HEIGHT, NARROWEST, WIDEST, Stretch, network_input

WIDTH_STEP = 16


class Batches:
    """next() gives (pictures count×3×32×width bytes, labels). Widths are rounded to WIDTH_STEP,
    which stretches a picture by a few per cent; pictures wider than `widest` are drawn again, so
    that training can begin narrow. So are those whose label needs more steps than a network has
    that stretches its pictures so.
    """

    def __init__(self, maker, columns, widest=WIDEST, stretch=Stretch()):
        self._maker = maker
        self._columns = columns
        self._widest = widest
        self._stretch = stretch
        self._waiting = {}

    def next(self):
        while True:
            picture, label = self._maker.draw()
            rows, columns = picture.shape[:2]
            natural = max(NARROWEST, columns / rows * HEIGHT)
            if natural > self._widest + WIDTH_STEP / 2 and self._widest < WIDEST:
                continue
            width = int(min(WIDEST, max(NARROWEST, round(natural / WIDTH_STEP) * WIDTH_STEP)))
            if steps_needed(label) > self._stretch.columns(width) // 4:
                continue
            waiting = self._waiting.setdefault(width, [])
            waiting.append((network_input(picture, width), label))
            if len(waiting) * width >= self._columns:
                del self._waiting[width]
                return np.stack([planes for planes, _ in waiting]), [text for _, text in waiting]
