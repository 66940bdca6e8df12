import unittest

import numpy as np

from scribokit.common.alphabet import read_alphabet
from scribokit.common.ctc import steps_needed
from scribokit.drawing.maker import PictureMaker
from scribokit.common.inputs import Stretch
from scribokit.network.batches import Batches

ALPHABET = read_alphabet()


class BatchesOfPictures(unittest.TestCase):
    def test_have_one_width_and_labels_that_fit_its_steps(self):
        batches = Batches(PictureMaker("mix", ALPHABET, 8), 512, 192)
        for _ in range(10):
            pictures, labels = batches.next()
            self.assertEqual(pictures.shape[:3], (len(labels), 3, 32))
            self.assertTrue(32 <= pictures.shape[3] <= 192 and pictures.shape[3] % 16 == 0)
            self.assertGreaterEqual(pictures.shape[3] * len(labels), 512)
            for label in labels:
                self.assertLessEqual(steps_needed(label), pictures.shape[3] // 4)

    def test_take_longer_labels_for_a_network_that_stretches(self):
        class Narrow:
            """A picture of 64 columns, which are 16 steps, or stretched towards 128 they are 24."""

            def __init__(self, *labels):
                self._labels = iter(labels)

            def draw(self):
                return np.zeros((32, 64, 3), np.uint8), next(self._labels)

        labels = ("1" * 13, "12" * 8, "1" * 12)
        self.assertEqual(Batches(Narrow(*labels), 64).next()[1], ["12" * 8])
        self.assertEqual(
            Batches(Narrow(*labels), 64, stretch=Stretch(below=128)).next()[1], ["12" * 8]
        )
        self.assertEqual(
            Batches(Narrow(*labels[2:]), 64, stretch=Stretch(below=128)).next()[1], ["1" * 12]
        )


if __name__ == "__main__":
    unittest.main()
