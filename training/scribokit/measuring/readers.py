"""Readers to compare: an ONNX model of this kit, an engine through scribo-inspect, and Tesseract.
Each is called with a list of picture paths and gives the list of readings."""
import json
import subprocess
import tempfile
from pathlib import Path

import cv2
import torch

from ..common.ctc import decode_scores
from ..common.inputs import network_input
from ..common.pictures import load_picture, write_picture
from ..network.model import model_for, to_input


class ModelReader:
    """Reads as the detector does: height 32, width 32 to 320 by the picture's proportions, best
    class per step."""

    def __init__(self, model, alphabet):
        self._model = model.eval()
        self._alphabet = alphabet

    def __call__(self, paths):
        with torch.no_grad():
            return [self.read(load_picture(path)) for path in paths]

    def read(self, picture):
        with torch.no_grad():
            return decode_scores(
                self._model(to_input(network_input(picture)[None])).numpy(), self._alphabet
            )[0]


def onnx_reader(path, alphabet):
    """A reader of an exported model. ValueError when it is not of this kit's family or for another
    alphabet."""
    return ModelReader(model_for(path, alphabet), alphabet)


class TesseractReader:
    """Tesseract on one line of text; small pictures are enlarged to the height that it was trained
    for."""

    _HEIGHT = 48

    def __call__(self, paths):
        return [self._read(path) for path in paths]

    def _read(self, path):
        picture = load_picture(path)
        if picture.shape[0] < self._HEIGHT:
            factor = self._HEIGHT / picture.shape[0]
            picture = cv2.resize(picture, None, fx=factor, fy=factor, interpolation=cv2.INTER_CUBIC)
        picture = cv2.copyMakeBorder(picture, 10, 10, 10, 10, cv2.BORDER_REPLICATE)
        _, data = cv2.imencode(".png", picture)
        command = ["tesseract", "stdin", "stdout", "--psm", "7", "-l", "eng"]
        result = subprocess.run(
            command, input=data.tobytes(), capture_output=True, check=True, timeout=60
        )
        return "".join(result.stdout.decode("utf-8", "replace").split())


class InspectReader:
    """An engine as the line runs it: every picture is one region for scribo-inspect, which answers
    in JSON lines."""

    def __init__(self, program, work=None, model=None):
        self._command = [str(program), "--json"]
        self._command += ["--work", str(work)] if work else []
        self._command += ["--model", model] if model else []

    def __call__(self, paths):
        with tempfile.TemporaryDirectory() as folder:
            for number, path in enumerate(paths):
                write_picture(Path(folder) / f"{number:06d}.png", load_picture(path))
            result = subprocess.run(self._command + [folder], capture_output=True, check=False)
        if result.returncode not in (0, 1):
            raise ValueError(
                f"{self._command[0]}: {result.stderr.decode('utf-8', 'replace').strip()}"
            )
        texts = readings(result.stdout.decode("utf-8"))
        missing = [path for number, path in enumerate(paths) if f"{number:06d}.png" not in texts]
        if missing:
            raise ValueError(f"{self._command[0]} gave no reading of {missing[0]}")
        return [texts[f"{number:06d}.png"] for number in range(len(paths))]


def readings(lines):
    """{picture's file name: text} from scribo-inspect's JSON lines; the texts of several regions
    are joined."""
    texts = {}
    for line in filter(str.strip, lines.splitlines()):
        item = json.loads(line)
        texts[Path(item["picture"]).name] = "".join(region["text"] for region in item["regions"])
    return texts
