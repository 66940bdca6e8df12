import unittest

import numpy as np

from scribokit.common.alphabet import read_alphabet
from scribokit.drawing.faces import FontFace, Glyph
from scribokit.drawing.fontlist import PRINT, font_files
from scribokit.drawing.lookalikes import is_told, undecided
from scribokit.drawing.maker import PictureMaker, SingleFace

ALPHABET = read_alphabet()


class DrawnFace:
    """A face of these characters, each given as rows of ink and gaps: "# .# ##"."""

    def __init__(self, forms):
        self._forms = forms

    def glyph(self, character):
        if character not in self._forms:
            return None
        cells = np.array(
            [[255 * (cell == "#") for cell in row] for row in self._forms[character].split()],
            np.uint8,
        )
        return Glyph(np.kron(cells, np.ones((4, 4), np.uint8)), 0, 0, 0)


class Lookalikes(unittest.TestCase):
    def test_are_undecided_where_nothing_beside_them_is_of_their_kind(self):
        for text, expected in {
            "A0": {"0O"},
            "A0B": {"0O"},
            "0": set(),
            "A 0 7": {"0O"},
            "A07": set(),
            "A10": set(),
            "-1.2": set(),
            "K1": {"1I"},
            "k1": {"1I", "1l"},
            "O": {"0O"},
            "UN:O": {"0O"},
            "NO": set(),
            "4I7": {"1I"},
            "IN": set(),
            "a-l": {"1l"},
            "al": set(),
            "4O1I": {"0O", "1I"},
            "": set(),
        }.items():
            self.assertEqual(undecided(text), expected, text)

    def test_are_told_by_a_slash_or_a_dot_in_the_zero(self):
        ring = ".##. #..# #..# #..# #..# .##."
        for zero, told in (
            (ring, False),
            ("#### #..# #..# #..# #..# ####", False),
            (".##. #..# #.## ##.# #..# .##.", True),
            (".###. #...# #...# #.#.# #...# .###.", True),
        ):
            face = DrawnFace({"0": zero, "O": ring})
            self.assertEqual(is_told("A0", face), told, zero)
            self.assertEqual(is_told("4O", face), told, zero)
            self.assertTrue(is_told("A00", face), zero)

    def test_are_told_by_flags_and_feet(self):
        bar, flag, feet = "# # # # # #", "..# .## #.# ..# ..# ..#", "### .#. .#. .#. .#. ###"
        for one, capital, told in (
            (bar, bar, False),
            (flag, bar, True),
            (flag, feet, True),
            (feet, feet, False),
            ("##. .#. .#. .#. .#. ###", feet, False),
            ("##. ##. ##. .#. .#. ###", feet, True),
        ):
            self.assertEqual(
                is_told("A1", DrawnFace({"1": one, "I": capital})), told, (one, capital)
            )

    def test_are_told_in_a_face_that_has_only_one_of_them(self):
        self.assertTrue(is_told("A0 I", DrawnFace({"0": "# #"})))

    def test_stand_undecided_in_no_line_of_print_but_in_given_texts(self):
        path = next(path for path in font_files(PRINT, False) if not is_told("A0", FontFace(path)))
        face, maker = FontFace(path), PictureMaker("clean", ALPHABET, 1, faces=SingleFace(path))
        self.assertEqual(
            [label for label in (maker.draw()[1] for _ in range(600)) if not is_told(label, face)],
            [],
        )
        self.assertEqual(
            PictureMaker(
                "clean", ALPHABET, 1, faces=SingleFace(path), write=lambda dice: "A0B"
            ).draw()[1],
            "A0B",
        )


if __name__ == "__main__":
    unittest.main()
