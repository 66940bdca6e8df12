"""A training from nothing must learn ten digits: the whole kit from drawing to the exported model,
in one or two minutes."""
import tempfile
import unittest
from pathlib import Path

import cv2
import torch

from scribokit.drawing.maker import FaceSet, PictureMaker
from scribokit.measuring.readers import onnx_reader
from scribokit.network.batches import Batches
from scribokit.network.exporting import write_onnx
from scribokit.network.model import Crnn, Shape
from scribokit.network.training import Trainer, learning_rate

DIGITS = "0123456789"
STEPS = 2200
WANTED = 0.9


def digits(dice):
    return "".join(dice.choice(DIGITS) for _ in range(dice.randint(2, 4)))


class PrintFaces(FaceSet):
    """The fonts of prints alone: without dots, segments and plates, a small network learns fast."""

    def draw(self, use, dice):
        return super().draw("print", dice)


class TenDigits(unittest.TestCase):
    def test_are_learned_to_nine_lines_in_ten(self):
        cv2.setNumThreads(1)
        torch.set_num_threads(1)
        torch.manual_seed(1)
        maker = PictureMaker("clean", DIGITS, 1, faces=PrintFaces(held_out=False), write=digits)
        batches = Batches(maker, 1536)
        trainer = Trainer(Crnn(Shape(((16,), (32,), (48, 48), (64,), (80,)), 64, 11)), DIGITS)
        for step in range(STEPS):
            trainer.step(*batches.next(), learning_rate(step, step / STEPS, 4e-3))
        unseen = PictureMaker("clean", DIGITS, 2, faces=PrintFaces(held_out=True), write=digits)
        with tempfile.TemporaryDirectory() as folder:
            model = Path(folder) / "digits.onnx"
            write_onnx(trainer.average, model)
            reader = onnx_reader(model, DIGITS)
            pictures = [unseen.draw() for _ in range(300)]
            right = sum(reader.read(picture) == label for picture, label in pictures)
        self.assertGreaterEqual(right / len(pictures), WANTED)


if __name__ == "__main__":
    unittest.main()
