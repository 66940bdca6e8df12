import io
import os
import pty
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import cv2
import numpy as np

from scribokit.collecting.labelling import (
    BACKSPACE,
    CLEAR,
    ENTER,
    LEAVE_OUT,
    LEFT,
    RIGHT,
    UP,
    Line,
    correct,
    half_blocks,
    keys,
)
from scribokit.common.labels import load_rows, read_labels, write_labels

PROGRAM = Path(__file__).resolve().parents[2] / "training" / "fine-tune"
DIGITS = "0123456789"


def typed(data):
    """A file descriptor from which these bytes come, and then the end."""
    reading, writing = os.pipe()
    os.write(writing, data)
    os.close(writing)
    return reading


def labelled(root, texts=("12", "34", "56")):
    folder = Path(root)
    for text in texts:
        cv2.imwrite(str(folder / f"{text}.png"), np.full((20, 50, 3), 200, np.uint8))
    write_labels(folder / "labels.csv", [(f"{text}.png", text) for text in texts])
    return folder


class Keys(unittest.TestCase):
    def read(self, data):
        descriptor = typed(data)
        try:
            return list(keys(descriptor))
        finally:
            os.close(descriptor)

    def test_are_characters_and_names(self):
        self.assertEqual(
            self.read(b"a9\r\n\x7f\x08\x04\x15"),
            ["a", "9", ENTER, ENTER, BACKSPACE, BACKSPACE, LEAVE_OUT, CLEAR],
        )

    def test_of_arrows_come_as_escape_sequences(self):
        self.assertEqual(self.read(b"\x1b[A\x1b[C\x1bOD7"), [UP, RIGHT, LEFT, "7"])

    def test_without_a_meaning_are_left_out(self):
        self.assertEqual(self.read(b"\x1b[3~\x1b[1;5C\x01\t5\x1b["), ["5"])

    def test_may_be_of_several_bytes(self):
        self.assertEqual(self.read("Ä€5".encode() + b"\xc3"), ["Ä", "€", "5", ""])


class Editing(unittest.TestCase):
    def press(self, text, *pressed):
        line = Line(text, DIGITS)
        for key in pressed:
            line.press(key)
        return line.text

    def test_puts_in_and_takes_away_at_the_cursor(self):
        self.assertEqual(self.press("12", "3"), "123")
        self.assertEqual(self.press("12", LEFT, "3"), "132")
        self.assertEqual(self.press("12", LEFT, LEFT, LEFT, "3"), "312")
        self.assertEqual(self.press("12", LEFT, BACKSPACE), "2")
        self.assertEqual(self.press("12", LEFT, LEFT, BACKSPACE), "12")
        self.assertEqual(self.press("12", RIGHT, BACKSPACE, BACKSPACE, BACKSPACE, "9"), "9")
        self.assertEqual(self.press("12", CLEAR, "7"), "7")

    def test_takes_characters_of_the_alphabet_only(self):
        line = Line("1", DIGITS)
        for key in ("a", "", "Ä"):
            self.assertFalse(line.press(key))
        self.assertEqual(line.text, "1")


class Correcting(unittest.TestCase):
    def run_keys(self, folder, data):
        descriptor = typed(data)
        screen = io.StringIO()
        try:
            return correct(folder, DIGITS, descriptor, screen), screen.getvalue()
        finally:
            os.close(descriptor)

    def test_confirms_changes_and_leaves_out(self):
        with tempfile.TemporaryDirectory() as root:
            folder = labelled(root)
            counts, screen = self.run_keys(folder, b"\r\x7f5\r\x04")
            self.assertEqual(counts, (3, 3))
            self.assertEqual(
                [(path.name, text) for path, text in read_labels(folder)],
                [("12.png", "12"), ("34.png", "35")],
            )
        for shown in ("12.png, 1 of 3", "34.png, 2 of 3", "left out", "▀"):
            self.assertIn(shown, screen)

    def test_stops_at_the_end_of_the_input_and_goes_on_there(self):
        with tempfile.TemporaryDirectory() as root:
            folder = labelled(root)
            self.assertEqual(self.run_keys(folder, b"\r9")[0], (1, 3))
            self.assertEqual(
                [row["text"] for row in load_rows(folder / "labels.csv")], ["12", "34", "56"]
            )
            counts, screen = self.run_keys(folder, b"\r\r")
            self.assertEqual(counts, (3, 3))
            self.assertNotIn("12.png", screen)

    def test_goes_back_to_the_picture_before(self):
        with tempfile.TemporaryDirectory() as root:
            folder = labelled(root)
            self.run_keys(folder, b"\x1b[A\r\x1b[A\x157\r\r\r")
            self.assertEqual([text for _, text in read_labels(folder)], ["7", "34", "56"])

    def test_does_not_confirm_a_text_outside_the_alphabet(self):
        with tempfile.TemporaryDirectory() as root:
            folder = labelled(root, ("1B",))
            self.assertEqual(self.run_keys(folder, b"\r")[0], (0, 1))
            self.assertEqual(self.run_keys(folder, b"\r\x7f8\r")[0], (1, 1))
            self.assertEqual([text for _, text in read_labels(folder)], ["18"])

    def test_says_that_a_picture_is_gone(self):
        with tempfile.TemporaryDirectory() as root:
            folder = labelled(root)
            (folder / "12.png").unlink()
            self.assertIn("No such file", self.run_keys(folder, b"\x04")[1])


