import random
import unittest

import numpy as np

from scribokit.drawing import plates
from scribokit.drawing.faces import CAP_HEIGHT, StrokeFace
from scribokit.drawing.pieces import scenery
from scribokit.drawing.scene import CLUTTER, FAINT, OUTSIDE, TEXT, Scene


class Plates(unittest.TestCase):
    def setUp(self):
        self.scene = Scene(300, 7)
        self.edge = (
            self.scene.left - 10,
            self.scene.top - 12,
            self.scene.right + 14,
            self.scene.bottom + 9,
        )
        self.face = StrokeFace(1)

    def inside(self, room):
        x0, y0, x1, y1 = (int(v) for v in self.edge)
        return self.scene.planes[CLUTTER][y0 + room : y1 - room, x0 + room : x1 - room]

    def test_have_frames_around_them_and_not_across(self):
        for seed in range(60):
            self.setUp()
            outer = plates.frame(self.scene, self.face, self.edge, random.Random(seed))
            self.assertTrue(
                outer[0] < self.edge[0]
                and outer[1] < self.edge[1]
                and outer[2] > self.edge[2]
                and outer[3] > self.edge[3]
            )
            self.assertFalse(self.inside(4).any(), seed)
            self.assertTrue(
                self.scene.planes[CLUTTER][int(outer[1]), int(outer[0]) : int(outer[2])].all(), seed
            )

    def test_have_bodywork_around_them_and_not_across(self):
        marked = 0
        for seed in range(60):
            self.setUp()
            plates.bodywork(self.scene, self.edge, random.Random(seed))
            self.assertFalse(self.inside(0).any(), seed)
            marked += self.scene.planes[CLUTTER].any()
        self.assertGreater(marked, 50)

    def test_have_seals_larger_than_the_dots_of_a_colon(self):
        for seed in range(60):
            self.setUp()
            plates.seals(self.scene, self.scene.left + 100, 0.25, random.Random(seed))
            rows = np.flatnonzero((self.scene.planes[CLUTTER] | self.scene.planes[FAINT]).any(1))
            self.assertGreater(rows[-1] - rows[0], CAP_HEIGHT * 0.45, seed)

    def test_have_scenery_in_soft_shades_behind_their_characters(self):
        for seed in range(60):
            self.setUp()
            scenery(self.scene, random.Random(seed))
            shades = self.scene.planes.pop(FAINT)
            self.assertGreater(np.ptp(shades), 40, seed)
            self.assertLess(
                max(np.abs(np.diff(shades.astype(int), axis=axis)).max() for axis in (0, 1)),
                128,
                seed,
            )
            self.assertFalse(np.any(self.scene.planes), seed)

    def test_are_seen_with_all_their_characters(self):
        dice = random.Random(2)
        for _ in range(60):
            scene, box = plates.plate("AB*123", self.face, self.face, dice)
            rows, columns = (np.flatnonzero(scene.planes[TEXT].any(axis)) for axis in (1, 0))
            self.assertTrue(
                box[0] <= columns[0] + 1
                and box[1] <= rows[0] + 1
                and box[2] >= columns[-1] - 1
                and box[3] >= rows[-1] - 1,
                box,
            )
            x0, y0, x1, y1 = columns[0], rows[0], columns[-1], rows[-1]
            self.assertFalse(scene.planes[OUTSIDE][y0:y1, x0:x1].any())


if __name__ == "__main__":
    unittest.main()
