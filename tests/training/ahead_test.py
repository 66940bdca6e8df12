import os
import signal
import subprocess
import sys
import tempfile
import threading
import unittest
from pathlib import Path

from scribokit.network.ahead import Ahead
from scribokit.network.training import load_model


PROGRAM = Path(__file__).resolve().parents[2] / "training" / "train"


class Gated:
    """A supply of 0, 1, 2 …, as many as were let through; then it waits, or raises `error`. `waits`
    is set when it is asked for more than that: what came before has been handed on."""

    def __init__(self, error=None):
        self._gate = threading.Semaphore(0)
        self._left = 0
        self._error = error
        self._given = 0
        self.waits = threading.Event()
        self.closed = False

    def let(self, count):
        self.waits.clear()
        self._left = count
        self._gate.release(count)

    def next(self):
        if self._left == 0:
            self.waits.set()
            if self._error:
                raise self._error
        self._gate.acquire()
        self._left -= 1
        self._given += 1
        return self._given - 1

    def close(self):
        self.closed = True


class Endless:
    def __init__(self):
        self.closed_by = None

    def next(self):
        return "batch"

    def close(self):
        self.closed_by = threading.active_count()


class BatchesAhead(unittest.TestCase):
    def ahead(self, supply, **options):
        ahead = Ahead(supply, **options)

        def end():
            supply.let(1)
            ahead.close()

        self.addCleanup(end)
        return ahead

    def test_are_new_ones_in_order_while_they_are_ready(self):
        supply = Gated()
        supply.let(4)
        ahead = self.ahead(supply)
        self.assertTrue(supply.waits.wait(60))
        self.assertEqual([ahead.next() for _ in range(4)], [0, 1, 2, 3])

    def test_are_the_latest_once_more_while_none_is_ready(self):
        supply = Gated()
        supply.let(4)
        ahead = self.ahead(supply, kept=2)
        self.assertTrue(supply.waits.wait(60))
        for _ in range(4):
            ahead.next()
        self.assertEqual({ahead.next() for _ in range(100)}, {2, 3})
        supply.let(1)
        self.assertTrue(supply.waits.wait(60))
        self.assertEqual(ahead.next(), 4)
        self.assertEqual({ahead.next() for _ in range(100)}, {3, 4})

    def test_begin_when_the_first_is_ready(self):
        supply = Gated()
        ahead = self.ahead(supply)
        self.assertTrue(supply.waits.wait(60))
        late = threading.Timer(0.8, supply.let, [1])
        late.start()
        self.assertEqual(ahead.next(), 0)
        late.join()

    def test_raise_what_the_supply_raises_after_what_it_gave(self):
        supply = Gated(error=RuntimeError("the workers have ended"))
        supply.let(2)
        ahead = Ahead(supply)
        self.assertTrue(supply.waits.wait(60))
        self.assertEqual([ahead.next(), ahead.next()], [0, 1])
        with self.assertRaisesRegex(RuntimeError, "the workers have ended"):
            for _ in range(1000000):
                ahead.next()
        ahead.close()
        self.assertTrue(supply.closed)

    def test_end_while_nobody_takes_them(self):
        threads = threading.active_count()
        supply = Endless()
        ahead = Ahead(supply)
        ahead.next()
        ahead.close()
        self.assertEqual(supply.closed_by, threads)


class Training(unittest.TestCase):
    def test_that_is_stopped_ends_without_more_than_a_sentence(self):
        with tempfile.TemporaryDirectory() as root:
            command = [
                sys.executable,
                str(PROGRAM),
                "--run",
                root,
                "--alphabet",
                "0123456789",
                "--recipe",
                "clean",
                "--minutes",
                "60",
                "--least-loss",
                "0.01",
                "--columns",
                "512",
                "--report",
                "1",
                "--threads",
                "1",
            ]
            training = subprocess.Popen(
                command,
                stdout=subprocess.PIPE,
                stderr=subprocess.PIPE,
                text=True,
                start_new_session=True,
            )
            for line in training.stdout:
                if line.startswith("steps"):
                    break
            os.killpg(training.pid, signal.SIGINT)
            *_, last = training.stdout
            training.stdout.close()
            errors = training.stderr.read()
            training.stderr.close()
            self.assertEqual(
                load_model(Path(root) / "last.pt")[2].steps,
                int(last.split()[1]),
                "what was trained is saved",
            )
            self.assertEqual(
                (training.wait(60), errors),
                (
                    1,
                    "stopped; the same command goes on from the latest checkpoint, "
                    "if there is one\n",
                ),
            )


if __name__ == "__main__":
    unittest.main()
