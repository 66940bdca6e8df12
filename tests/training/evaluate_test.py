import shutil
import stat
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import cv2
import numpy as np
import torch

from networks import SMALL
from scribokit.common.labels import CSV_NAME, read_boxes, read_labels
from scribokit.common.pictures import load_picture
from scribokit.measuring.readers import InspectReader, onnx_reader, readings
from scribokit.measuring.variations import sideways, with_margin
from scribokit.network.exporting import write_onnx
from scribokit.network.model import Crnn

TRAINING = Path(__file__).resolve().parents[2] / "training"


def run(program, *arguments):
    return subprocess.run(
        [sys.executable, str(TRAINING / program), *map(str, arguments)],
        capture_output=True,
        text=True,
        check=False,
    )


class MadePictures(unittest.TestCase):
    def test_are_labelled_in_a_table_and_the_same_again(self):
        with tempfile.TemporaryDirectory() as root:
            for name in ("a", "b"):
                result = run(
                    "make-pictures",
                    Path(root) / name,
                    "--count",
                    12,
                    "--recipe",
                    "plates",
                    "--seed",
                    5,
                    "--held-out-fonts",
                )
                self.assertEqual(result.returncode, 0, result.stderr)
            pairs = read_labels(Path(root) / "a")
            self.assertEqual(len(pairs), 12)
            self.assertEqual(
                (Path(root) / "a" / CSV_NAME).read_bytes(),
                (Path(root) / "b" / CSV_NAME).read_bytes(),
            )
            for path, _ in pairs:
                self.assertEqual(path.read_bytes(), (Path(root) / "b" / path.name).read_bytes())
            self.assertTrue((Path(root) / "a-sheet.png").exists())

    def test_do_not_replace_labels_that_may_have_been_corrected(self):
        with tempfile.TemporaryDirectory() as root:
            (Path(root) / CSV_NAME).write_text("file,text\na.png,CORRECTED\n")
            result = run("make-pictures", root, "--count", 1)
            self.assertEqual(
                (result.returncode, "is there already" in result.stderr), (1, True), result.stderr
            )
            self.assertEqual((Path(root) / CSV_NAME).read_text(), "file,text\na.png,CORRECTED\n")

    def test_are_refused_where_they_cannot_be_written(self):
        with tempfile.TemporaryDirectory() as root:
            (Path(root) / "000000.png").mkdir()
            result = run("make-pictures", root, "--count", 1, "--recipe", "clean")
            self.assertEqual(
                (result.returncode, result.stderr.strip().splitlines()[-1]),
                (1, f"{root}/000000.png cannot be written"),
            )

    def test_shown_with_what_is_around_tell_where_their_lines_are(self):
        with tempfile.TemporaryDirectory() as root:
            folder = Path(root) / "a"
            result = run("make-pictures", folder, "--count", 8, "--recipe", "clean", "--around")
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertEqual(len(read_labels(folder)), 8)
            clear = 0
            for path, (left, top, right, bottom) in read_boxes(folder).items():
                picture = load_picture(path)
                height, width = picture.shape[:2]
                self.assertTrue(0 < left < right < width and 0 < top < bottom < height)
                room = 0.5 * (bottom - top)
                self.assertTrue(min(left, top, width - right, height - bottom) >= room, path)
                # Nearly all ink is in the box, unless another line is drawn beside it.
                line = picture[top:bottom, left:right].std()
                beside = max(picture[: top - 3].std(), picture[bottom + 3 :].std())
                clear += line > 4 * beside
            self.assertGreater(clear, 4)


class Variations(unittest.TestCase):
    def test_stretch_sideways_alone(self):
        picture = np.zeros((10, 40, 3), np.uint8)
        picture[:, 20:] = 200
        for factor, width in ((0.5, 20), (1, 40), (2, 80), (0.001, 1)):
            result = sideways(picture, factor)
            self.assertEqual(result.shape, (10, width, 3))
        self.assertEqual(sideways(picture, 2)[:, [20, 70], 0].tolist(), [[0, 200]] * 10)

    def test_crop_to_the_line_and_a_part_of_its_height(self):
        picture = np.arange(50 * 80 * 3, dtype=np.uint32).reshape(50, 80, 3).astype(np.uint8)
        box = 20, 15, 60, 35
        for margin, rows, columns in (
            (0, slice(15, 35), slice(20, 60)),
            (0.25, slice(10, 40), slice(15, 65)),
            (-0.1, slice(17, 33), slice(22, 58)),
            (10, slice(0, 50), slice(0, 80)),
        ):
            result = with_margin(picture, box, margin)
            self.assertTrue(np.array_equal(result, picture[rows, columns]), margin)
        self.assertEqual(with_margin(picture, (79, 49, 80, 50), -0.4).shape, (1, 1, 3))


