"""The large CRNN of the bench: VGG-style convolutions and two bidirectional LSTMs of 256, with
random weights.

The shape follows Shi, Bai and Yao, "An end-to-end trainable neural network for image-based sequence
recognition" (2015), with a pool in the place of its last convolution. The weights are random: a
runtime's time does not depend on them. Their bounds keep the activations in a usual range (He et
al., "Delving deep into rectifiers", 2015) and the scores apart, so that runtimes that disagree show
it.
"""

import numpy as np
import onnx
from onnx import TensorProto, helper, numpy_helper

# Output channels of each 3x3 convolution, and the pool after it (kernel and stride, height and
# width).
CONVOLUTIONS = [(64, (2, 2)), (128, (2, 2)), (256, None), (256, (2, 1)), (512, None), (512, (4, 1))]
HIDDEN = 256
CLASSES = 71


class Maker:
    def __init__(self, seed):
        self.random = np.random.default_rng(seed)
        self.nodes = []
        self.weights = []

    def weight(self, shape, fan, gain=1):
        """Uniform values of the variance gain^2 / fan; `fan` is the number of values that each
        output sums."""
        bound = gain * (3 / fan) ** 0.5
        return self.constant(self.random.uniform(-bound, bound, shape).astype(np.float32))

    def constant(self, values):
        name = f"w{len(self.weights)}"
        self.weights.append(numpy_helper.from_array(values, name))
        return name

    def node(self, operation, *inputs, outputs=1, **attributes):
        names = [f"{operation.lower()}{len(self.nodes)}_{i}" for i in range(outputs)]
        self.nodes.append(helper.make_node(operation, inputs, names, **attributes))
        return names[0]

    def convolutions(self, value):
        channels = 3
        for filters, pool in CONVOLUTIONS:
            weight = self.weight((filters, channels, 3, 3), channels * 9, gain=2**0.5)
            value = self.node(
                "Conv",
                value,
                weight,
                self.weight((filters,), filters),
                kernel_shape=[3, 3],
                pads=[1, 1, 1, 1],
            )
            value = self.node("Relu", value)
            if pool:
                value = self.node("MaxPool", value, kernel_shape=list(pool), strides=list(pool))
            channels = filters
        return value

    def lstm(self, value, inputs):
        weight = self.weight((2, 4 * HIDDEN, inputs), inputs)
        recurrence = self.weight((2, 4 * HIDDEN, HIDDEN), HIDDEN)
        value = self.node(
            "LSTM",
            value,
            weight,
            recurrence,
            self.weight((2, 8 * HIDDEN), HIDDEN),
            outputs=3,
            hidden_size=HIDDEN,
            direction="bidirectional",
        )
        value = self.node("Transpose", value, perm=[0, 2, 1, 3])
        return self.node("Reshape", value, self.constant(np.array([0, 0, -1])))


def make(path, seed=1):
    """Writes the model to `path`; returns the number of its weights."""
    maker = Maker(seed)
    value = maker.convolutions("input")
    value = maker.node("Squeeze", value, maker.constant(np.array([2])))
    value = maker.node("Transpose", value, perm=[2, 0, 1])
    value = maker.lstm(maker.lstm(value, 512), 2 * HIDDEN)
    value = maker.node("MatMul", value, maker.weight((2 * HIDDEN, CLASSES), 2 * HIDDEN, gain=20))
    value = maker.node("Add", value, maker.weight((CLASSES,), CLASSES))
    value = maker.node("Softmax", value, axis=2)
    graph = helper.make_graph(
        maker.nodes,
        "largecrnn",
        [helper.make_tensor_value_info("input", TensorProto.FLOAT, [1, 3, 32, "width"])],
        [helper.make_tensor_value_info(value, TensorProto.FLOAT, ["steps", 1, CLASSES])],
        maker.weights,
    )
    model = helper.make_model(graph, opset_imports=[helper.make_opsetid("", 13)])
    model.ir_version = 7
    onnx.checker.check_model(model)
    onnx.save(model, path)
    return sum(int(np.prod(weight.dims)) for weight in maker.weights)
