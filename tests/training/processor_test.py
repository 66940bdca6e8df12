"""What the kit tells the libraries that share the processor."""
import ctypes
import os
import unittest

import cv2
import torch

from scribokit import processor


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


if __name__ == "__main__":
    unittest.main()
