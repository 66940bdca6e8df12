"""What the kit tells the libraries that share the processor."""
import ctypes
import os
import re
import subprocess
import unittest
from pathlib import Path

import cv2
import torch

from scribokit.common import processor


TRAIN = Path(__file__).resolve().parents[2] / "training" / "train"


def spins(**environment):
    """How often a thread of a training looks for work before it falls asleep, as OpenMP tells when
    it is loaded."""
    told = subprocess.run(
        [str(TRAIN), "--help"],
        env={**os.environ, "OMP_DISPLAY_ENV": "verbose", **environment},
        capture_output=True,
        text=True,
        check=True,
    ).stderr
    return int(re.search(r"GOMP_SPINCOUNT = '(\d+)'", told)[1])


class Processor(unittest.TestCase):
    def setUp(self):
        self.addCleanup(torch.set_num_threads, torch.get_num_threads())
        self.addCleanup(cv2.setNumThreads, cv2.getNumThreads())

    def test_counts_only_what_this_process_may_use(self):
        allowed = os.sched_getaffinity(0)
        self.addCleanup(os.sched_setaffinity, 0, allowed)
        self.assertEqual(processor.usable(), len(allowed))
        os.sched_setaffinity(0, {min(allowed)})
        self.assertEqual(processor.usable(), 1)

    def test_gives_the_threads_to_pytorch_alone(self):
        cv2.setNumThreads(2)
        processor.use(2)
        self.assertEqual(torch.get_num_threads(), 2)
        self.assertEqual(cv2.getNumThreads(), 1)

    def test_openblas_goes_without_threads_where_it_is_used(self):
        try:
            blas = ctypes.CDLL("libopenblas.so.0")
        except OSError:
            self.skipTest("PyTorch uses another library here")
        blas.openblas_set_num_threads(2)
        processor.use(2)
        self.assertEqual(blas.openblas_get_num_threads(), 1)

    def test_threads_leave_it_to_the_workers_while_they_wait_unless_told_otherwise(self):
        self.assertEqual(spins(), 0)
        self.assertGreater(spins(OMP_WAIT_POLICY="active"), 0)


if __name__ == "__main__":
    unittest.main()
