import random
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import cv2
import numpy as np
import torch

from networks import SMALL
from scribokit.common.labels import load_rows, read_labels
from scribokit.network.exporting import write_onnx
from scribokit.common.inputs import Stretch
from scribokit.network.finetune import MixedMaker, split, varied
from scribokit.network.model import Crnn, Shape

PROGRAM = Path(__file__).resolve().parents[2] / "training" / "fine-tune"


def run(*arguments):
    return subprocess.run(
        [sys.executable, str(PROGRAM), *map(str, arguments)],
        capture_output=True,
        text=True,
        check=False,
    )


def picture(width=100):
    return np.full((32, width, 3), 128, np.uint8)


class Split(unittest.TestCase):
    def test_keeps_pictures_of_one_label_together(self):
        pairs = [(f"{label}{i}", label) for label in "ABCDEFGH" for i in range(3)]
        train, held = split(pairs, 0.25, 1)
        self.assertEqual(sorted(train + held), sorted(pairs))
        self.assertFalse({label for _, label in train} & {label for _, label in held})
        self.assertEqual(len(held), 6)

    def test_leaves_most_pictures_for_training_however_they_are_spread(self):
        for spread in (
            {"A": 2, "B": 180},
            {"A": 20, "B": 1},
            {"A": 150, **{f"B{i}": 1 for i in range(50)}},
            {"A": 100, "B": 100},
        ):
            pairs = [
                (f"{label}{i}", label) for label, count in spread.items() for i in range(count)
            ]
            for seed in range(8):
                train, held = split(pairs, 0.25, seed)
                self.assertEqual(sorted(train + held), sorted(pairs))
                self.assertTrue(1 <= len(held) <= round(len(pairs) / 4), (spread, seed))

    def test_holds_out_half_of_the_texts_at_most(self):
        pairs = [(f"A{i}", "A") for i in range(150)] + [(f"B{i}", f"B{i}") for i in range(50)]
        self.assertEqual(len(split(pairs, 0.25, 1)[1]), 25)

    def test_leaves_a_picture_for_training(self):
        self.assertEqual(
            [len(part) for part in split([(str(i), "A") for i in range(4)], 0.99, 1)], [1, 3]
        )

    def test_of_a_single_label_takes_some_pictures(self):
        train, held = split([(str(i), "A") for i in range(8)], 0.25, 1)
        self.assertEqual((len(train), len(held)), (6, 2))

    def test_is_the_same_for_the_same_seed(self):
        pairs = [(str(i), str(i % 7)) for i in range(30)]
        self.assertEqual(split(pairs, 0.3, 4), split(pairs, 0.3, 4))


class Mixing(unittest.TestCase):
    class Drawn:
        def draw(self):
            return picture(), "drawn"

    def test_rehearses_as_often_as_asked(self):
        maker = MixedMaker([(picture(), "line")], self.Drawn(), 0.6, 1)
        drawn = sum(maker.draw()[1] == "drawn" for _ in range(1000))
        self.assertTrue(520 < drawn < 680, drawn)

    def test_leaves_out_pictures_too_narrow_for_their_labels(self):
        with self.assertRaisesRegex(ValueError, "wide enough"):
            MixedMaker([(picture(20), "far too long a label")], self.Drawn(), 0.0, 1)

    def test_keeps_those_that_the_network_stretches_wide_enough(self):
        pair = (picture(80), "0123456789ABCDEFGH")
        with self.assertRaisesRegex(ValueError, "wide enough"):
            MixedMaker([pair], self.Drawn(), 0.0, 1)
        self.assertEqual(
            MixedMaker([pair], self.Drawn(), 0.0, 1, stretch=Stretch(below=128)).draw()[1], pair[1]
        )

    def test_varies_a_picture_but_keeps_its_size(self):
        source = np.random.default_rng(1).integers(0, 255, (20, 60, 3), np.uint8)
        results = [varied(source, random.Random(seed)) for seed in (1, 2)]
        for result in results:
            self.assertEqual((result.shape, result.dtype), (source.shape, np.uint8))
        self.assertFalse(np.array_equal(*results))


