import unittest

import numpy as np

from scribokit.common.alphabet import read_alphabet
from scribokit.drawing.dots import COLUMNS, FORMS, ROWS, DotFace
from scribokit.drawing.faces import CAP_HEIGHT, FontFace, StrokeFace, rounded
from scribokit.drawing.fontlist import PLATE, PRINT, font_files
from scribokit.drawing.maker import PictureMaker, SingleFace
from scribokit.drawing.scene import set_line

ALPHABET = read_alphabet()


class Faces(unittest.TestCase):
    def test_held_out_are_never_trained_on(self):
        for use in (PLATE, PRINT):
            held, others = font_files(use, True), font_files(use, False)
            self.assertTrue(held)
            self.assertTrue(others)
            self.assertFalse(set(held) & set(others))

    def test_have_one_cap_height(self):
        for path in font_files(PRINT, False)[::25]:
            self.assertTrue(36 <= FontFace(path).glyph("H").mask.shape[0] <= 44, path)

    def test_have_digits_as_tall_as_capitals(self):
        for held_out in (False, True):
            for path in font_files(PRINT, held_out):
                self.assertGreater(FontFace(path).glyph("0").mask.shape[0], 0.8 * CAP_HEIGHT, path)

    def test_know_whether_their_small_letters_are_capitals(self):
        for path in font_files(PRINT, False):
            self.assertEqual(FontFace(path).capitals_only, "BebasNeue" in path, path)

    def test_without_small_letters_are_labelled_in_capitals(self):
        face = next(path for path in font_files(PRINT, False) if "BebasNeue" in path)
        maker = PictureMaker(
            "clean", ALPHABET, 1, faces=SingleFace(face), write=lambda dice: "Model"
        )
        self.assertEqual(
            {label for _, label in (maker.draw() for _ in range(30)) if label.isalpha()}, {"MODEL"}
        )

    def test_lack_what_the_font_lacks(self):
        face = FontFace(font_files(PRINT, False)[0])
        self.assertIsNone(face.glyph("\uffff"))
        self.assertIsNone(set_line("A\uffff", face))

    def test_of_strokes_have_capitals_and_digits_and_nothing_else(self):
        face = StrokeFace(1)
        for character in "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-":
            self.assertGreater(face.glyph(character).mask.max(), 200)
        self.assertIsNone(face.glyph("a"))

    def test_of_strokes_keep_ends_and_round_corners(self):
        points = rounded(np.array([[0.0, 0], [10, 0], [10, 10]]), 3)
        self.assertTrue(np.allclose(points[0], [0, 0]) and np.allclose(points[-1], [10, 10]))
        self.assertFalse(any(np.allclose(point, [10, 0]) for point in points))

    def test_of_strokes_have_8_and_0_rounder_than_b_and_d(self):
        for seed in range(160):
            face = StrokeFace(seed)
            corners = {
                character: int(face.glyph(character).mask[:8, :8].sum()) for character in "8B0D"
            }
            self.assertLess(corners["8"], 0.9 * corners["B"], seed)
            self.assertLess(corners["0"], 0.9 * corners["D"], seed)

    def test_of_dots_have_the_whole_alphabet_and_nothing_else(self):
        self.assertEqual(set(FORMS), set(ALPHABET))
        for character, forms in FORMS.items():
            for rows in forms:
                self.assertEqual(
                    (len(rows), {len(row) for row in rows}), (ROWS, {COLUMNS}), character
                )
            self.assertGreater(DotFace(3).glyph(character).mask.max(), 200)
        self.assertIsNone(DotFace(3).glyph("?"))

    def test_of_dots_draw_no_two_characters_alike_but_0_and_o(self):
        owners = {}
        for character, forms in FORMS.items():
            for rows in forms:
                owners.setdefault(tuple(rows), set()).add(character)
        self.assertEqual([owner for owner in owners.values() if len(owner) > 1], [{"0", "O"}])

    def test_set_a_line_that_is_too_long_as_none(self):
        self.assertIsNone(set_line("W" * 80, StrokeFace(1)))
        self.assertIsNone(set_line(" * ", StrokeFace(1)))


if __name__ == "__main__":
    unittest.main()
