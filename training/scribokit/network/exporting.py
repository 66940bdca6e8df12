"""Export: a trained network as ONNX, checked, and the model package around it."""
import copy
import json
import shutil
import warnings
from pathlib import Path

import numpy as np
import onnx
import torch
from onnx import TensorProto, helper

from .model import MORE_COLUMNS, STRETCH_BELOW, folded, from_onnx, weight_count

OPSET = 13
TOLERANCE = 1e-4


def write_onnx(model, path):
    """Writes the network with normalisation folded and soft-max inside: input `input` 1×3×32×width,
    output `output` steps×1×classes. Fails with RuntimeError when what was written does not compute
    what PyTorch does.
    """
    plain = folded(model).eval()
    plain.scores = True
    plain.shape.stretch_below = plain.shape.more_columns = 0
    example = torch.zeros(1, 3, 32, 160)
    with warnings.catch_warnings():
        # PyTorch warns of its own checks of sizes, which a trace leaves out, and of batches of
        # several, which the model does not take.
        warnings.simplefilter("ignore")
        torch.onnx.export(
            plain,
            example,
            str(path),
            opset_version=OPSET,
            input_names=["input"],
            output_names=["output"],
            dynamic_axes={"input": {3: "width"}, "output": {0: "steps"}},
            do_constant_folding=True,
        )
    written = onnx.load(str(path))
    if any(model.shape.stretch):
        _stretch_first(written.graph, model.shape.stretch)
        onnx.save(written, str(path))
    onnx.checker.check_model(written, full_check=True)
    difference = export_difference(model, path)
    if not difference <= TOLERANCE:
        raise RuntimeError(f"{path}: scores differ from PyTorch's by {difference:g}")
    return difference


def _stretch_first(graph, stretch):
    """Lets a graph stretch its pictures as inputs.Stretch says. A trace would fix the width."""
    picture, stretched = graph.input[0], f"{graph.input[0].name}_stretched"
    for node in graph.node:
        node.input[:] = [stretched if name == picture.name else name for name in node.input]
    nodes = [helper.make_node("Shape", [picture.name], ["extents"])]
    wanted = "extents"

    def constant(name, *values):
        graph.initializer.append(helper.make_tensor(name, TensorProto.INT64, [len(values)], values))

    if stretch.more:
        constant(MORE_COLUMNS, 0, 0, 0, stretch.more)
        nodes.append(helper.make_node("Add", [wanted, MORE_COLUMNS], ["widened"]))
        wanted = "widened"
    if stretch.below:
        extents = [dimension.dim_value for dimension in picture.type.tensor_type.shape.dim[:3]]
        constant(STRETCH_BELOW, *extents, stretch.below)
        constant("two", 2)
        nodes += [
            helper.make_node("Add", ["extents", STRETCH_BELOW], ["twice_half_way"]),
            helper.make_node("Div", ["twice_half_way", "two"], ["half_way"]),
            helper.make_node("Max", ["half_way", wanted], ["wanted"]),
        ]
        wanted = "wanted"
    nodes.append(
        helper.make_node(
            "Resize",
            [picture.name, "", "", wanted],
            [stretched],
            mode="linear",
            coordinate_transformation_mode="half_pixel",
        )
    )
    for node in reversed(nodes):
        graph.node.insert(0, node)


def export_difference(model, path):
    """The largest difference between the scores of a network and of the weights read back from its
    ONNX file, over pictures of several widths."""
    dice = np.random.default_rng(3)
    written = from_onnx(path).eval()
    written.scores = True
    # Both with their channels in the same order in memory: the order decides how PyTorch convolves,
    # and the rounding of the two ways has differed by 1e-4.
    model = copy.deepcopy(model).to(memory_format=torch.contiguous_format).eval()
    worst = 0.0
    with torch.no_grad():
        for width in (32, 100, 161, 320):
            picture = torch.from_numpy(dice.uniform(-1, 1, (1, 3, 32, width)).astype(np.float32))
            worst = max(worst, float((model(picture).exp() - written(picture)).abs().max()))
    return worst


def write_package(model, alphabet, folder, name, configuration, card):
    """NAME.onnx, NAME.json (the given configuration with this alphabet) and NAME.md in a folder;
    gives their paths."""
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    files = [folder / f"{name}.{suffix}" for suffix in ("onnx", "json", "md")]
    beside = files[0].with_suffix(".part")
    write_onnx(model, beside)
    shutil.move(beside, files[0])
    text = Path(configuration).read_text(encoding="utf-8")
    if json.loads(text).get("alphabet") != alphabet:
        text = (
            json.dumps({**json.loads(text), "alphabet": alphabet}, indent=4, ensure_ascii=False)
            + "\n"
        )
    files[1].write_text(text, encoding="utf-8")
    files[2].write_text(card, encoding="utf-8")
    return files


def card_text(name, model, alphabet, training, results, weaknesses, fonts):
    """The model card: what the model is, how it was trained (rows of name and value), what it
    reached."""
    widths = [width for stage in model.shape.stages for width in stage]
    below, more = model.shape.stretch
    stretch = f"every picture stretched by {more} columns, " if more else ""
    if below:
        stretch += f"pictures narrower than {below} columns stretched half of the way to that, "
    steps = "steps = stretched width / 4" if stretch else "steps = width / 4"
    rows = [
        (
            "network",
            f"{stretch}{len(widths)} convolutions ({widths[0]} to {widths[-1]} channels) with "
            f"ReLU, four max pools, one bidirectional LSTM of {model.shape.hidden}, one linear "
            f"layer; {weight_count(folded(model)):,} weights",
        ),
        (
            "input",
            "`input`, 1×3×32×width (red, green, blue), float32, value / 127.5 − 1, width 32 to 320",
        ),
        (
            "output",
            f"`output`, steps×1×{len(alphabet) + 1} soft-max scores, {steps}; class 0 is the "
            "blank, class k the k-th character of the alphabet",
        ),
        ("alphabet", f"`{alphabet}`"),
    ] + list(training)
    table = "\n".join(f"| {key} | {value} |" for key, value in rows)
    return (
        f"# Model card: {name}\n\n| | |\n| --- | --- |\n{table}\n\n## Accuracy\n\n{results}\n\n"
        f"## Known weaknesses\n\n{weaknesses}\n\n## Fonts\n\n{fonts}\n"
    )
