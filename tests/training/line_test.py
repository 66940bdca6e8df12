"""Whether the kit reads as a line does: what is trained and measured here must be what the plug-in
makes of a picture."""
import os
import tempfile
import unittest
from pathlib import Path

from scribokit.common.alphabet import read_alphabet
from scribokit.common.pictures import write_picture
from scribokit.drawing.maker import PictureMaker
from scribokit.measuring.readers import InspectReader, onnx_reader

ROOT = Path(__file__).resolve().parents[2]


class Line(unittest.TestCase):
    def test_reads_coloured_pictures_as_the_kit_does(self):
        maker = PictureMaker("plates", read_alphabet(), 3)
        with tempfile.TemporaryDirectory() as folder:
            paths = [Path(folder) / f"{number}.png" for number in range(150)]
            for path in paths:
                write_picture(path, maker.draw()[0])
            here = onnx_reader(ROOT / "models/ocr_printed_p1_1.onnx", read_alphabet())(paths)
            there = InspectReader(os.environ["SCRIBO_INSPECT"], os.environ["SCRIBO_WORK"])(paths)
        self.assertEqual(here, there)


if __name__ == "__main__":
    unittest.main()
