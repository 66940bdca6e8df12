import subprocess
import tempfile
import unittest
from dataclasses import replace
from pathlib import Path

import torch
from torch.nn import functional

from networks import SMALL, stirred
from scribokit.network.exporting import write_onnx
from scribokit.network.growing import grown
from scribokit.network.model import Crnn, folded, from_onnx, read_stages, weight_count
from scribokit.network.training import load_model

TRAIN = Path(__file__).resolve().parents[2] / "training" / "train"
SMALL_WEIGHTS = weight_count(folded(Crnn(SMALL)))


class Growing(unittest.TestCase):
    def difference(self, stages, hidden):
        model = stirred()
        large = grown(model, replace(SMALL, stages=read_stages(stages), hidden=hidden)).eval()
        self.assertEqual((large.shape.stages, large.shape.hidden), (read_stages(stages), hidden))
        self.assertGreaterEqual(weight_count(large), SMALL_WEIGHTS)
        picture = torch.randn(2, 3, 32, 77)
        with torch.no_grad():
            return float((model(picture) - large(picture)).abs().max())

    def test_of_nothing_changes_nothing(self):
        self.assertLess(self.difference("4/6/8,8/10/12", 8), 1e-4)

    def test_of_channels_keeps_the_scores(self):
        self.assertLess(self.difference("5/9/8,16/11/20", 8), 1e-4)

    def test_of_the_lstm_keeps_the_scores(self):
        self.assertLess(self.difference("4/6/8,8/10/12", 13), 1e-4)

    def test_of_convolutions_keeps_the_scores(self):
        self.assertLess(self.difference("4,4/6,7,6/8,8,8/10,10/10,12", 8), 1e-4)

    def test_of_everything_keeps_the_scores(self):
        self.assertLess(self.difference("6,8/9/12,12,14/20,16/18,20", 11), 1e-4)

    def test_lets_the_new_parts_learn(self):
        torch.manual_seed(5)
        large = grown(
            stirred(), replace(SMALL, stages=read_stages("4/6/8,8/10,11/10,14"), hidden=9)
        )
        before = {name: value.clone() for name, value in large.state_dict().items()}
        optimizer = torch.optim.Adam(large.parameters(), lr=1e-2)
        for _ in range(3):
            optimizer.zero_grad()
            large(torch.randn(2, 3, 32, 64))[..., 0].sum().backward()
            optimizer.step()
        unchanged = [
            name for name, value in large.state_dict().items() if torch.equal(value, before[name])
        ]
        self.assertEqual(unchanged, [])
        self.assertTrue(
            bool((large.classifier.weight[:, 8] != 0).any()),
            "nobody listens to the new unit of the LSTM",
        )

    def test_refuses_to_shrink(self):
        for stages, hidden, message in (
            ("4/6/8,8/10/12", 7, "an LSTM of 8 cannot shrink to 7"),
            ("4/6/8/10/12", 8, "a stage of 2 convolutions cannot shrink to 1"),
            ("4/6/8,7/10/12", 8, "8 channels cannot shrink to 7"),
            ("4/6/8,8/10,9/12", 8, "10 channels cannot shrink to 9"),
        ):
            with self.assertRaisesRegex(ValueError, message):
                grown(stirred(), replace(SMALL, stages=read_stages(stages), hidden=hidden))

    def test_takes_up_a_stretch(self):
        model = stirred()
        large = grown(model, replace(SMALL, stretch_below=128)).eval()
        self.assertEqual(large.shape.stretch_below, 128)
        picture = torch.randn(1, 3, 32, 64)
        wide = functional.interpolate(picture, (32, 96), mode="bilinear", align_corners=False)
        with torch.no_grad():
            self.assertLess(float((large(picture) - model(wide)).abs().max()), 1e-4)


class Stages(unittest.TestCase):
    def test_are_read_as_they_are_written(self):
        self.assertEqual(
            read_stages("24/48/96,96/128/160"), ((24,), (48,), (96, 96), (128,), (160,))
        )
        self.assertEqual(read_stages("1,2/3/4/5/6,7"), ((1, 2), (3,), (4,), (5,), (6, 7)))

    def test_of_another_number_or_without_widths_are_refused(self):
        for text in (
            "24/48/96/128",
            "24/48/96/128/160/160",
            "24/48//128/160",
            "24/48/a/128/160",
            "24/0/96/128/160",
            "",
        ):
            with self.assertRaises(ValueError):
                read_stages(text)