class Evaluate(unittest.TestCase):
    def folder(self, root):
        folder = Path(root) / "set"
        folder.mkdir()
        for text in ("A1", "A0"):
            cv2.imwrite(str(folder / f"{text}.png"), np.full((32, 64, 3), 200, np.uint8))
        config = Path(root) / "m.json"
        config.write_text('{"alphabet": "A01"}')
        torch.manual_seed(1)
        write_onnx(Crnn(SMALL), Path(root) / "m.onnx")
        return folder, config

    def test_prints_a_table_and_writes_the_report(self):
        with tempfile.TemporaryDirectory() as root:
            folder, config = self.folder(root)
            result = run(
                "evaluate",
                folder,
                "--onnx",
                Path(root) / "m.onnx",
                "--config",
                config,
                "--report",
                Path(root) / "report",
            )
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertIn("| set | m | 2 |", result.stdout)
            self.assertEqual(
                sorted(path.name for path in (Path(root) / "report").iterdir()),
                ["set-m-confusions.png", "set-m-worst.png"],
            )

    def test_prints_how_lines_are_read_when_they_are_stretched(self):
        with tempfile.TemporaryDirectory() as root:
            folder, config = self.folder(root)
            model = Path(root) / "m.onnx"
            result = run(
                "evaluate", folder, "--onnx", model, "--config", config, "--sideways", "0.5,1,2"
            )
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertIn("Stretched sideways:\n\n| set | reader | 0.5 | 1 | 2 |", result.stdout)
            self.assertRegex(result.stdout, r"\| set \| m \|( [0-9.]+ % \|){3}\n")

    def test_prints_how_lines_are_read_with_margins_around_them(self):
        with tempfile.TemporaryDirectory() as root:
            folder, config = self.folder(root)
            model = Path(root) / "m.onnx"
            (folder / CSV_NAME).write_text(
                "file,text,left,top,right,bottom\nA1.png,A1,10,8,50,24\nA0.png,A0,10,8,50,24\n"
            )
            given = "evaluate", folder, "--onnx", model, "--config", config, "--margins"
            for words in (("-0.08,0,0.25",), ("-0.08,0,0.25", "--by-width")):
                result = run(*given, *words)
                self.assertEqual(result.returncode, 0, result.stderr)
                self.assertIn("line:\n\n| set | reader | -0.08 | 0 | 0.25 |", result.stdout)
                self.assertRegex(result.stdout, r"\| set \| m \|( [0-9.]+ % \|){3}\n")

    def test_needs_to_know_where_the_lines_are_for_margins(self):
        with tempfile.TemporaryDirectory() as root:
            folder, config = self.folder(root)
            given = "evaluate", folder, "--onnx", Path(root) / "m.onnx", "--config", config
            columns = "file,text,left,top,right,bottom\n"
            for table, message in (
                ("file,text\nA1.png,A1\n", "every row needs whole numbers in the columns"),
                (columns + "A1.png,A1,1,2,x,4\n", "every row needs whole numbers in the columns"),
                (columns + "A1.png,A1,5,2,5,4\n", "the box of A1.png is empty"),
            ):
                (folder / CSV_NAME).write_text(table)
                result = run(*given, "--margins", "0,0.1")
                self.assertEqual(result.returncode, 1)
                self.assertIn(message, result.stderr)

    def test_refuses_factors_and_margins_that_mean_nothing(self):
        for words, message in (
            (("--sideways", "1,0"), "argument --sideways: the factors must be above 0"),
            (("--sideways", "wide"), "wide: must be numbers with commas between them"),
            (("--sideways", "1,inf"), "1,inf: must be numbers with commas between them"),
            (("--margins", "0,-0.5"), "argument --margins: the margins must be above -0.5"),
            (("--margins",), "argument --margins: expected one argument"),
        ):
            result = run("evaluate", "nowhere", *words)
            self.assertEqual(result.returncode, 2)
            self.assertIn(message, result.stderr)

    def test_tells_models_of_one_name_apart(self):
        with tempfile.TemporaryDirectory() as root:
            folder, config = self.folder(root)
            (Path(root) / "b").mkdir()
            shutil.copy(Path(root) / "m.onnx", Path(root) / "b" / "m.onnx")
            models = [Path(root) / "m.onnx", Path(root) / "b" / "m.onnx"]
            result = run(
                "evaluate",
                folder,
                "--onnx",
                models[0],
                "--onnx",
                models[1],
                "--config",
                config,
                "--report",
                Path(root) / "report",
            )
            self.assertEqual(result.returncode, 0, result.stderr)
            for model in models:
                self.assertIn(f"| set | {model} | 2 |", result.stdout)
            self.assertEqual(len(list((Path(root) / "report").iterdir())), 4)

    def test_ends_with_a_sentence_where_a_file_cannot_be_used(self):
        with tempfile.TemporaryDirectory() as root:
            folder, config = self.folder(root)
            damaged = Path(root) / "damaged.onnx"
            damaged.write_bytes((Path(root) / "m.onnx").read_bytes()[:1000])
            (Path(root) / "file").write_text("")
            for options in (
                ["--onnx", damaged],
                ["--onnx", Path(root) / "missing.onnx"],
                ["--onnx", Path(root) / "m.onnx", "--labels", "missing.csv"],
                ["--onnx", Path(root) / "m.onnx", "--report", Path(root) / "file"],
            ):
                result = run("evaluate", folder, "--config", config, *options)
                self.assertEqual(
                    (result.returncode, len(result.stderr.splitlines())), (1, 1), result.stderr
                )

    def test_counts_a_picture_without_a_text(self):
        with tempfile.TemporaryDirectory() as root:
            folder, config = self.folder(root)
            cv2.imwrite(str(folder / "_1.png"), np.full((32, 64, 3), 200, np.uint8))
            result = run(
                "evaluate",
                folder,
                "--onnx",
                Path(root) / "m.onnx",
                "--config",
                config,
                "--by-width",
            )
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertIn("| set | m | 3 |", result.stdout)

    def test_prints_the_lines_right_by_size(self):
        with tempfile.TemporaryDirectory() as root:
            folder, config = self.folder(root)
            cv2.imwrite(str(folder / "A01A0.png"), np.full((16, 28, 3), 200, np.uint8))
            result = run(
                "evaluate",
                folder,
                "--onnx",
                Path(root) / "m.onnx",
                "--config",
                config,
                "--by-width",
                "--by-height",
            )
            self.assertEqual(result.returncode, 0, result.stderr)
            widths, heights = result.stdout.split("| columns a character |")[1].split("| rows |")
            self.assertIn("| set | m | 0 to 12 | 1 |", widths)
            self.assertIn("| set | m | 20 and more | 2 |", widths)
            self.assertIn("| set | m | 16 to 24 | 1 |", heights)
            self.assertIn("| set | m | 24 to 40 | 2 |", heights)

    def test_wants_a_reader_and_labelled_pictures(self):
        with tempfile.TemporaryDirectory() as root:
            folder, config = self.folder(root)
            self.assertIn("nothing to measure", run("evaluate", folder).stderr)
            empty = Path(root) / "empty"
            empty.mkdir()
            result = run("evaluate", empty, "--onnx", Path(root) / "m.onnx", "--config", config)
            self.assertEqual(result.returncode, 1)
            self.assertIn("no labelled pictures", result.stderr)

    def test_refuses_a_model_of_another_alphabet(self):
        with tempfile.TemporaryDirectory() as root:
            self.folder(root)
            with self.assertRaisesRegex(ValueError, "4 classes, the alphabet needs 3"):
                onnx_reader(Path(root) / "m.onnx", "A0")

    def test_names_a_file_that_is_no_picture(self):
        with self.assertRaisesRegex(ValueError, "not a picture"):
            load_picture(__file__)


