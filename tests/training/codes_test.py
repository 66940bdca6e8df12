import random
import re
import unittest

from scribokit.common.alphabet import read_alphabet
from scribokit.drawing import codes, texts


class Codes(unittest.TestCase):
    def setUp(self):
        self.dice = random.Random(4)

    def drawn(self, function, count=400):
        return [function(self.dice) for _ in range(count)]

    def test_have_the_check_digits_of_real_containers(self):
        for number in ("CSQU3054383", "MRKU2386679", "CAXU6844023", "BSIU9741980", "TOLU4734787"):
            self.assertEqual(codes.check_digit(number[:10]), number[10], number)

    def test_have_a_check_digit_of_0_for_a_remainder_of_10(self):
        remainders = 0
        for _ in range(300):
            owner, serial, check = codes.container_number(self.dice)
            values = [codes._LETTER_VALUES.get(c, None) or int(c) for c in owner + serial]
            remainder = sum(value * 2**place for place, value in enumerate(values)) % 11
            remainders += remainder == 10
            self.assertEqual(check, "0" if remainder == 10 else str(remainder))
        self.assertGreater(remainders, 10)

    def test_of_containers_are_numbers_or_types_or_parts_of_them(self):
        number = re.compile(r"[A-Z]{3}[UJZ] \d{6} \d( [2-9LM][0-9][A-Z]\d)?")
        part = re.compile(r"[A-Z]{3}[UJZ]( \d{6})?|\d{6} \d|[2-9LM][0-9][A-Z]\d")
        found = self.drawn(codes.container_text)
        whole = [text for text in found if number.fullmatch(text)]
        self.assertTrue(all(number.fullmatch(text) or part.fullmatch(text) for text in found))
        self.assertTrue(0.5 < len(whole) / len(found) < 0.8, len(whole))

    def test_of_counters_are_five_to_eight_digits(self):
        found = self.drawn(codes.counter_text)
        self.assertTrue(all(re.fullmatch(r"\d{5,8}", text) for text in found))
        self.assertEqual({len(text) for text in found}, {5, 6, 7, 8})
        self.assertGreater(sum(text.startswith("00") for text in found), 40)

    def test_of_displays_mostly_have_a_point(self):
        found = self.drawn(codes.display_text)
        self.assertTrue(all(re.fullmatch(r"-?\d+(\.\d+)?|\d\d(:\d\d)+", text) for text in found))
        self.assertGreater(sum("." in text for text in found), 0.6 * len(found))

    def test_of_dates_join_marks_dates_times_and_lines(self):
        found = self.drawn(codes.datecode_text, 8000)
        for pattern in (
            r"MFD\d\d/\d\d/\d\d",
            r"MFG\d{6}",
            r"BBF\d{6}",
            r"\dMFG\d{6}",
            r"\d{8}[A-Z]{2}\d\d:\d\d",
            r"EXP\d{8} ?\d\d:\d\d",
            r"\d{6,8}/?\d{6,8}",
            r"P\d\d\.\d\d\.\d{2,4}",
            r"LOT ?\d+",
        ):
            self.assertTrue(any(re.match(pattern, text) for text in found), pattern)

    def test_of_all_kinds_can_be_read_with_the_shipped_alphabet(self):
        alphabet = read_alphabet()
        for function in (
            codes.container_text,
            codes.counter_text,
            codes.display_text,
            codes.datecode_text,
            texts.digit_text,
        ):
            for text in self.drawn(function):
                self.assertTrue(texts.is_readable(text, alphabet), text)

    def test_of_digits_alone_hold_nothing_else(self):
        found = self.drawn(texts.digit_text, 1000)
        self.assertTrue(all(re.fullmatch(r"\d+( \d+)?", text) for text in found))
        self.assertGreater(sum(set(text) <= set("01 ") for text in found), 20)
        self.assertIn("0", found)


if __name__ == "__main__":
    unittest.main()
