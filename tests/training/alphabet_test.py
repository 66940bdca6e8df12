import json
import tempfile
import unittest
from pathlib import Path

from scribokit.common.alphabet import read_alphabet


class Alphabet(unittest.TestCase):
    def read(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "model.json"
            path.write_text(text, encoding="utf-8")
            return read_alphabet(path)

    def test_is_the_configuration_files(self):
        self.assertEqual(self.read('{"alphabet": "01Aß"}'), "01Aß")

    def test_of_the_shipped_model_has_the_order_of_its_classes(self):
        self.assertEqual(
            read_alphabet(),
            "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-/.:()+#",
        )

    def test_that_is_missing_or_empty_is_an_error(self):
        for text in ("{}", '{"alphabet": ""}'):
            with self.assertRaisesRegex(ValueError, "no alphabet"):
                self.read(text)

    def test_that_repeats_a_character_is_an_error(self):
        with self.assertRaisesRegex(ValueError, "repeats"):
            self.read('{"alphabet": "ABA"}')

    def test_of_a_damaged_file_is_an_error(self):
        with self.assertRaises(json.JSONDecodeError):
            self.read("{")


if __name__ == "__main__":
    unittest.main()
