import random
import unittest

import cv2
import numpy as np

from scribokit.drawing.camera import shoot
from scribokit.drawing.conditions import Paint, View, emboss
from scribokit.drawing.faces import CAP_HEIGHT
from scribokit.drawing.noise import NoiseBank
from scribokit.drawing.scene import TEXT, Scene

PRINTED = Paint((200, 200, 200), (20, 20, 20), (0, 0, 0), (0, 0, 0), (0, 0, 0))


class Cameras(unittest.TestCase):
    """A line 100 pixels of the scene wide, around which the box leaves some room."""

    def shot(self, view, room, characters=5, paint=PRINTED, gaps=0):
        """A picture of a solid block, or of uprights 6 pixels wide with gaps."""
        scene = Scene(100, characters)
        for x in range(scene.left, scene.right, 6 + gaps):
            scene.planes[TEXT][scene.top : scene.bottom, x : min(x + 6, scene.right)] = 255
        box = scene.left - room, scene.top - room, scene.right + room, scene.bottom + room
        return shoot(scene, box, view, paint, random.Random(1), NoiseBank(1))

    def test_take_the_picture_at_the_height_that_is_asked_for(self):
        for height in (12, 30, 60):
            self.assertEqual(self.shot(View(height), 0).shape[0], height)

    def test_take_it_higher_when_capitals_would_have_less_than_seven_pixels(self):
        picture = self.shot(View(12), CAP_HEIGHT / 2, 2)
        self.assertEqual(picture.shape[0], 14)
        self.assertGreaterEqual((picture[:, picture.shape[1] // 2, 0] < 110).sum(), 7)
        self.assertEqual(self.shot(View(12, detail=0.5), CAP_HEIGHT / 2, 2).shape[0], 28)

    def test_take_it_higher_when_characters_would_have_less_than_five_pixels(self):
        self.assertEqual(self.shot(View(12), CAP_HEIGHT / 2).shape[0], 20)
        self.assertGreaterEqual(self.shot(View(12, stretch=0.5), 0).shape[0], 20)

    def test_take_none_where_even_the_highest_shows_too_little(self):
        self.assertIsNone(self.shot(View(12), 10 * CAP_HEIGHT))

    def test_take_none_where_too_little_is_left_in_the_networks_input(self):
        tall = CAP_HEIGHT * 32 / 8  # a box of this height leaves a capital 8 of 32 rows
        for room, characters, legible in (
            (CAP_HEIGHT, 3, True),
            (CAP_HEIGHT, 4, False),
            (tall / 2 - 21, 1, True),
            (tall / 2 - 19, 1, False),
        ):
            self.assertEqual(
                self.shot(View(60), room, characters) is not None, legible, (room, characters)
            )

    def test_take_none_of_a_line_too_long_for_the_networks_input(self):
        for characters, legible in ((44, True), (47, False)):
            scene = Scene(700, characters)
            scene.planes[TEXT][scene.top : scene.bottom, scene.left : scene.right] = 255
            box = scene.left, scene.top + 10, scene.right, scene.bottom - 10
            self.assertEqual(
                shoot(scene, box, View(60), PRINTED, random.Random(1), NoiseBank(1)) is not None,
                legible,
                characters,
            )

    def test_take_none_where_a_mark_would_not_be_seen(self):
        faint, dark = (
            Paint((200, 200, 200), (ink,) * 3, (0,) * 3, (0,) * 3, (0,) * 3) for ink in (190, 150)
        )
        self.assertIsNone(self.shot(View(40), 10, paint=faint))
        self.assertIsNotNone(self.shot(View(40), 10, paint=dark))
        self.assertIsNone(self.shot(View(40, noise=60), 10, paint=dark))

    def test_look_for_the_marks_where_the_picture_shows_them(self):
        """Points of 4 pixels at both ends of the line are found whatever the view."""
        for seed in range(40):
            scene = Scene(200, 5)
            for x in (scene.left, scene.right - 4):
                scene.stamp(TEXT, np.full((4, 4), 255, np.uint8), x, (scene.top + scene.bottom) / 2)
            box = scene.left - 5, scene.top - 5, scene.right + 5, scene.bottom + 5
            view = View(
                40,
                tilt=4,
                shear=0.1,
                slope=0.05,
                keystone=0.01,
                jitter=0.05,
                curvature=(-0.9, 0, 0.9)[seed % 3],
            )
            self.assertIsNotNone(
                shoot(scene, box, view, PRINTED, random.Random(seed), NoiseBank(1)), seed
            )

    def test_cut_off_no_character(self):
        """Discs in the corners of the line, seen askew in a box that is too small and misplaced,
        keep their sizes."""
        scene = Scene(200, 5)
        for x in (scene.left, scene.right):
            for y in (scene.top, scene.bottom + 12):
                scene.disc(TEXT, x, y, 9)
        box = scene.left + 5, scene.top + 5, scene.right - 5, scene.bottom - 5
        for seed in range(60):
            view = View(
                60,
                tilt=4,
                shear=0.1,
                slope=0.05,
                keystone=0.01,
                jitter=0.05,
                curvature=(-0.9, 0, 0.9)[seed % 3],
            )
            picture = shoot(scene, box, view, PRINTED, random.Random(seed), NoiseBank(1))
            _, _, found, _ = cv2.connectedComponentsWithStats(
                (picture[:, :, 0] < 110).view(np.uint8)
            )
            areas = found[1:, cv2.CC_STAT_AREA]
            self.assertTrue(len(areas) == 4 and areas.min() > 0.65 * areas.max(), (seed, areas))

    def test_see_embossed_marks_by_both_edges_whatever_the_surface_and_the_size(self):
        for brightness in (0, 120, 255):
            for seed in range(10):
                lit = {}
                for height in (16, 60):
                    view, paint = View(height), Paint(
                        (brightness,) * 3, (20,) * 3, (0,) * 3, (0,) * 3, (0,) * 3
                    )
                    emboss(paint, view, random.Random(seed))
                    paint.relief_ink = 0.0
                    levels = self.shot(view, CAP_HEIGHT / 2, 2, paint, gaps=14).astype(int)[
                        height // 2, :, 0
                    ]
                    lit[height] = levels.max() - paint.surface[0], paint.surface[0] - levels.min()
                    self.assertGreater(min(lit[height]), 20, (height, brightness, seed))
                self.assertGreater(sum(lit[60]), 0.6 * sum(lit[16]), (brightness, seed))

    def test_blur_no_more_than_leaves_a_capital_its_gaps(self):
        sharp, blurred = (self.shot(View(40, blur=blur), CAP_HEIGHT, 2) for blur in (2.0, 200.0))
        self.assertLess(np.abs(sharp.astype(int) - blurred).mean(), 4)
        self.assertGreater(np.ptp(self.shot(View(40, motion=400.0), CAP_HEIGHT, 2)), 100)

    def test_see_a_line_climb_whose_strokes_stay_upright(self):
        picture = self.shot(View(60, slope=0.6), 0)
        ink = picture[:, :, 0] < 110
        first, last = np.flatnonzero(ink.any(0))[[0, -1]]
        self.assertGreater(
            abs(np.flatnonzero(ink[:, first + 3])[0] - np.flatnonzero(ink[:, last - 3])[0]), 4
        )
        self.assertGreater(ink[:, first + 3].sum(), 0.9 * ink[:, (first + last) // 2].sum())


if __name__ == "__main__":
    unittest.main()
