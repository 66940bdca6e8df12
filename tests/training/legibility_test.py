import unittest

import numpy as np

from scribokit.drawing.legibility import all_stand_out, marks_of


class Legibility(unittest.TestCase):
    """A bar and a point beside it, 100 grey levels darker than the surface."""

    def setUp(self):
        ink = np.zeros((30, 60), np.uint8)
        ink[5:25, 5:15] = ink[20:24, 30:34] = 255
        self.bare = np.full((30, 60, 3), 180, np.float32)
        self.picture = self.bare - np.float32(ink / 255 * 100)[:, :, None]
        self.places, self.owners = marks_of(ink)

    def stands_out(self, noise=0.0, capitals=20):
        return all_stand_out(self.places, self.owners, self.picture, self.bare, capitals, noise)

    def test_takes_a_few_pixels_of_every_mark_and_no_specks(self):
        self.assertEqual(np.bincount(self.owners).tolist(), [50, 4])
        speck = np.zeros((9, 9), np.uint8)
        speck[3, 3] = 255
        self.assertEqual(len(marks_of(speck)[0]), 0)

    def test_asks_for_more_contrast_than_noise_has(self):
        self.assertTrue(self.stands_out())
        self.assertTrue(self.stands_out(noise=80))
        self.assertFalse(self.stands_out(noise=90))

    def test_misses_a_point_that_light_has_swallowed(self):
        for colour in (180, 175):
            self.picture[18:26, 28:36] = colour
            self.assertFalse(self.stands_out(), colour)

    def test_misses_what_is_white_in_both(self):
        self.bare[:, 28:36] += 200
        self.picture[:, 28:36] += 200
        self.assertFalse(self.stands_out())

    def test_misses_a_letter_of_which_a_third_is_gone(self):
        self.picture[18:25, 5:15] = 180
        self.assertFalse(self.stands_out())
        self.picture[18:22, 5:15] = 80
        self.assertTrue(self.stands_out())

    def test_takes_one_colour_for_enough(self):
        self.picture[:, :, 1:] = self.bare[:, :, 1:]
        self.assertTrue(self.stands_out())

    def test_takes_the_edges_of_a_relief_for_its_marks(self):
        self.picture[7:23, 7:13] = 180
        self.assertFalse(self.stands_out())
        self.assertTrue(self.stands_out(capitals=48))

    def test_misses_what_the_picture_cuts_off(self):
        self.picture[:] = 80
        for cut, seen in (
            (0, True),
            (-6, True),
            (-12, False),
            (-40, False),
            (24, True),
            (33, False),
        ):
            places = self.places + [cut, 0]
            self.assertEqual(
                all_stand_out(places, self.owners, self.picture, self.bare, 20, 0.0), seen, cut
            )

    def test_of_nothing_is_given(self):
        self.places, self.owners = marks_of(np.zeros((30, 60), np.uint8))
        self.assertTrue(self.stands_out())


if __name__ == "__main__":
    unittest.main()
