import unittest
from collections import Counter

import numpy as np

from scribokit.common.sheets import contact_sheet
from scribokit.measuring.scoring import Score, aligned, by_size, confusion_picture, only


class Scores(unittest.TestCase):
    def test_count_lines_characters_and_confusions(self):
        score = Score()
        for read, truth in (("AB0", "ABO"), ("AB", "AB"), ("", "XY")):
            score.add("p.png", read, truth)
        self.assertEqual((score.lines, score.right, score.edits, score.characters), (3, 1, 3, 7))
        self.assertAlmostEqual(score.line_accuracy, 1 / 3)
        self.assertAlmostEqual(score.character_error_rate, 3 / 7)
        self.assertEqual(score.confusions, Counter({("O", "0"): 1, ("X", ""): 1, ("Y", ""): 1}))
        self.assertEqual(
            [(read, truth) for _, _, read, truth in score.wrong], [("AB0", "ABO"), ("", "XY")]
        )

    def test_of_nothing_are_zero(self):
        self.assertEqual((Score().line_accuracy, Score().character_error_rate), (0, 0))

    def test_go_by_size(self):
        self.assertEqual(
            by_size([5.0, 11.9, 12.0, 25.0, 20.0], [True, False, True, True, False], (12, 16, 20)),
            [(0, 12, 2, 1), (12, 16, 1, 1), (20, None, 2, 1)],
        )

    def test_align_missing_and_surplus_characters(self):
        self.assertEqual(aligned("AC", "ABC"), [("A", "A"), ("B", ""), ("C", "C")])
        self.assertEqual(aligned("AXB", "AB"), [("A", "A"), ("", "X"), ("B", "B")])
        self.assertEqual(aligned("", ""), [])

    def test_compare_only_some_characters(self):
        self.assertEqual(only("AB-1 2", "AB12"), "AB12")
        self.assertEqual(only("AB-1", None), "AB-1")


class Sheets(unittest.TestCase):
    def test_hold_pictures_of_any_size_in_rows(self):
        pictures = [
            np.zeros(shape, np.uint8) for shape in ((12, 400, 3), (60, 10, 3), (1, 1, 3), (30, 90))
        ]
        sheet = contact_sheet([(picture, "x") for picture in pictures], columns=3)
        self.assertEqual(sheet.shape, (2 * 68, 3 * 330, 3))

    def test_of_nothing_are_pictures_too(self):
        self.assertEqual(contact_sheet([]).ndim, 3)
        self.assertEqual(confusion_picture(Counter()).ndim, 3)

    def test_of_confusions_grow_with_the_characters(self):
        small, large = (
            confusion_picture(Counter({(c, "X"): 1 for c in text})) for text in ("A", "ABC")
        )
        self.assertEqual(large.shape[0] - small.shape[0], 60)


if __name__ == "__main__":
    unittest.main()
