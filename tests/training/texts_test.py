import random
import unittest

from scribokit.common.alphabet import read_alphabet
from scribokit.drawing.texts import (
    LOOKALIKES,
    PLATE_PATTERNS,
    even_text,
    fill,
    gtin_text,
    is_readable,
    label_of,
    plate_text,
    tempting,
)

ALPHABET = read_alphabet()


class Texts(unittest.TestCase):
    def test_fill_patterns(self):
        dice = random.Random(1)
        for _ in range(200):
            self.assertRegex(fill("AA-99 ?*", dice), r"^[A-Z]{2}-\d{2} [A-Z0-9]\*$")

    def test_of_article_numbers_carry_the_check_digit(self):
        dice = random.Random(2)
        for _ in range(50):
            digits = [int(d) for d in gtin_text(dice)]
            self.assertEqual(sum(d * (3 if i % 2 else 1) for i, d in enumerate(digits)) % 10, 0)

    def test_of_plates_have_capitals_and_digits(self):
        dice = random.Random(3)
        for _ in range(200):
            self.assertRegex(plate_text(dice), r"^[A-Z0-9 *.-]+$")
        self.assertEqual(len(set(PLATE_PATTERNS)), len(PLATE_PATTERNS))

    def test_drawn_evenly_hold_nothing_that_nobody_can_tell(self):
        dice = random.Random(4)
        texts = [even_text(ALPHABET, dice) for _ in range(3000)]
        self.assertEqual(set("".join(texts)), set(ALPHABET))
        for text in texts:
            for group in ("0Oo", "1Il", "Cc", "Kk", "Pp", "Ss", "Uu", "Vv", "Ww", "Xx", "Zz"):
                self.assertLessEqual(len(set(text) & set(group)), 1, text)

    def test_drawn_evenly_take_any_alphabet(self):
        dice = random.Random(5)
        self.assertEqual({c for _ in range(200) for c in even_text("01", dice)}, set("01"))

    def test_drawn_evenly_have_o_i_and_l_away_from_digits_and_show_how_tall_capitals_are(self):
        dice = random.Random(8)
        for text in (even_text(ALPHABET, dice) for _ in range(3000)):
            self.assertFalse(set(text) & set("0123456789") and set(text) & set("OoIl"), text)
            letters = [character for character in text if character.isalpha()]
            if letters and not set(text) & set("0123456789"):
                self.assertTrue(set("".join(letters).lower()) - set("ckopsuvwxz"), text)

    def test_drawn_evenly_have_0_and_1_beside_another_digit(self):
        dice = random.Random(10)
        for text in (even_text(ALPHABET, dice) for _ in range(3000)):
            if set(text) & set("01"):
                self.assertTrue(set(text) & set("23456789"), text)

    def test_drawn_evenly_come_from_an_alphabet_that_cannot_show_it_too(self):
        self.assertLessEqual(set(even_text("xX", random.Random(9))), set("xX"))

    def test_fill_either_without_o_i_0_and_1(self):
        dice = random.Random(6)
        self.assertFalse(set("OI01") & set("".join(fill("????????", dice) for _ in range(300))))

    def test_fill_letters_with_o_and_i_only_in_groups_of_letters(self):
        dice = random.Random(7)
        for pattern, expected in (
            ("AA-999", "OI"),
            ("AAA", "OI"),
            ("9 AA", "OI"),
            ("A", ""),
            ("A*9999", ""),
            ("AAA999", ""),
            ("999AAA", ""),
            ("9AAA9", ""),
            ("AA?", ""),
            ("?AA", ""),
        ):
            drawn = "".join(fill(pattern, dice) for _ in range(300))
            self.assertEqual(set("OI") & set(drawn), set(expected), pattern)
            self.assertIn("Q", drawn)

    def test_fill_groups_of_letters_with_one_that_looks_like_no_digit(self):
        dice = random.Random(12)
        for _ in range(3000):
            first, second = fill("AA-AAA", dice).split("-")
            self.assertTrue(set(first) - set("OI") and set(second) - set("OI"), (first, second))

    def test_of_plates_have_lookalikes_in_each_others_places(self):
        dice = random.Random(3)
        drawn = [tempting("8B 999", dice) for _ in range(400)]
        self.assertEqual(set(drawn), {"8B 999", "BB 999", "88 999"})
        self.assertTrue(150 < drawn.count("8B 999") < 250)
        self.assertEqual(
            {LOOKALIKES[LOOKALIKES[character]] for character in LOOKALIKES}, set(LOOKALIKES)
        )
        self.assertTrue(
            all(character.isdigit() != other.isdigit() for character, other in LOOKALIKES.items())
        )

    def test_of_plates_stay_as_they_are_with_o_or_i_or_no_lookalike(self):
        dice = random.Random(3)
        self.assertEqual(
            {tempting(text, dice) for text in ("BO 888", "BI 888", "199") for _ in range(200)},
            {"BO 888", "BI 888", "199"},
        )

    def test_are_labelled_without_gaps_and_emblems(self):
        self.assertEqual(label_of("A*BC 12-3", ALPHABET), "ABC12-3")

    def test_outside_the_alphabet_are_not_readable(self):
        self.assertTrue(is_readable("1 2*", "12"))
        for text in ("13", " *", ""):
            self.assertFalse(is_readable(text, "12"), text)


if __name__ == "__main__":
    unittest.main()
