import unittest

import numpy as np

from scribokit.common.ctc import decode, decode_scores, distance, encode, steps_needed


class LabelCoding(unittest.TestCase):
    def test_counts_classes_from_one(self):
        self.assertEqual(encode("BAC", "ABC"), [2, 1, 3])
        self.assertEqual(encode("", "ABC"), [])

    def test_refuses_a_character_outside_the_alphabet(self):
        with self.assertRaises(ValueError):
            encode("AX", "ABC")

    def test_takes_runs_once_and_drops_blanks(self):
        self.assertEqual(decode([0, 1, 1, 0, 2, 2, 2, 0], "ABC"), "AB")

    def test_keeps_a_doubled_character_that_a_blank_parts(self):
        self.assertEqual(decode([1, 0, 1], "ABC"), "AA")
        self.assertEqual(decode([1, 1], "ABC"), "A")

    def test_of_blanks_only_is_empty(self):
        self.assertEqual(decode([0, 0], "ABC"), "")
        self.assertEqual(decode([], "ABC"), "")

    def test_reads_each_picture_of_a_batch(self):
        scores = np.zeros((3, 2, 4), np.float32)
        for step, (first, second) in enumerate(((1, 3), (0, 3), (2, 0))):
            scores[step, 0, first] = scores[step, 1, second] = 1
        self.assertEqual(decode_scores(scores, "ABC"), ["AB", "C"])

    def test_needs_a_step_more_for_each_doubled_character(self):
        self.assertEqual(
            [steps_needed(text) for text in ("", "A", "AB", "AA", "AABB", "AAA")],
            [0, 1, 2, 3, 6, 5],
        )


class Distance(unittest.TestCase):
    def test_counts_insertions_deletions_and_replacements(self):
        cases = (
            ("", "", 0),
            ("A", "", 1),
            ("", "AB", 2),
            ("ABC", "ABC", 0),
            ("ABC", "AXC", 1),
            ("AC", "ABC", 1),
            ("kitten", "sitting", 3),
        )
        for read, truth, edits in cases:
            self.assertEqual(distance(read, truth), edits, (read, truth))


if __name__ == "__main__":
    unittest.main()
