#!/usr/bin/python3
"""Writes the vectors that the builder's tests run against: small models, inputs for two or three
widths each, and what PyTorch computes for them, a folder of vectors/ each.

    tests/builder/make_vectors.py [CASE...]

Needs Debian's python3-torch and python3-onnx. The seeds are fixed; run it again after changing a
case.
"""

import pathlib
import sys
import tempfile

import onnx
import torch

import layer_cases  # noqa: F401 (registers its cases in CASES)
import recogniser_cases  # noqa: F401 (the same)
from handmade_cases import HANDMADE
from torch_vectors import CASES, data_sets, exported, settle, write_case

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "training"))
# The kit lies in training/, which has to be on the path first.
from scribokit.network import model as kit  # noqa: E402
from scribokit.network.exporting import write_onnx  # noqa: E402

FOLDER = pathlib.Path(__file__).resolve().parent / "vectors"


def write_kit_case(folder):
    """What the model kit writes for a network that stretches narrow pictures, which PyTorch does
    not export."""
    torch.manual_seed(2024)
    model = settle(kit.Crnn(kit.Shape(((4,), (6,), (8,), (10,), (12,)), 8, 5, stretch_below=64)))
    with tempfile.NamedTemporaryFile(suffix=".onnx") as file:
        write_onnx(model, file.name)
        written = onnx.load(file.name)
    model.scores = True
    write_case(folder, written, data_sets(model, 3, 32, (33, 63, 64, 80)))


def main(wanted):
    for name, (function, channels, height, widths, opset) in CASES.items():
        if wanted and name not in wanted:
            continue
        torch.manual_seed(2024)
        module = settle(function())
        model = exported(module, channels, height, max(widths) + 8, opset)
        write_case(FOLDER / name, model, data_sets(module, channels, height, widths))
    for name, (model, function) in HANDMADE.items():
        if wanted and name not in wanted:
            continue
        torch.manual_seed(2024)
        write_case(FOLDER / name, model, data_sets(function, 2, 4, (6, 11)))
    if not wanted or "kit_stretches" in wanted:
        write_kit_case(FOLDER / "kit_stretches")


if __name__ == "__main__":
    main(set(sys.argv[1:]))
