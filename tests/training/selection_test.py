import math
import unittest

import numpy as np
import torch

from networks import SMALL
from scribokit.network.model import Crnn
from scribokit.network.selection import Selected
from scribokit.network.training import Trainer


class Numbers:
    """A supply of lines that are numbered in order, each with its number as its pixels; `widths`
    are taken in turn."""

    def __init__(self, widths, count):
        self._widths = widths
        self._count = count
        self.batches = 0
        self.closed = False

    def next(self):
        first = self.batches * self._count
        width = self._widths[self.batches % len(self._widths)]
        self.batches += 1
        numbers = np.arange(first, first + self._count, dtype=np.uint8)
        return np.broadcast_to(numbers[:, None, None, None], (self._count, 3, 32, width)).copy(), [
            str(number) for number in numbers
        ]

    def close(self):
        self.closed = True


ALL = math.inf


def odd(pictures, labels):
    return np.array([int(label) % 2 for label in labels], np.float32)


class Selection(unittest.TestCase):
    def test_gives_the_lines_with_more_loss_with_their_labels(self):
        selected = Selected(Numbers((32,), 4), odd, 0.5, ALL, 96)
        pictures, labels = selected.next()
        self.assertEqual(labels, ["1", "3", "5", "7"])
        self.assertEqual(pictures[:, 0, 0, 0].tolist(), [1, 3, 5, 7])
        self.assertEqual(selected.next()[1][0], "9")

    def test_leaves_out_the_lines_with_too_much_loss(self):
        selected = Selected(
            Numbers((32,), 8),
            lambda pictures, labels: np.array([int(label) for label in labels]),
            2,
            5,
            96,
        )
        pictures, labels = selected.next()
        self.assertEqual(labels, ["3", "4", "5"])
        self.assertEqual(pictures[:, 0, 0, 0].tolist(), [3, 4, 5])

    def test_keeps_widths_apart(self):
        selected = Selected(Numbers((32, 64), 4), odd, 0.5, ALL, 192)
        for width, expected in (
            (64, ["5", "7", "13", "15"]),
            (32, ["1", "3", "9", "11", "17", "19"]),
        ):
            pictures, labels = selected.next()
            self.assertEqual((pictures.shape, labels), ((len(expected), 3, 32, width), expected))

    def test_gives_a_whole_batch_when_no_line_has_more_loss(self):
        supply = Numbers((32,), 1)
        pictures, labels = Selected(supply, odd, 2.0, ALL, 96).next()
        self.assertEqual((len(pictures), len(labels)), (1, 1))
        self.assertEqual(supply.batches, 200)

    def test_closes_its_supply(self):
        supply = Numbers((32,), 4)
        Selected(supply, odd, 0.5, ALL, 96).close()
        self.assertTrue(supply.closed)


class Losses(unittest.TestCase):
    def test_of_a_line_are_the_same_in_any_batch_and_change_nothing(self):
        torch.manual_seed(1)
        trainer = Trainer(Crnn(SMALL), "abc")
        pictures = np.random.default_rng(1).integers(0, 256, (3, 3, 32, 64), np.uint8)
        labels = ["a", "bc", "cab"]
        trainer.model.eval()
        before = {name: value.clone() for name, value in trainer.model.state_dict().items()}
        losses = trainer.losses(pictures, labels)
        self.assertEqual(
            (losses.shape, trainer.progress.read, trainer.progress.steps), ((3,), 3, 0)
        )
        for name, value in trainer.model.state_dict().items():
            self.assertTrue(torch.equal(value, before[name]), name)
        for place, label in enumerate(labels):
            self.assertAlmostEqual(
                float(trainer.losses(pictures[place : place + 1], [label])[0]),
                float(losses[place]),
                places=4,
            )


if __name__ == "__main__":
    unittest.main()
