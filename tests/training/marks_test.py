import random
import unittest

import numpy as np

from scribokit.drawing import marks
from scribokit.drawing.faces import FontFace
from scribokit.drawing.fontlist import PRINT, font_files
from scribokit.drawing.noise import NoiseBank
from scribokit.drawing.scene import set_line


class Marks(unittest.TestCase):
    def test_lose_no_point_and_no_dash(self):
        dice, noise = random.Random(10), NoiseBank(1)
        mask = set_line("A.9-B:", FontFace(font_files(PRINT, False)[0]))[0]
        mask[2:5, 2:5] = mask[2:4, 10:20] = 255
        self.assertFalse(
            all(marks.shows_all(mask, marks.dot_matrix(mask, dice)) for _ in range(20))
        )
        changed = 0
        for _ in range(200):
            result = marks.marked(mask, dice, noise)
            leaning = result.shape != mask.shape
            self.assertTrue(leaning or marks.shows_all(mask, result))
            changed += not np.array_equal(result, mask)
        self.assertGreater(changed, 40)

    def test_keep_the_insides_of_letters_open(self):
        dice, noise = random.Random(10), NoiseBank(1)
        mask = np.zeros((40, 40), np.uint8)
        mask[4:36, 4:36] = 255
        mask[18:21, 18:21] = 0
        self.assertTrue(
            all((marks.marked(mask, dice, noise)[18:21, 18:21] < 192).any() for _ in range(300))
        )

    def test_lean_without_losing_ink(self):
        dice, mask, leaning = random.Random(11), np.full((68, 40), 255, np.uint8), 0
        for _ in range(100):
            result = marks.slanted(mask, dice)
            self.assertAlmostEqual(int(result.sum()) / int(mask.sum()), 1, delta=0.01)
            leaning += result.shape != mask.shape
        self.assertTrue(15 < leaning < 45, leaning)

    def test_are_missed_where_they_are_gone_or_nearly(self):
        mask = np.zeros((20, 40), np.uint8)
        mask[2:18, 2:12] = mask[14:18, 20:24] = 255
        self.assertTrue(marks.shows_all(mask, mask))
        for rows, columns in ((slice(14, 18), slice(20, 24)), (slice(2, 18), slice(2, 11))):
            less = mask.copy()
            less[rows, columns] = 0
            self.assertFalse(marks.shows_all(mask, less))


if __name__ == "__main__":
    unittest.main()