class Command(unittest.TestCase):
    def archive(self, root, count=8):
        folder = Path(root) / "AISavePic" / "m_p1_1_C1_T1" / "OK"
        folder.mkdir(parents=True)
        for number in range(count):
            text = f"A{number}"
            image = picture()
            cv2.putText(image, text, (10, 25), cv2.FONT_HERSHEY_SIMPLEX, 0.8, (0, 0, 0), 2)
            cv2.imwrite(str(folder / f"C1_T1ROI1_1121_075610_{number:03d}_{text}.bmp"), image)
        (folder / "C1_T1ROI1_1121_075610_999_DAMAGED.bmp").write_bytes(b"BM")

    def model(self, root, classes=12):
        """m.onnx for the alphabet of m.json, which has its own class and ignored character."""
        (Path(root) / "m.json").write_text(
            '{"classes": [{"name": "1A"}], "ignore_char": "0", "alphabet": "A0123456789"}'
        )
        torch.manual_seed(1)
        write_onnx(Crnn(Shape(SMALL.stages, 8, classes)), Path(root) / "m.onnx")
        return Path(root) / "m.onnx"

    def prepare(self, root, classes=12):
        """Labelled pictures, and a model to improve on them."""
        self.archive(root)
        run("label", root, Path(root) / "labelled")
        return self.model(root, classes)

    def train(self, root, *options):
        return run(
            "train",
            Path(root) / "m.onnx",
            Path(root) / "labelled",
            Path(root) / "run",
            "--known",
            "10",
            "--columns",
            "512",
            "--threads",
            "1",
            *options,
        )

    def test_collects_an_archive_for_labelling(self):
        with tempfile.TemporaryDirectory() as root:
            self.archive(root)
            result = run("label", root, Path(root) / "labelled")
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertIn("DAMAGED.bmp cannot be read", result.stderr)
            pairs = read_labels(Path(root) / "labelled")
            self.assertEqual([label for _, label in pairs], [f"A{n}" for n in range(8)])
            self.assertTrue(all(path.exists() for path, _ in pairs))
            self.assertIsNotNone(cv2.imread(str(Path(root) / "labelled" / "sheet-00.png")))

    def test_keeps_labels_that_may_have_been_corrected(self):
        with tempfile.TemporaryDirectory() as root:
            self.archive(root)
            run("label", root, Path(root) / "labelled")
            labels = Path(root) / "labelled" / "labels.csv"
            corrected = labels.read_text(encoding="utf-8").replace("A7", "A1")
            labels.write_text(corrected, encoding="utf-8")
            result = run("label", root, Path(root) / "labelled")
            self.assertEqual(
                (result.returncode, labels.read_text(encoding="utf-8")), (1, corrected)
            )
            self.assertIn("labels.csv is there already", result.stderr)

    def test_takes_no_message_for_a_reading_and_says_what_it_leaves_out(self):
        with tempfile.TemporaryDirectory() as root:
            self.archive(root, 2)
            unread = Path(root) / "AISavePic" / "m_p1_1_C1_T1" / "NG" / "ng_notype"
            unread.mkdir(parents=True)
            for number in range(5):
                cv2.imwrite(
                    str(unread / f"C1_T1ROI1_1121_075611_{number:03d}_unknown error!.bmp"),
                    picture(),
                )
            result = run("label", root, Path(root) / "labelled", "--most", "3")
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertIn(
                "2 more pictures are left out, whose reading 3 others have", result.stdout
            )
            self.assertEqual(
                sorted(row["text"] for row in load_rows(Path(root) / "labelled" / "labels.csv")),
                ["", "", "", "A0", "A1"],
            )

    def test_says_that_a_folder_is_no_archive(self):
        with tempfile.TemporaryDirectory() as root:
            result = run("label", root, Path(root) / "labelled")
        self.assertEqual(result.returncode, 1)
        self.assertIn("no archived pictures", result.stderr)

    def test_trains_reports_and_writes_a_package(self):
        with tempfile.TemporaryDirectory() as root:
            config = self.prepare(root).with_suffix(".json")
            result = self.train(root, "--minutes", "0.05")
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertIn("6 pictures to train on, 2 held out", result.stdout)
            self.assertIn("| lines right | before | after |", result.stdout)
            self.assertIn("2 pictures held out", result.stdout)
            self.assertTrue((Path(root) / "run" / "ocr_printed_p1_2.onnx").exists())
            self.assertEqual(
                (Path(root) / "run" / "ocr_printed_p1_2.json").read_text(),
                config.read_text(),
                "that of the model",
            )

    def test_that_is_stopped_keeps_what_it_has_learned(self):
        with tempfile.TemporaryDirectory() as root:
            self.prepare(root)
            command = [
                sys.executable,
                str(PROGRAM),
                "train",
                f"{root}/m.onnx",
                f"{root}/labelled",
                f"{root}/run",
                "--known",
                "10",
                "--columns",
                "512",
                "--threads",
                "1",
                "--minutes",
                "60",
            ]
            training = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
            self.assertIn("6 pictures to train on", training.stdout.readline())
            time.sleep(2)
            training.send_signal(signal.SIGINT)
            output = training.communicate(timeout=120)[0]
            self.assertEqual(training.returncode, 0)
            self.assertIn("| lines right | before | after |", output)
            self.assertTrue((Path(root) / "run" / "ocr_printed_p1_2.onnx").exists())

    def test_refuses_a_model_for_another_alphabet(self):
        with tempfile.TemporaryDirectory() as root:
            self.prepare(root, classes=5)
            result = self.train(root)
            self.assertEqual(result.returncode, 1)
            self.assertIn("m.onnx: 5 classes, the alphabet needs 12", result.stderr)

    def test_finds_out_first_whether_it_can_write(self):
        with tempfile.TemporaryDirectory() as root:
            self.prepare(root)
            (Path(root) / "run").write_text("a file")
            result = self.train(root, "--minutes", "60")
            self.assertEqual(
                (result.returncode, "Traceback" in result.stderr), (1, False), result.stderr
            )

    def test_names_a_text_outside_the_alphabet(self):
        with tempfile.TemporaryDirectory() as root:
            cv2.imwrite(str(Path(root) / "AÄ.png"), picture())
            result = run("train", "m.onnx", root, Path(root) / "run")
        self.assertEqual(result.returncode, 1)
        self.assertIn("outside the alphabet", result.stderr)


if __name__ == "__main__":
    unittest.main()
