"""The network: convolutions and pools to one row of features per 4 columns, a bidirectional LSTM,
one linear layer."""
from dataclasses import asdict, dataclass, replace

import torch
from torch import nn
from torch.nn import functional

from ..common.inputs import WIDEST, Stretch


# The constants of an exported model that hold the extents half of the way to which narrow pictures
# are stretched, and those by which every picture is.
STRETCH_BELOW, MORE_COLUMNS = "stretch_below", "more_columns"

# Rows and columns that become one after each stage: 32 rows become 2, and 4 columns 1.
POOLS = ((2, 2), (2, 2), (2, 1), (2, 1))


@dataclass
class Shape:
    """Widths of the convolutions stage by stage, a pool after each stage but the last, and of the
    LSTM; normalised: batch normalisation after each convolution. The very last convolution joins
    the two rows that are left. Pictures are stretched first as inputs.Stretch says, by
    `more_columns` and towards `stretch_below`."""

    stages: tuple = ((24,), (48,), (96, 96), (128,), (160,))
    hidden: int = 96
    classes: int = 71
    normalised: bool = True
    stretch_below: int = 0
    more_columns: int = 0

    def __post_init__(self):
        self.stages = tuple(tuple(int(width) for width in stage) for stage in self.stages)
        if not 0 <= self.more_columns <= WIDEST:
            raise ValueError(
                f"pictures can be stretched by 0 to {WIDEST} columns, not {self.more_columns}"
            )
        if not 0 <= self.stretch_below <= WIDEST:
            raise ValueError(
                f"pictures can be stretched towards 0 to {WIDEST} columns, not {self.stretch_below}"
            )
        if len(self.stages) != len(POOLS) + 1 or not all(
            stage and min(stage) > 0 for stage in self.stages
        ):
            raise ValueError(f"a network has {len(POOLS) + 1} stages of one convolution or more")

    @property
    def stretch(self):
        return Stretch(self.stretch_below, self.more_columns)

    def as_dict(self):
        return asdict(self)


def read_stages(text):
    """ "24/48/96,96/128/160" as ((24,), (48,), (96, 96), (128,), (160,)). ValueError when it is not
    of that form."""
    return Shape(tuple(stage.split(",") for stage in text.split("/"))).stages


class Crnn(nn.Module):
    """Input count×3×32×width, value / 127.5 − 1; output steps×count×classes, logarithms of soft-max
    scores, or the scores themselves in evaluation when `scores` is set (that is what is exported).
    Steps are the stretched width / 4.
    """

    def __init__(self, shape):
        super().__init__()
        self.shape = shape
        self.scores = False
        layers, planes = [], 3
        for number, stage in enumerate(shape.stages):
            for place, width in enumerate(stage):
                joins = number == len(POOLS) and place == len(stage) - 1
                layers.append(
                    nn.Conv2d(planes, width, (2, 1) if joins else 3, padding=0 if joins else 1)
                )
                if shape.normalised:
                    layers.append(nn.BatchNorm2d(width))
                layers.append(nn.ReLU(inplace=True))
                planes = width
            if number < len(POOLS):
                layers.append(nn.MaxPool2d(POOLS[number]))
        self.features = nn.Sequential(*layers)
        self.sequence = nn.LSTM(planes, shape.hidden, bidirectional=True)
        self.classifier = nn.Linear(2 * shape.hidden, shape.classes)

    def forward(self, pictures):
        height, width = pictures.shape[2:]
        wanted = self.shape.stretch.columns(width)
        if wanted > width:
            pictures = functional.interpolate(
                pictures, (height, wanted), mode="bilinear", align_corners=False
            )
        steps = self.features(pictures).squeeze(2).permute(2, 0, 1)
        logits = self.classifier(self.sequence(steps)[0])
        return logits.softmax(2) if self.scores else logits.log_softmax(2)


def convolutions(model):
    return [layer for layer in model.features if isinstance(layer, nn.Conv2d)]


def weight_count(model):
    return sum(parameter.numel() for parameter in model.parameters())


def to_input(pictures, device="cpu"):
    """Bytes count×3×32×width as the network's input, channels side by side in memory."""
    values = torch.from_numpy(pictures).to(device).float().mul_(1 / 127.5).sub_(1.0)
    return values.contiguous(memory_format=torch.channels_last)


def folded(model):
    """The same function without batch normalisation: its scale and shift are taken into the
    convolutions."""
    result = Crnn(replace(model.shape, normalised=False))
    source = [layer for layer in model.features if isinstance(layer, (nn.Conv2d, nn.BatchNorm2d))]
    with torch.no_grad():
        for convolution in convolutions(result):
            trained = source.pop(0)
            weight, bias = trained.weight.clone(), trained.bias.clone()
            if source and isinstance(source[0], nn.BatchNorm2d):
                norm = source.pop(0)
                scale = norm.weight / torch.sqrt(norm.running_var + norm.eps)
                weight *= scale[:, None, None, None]
                bias = (bias - norm.running_mean) * scale + norm.bias
            convolution.weight.copy_(weight)
            convolution.bias.copy_(bias)
    result.sequence.load_state_dict(model.sequence.state_dict())
    result.classifier.load_state_dict(model.classifier.state_dict())
    return result.eval()


