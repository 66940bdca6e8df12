"""Runs a model in OpenCV's dnn module, as worker.py describes it: opencv_worker.py THREADS

OpenCV 4.6 plans a network for one shape and reads operator set 11: a model is rewritten for every
width, and its planning counts to the width's first run.
"""

import copy
import sys
import time

import cv2
import numpy as np
import onnx
from onnx import helper, numpy_helper


# What exporters work sizes out with: of whole numbers.
SIZE_ARITHMETIC = {"Add": np.add, "Mul": np.multiply, "Div": np.floor_divide, "Max": np.maximum}


def constants_of(graph):
    constants = {
        node.output[0]: numpy_helper.to_array(node.attribute[0].t)
        for node in graph.node
        if node.op_type == "Constant"
    }
    constants.update({tensor.name: numpy_helper.to_array(tensor) for tensor in graph.initializer})
    return constants


def with_attribute_axes(graph):
    """Gives Squeeze and Unsqueeze their axes as an attribute, as before operator set 13."""
    constants = constants_of(graph)
    for node in graph.node:
        if node.op_type in ("Squeeze", "Unsqueeze") and len(node.input) > 1:
            node.attribute.append(helper.make_attribute("axes", constants[node.input[1]].tolist()))
            del node.input[1:]


def without_zero_states(graph):
    """Removes the initial states of LSTMs: exporters compute them from the width, OpenCV cannot."""
    for node in graph.node:
        if node.op_type == "LSTM":
            del node.input[5:]
    remove_unused(graph)


def with_known_sizes(graph):
    """Resizes of a picture whose width is set, with their sizes written out, which OpenCV cannot
    work out."""
    picture = graph.input[0]
    known = constants_of(graph)
    for node in graph.node:
        if node.op_type == "Shape" and node.input[0] == picture.name:
            known[node.output[0]] = np.array(
                [extent.dim_value for extent in picture.type.tensor_type.shape.dim]
            )
        elif node.op_type in SIZE_ARITHMETIC and all(name in known for name in node.input):
            known[node.output[0]] = SIZE_ARITHMETIC[node.op_type](
                *(known[name] for name in node.input)
            )
        elif node.op_type == "Resize" and len(node.input) == 4 and node.input[3] in known:
            sizes = numpy_helper.from_array(known[node.input[3]], node.output[0] + "_sizes")
            graph.initializer.append(sizes)
            node.input[3] = sizes.name
    remove_unused(graph)


def remove_unused(graph):
    used = {output.name for output in graph.output}
    kept = []
    for node in reversed(graph.node):
        if used.intersection(node.output):
            kept.append(node)
            used.update(node.input)
    del graph.node[:]
    graph.node.extend(reversed(kept))


class Worker:
    def __init__(self, threads):
        cv2.setNumThreads(threads)
        self.model = None
        self.nets = {}

    def load(self, path):
        start = time.perf_counter()
        self.model = onnx.load(path)
        self.nets = {}
        with_attribute_axes(self.model.graph)
        without_zero_states(self.model.graph)
        del self.model.graph.value_info[:]
        self.model.opset_import[0].version = 11
        return [(time.perf_counter() - start) * 1e6]

    def net(self, width):
        if width not in self.nets:
            model = copy.deepcopy(self.model)
            model.graph.input[0].type.tensor_type.shape.dim[3].dim_value = width
            with_known_sizes(model.graph)
            self.nets[width] = cv2.dnn.readNetFromONNX(
                np.frombuffer(model.SerializeToString(), np.uint8)
            )
        return self.nets[width]

    def run(self, path, channels, height, width, repeats, output):
        picture = np.fromfile(path, np.float32).reshape(1, channels, height, width)
        times = []
        for _ in range(repeats):
            start = time.perf_counter()
            net = self.net(width)
            net.setInput(picture)
            scores = net.forward()
            times.append((time.perf_counter() - start) * 1e6)
        scores.tofile(output)
        return times


def main():
    worker = Worker(int(sys.argv[1]))
    for line in sys.stdin:
        command, *rest = line.rstrip("\n").split("\t")
        if command == "load":
            times = worker.load(rest[0])
        else:
            times = worker.run(rest[0], *map(int, rest[1:5]), rest[5])
        print(*times, flush=True)


if __name__ == "__main__":
    main()
