"""Test vectors by PyTorch: modules as the models that it exports, inputs, and what it computes for
them, as files.

A case is a folder in the layout of ONNX's own tests:

    CASE/model.onnx
    CASE/test_data_set_N/input_0.pb, output_0.pb, ...
"""

import io
import shutil
import warnings

import numpy as np
import onnx
import onnx.numpy_helper as onh
import torch
from torch import nn

CASES = {}


def case(channels, height, widths=(9, 16), opset=13):
    """Registers a function that makes a module as a case, once for each opset."""

    def register(function):
        opsets = opset if isinstance(opset, tuple) else (opset,)
        for version in opsets:
            name = function.__name__ + (f"_opset{version}" if len(opsets) > 1 else "")
            CASES[name] = (function, channels, height, widths, version)
        return function

    return register


class Do(nn.Module):
    """A module from a function, with the modules that it uses."""

    def __init__(self, function, *modules):
        super().__init__()
        self.modules_used = nn.ModuleList(modules)
        self.function = function

    def forward(self, x):
        return self.function(x, *self.modules_used)


def settle(module):
    """Gives batch normalisations statistics as after training."""
    for part in module.modules():
        if isinstance(part, nn.BatchNorm2d):
            part.running_mean.uniform_(-0.5, 0.5)
            part.running_var.uniform_(0.5, 1.5)
            nn.init.uniform_(part.weight, 0.5, 1.5)
            nn.init.uniform_(part.bias, -0.5, 0.5)
    return module.eval()


def exported(module, channels, height, width, opset):
    """The model that PyTorch exports at this width, which is not to be one of the test's, so that
    one that froze shows."""
    example = torch.rand(1, channels, height, width)
    outputs = module(example)
    count = len(outputs) if isinstance(outputs, tuple) else 1
    buffer = io.BytesIO()
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        torch.onnx.export(
            module,
            example,
            buffer,
            opset_version=opset,
            input_names=["input"],
            output_names=["output"] + [f"output{i}" for i in range(1, count)],
            dynamic_axes={"input": {3: "width"}},
        )
    return onnx.load_from_string(buffer.getvalue())


def data_sets(function, channels, height, widths):
    """Inputs 1×channels×height×width of each width and what the function makes of them, as tuples
    of tensors."""
    for width in widths:
        x = torch.rand(1, channels, height, width) * 2 - 1
        with torch.no_grad():
            y = function(x)
        yield (x,), (y if isinstance(y, tuple) else (y,))


def write_case(folder, model, data_sets):
    """Writes a case into this folder, in place of what it holds."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    onnx.save(model, str(folder / "model.onnx"))
    for number, (inputs, outputs) in enumerate(data_sets):
        data = folder / f"test_data_set_{number}"
        data.mkdir()
        for kind, arrays in (("input", inputs), ("output", outputs)):
            for i, tensor in enumerate(arrays):
                array = np.ascontiguousarray(tensor.detach().numpy())
                (data / f"{kind}_{i}.pb").write_bytes(
                    onh.from_array(array, kind).SerializeToString()
                )