def from_onnx(path):
    """A network of this family from an exported model, to train it further. OSError when the file
    cannot be read, ValueError when it is no model or has another layout."""
    import onnx
    from google.protobuf.message import DecodeError
    from onnx import numpy_helper

    try:
        graph = onnx.load(str(path)).graph
    except DecodeError:
        raise ValueError(f"{path}: not a model, or damaged") from None
    weights = {tensor.name: numpy_helper.to_array(tensor) for tensor in graph.initializer}
    for node in graph.node:
        if node.op_type == "Constant":
            weights[node.output[0]] = numpy_helper.to_array(node.attribute[0].t)
    kinds = {
        kind: [node for node in graph.node if node.op_type == kind]
        for kind in ("Conv", "MaxPool", "LSTM", "MatMul", "Add", "Resize")
    }
    pools = tuple(
        tuple(next(a.ints for a in node.attribute if a.name == "kernel_shape"))
        for node in kinds["MaxPool"]
    )
    if (
        pools != POOLS
        or len(kinds["LSTM"]) != 1
        or not kinds["MatMul"]
        or len(kinds["Resize"]) != (STRETCH_BELOW in weights or MORE_COLUMNS in weights)
    ):
        raise ValueError(
            f"{path}: not a model of convolutions in {len(POOLS) + 1} stages, "
            "one LSTM and one linear layer"
        )
    lstm, linear = kinds["LSTM"][0], kinds["MatMul"][-1]
    bias = next(
        weights[name]
        for node in kinds["Add"]
        if linear.output[0] in node.input
        for name in node.input
        if name in weights
    )
    hidden = weights[lstm.input[2]].shape[2]
    stretch = [
        int(weights[name][3]) if name in weights else 0 for name in (STRETCH_BELOW, MORE_COLUMNS)
    ]
    model = Crnn(Shape(_stages_of(graph, weights), hidden, len(bias), False, *stretch))
    with torch.no_grad():
        for layer, node in zip(convolutions(model), kinds["Conv"]):
            layer.weight.copy_(torch.from_numpy(weights[node.input[1]].copy()))
            layer.bias.copy_(torch.from_numpy(weights[node.input[2]].copy()))
        for direction, suffix in enumerate(("", "_reverse")):
            both = [weights[name][direction] for name in lstm.input[1:4]]
            input_bias, state_bias = both[2][: 4 * hidden], both[2][4 * hidden :]
            for name, value in (
                ("weight_ih", both[0]),
                ("weight_hh", both[1]),
                ("bias_ih", input_bias),
                ("bias_hh", state_bias),
            ):
                getattr(model.sequence, f"{name}_l0{suffix}").copy_(_torch_gates(value, hidden))
        model.classifier.weight.copy_(torch.from_numpy(weights[linear.input[1]].T.copy()))
        model.classifier.bias.copy_(torch.from_numpy(bias.copy()))
    return model


def model_for(path, alphabet):
    """from_onnx(), and a ValueError too when the model is for another alphabet."""
    model = from_onnx(path)
    if model.shape.classes != len(alphabet) + 1:
        raise ValueError(
            f"{path}: {model.shape.classes} classes, the alphabet needs {len(alphabet) + 1}"
        )
    return model


def _stages_of(graph, weights):
    """Widths of the convolutions in the order in which the nodes stand, a new stage after each
    pool."""
    stages = [[]]
    for node in graph.node:
        if node.op_type == "Conv":
            stages[-1].append(weights[node.input[1]].shape[0])
        elif node.op_type == "MaxPool":
            stages.append([])
    return stages


def _torch_gates(values, hidden):
    """ONNX orders the gates input, output, forget, cell; PyTorch input, forget, cell, output."""
    blocks = [torch.from_numpy(values[i * hidden : (i + 1) * hidden].copy()) for i in (0, 2, 3, 1)]
    return torch.cat(blocks)


def blended(model, earlier, part):
    """A network with `part` of the one's weights and the rest of the other's, from which it was
    trained on. Between two such networks lie ones that read the new pictures and still the old
    (Wortsman et al., Robust fine-tuning of zero-shot models, 2022). Pictures are stretched as for
    the first. ValueError when their shapes differ in anything else.
    """
    model, earlier = folded(model), folded(earlier)
    below, more = model.shape.stretch
    if model.shape != replace(earlier.shape, stretch_below=below, more_columns=more):
        raise ValueError("the networks to blend have different shapes")
    old = earlier.state_dict()
    model.load_state_dict(
        {name: part * value + (1 - part) * old[name] for name, value in model.state_dict().items()}
    )
    return model.eval()
