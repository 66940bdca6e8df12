"""Two processes that train one model together."""
import os
import re
import socket
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import numpy as np
import torch
from torch import multiprocessing

from networks import SMALL
from scribokit.network.model import Crnn
from scribokit.network.team import Team, join, processes_here
from scribokit.network.training import Trainer, load_trainer

TRAIN = Path(__file__).resolve().parents[2] / "training" / "train"
LIMIT_SECONDS = 300


def batch(number, lines=4):
    dice = np.random.default_rng(number)
    return dice.integers(0, 255, (lines, 3, 32, 64), np.uint8), ["AB"[: 1 + number % 2]] * lines


def in_team(rank, port, folder, work):
    """Runs `work` in one of two processes and saves what it gives."""
    os.environ.update(
        MASTER_ADDR="127.0.0.1",
        MASTER_PORT=str(port),
        WORLD_SIZE="2",
        RANK=str(rank),
        GLOO_SOCKET_IFNAME="lo",
    )
    torch.set_num_threads(1)
    team = join()
    try:
        torch.save(work(team), Path(folder) / f"{rank}.pt")
    finally:
        team.leave()


def both(work):
    """What `work` gives in rank 0 and in rank 1."""
    with tempfile.TemporaryDirectory() as folder:
        port = free_port()
        multiprocessing.spawn(in_team, (port, folder, work), nprocs=2)
        return [torch.load(Path(folder) / f"{rank}.pt") for rank in range(2)]


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


def new_trainer(team, seed=1):
    torch.manual_seed(seed)
    return Trainer(Crnn(SMALL), "AB1", team=team)


def two_steps(team):
    trainer = new_trainer(team)
    for number in range(2):
        trainer.step(*batch(2 * number + team.rank), 1e-3)
    return trainer.model.state_dict(), trainer.progress.pictures


def gathered(team):
    """The gradients of one batch."""
    trainer = new_trainer(team)
    trainer._losses(trainer.model, *batch(team.rank)).mean().backward()
    counted, lines = team.gather_gradients(trainer.model, True, 4)
    assert (counted, lines) == (team.size, 4 * team.size)
    return [parameter.grad.clone() for parameter in trainer.model.parameters()]


def step_with_a_bad_batch(team):
    trainer = new_trainer(team)
    before = {name: value.clone() for name, value in trainer.model.state_dict().items()}
    if team.rank == 1:
        trainer._losses = lambda *_: torch.tensor([float("nan")], requires_grad=True)
    trainer.step(*batch(1), 1e-3)
    return before, trainer.model.state_dict()


def agreed(team):
    return team.agree(10.0 + team.rank, team.rank == 1), team.agree(3.0, False)


def aligned(team):
    trainer = new_trainer(team, seed=team.rank)
    team.align(trainer.model)
    return trainer.model.state_dict()


class Teams(unittest.TestCase):
    def assert_same(self, one, other):
        for name, value in one.items():
            if not value.is_floating_point():
                continue  # how many batches were normalised
            self.assertTrue(torch.equal(value, other[name]), name)

    def test_take_the_same_steps(self):
        (first, lines), (second, other_lines) = both(two_steps)
        self.assert_same(first, second)
        self.assertEqual((lines, other_lines), (16, 16))

    def test_step_by_the_mean_of_their_gradients(self):
        both_have, _ = both(gathered)
        singles = [gathered(Team(rank, 1)) for rank in range(2)]
        for mean, one, other in zip(both_have, *singles):
            self.assertTrue(torch.allclose(mean, (one + other) / 2, atol=1e-5))

    def test_go_on_where_one_of_them_has_no_gradient(self):
        (before, after), (_, other) = both(step_with_a_bad_batch)
        self.assert_same(after, other)
        self.assertFalse(torch.equal(after["classifier.bias"], before["classifier.bias"]))
        self.assertTrue(all(torch.isfinite(value).all() for value in after.values()))

    def test_agree_on_time_and_end(self):
        for answers in both(agreed):
            self.assertEqual(answers, ((10.0, True), (3.0, False)))

    def test_begin_with_the_weights_of_the_first(self):
        first, second = both(aligned)
        self.assert_same(first, second)

    def test_of_one_need_no_others(self):
        self.assertEqual((join(), processes_here()), (Team(0, 1), 1))
        self.assertEqual(Team().agree(4.0, True), (4.0, True))


class Training(unittest.TestCase):
    def train(self, folder, minutes):
        # With Python 3.11 this torchrun starts nothing unless its output is redirected.
        command = [sys.executable, "-m", "torch.distributed.run", "--redirects", "1", "--tee", "1"]
        command += ["--log_dir", f"{folder}/log", "--nproc_per_node", "2"]
        command += ["--master_addr", "127.0.0.1", "--master_port", str(free_port()), str(TRAIN)]
        command += ["--run", f"{folder}/run", "--minutes", str(minutes), "--recipe", "clean"]
        command += ["--alphabet", "0123456789", "--stages", "4/4/4/4/4", "--hidden", "4"]
        command += ["--columns", "256", "--workers", "0", "--threads", "1", "--report", "2"]
        return subprocess.run(
            command,
            capture_output=True,
            text=True,
            timeout=LIMIT_SECONDS,
            env={**os.environ, "GLOO_SOCKET_IFNAME": "lo"},
        )

    def test_under_torchrun_counts_the_lines_of_all_and_goes_on(self):
        with tempfile.TemporaryDirectory() as folder:
            done = self.train(folder, 0.02)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertEqual(
                len(re.findall("weights, 10 characters, on cpu, 2 pro", done.stdout)), 1
            )
            first = load_trainer(Path(folder) / "run" / "last.pt").progress
            self.assertGreater(first.steps, 0)
            self.assertGreaterEqual(first.pictures, 2 * first.steps)
            done = self.train(folder, 0.05)
            self.assertEqual(done.returncode, 0, done.stderr)
            second = load_trainer(Path(folder) / "run" / "last.pt").progress
            self.assertGreater(second.steps, first.steps)


if __name__ == "__main__":
    unittest.main()
