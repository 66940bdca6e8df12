#!/usr/bin/python3
"""Every operation against PyTorch over random shapes, strides and widths from 8 to 640.

    tests/builder/property_test.py PROGRAM [--seed N] [--cases N] [--keep FOLDER]

Draws modules, exports them as PyTorch does, and lets PROGRAM (the test builder_vectors) build and
run them and compare the results with PyTorch's. Case N of a seed is the same whatever the other
cases are: a failure names both. Needs Debian's python3-torch and python3-onnx.
"""

import argparse
import os
import pathlib
import random
import subprocess
import sys
import tempfile

import torch
from torch import nn
import torch.nn.functional as F

from torch_vectors import Do, data_sets, exported, settle, write_case

KINDS = {}


def kind(function):
    """Registers a function that draws a module: draw, channels, height -> module."""
    KINDS[function.__name__] = function
    return function


# Convolutions and pooling


@kind
def convolution(draw, channels, height):
    groups = draw.choice([g for g in (1, 1, 2, channels) if channels % g == 0])
    dilation = (draw.randint(1, 2), draw.randint(1, 2))
    kernel = (draw.randint(1, max(1, min(5, height // dilation[0]))), draw.randint(1, 4))
    stride = (draw.randint(1, 3), draw.randint(1, 3))
    padding = (draw.randint(0, kernel[0] // 2), draw.randint(0, kernel[1] // 2))
    return nn.Conv2d(
        channels,
        groups * draw.randint(1, 20),
        kernel,
        stride,
        padding,
        dilation,
        groups,
        draw.random() < 0.7,
    )


@kind
def convolution_with_more(draw, channels, height):
    outputs = draw.choice((3, 8, 16, 24))
    layers = [nn.Conv2d(channels, outputs, 3, padding=1, bias=draw.random() < 0.5)]
    if draw.random() < 0.7:
        layers.append(nn.BatchNorm2d(outputs))
    layers.append(
        draw.choice(
            (
                nn.ReLU(),
                nn.Hardswish(),
                nn.SiLU(),
                nn.LeakyReLU(0.1),
                nn.Sigmoid(),
                nn.Hardsigmoid(),
                nn.Hardtanh(-0.4, 0.7),
                nn.ReLU6(),
                nn.ELU(),
                nn.Tanh(),
                nn.GELU(),
            )
        )
    )
    if draw.random() < 0.5:
        layers.append(
            nn.Conv2d(
                outputs, outputs, 3, stride=(draw.randint(1, 2), 1), padding=1, groups=outputs
            )
        )
    scale, shift = draw.uniform(-2, 2), draw.uniform(-1, 1)
    return Do(lambda x, net: net(x) * scale + shift, nn.Sequential(*layers))


@kind
def max_pool(draw, channels, height):
    kernel = (draw.randint(1, min(4, height)), draw.randint(1, 4))
    padding = (draw.randint(0, kernel[0] // 2), draw.randint(0, kernel[1] // 2))
    return nn.MaxPool2d(
        kernel, (draw.randint(1, 3), draw.randint(1, 3)), padding, ceil_mode=draw.random() < 0.4
    )


@kind
def average_pool(draw, channels, height):
    kernel = (draw.randint(1, min(4, height)), draw.randint(1, 4))
    padding = (draw.randint(0, kernel[0] // 2), draw.randint(0, kernel[1] // 2))
    return nn.AvgPool2d(
        kernel,
        (draw.randint(1, 3), draw.randint(1, 3)),
        padding,
        count_include_pad=draw.random() < 0.5,
    )


@kind
def squeeze_excite(draw, channels, height):
    middle = draw.randint(1, 8)
    gate = draw.choice((F.hardsigmoid, torch.sigmoid))
    return Do(
        lambda x, down, up: x * gate(up(F.relu(down(F.adaptive_avg_pool2d(x, 1))))),
        nn.Conv2d(channels, middle, 1),
        nn.Conv2d(middle, channels, 1),
    )


@kind
def global_max_pool(draw, channels, height):
    return Do(lambda x: F.adaptive_max_pool2d(x, 1) + x)


@kind
def reduction(draw, channels, height):
    axes = sorted(draw.sample((1, 2, 3), draw.randint(1, 3)))
    keep = draw.random() < 0.5
    return Do(
        draw.choice(
            (
                lambda x: x.mean(axes, keep),
                lambda x: x.sum(axes, keep) / 64,
                lambda x: x.amax(axes, keep),
            )
        )
    )


# Recurrent layers, products, attention


def steps(x):
    """T x 1 x features."""
    return x.flatten(1, 2).permute(2, 0, 1)


@kind
def recurrent(draw, channels, height):
    cell = draw.choice((nn.LSTM, nn.LSTM, nn.GRU))
    layer = cell(
        channels * height,
        draw.randint(1, 70),
        num_layers=draw.randint(1, 2),
        bidirectional=draw.random() < 0.6,
        bias=draw.random() < 0.8,
    )
    return Do(lambda x, layer: layer(steps(x))[0], layer)


@kind
def linear(draw, channels, height):
    layer = nn.Linear(channels * height, draw.randint(1, 90), bias=draw.random() < 0.7)
    function = draw.choice((lambda y: y, F.relu, F.silu, torch.tanh))
    return Do(lambda x, layer: function(layer(steps(x))), layer)


@kind
def attention(draw, channels, height):
    heads, size = draw.randint(1, 4), draw.randint(2, 12)

    def attend(x, projection):
        x = x.flatten(1, 2).permute(0, 2, 1)
        q, k, v = projection(x).reshape(1, -1, 3, heads, size).permute(2, 0, 3, 1, 4)
        weights = F.softmax(q * size**-0.5 @ k.transpose(-2, -1), -1)
        return (weights @ v).transpose(1, 2).reshape(1, -1, heads * size)

    return Do(attend, nn.Linear(channels * height, 3 * heads * size))


@kind
def matrix_product(draw, channels, height):
    return Do(
        draw.choice(
            (lambda x: x @ x.transpose(-2, -1) / 64, lambda x: x.transpose(-2, -1) @ x[:, :1] / 8)
        )
    )


# Normalisation and soft-max


@kind
def layer_norm(draw, channels, height):
    layer = nn.LayerNorm(channels * height, draw.choice((1e-5, 1e-3)))
    nn.init.uniform_(layer.weight, -1, 1)
    nn.init.uniform_(layer.bias, -1, 1)
    return Do(lambda x, layer: layer(steps(x)), layer)


@kind
def batch_norm(draw, channels, height):
    return nn.BatchNorm2d(channels)


@kind
def softmax(draw, channels, height):
    axis = draw.randint(1, 3)
    return Do(draw.choice((lambda x: F.softmax(4 * x, axis), lambda x: F.log_softmax(4 * x, axis))))


# Elementwise


@kind
def activation(draw, channels, height):
    slope = draw.uniform(0.01, 1.5)
    low, high = sorted((draw.uniform(-1, 1), draw.uniform(-1, 1)))
    return Do(
        draw.choice(
            (
                F.relu,
                torch.sigmoid,
                torch.tanh,
                F.hardswish,
                F.silu,
                F.gelu,
                F.softplus,
                F.relu6,
                F.hardsigmoid,
                lambda x: F.leaky_relu(x, slope),
                lambda x: F.elu(x, slope),
                lambda x: x.clamp(low, high),
                lambda x: x * F.relu6(6 * x + 3) / 6,
                lambda x: 3 * x * F.relu6(3 * x + 3) / 6 * slope - low,
            )
        )
    )


@kind
def unary(draw, channels, height):
    return Do(
        draw.choice(
            (
                lambda x: (x + 2).sqrt(),
                torch.exp,
                lambda x: (x + 1.5).log(),
                torch.neg,
                torch.abs,
                lambda x: 1 / (x + 3),
                torch.erf,
                lambda x: (3 * x).floor(),
                lambda x: (3 * x).ceil(),
            )
        )
    )


@kind
def binary(draw, channels, height):
    shape = [draw.choice((1, extent)) for extent in (1, channels, height)] + [1]
    other = torch.rand(shape[draw.randint(0, 3) :]) + 0.5
    sides = draw.choice(
        (
            lambda x: (x, other),
            lambda x: (other, x),
            lambda x: (x, x[:, :1]),
            lambda x: (x[:, :, :1], x),
        )
    )
    operation = draw.choice(
        (
            torch.add,
            torch.sub,
            torch.mul,
            torch.maximum,
            torch.minimum,
            lambda a, b: a / (b + 3),
            lambda a, b: (a + 2) ** b,
        )
    )
    return Do(lambda x: operation(*sides(x)))


@kind
def scalar_chain(draw, channels, height):
    numbers = [draw.choice((-2.0, -1.0, 0.0, 0.5, 1.0, 3.0)) for _ in range(draw.randint(1, 5))]
    choices = [draw.choice((torch.add, torch.sub, torch.mul, lambda a, b: b - a)) for _ in numbers]
    inner = draw.choice((torch.tanh, lambda x: x, torch.sigmoid))

    def chain(x):
        x = inner(x)
        for operation, number in zip(choices, numbers):
            x = operation(x, number)
        return x

    return Do(chain)


# Moving values


def moved(function):
    """The function behind a sum: what gives the picture as it is would not be a model."""
    return Do(lambda x: function(x + 1))


@kind
def transpose_and_reshape(draw, channels, height):
    order = draw.sample((1, 2, 3), 3)
    axis = draw.randint(1, 3)
    return moved(
        draw.choice(
            (
                lambda x: x.permute(0, *order),
                lambda x: x.permute(*order, 0),
                lambda x: x.permute(0, *order).flatten(2),
                lambda x: x.reshape(1, channels * height, -1),
                lambda x: x.permute(0, *order).reshape(-1, 1, channels),
                lambda x: x.permute(0, 3, 1, 2).unsqueeze(axis).squeeze(0),
            )
        )
    )


@kind
def slices(draw, channels, height):
    first, last = sorted(draw.sample(range(height + 1), 2))
    begin, step = draw.randint(0, 3), draw.randint(1, 3)
    return moved(
        draw.choice(
            (
                lambda x: x[:, :, first:last],
                lambda x: x[..., begin:],
                lambda x: x[..., : -1 - begin],
                lambda x: x[:, :, first:last:step, begin::step],
                lambda x: x[:, -1:],
                lambda x: x[:, 0],
            )
        )
    )


@kind
def joins(draw, channels, height):
    axis = draw.randint(1, 3)
    cut = draw.randint(1, channels)
    parts = (cut, channels - cut) if cut < channels else (channels,)
    return Do(
        draw.choice(
            (
                lambda x: torch.cat((x, x * 2, x), axis),
                lambda x: torch.stack((x, -x), axis),
                lambda x: torch.cat(x.split(parts, 1)[::-1], 1),
                lambda x: x.repeat(1, 2, 1, 1),
            )
        )
    )


@kind
def pads(draw, channels, height):
    amounts = [draw.randint(0, 3) for _ in range(4)]
    value = draw.choice((0.0, 0.5))
    return moved(lambda x: F.pad(x, amounts, value=value))


@kind
def gathers(draw, channels, height):
    picks = torch.tensor([draw.randrange(channels) for _ in range(draw.randint(1, 6))])
    rows = torch.tensor([draw.randrange(height) for _ in range(draw.randint(1, 6))])
    return Do(draw.choice((lambda x: x[:, picks], lambda x: x.index_select(2, rows))))


@kind
def expands(draw, channels, height):
    return Do(lambda x: x.mean((1, 2), keepdim=True).expand(1, channels, height, x.shape[3]) + x)


def write_random_case(folder, seed, number):
    draw = random.Random(f"{seed} {number}")
    torch.manual_seed(draw.randrange(1 << 31))
    name = draw.choice(sorted(KINDS)) if number >= len(KINDS) else sorted(KINDS)[number]
    channels, height = draw.randint(1, 20), draw.randint(2, 16)
    opset = draw.choice((11, 12, 13, 14, 16)) if name != "activation" else draw.choice((14, 16))
    widths = [draw.randint(8, 640), draw.randint(8, 48)]
    module = settle(KINDS[name](draw, channels, height))
    model = exported(module, channels, height, max(widths) + 8, opset)
    write_case(
        folder / f"seed_{seed}_case_{number}_{name}",
        model,
        data_sets(module, channels, height, widths),
    )


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--seed", type=int, default=2026)
    parser.add_argument("--cases", type=int, default=100)
    parser.add_argument("--keep", help="write the cases here and leave them")
    options = parser.parse_args()
    torch.set_num_threads(1)
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(options.keep or folder)
        for number in range(options.cases):
            write_random_case(folder, options.seed, number)
        print(f"seed {options.seed}: {options.cases} cases of {len(KINDS)} kinds", flush=True)
        environment = {**os.environ, "SCRIBO_VECTORS": str(folder)}
        return subprocess.run(
            [options.program, "--gtest_filter=Models/Vectors.*", "--gtest_brief=1"], env=environment
        ).returncode


if __name__ == "__main__":
    sys.exit(main())