class Command(unittest.TestCase):
    def train(self, folder, *more):
        return subprocess.run(
            [
                str(TRAIN),
                "--run",
                f"{folder}/run",
                "--alphabet",
                "012",
                "--minutes",
                "0",
                "--columns",
                "320",
                "--workers",
                "0",
                "--recipe",
                "clean",
                *more,
            ],
            capture_output=True,
            text=True,
        )

    def test_grows_the_given_model(self):
        with tempfile.TemporaryDirectory() as folder:
            write_onnx(stirred(), f"{folder}/m.onnx")
            done = self.train(
                folder,
                "--from-onnx",
                f"{folder}/m.onnx",
                "--stages",
                "4/6/8,9/10/12",
                "--hidden",
                "10",
            )
            self.assertEqual(done.returncode, 0, done.stderr)
            shape = load_model(Path(folder) / "run" / "last.pt")[0].shape
        self.assertEqual((shape.stages, shape.hidden), (((4,), (6,), (8, 9), (10,), (12,)), 10))

    def test_stretches_from_now_on_what_the_given_model_did_not(self):
        with tempfile.TemporaryDirectory() as folder:
            write_onnx(stirred(), f"{folder}/m.onnx")
            done = self.train(folder, "--from-onnx", f"{folder}/m.onnx", "--stretch-below", "128")
            self.assertEqual(done.returncode, 0, done.stderr)
            model = load_model(Path(folder) / "run" / "last.pt")[0]
            write_onnx(model, f"{folder}/n.onnx")
            written = from_onnx(f"{folder}/n.onnx")
        self.assertEqual((model.shape.stages, model.shape.stretch_below), (SMALL.stages, 128))
        self.assertEqual(written.shape.stretch_below, 128)

    def test_keeps_the_size_of_the_given_model_without_being_asked(self):
        with tempfile.TemporaryDirectory() as folder:
            write_onnx(stirred(), f"{folder}/m.onnx")
            self.assertEqual(self.train(folder, "--from-onnx", f"{folder}/m.onnx").returncode, 0)
            shape = load_model(Path(folder) / "run" / "last.pt")[0].shape
        self.assertEqual((shape.stages, shape.hidden), (SMALL.stages, SMALL.hidden))

    def test_does_not_go_on_with_a_network_of_another_size(self):
        with tempfile.TemporaryDirectory() as folder:
            write_onnx(stirred(), f"{folder}/m.onnx")
            first = ("--from-onnx", f"{folder}/m.onnx", "--hidden", "10")
            for more, status in (
                (first, 0),
                (first, 0),
                ((), 0),
                (("--hidden", "11"), 1),
                (("--stages", "4/6/8,9/10/12"), 1),
                (("--stretch-below", "64"), 1),
            ):
                done = self.train(folder, *more)
                self.assertEqual(done.returncode, status, (more, done.stderr))
                self.assertEqual(
                    done.stderr,
                    f"{folder}/run/last.pt has another --stages, --hidden, "
                    "--stretch-below or --more-columns: "
                    "give another --run to begin with these\n"
                    if status
                    else "",
                )

    def test_says_where_a_checkpoint_is_damaged(self):
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(self.train(folder).returncode, 0)
            checkpoint = Path(folder) / "run" / "last.pt"
            for content in (b"", b"not a checkpoint", checkpoint.read_bytes()[:5000]):
                checkpoint.write_bytes(content)
                done = self.train(folder)
                self.assertEqual(
                    (done.returncode, done.stderr),
                    (1, f"{checkpoint}: not a checkpoint, or damaged\n"),
                )

    def test_says_in_one_line_what_is_wrong(self):
        with tempfile.TemporaryDirectory() as folder:
            write_onnx(stirred(), f"{folder}/m.onnx")
            for more, message in (
                (
                    ("--from-onnx", f"{folder}/m.onnx", "--hidden", "7"),
                    "an LSTM of 8 cannot shrink to 7\n",
                ),
                (
                    ("--from-onnx", f"{folder}/m.onnx", "--stretch-below", "321"),
                    "pictures can be stretched towards 0 to 320 columns, not 321\n",
                ),
                (
                    ("--stretch-below", "-1"),
                    "pictures can be stretched towards 0 to 320 columns, not -1\n",
                ),
                (
                    ("--from-onnx", f"{folder}/m.onnx", "--alphabet", "01"),
                    f"{folder}/m.onnx: 4 classes, the alphabet needs 3\n",
                ),
            ):
                done = self.train(folder, *more)
                self.assertEqual((done.returncode, done.stderr), (1, message))
            done = self.train(folder, "--stages", "24/48")
        self.assertEqual(done.returncode, 2)
        self.assertIn(
            "--stages: 24/48: a network has 5 stages of one convolution or more", done.stderr
        )
