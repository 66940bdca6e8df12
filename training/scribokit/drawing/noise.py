"""Randomness that is drawn once and cut out many times, because drawing it anew would take most of
the time."""
import cv2
import numpy as np

_SIZE = 768
# The largest picture that can be had of the bank.
WIDEST_PICTURE = _SIZE - 1


class NoiseBank:
    def __init__(self, seed):
        generator = np.random.default_rng(seed)
        self._colour = generator.standard_normal((_SIZE, _SIZE, 3), np.float32)
        self._fields = {}
        for scale in (1, 2, 4, 8, 16, 32):
            coarse = generator.standard_normal((_SIZE // scale + 2, _SIZE // scale + 2), np.float32)
            field = cv2.resize(coarse, (_SIZE, _SIZE), interpolation=cv2.INTER_CUBIC)
            self._fields[scale] = (field / field.std()).astype(np.float32)

    def grain(self, shape, dice):
        """Independent normal values for every pixel and plane, height×width×3."""
        y, x = dice.randrange(_SIZE - shape[0]), dice.randrange(_SIZE - shape[1])
        return self._colour[y : y + shape[0], x : x + shape[1]]

    def field(self, shape, dice, scale):
        """A smooth normal field, height×width, whose spots are about `scale` pixels wide."""
        y, x = dice.randrange(_SIZE - shape[0]), dice.randrange(_SIZE - shape[1])
        return self._fields[scale][y : y + shape[0], x : x + shape[1]]
