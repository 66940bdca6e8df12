import unittest

import numpy as np

from scribokit.common.inputs import as_picture, Stretch, network_input
from scribokit.network.batches import Batches

RED = (20, 40, 200)  # blue, green, red


def coloured(width=64):
    picture = np.zeros((32, width, 3), np.uint8)
    picture[:, :] = RED
    picture[:, : width // 2] = 0
    return picture


class Coloured:
    def draw(self):
        return coloured(), "A"


class Colours(unittest.TestCase):
    def test_come_to_the_network_as_a_line_hands_them_over(self):
        planes = network_input(coloured())
        self.assertEqual((planes.shape, planes.dtype), ((3, 32, 64), np.uint8))
        self.assertEqual(planes[:, 5, 60].tolist(), [200, 40, 20])
        self.assertEqual(planes[:, 5, 3].tolist(), [0, 0, 0])

    def test_come_to_training_as_to_reading(self):
        pictures, labels = Batches(Coloured(), 128).next()
        self.assertEqual((pictures.shape, labels), ((2, 3, 32, 64), ["A", "A"]))
        np.testing.assert_array_equal(pictures[0], network_input(coloured()))

    def test_are_shown_as_they_were(self):
        np.testing.assert_array_equal(as_picture(network_input(coloured())), coloured())


class Sizes(unittest.TestCase):
    def test_has_height_32_and_a_width_of_the_same_proportions_within_the_limits(self):
        for (rows, columns), width in {
            (32, 100): 100,
            (10, 32): 102,
            (32, 10): 32,
            (32, 2000): 320,
            (60, 100): 53,
        }.items():
            self.assertEqual(
                network_input(np.zeros((rows, columns, 3), np.uint8)).shape, (3, 32, width)
            )

    def test_narrower_than_the_network_wants_is_stretched_half_of_the_way(self):
        self.assertEqual(
            [Stretch(128).columns(width) for width in (32, 64, 101, 127, 128, 129, 320)],
            [80, 96, 114, 127, 128, 129, 320],
        )
        self.assertEqual([Stretch().columns(width) for width in (32, 320)], [32, 320])

    def test_gets_more_columns_where_the_network_wants_them(self):
        widths = 32, 64, 127, 320
        self.assertEqual([Stretch(0, 64).columns(width) for width in widths], [96, 128, 191, 384])
        self.assertEqual([Stretch(128, 8).columns(width) for width in widths], [80, 96, 135, 328])


if __name__ == "__main__":
    unittest.main()
