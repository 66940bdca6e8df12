import json
import tempfile
import unittest
from dataclasses import replace
from pathlib import Path

import onnx
import torch

from networks import SMALL, stirred
from scribokit.network.exporting import TOLERANCE, export_difference, write_onnx, write_package
from scribokit.network.model import STRETCH_BELOW, Crnn, Shape, blended, folded, from_onnx, to_input
from scribokit.network.supply import Supply
from scribokit.network.training import (
    Trainer,
    learning_rate,
    load_model,
    load_trainer,
    save_checkpoint,
)


class Exporting(unittest.TestCase):
    def test_folds_the_normalisation_without_changing_the_scores(self):
        model = stirred()
        picture = torch.randn(1, 3, 32, 77)
        self.assertLess(float((model(picture) - folded(model)(picture)).abs().max()), 1e-4)

    def test_writes_the_names_the_axes_and_a_soft_max(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "m.onnx"
            self.assertLessEqual(write_onnx(stirred(), path), TOLERANCE)
            written = onnx.load(str(path))
        graph = written.graph
        self.assertEqual(written.opset_import[0].version, 13)
        dims = [d.dim_param or d.dim_value for d in graph.input[0].type.tensor_type.shape.dim]
        self.assertEqual((graph.input[0].name, dims), ("input", [1, 3, 32, "width"]))
        dims = [d.dim_param or d.dim_value for d in graph.output[0].type.tensor_type.shape.dim]
        self.assertEqual((graph.output[0].name, dims), ("output", ["steps", 1, 4]))
        kinds = [node.op_type for node in graph.node]
        self.assertNotIn("BatchNormalization", kinds)
        self.assertEqual(kinds[-1], "Softmax")

    def test_notices_weights_that_are_not_the_models(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "m.onnx"
            write_onnx(stirred(), path)
            other = stirred()
            with torch.no_grad():
                other.classifier.bias[1] += 1
            self.assertGreater(export_difference(other, path), TOLERANCE)

    def test_does_not_take_the_rounding_of_another_order_in_memory_for_a_difference(self):
        shipped = Path(__file__).parents[2] / "models/ocr_printed_p1_1.onnx"
        trained = from_onnx(shipped).to(memory_format=torch.channels_last)
        self.assertLess(export_difference(trained, shipped), 1e-6)

    def test_is_read_back_to_train_on(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "m.onnx"
            write_onnx(stirred(), path)
            model = from_onnx(path)
        self.assertEqual(
            (model.shape.stages, model.shape.hidden, model.shape.classes), (SMALL.stages, 8, 4)
        )

    def test_writes_a_stretch_and_reads_it_back(self):
        model = stirred()
        model.shape = replace(SMALL, stretch_below=200)
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "m.onnx"
            self.assertLessEqual(write_onnx(model, path), TOLERANCE)
            written = from_onnx(path)
            nodes = onnx.load(str(path)).graph.node
        self.assertEqual(model.shape.stretch_below, 200)
        self.assertEqual(written.shape, replace(SMALL, normalised=False, stretch_below=200))
        self.assertEqual(
            [node.op_type for node in nodes[:6]], ["Shape", "Add", "Div", "Max", "Resize", "Conv"]
        )
        self.assertEqual(
            [list(node.input) for node in nodes if "input" in node.input],
            [["input"], ["input", "", "", "wanted"]],
        )

    def test_writes_more_columns_and_reads_them_back(self):
        for below, operations in (
            (0, ["Shape", "Add", "Resize", "Conv"]),
            (200, ["Shape", "Add", "Add", "Div", "Max", "Resize", "Conv"]),
        ):
            model = stirred()
            model.shape = replace(SMALL, stretch_below=below, more_columns=24)
            with tempfile.TemporaryDirectory() as folder:
                path = Path(folder) / "m.onnx"
                self.assertLessEqual(write_onnx(model, path), TOLERANCE)
                written = from_onnx(path)
                nodes = onnx.load(str(path)).graph.node
            self.assertEqual(written.shape, replace(model.shape, normalised=False))
            self.assertEqual([node.op_type for node in nodes[: len(operations)]], operations)
            with torch.no_grad():
                steps = len(written(torch.zeros(1, 3, 32, 64)))
            self.assertEqual(steps, (132 if below else 88) // 4)

    def test_of_columns_that_make_no_sense_is_refused(self):
        for columns in (-1, 321):
            with self.assertRaisesRegex(ValueError, f"by 0 to 320 columns, not {columns}"):
                replace(SMALL, more_columns=columns)

    def test_of_another_resize_is_refused(self):
        model = stirred()
        model.shape = replace(SMALL, stretch_below=128)
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "m.onnx"
            write_onnx(model, path)
            written = onnx.load(str(path))
            for tensor in written.graph.initializer:
                tensor.name = "other" if tensor.name == STRETCH_BELOW else tensor.name
            onnx.save(written, str(path))
            with self.assertRaisesRegex(ValueError, "not a model of"):
                from_onnx(path)

    def test_of_another_layout_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "m.onnx"
            torch.onnx.export(torch.nn.Conv2d(3, 4, 3), torch.zeros(1, 3, 8, 8), str(path))
            with self.assertRaisesRegex(ValueError, "convolutions in 5 stages"):
                from_onnx(path)

    def test_writes_a_package_whose_configuration_has_the_models_alphabet(self):
        with tempfile.TemporaryDirectory() as folder:
            base = Path(folder) / "base.json"
            base.write_text('{"classes": [], "alphabet": "XYZ"}')
            files = write_package(
                stirred(), "ABC", Path(folder) / "out", "model_p1_1", base, "# card\n"
            )
            self.assertEqual(
                [path.name for path in files],
                ["model_p1_1.onnx", "model_p1_1.json", "model_p1_1.md"],
            )
            self.assertEqual(json.loads(files[1].read_text())["alphabet"], "ABC")
            self.assertEqual(
                sorted(path.name for path in (Path(folder) / "out").iterdir()),
                sorted(path.name for path in files),
            )


class Blending(unittest.TestCase):
    def test_of_all_and_nothing_gives_either_network(self):
        torch.manual_seed(3)
        new, old = stirred(), Crnn(SMALL).eval()
        picture = torch.randn(1, 3, 32, 64)
        for part, expected in ((1.0, new), (0.0, old)):
            self.assertLess(
                float((blended(new, old, part)(picture) - expected(picture)).abs().max()), 1e-4
            )

    def test_takes_parts_of_the_weights(self):
        new, old = (Crnn(Shape(SMALL.stages, 8, 4, False)).eval() for _ in range(2))
        middle = blended(new, old, 0.25).classifier.bias
        self.assertTrue(
            torch.allclose(middle, 0.25 * new.classifier.bias + 0.75 * old.classifier.bias)
        )

    def test_stretches_as_the_trained_network_does(self):
        new, old = (Crnn(Shape(SMALL.stages, 8, 4, False, below)).eval() for below in (96, 0))
        self.assertEqual(blended(new, old, 0.5).shape.stretch_below, 96)
        self.assertEqual(blended(old, new, 0.5).shape.stretch_below, 0)

    def test_of_different_shapes_is_refused(self):
        with self.assertRaisesRegex(ValueError, "different shapes"):
            blended(stirred(), Crnn(Shape(SMALL.stages, 9, 4)), 0.5)


class Training(unittest.TestCase):
    def batch(self):
        supply = Supply("clean", "0123456789", 1, 512, 192, 0)
        return supply.next()

    def trainer(self):
        torch.manual_seed(1)
        return Trainer(Crnn(Shape(SMALL.stages, 8, 11)), "0123456789")

    def test_goes_on_from_a_checkpoint_as_if_it_had_not_stopped(self):
        batches = [self.batch() for _ in range(2)]
        trainer = self.trainer()
        trainer.step(*batches[0], 1e-3)
        with tempfile.TemporaryDirectory() as folder:
            save_checkpoint(Path(folder) / "run" / "last.pt", trainer)
            resumed = load_trainer(Path(folder) / "run" / "last.pt")
            self.assertEqual(resumed.progress.pictures, len(batches[0][1]))
            losses = [t.step(*batches[1], 1e-3) for t in (trainer, resumed)]
            self.assertAlmostEqual(losses[0], losses[1], places=5)
            for kept in ("model", "average"):
                for ours, theirs in zip(
                    getattr(trainer, kept).parameters(), getattr(resumed, kept).parameters()
                ):
                    self.assertTrue(torch.allclose(ours, theirs, atol=1e-6))
            model, alphabet, progress = load_model(Path(folder) / "run" / "last.pt")
        self.assertEqual((alphabet, progress.steps), ("0123456789", 1))
        self.assertFalse(model.training)

    def test_goes_on_from_a_checkpoint_that_names_six_widths(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "last.pt"
            save_checkpoint(path, self.trainer())
            state = torch.load(path)
            state["shape"] = json.dumps(
                {"channels": [4, 6, 8, 8, 10, 12], "hidden": 8, "classes": 11, "normalised": True}
            )
            torch.save(state, path)
            self.assertEqual(load_trainer(path).model.shape.stages, SMALL.stages)

    def test_averages_the_weights_of_the_latest_steps(self):
        trainer = self.trainer()
        pictures, labels = self.batch()
        seen = []
        for step in range(3):
            trainer.progress.steps = 5000 + step
            trainer.step(pictures, labels, 1e-2)
            seen.append(trainer.model.classifier.bias.detach().clone())
        torch.manual_seed(1)
        expected = Crnn(trainer.model.shape).classifier.bias.detach().clone()
        for latest in seen:
            expected += (latest - expected) / 500
        self.assertTrue(torch.allclose(trainer.average.classifier.bias, expected, atol=1e-7))
        for mean, latest in zip(trainer.average.buffers(), trainer.model.buffers()):
            self.assertTrue(torch.equal(mean, latest))

    def test_is_left_unharmed_by_a_loss_that_is_not_a_number(self):
        trainer = self.trainer()
        pictures, labels = self.batch()
        with torch.no_grad():
            trainer.model.classifier.bias[0] = float("nan")
        before = [p.clone() for p in trainer.model.features.parameters()]
        trainer.step(pictures, labels, 1e-3)
        for old, new in zip(before, trainer.model.features.parameters()):
            self.assertTrue(torch.equal(old, new))

    def test_measures_lines_and_characters(self):
        trainer = self.trainer()
        pictures, labels = self.batch()
        trainer.read = lambda batch: [labels[0]] + ["" for _ in labels[1:]]
        accuracy, errors, wrong = trainer.measure([(pictures, labels)])
        self.assertAlmostEqual(accuracy, 1 / len(labels))
        self.assertAlmostEqual(errors, sum(map(len, labels[1:])) / sum(map(len, labels)))
        self.assertEqual(len(wrong), len(labels) - 1)

    def test_rate_rises_then_falls_to_a_fiftieth(self):
        self.assertLess(learning_rate(0, 0.0, 1.0), 0.02)
        self.assertAlmostEqual(learning_rate(1000, 0.0, 1.0), 1.0)
        self.assertAlmostEqual(learning_rate(1000, 1.0, 1.0), 0.02)
        self.assertAlmostEqual(learning_rate(1000, 2.0, 1.0), 0.02)

    def test_pictures_come_from_workers_too(self):
        supply = Supply("clean", "0123456789", 1, 256, 192, 1)
        try:
            pictures, labels = supply.next()
        finally:
            supply.close()
        self.assertEqual(len(pictures), len(labels))
        self.assertEqual(to_input(pictures).shape[1:3], (3, 32))


if __name__ == "__main__":
    unittest.main()
