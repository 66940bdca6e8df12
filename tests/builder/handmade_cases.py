"""Cases written by hand: what PyTorch's exporter does not write, or not with these opsets."""

import numpy as np
import onnx
import onnx.helper as oh
import onnx.numpy_helper as onh
import torch
import torch.nn.functional as F


def tensors(**arrays):
    return [onh.from_array(np.asarray(array), name) for name, array in arrays.items()]


def handmade(nodes, constants, opset):
    """A model from nodes, its float input 'x' 1 x 2 x 4 x W, output 'y'."""
    graph = oh.make_graph(
        nodes,
        "handmade",
        [oh.make_tensor_value_info("x", onnx.TensorProto.FLOAT, [1, 2, 4, "width"])],
        [oh.make_tensor_value_info("y", onnx.TensorProto.FLOAT, None)],
        constants,
    )
    return oh.make_model(graph, opset_imports=[oh.make_opsetid("", opset)])


I64 = np.int64
HANDMADE = {
    "softmax_flat_opset11": (
        handmade([oh.make_node("Softmax", ["x"], ["y"], axis=2)], [], 11),
        lambda x: F.softmax(x.flatten(2), 2).reshape(x.shape),
    ),
    "reduce_axes_as_input_opset18": (
        handmade(
            [oh.make_node("ReduceMean", ["x", "axes"], ["y"], keepdims=0)],
            tensors(axes=np.array([1, -2], I64)),
            18,
        ),
        lambda x: x.mean((1, 2)),
    ),
    "pad_axes_as_input_opset18": (
        handmade(
            [oh.make_node("Pad", ["x", "pads", "", "axes"], ["y"])],
            tensors(pads=np.array([1, 0, 2, 3], I64), axes=np.array([-1, 2], I64)),
            18,
        ),
        lambda x: F.pad(x, (1, 2, 0, 3)),
    ),
    "split_num_outputs_opset18": (
        handmade(
            [
                oh.make_node("Split", ["x"], ["a", "b"], axis=2, num_outputs=2),
                oh.make_node("Sub", ["a", "b"], ["y"]),
            ],
            [],
            18,
        ),
        lambda x: x[:, :, :2] - x[:, :, 2:],
    ),
    "shape_range_opset15": (
        handmade(
            [
                oh.make_node("Shape", ["x"], ["s"], start=-1),
                oh.make_node("Concat", ["k", "s"], ["t"], axis=0),
                oh.make_node("Reshape", ["x", "t"], ["y"]),
            ],
            tensors(k=np.array([4, 2], I64)),
            15,
        ),
        lambda x: x.reshape(4, 2, -1),
    ),
    "gelu_opset20": (handmade([oh.make_node("Gelu", ["x"], ["y"])], [], 20), F.gelu),
    "same_padding": (
        handmade(
            [
                oh.make_node("Conv", ["x", "w"], ["c"], auto_pad="SAME_UPPER", kernel_shape=[2, 3]),
                oh.make_node("MaxPool", ["c"], ["y"], auto_pad="SAME_LOWER", kernel_shape=[2, 2]),
            ],
            tensors(w=np.linspace(-1, 1, 36, dtype=np.float32).reshape(3, 2, 2, 3)),
            13,
        ),
        lambda x: F.max_pool2d(
            F.pad(
                F.conv2d(F.pad(x, (1, 1, 0, 1)), torch.linspace(-1, 1, 36).reshape(3, 2, 2, 3)),
                (1, 0, 1, 0),
                value=-1e9,
            ),
            2,
            1,
        ),
    ),
    "transpose_reversed": (
        handmade([oh.make_node("Transpose", ["x"], ["y"])], [], 13),
        lambda x: x.permute(3, 2, 1, 0),
    ),
    "sum_of_three": (
        handmade(
            [
                oh.make_node("Sum", ["x", "x", "x"], ["s"]),
                oh.make_node("Max", ["s"], ["m"]),
                oh.make_node("Floor", ["m"], ["f"]),
                oh.make_node("Ceil", ["x"], ["c"]),
                oh.make_node("Add", ["f", "c"], ["y"]),
            ],
            [],
            13,
        ),
        lambda x: (3 * x).floor() + x.ceil(),
    ),
    "half_precision_constant": (
        handmade(
            [
                oh.make_node("Cast", ["h"], ["f"], to=onnx.TensorProto.FLOAT),
                oh.make_node("Mul", ["x", "f"], ["y"]),
            ],
            tensors(h=np.array([[-1.5], [2.0], [3e-5], [655]], np.float16)),
            13,
        ),
        lambda x: x * torch.tensor([[-1.5], [2.0], [3e-5], [655]], dtype=torch.float16).float(),
    ),
}