class Inspecting(unittest.TestCase):
    def program(self, root, script):
        path = Path(root) / "inspect"
        path.write_text("#!/bin/sh\n" + script)
        path.chmod(path.stat().st_mode | stat.S_IXUSR)
        picture = Path(root) / "x.png"
        cv2.imwrite(str(picture), np.zeros((8, 8, 3), np.uint8))
        return path, picture

    def test_takes_the_text_of_each_picture(self):
        lines = (
            '{"picture": "/a/000001.png", "regions": [{"text": "B"}], "verdict": "OK"}\n\n'
            '{"picture": "000000.png", "regions": [{"text": "A"}, {"text": "C"}], '
            '"verdict": "NG"}\n'
        )
        self.assertEqual(readings(lines), {"000001.png": "B", "000000.png": "AC"})

    def test_joins_the_items_of_a_run(self):
        with tempfile.TemporaryDirectory() as root:
            line = '{"picture": "000000.png", "regions": [{"text": "AB"}]}'
            path, picture = self.program(root, f"echo '{line}'; exit 1\n")
            self.assertEqual(InspectReader(path)([picture]), ["AB"])

    def test_tells_the_programs_fault(self):
        with tempfile.TemporaryDirectory() as root:
            path, picture = self.program(root, "echo no such model >&2; exit 2\n")
            with self.assertRaisesRegex(ValueError, "no such model"):
                InspectReader(path)([picture])

    def test_notices_a_missing_reading(self):
        with tempfile.TemporaryDirectory() as root:
            path, picture = self.program(root, "exit 0\n")
            with self.assertRaisesRegex(ValueError, "gave no reading"):
                InspectReader(path)([picture])


if __name__ == "__main__":
    unittest.main()
