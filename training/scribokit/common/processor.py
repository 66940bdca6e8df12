"""How the kit uses the processor. A program that computes while workers draw imports this before
OpenCV and PyTorch: the first of the two loads OpenMP, which asks only then how its threads are to
wait."""
import ctypes
import os

# Asleep. By themselves they wait awake, and keep the workers from the processors: on two of them,
# two threads took 1.45 s instead of 1.64 s for a training step and then the reading for it (1.65 s
# instead of 2.66 s beside a program that never rests).
os.environ.setdefault("OMP_WAIT_POLICY", "passive")

import cv2  # noqa: E402 (behind the setting above)
import torch  # noqa: E402

# Of malloc.h: what mallopt() sets.
_TRIM_THRESHOLD, _MMAP_THRESHOLD, _ARENA_MAX = -1, -3, -8
_LARGEST_MMAP_THRESHOLD = 32 << 20


def usable():
    """Processors that this process may run on."""
    return len(os.sched_getaffinity(0))


def use(threads):
    """Computes on this many threads, without what slows them down. To be called before the first
    batch."""
    torch.set_num_threads(threads)
    cv2.setNumThreads(1)
    _quieten_blas()
    _keep_memory()


def _quieten_blas():
    """One thread for OpenBLAS, where PyTorch uses that: its threads and PyTorch's wait for each
    other. On two processors training was twice as slow with both (132 and 285 lines a second)."""
    library = _library("libopenblas.so.0")
    if library and hasattr(library, "openblas_set_num_threads"):
        library.openblas_set_num_threads(1)


def _keep_memory():
    """Has the C library keep the memory of a step for the next one. Given back and asked for again,
    a tenth of the time goes into clearing its pages."""
    library = _library("libc.so.6")
    if library:
        library.mallopt(_MMAP_THRESHOLD, _LARGEST_MMAP_THRESHOLD)
        library.mallopt(_TRIM_THRESHOLD, 2**31 - 1)
        library.mallopt(_ARENA_MAX, 1)


def _library(name):
    try:
        return ctypes.CDLL(name)
    except OSError:
        return None
