"""Times runtimes against each other on the same models and inputs; see bench/compare-runtimes."""

import argparse
import itertools
import pathlib
import statistics
import subprocess
import sys
import time

import numpy as np
import onnx

import largecrnn
from worker import Worker

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
REPEATS = 3  # runs of a runtime in its turn
REST = 0.2  # seconds before a turn: ONNX Runtime's threads look for work for long after theirs
TOLERANCE = 1e-3  # of a score


def arguments():
    parser = argparse.ArgumentParser(prog="bench/compare-runtimes")
    parser.add_argument(
        "models", nargs="*", help="ONNX files; default: the shipped model and a large CRNN"
    )
    parser.add_argument(
        "--widths",
        type=lambda text: [int(word) for word in text.split(",")],
        help="for the models given, comma-separated; default 64,100,160,320",
    )
    parser.add_argument(
        "--rounds", type=int, default=20, help="turns of every runtime at every width (default 20)"
    )
    parser.add_argument("--peers", default="onnxruntime,opencv", help="default: onnxruntime,opencv")
    parser.add_argument("--threads", default="1,2", help="default: 1,2")
    parser.add_argument("--build", default="build", help=argparse.SUPPRESS)
    return parser.parse_args()


def models(given, work):
    """What to run: (title, ONNX file, widths)."""
    if given.models:
        return [
            (pathlib.Path(path).stem, pathlib.Path(path), given.widths or [64, 100, 160, 320])
            for path in given.models
        ]
    large = work / "largecrnn.onnx"
    weights = largecrnn.make(large)
    return [
        ("shipped model", ROOT / "models/ocr_printed_p1_1.onnx", [64, 100, 160, 320]),
        (f"large CRNN, {weights / 1e6:.1f} million weights", large, [100, 320]),
    ]


def start(name, threads, build):
    command = {
        "scribo": [build / "bench/runtime_worker"],
        "onnxruntime": [
            "node",
            HERE / "onnxruntime_worker.js",
            build / "bench-peers/node_modules",
            threads,
        ],
        "opencv": ["/usr/bin/python3", "-B", HERE / "opencv_worker.py", threads],
    }[name]
    return Worker(name, [str(word) for word in command], {"SCRIBO_THREADS": str(threads)})


def make_engine(model, build, work):
    engine = work / (model.stem + ".trt")
    subprocess.run(
        [build / "tools/scribo-engine/scribo-engine", "build", model, "-o", engine],
        check=True,
        stdout=subprocess.DEVNULL,
    )
    return engine


def make_input(channels, height, width, work):
    path = work / f"input{width}.f32"
    np.random.default_rng(width).uniform(-1, 1, (channels, height, width)).astype(
        np.float32
    ).tofile(path)
    return path


class Width:
    """The runs of all runtimes at one width."""

    def __init__(self, extents, work):
        self.extents = extents
        self.work = work
        self.input = make_input(*extents, work)
        self.times = {}
        self.first = {}

    def turn(self, runtime, repeats):
        return runtime.ask("run", self.input, *self.extents, repeats, self.output(runtime.name))

    def output(self, name):
        return self.work / f"{name}{self.extents[2]}.f32"

    def begin(self, runtime):
        self.first[runtime.name] = self.turn(runtime, 1)[0]
        self.times[runtime.name] = []

    def measure(self, runtime):
        time.sleep(REST)
        self.times[runtime.name] += self.turn(runtime, REPEATS)

    def disagreement(self, name):
        """The largest difference of a score from Scribo's."""
        ours = np.fromfile(self.output("scribo"), np.float32)
        theirs = np.fromfile(self.output(name), np.float32)
        return float("inf") if ours.size != theirs.size else float(np.abs(ours - theirs).max())


def input_extents(path):
    dims = onnx.load(path, load_external_data=False).graph.input[0].type.tensor_type.shape.dim
    return dims[1].dim_value, dims[2].dim_value


def measure_model(path, widths, runtimes, engine, rounds, work):
    load = {
        runtime.name: runtime.ask("load", engine if runtime.name == "scribo" else path)[0]
        for runtime in runtimes
    }
    columns = [Width((*input_extents(path), width), work) for width in widths]
    for column, runtime in itertools.product(columns, runtimes):
        column.begin(runtime)
    for turn in range(rounds):
        # Everyone follows everyone else equally often.
        order = runtimes[turn % len(runtimes) :] + runtimes[: turn % len(runtimes)]
        for column, runtime in itertools.product(columns, order):
            column.measure(runtime)
    return load, columns


def report(threads, runtimes, load, columns):
    """Prints one table; returns whether the runtimes agree."""
    names = [runtime.name for runtime in runtimes]
    print(
        f'\n  {threads} thread{"s" if threads > 1 else ""}; milliseconds, median'
        " (in brackets scribo / peer, difference of scores)"
    )
    rows = [("load", load, None)]
    rows += [(f"width {column.extents[2]}, first run", column.first, None) for column in columns]
    rows += [
        (
            f"width {column.extents[2]}",
            {name: statistics.median(column.times[name]) for name in names},
            column,
        )
        for column in columns
    ]
    agree = True
    for title, times, column in rows:
        cells = [f'scribo {times["scribo"]:7.2f}']
        for name in names[1:]:
            note = f'{times["scribo"] / times[name]:.2f}'
            if column:
                difference = column.disagreement(name)
                agree = agree and difference <= TOLERANCE
                note += f", {difference:.0e}" + ("" if difference <= TOLERANCE else " DISAGREES")
            cells.append(f"{name} {times[name]:7.2f} ({note})")
        print(f"  {title:22}", "   ".join(cells), flush=True)
    return agree


def main():
    given = arguments()
    build = pathlib.Path(given.build).resolve()
    work = build / "bench-work"
    work.mkdir(parents=True, exist_ok=True)
    agree = True
    for title, path, widths in models(given, work):
        print(f"\n{title}")
        engine = make_engine(path, build, work)
        for threads in map(int, given.threads.split(",")):
            runtimes = [start(name, threads, build) for name in ["scribo", *given.peers.split(",")]]
            load, columns = measure_model(path, widths, runtimes, engine, given.rounds, work)
            agree = report(threads, runtimes, load, columns) and agree
            for runtime in runtimes:
                runtime.close()
    return 0 if agree else 1


if __name__ == "__main__":
    sys.exit(main())
