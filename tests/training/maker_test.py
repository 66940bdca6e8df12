import unittest

import numpy as np

from scribokit.common.alphabet import read_alphabet
from scribokit.drawing.maker import PictureMaker
from scribokit.drawing.recipes import RECIPES

ALPHABET = read_alphabet()


class Pictures(unittest.TestCase):
    def test_of_every_recipe_are_small_colour_pictures_with_labels_of_the_alphabet(self):
        for recipe in sorted(RECIPES):
            maker = PictureMaker(recipe, ALPHABET, 3)
            for _ in range(40):
                picture, label = maker.draw()
                self.assertEqual((picture.dtype, picture.shape[2]), (np.uint8, 3))
                self.assertTrue(12 <= picture.shape[0] <= 60, picture.shape)
                self.assertTrue(label and set(label) <= set(ALPHABET), label)

    def test_are_the_same_for_the_same_seed_and_others_for_another(self):
        first, again, other = (
            [PictureMaker("mix", ALPHABET, seed).draw() for _ in range(1)][0] for seed in (5, 5, 6)
        )
        self.assertEqual(first[1], again[1])
        self.assertTrue(np.array_equal(first[0], again[0]))
        self.assertFalse(first[1] == other[1] and np.array_equal(first[0], other[0]))

    def test_are_not_blank(self):
        maker = PictureMaker("moderate", ALPHABET, 4)
        for _ in range(40):
            self.assertGreater(maker.draw()[0].std(), 2)

    def test_show_the_given_texts_only(self):
        maker = PictureMaker(
            "clean", "01", 1, write=lambda dice: dice.choice(("01", "0 1", "X1", "10"))
        )
        self.assertEqual({maker.draw()[1] for _ in range(40)}, {"01", "10"})


if __name__ == "__main__":
    unittest.main()