class Blocks(unittest.TestCase):
    def test_fit_the_columns_and_show_two_pixels_each(self):
        lines = half_blocks(np.zeros((60, 400, 3), np.uint8), 80)
        self.assertEqual({line.count("▀") for line in lines}, {80})
        self.assertEqual(len(lines), 6)
        picture = np.zeros((2, 1, 3), np.uint8)
        picture[1] = (1, 2, 3)
        self.assertEqual(
            half_blocks(cv2.resize(picture, (16, 32), interpolation=cv2.INTER_NEAREST), 80)[
                -1
            ].split("▀")[0],
            "\x1b[38;2;3;2;1m\x1b[48;2;3;2;1m",
        )

    def test_of_odd_pictures_are_lines_too(self):
        for shape in ((1, 1), (1, 500), (500, 1)):
            self.assertTrue(half_blocks(np.zeros(shape + (3,), np.uint8), 40))


class Command(unittest.TestCase):
    def archive(self, root):
        folder = Path(root) / "AISavePic" / "m_p1_1_C1_T1" / "OK"
        folder.mkdir(parents=True)
        for number in range(2):
            cv2.imwrite(
                str(folder / f"C1_T1ROI1_1121_075610_{number:03d}_A{number}.bmp"),
                np.full((32, 90, 3), 128, np.uint8),
            )

    def command(self, root, *more):
        return [
            sys.executable,
            str(PROGRAM),
            "label",
            str(root),
            str(Path(root) / "labelled"),
            "--keys",
            *more,
        ]

    def test_takes_keys_from_a_pipe_and_goes_on_later(self):
        with tempfile.TemporaryDirectory() as root:
            self.archive(root)
            first = subprocess.run(
                self.command(root), input=b"X\n", capture_output=True, check=False
            )
            self.assertEqual(first.returncode, 0, first.stderr)
            self.assertIn("1 of 2 pictures", first.stdout.decode())
            second = subprocess.run(
                self.command(root), input=b"\n", capture_output=True, check=False
            )
            self.assertIn("2 of 2 pictures", second.stdout.decode())
            self.assertEqual(
                [text for _, text in read_labels(Path(root) / "labelled")], ["A0X", "A1"]
            )

    def test_takes_single_keys_from_a_terminal_and_leaves_it_as_it_was(self):
        import termios

        with tempfile.TemporaryDirectory() as root:
            self.archive(root)
            try:
                ours, theirs = pty.openpty()
            except OSError as error:
                print(
                    f"there is no terminal to test with: {error}; is /dev/pts mounted?",
                    file=sys.stderr,
                )
                return  # the keys by themselves are tested above, through a pipe
            before = termios.tcgetattr(theirs)
            with subprocess.Popen(
                self.command(root), stdin=theirs, stdout=subprocess.PIPE, stderr=subprocess.STDOUT
            ) as process:
                shown = b""
                while b"> A0" not in shown:
                    part = os.read(process.stdout.fileno(), 4096)
                    self.assertTrue(part, shown)
                    shown += part
                os.write(ours, b"7\r\x04")
                shown += process.stdout.read()
            self.assertEqual(termios.tcgetattr(theirs), before)
            os.close(ours)
            os.close(theirs)
            self.assertEqual(process.returncode, 0, shown)
            self.assertEqual([text for _, text in read_labels(Path(root) / "labelled")], ["A07"])


if __name__ == "__main__":
    unittest.main()
