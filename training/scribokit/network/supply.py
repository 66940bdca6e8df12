"""Batches drawn ahead by worker processes, so that training never waits for pictures."""
import multiprocessing
import os
import queue
import signal

import cv2

from ..common.inputs import Stretch
from ..drawing.maker import PictureMaker
from .batches import Batches


def _work(recipe, alphabet, seed, columns, widest, stretch, outbox, parent):
    cv2.setNumThreads(1)
    # Ctrl-C reaches the workers as well; the training, which it stops, ends them.
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    # When the training has ended without a word nobody takes the last batches, and the end must not
    # wait for that.
    outbox.cancel_join_thread()
    batches = Batches(PictureMaker(recipe, alphabet, seed), columns, widest, stretch)
    while True:
        batch = batches.next()
        while True:
            try:
                outbox.put(batch, timeout=5)
                break
            except queue.Full:
                if os.getppid() != parent:
                    return


class Supply:
    """next() gives a batch as Batches does. With no workers it is drawn on the spot. Call close()
    at the end."""

    def __init__(self, recipe, alphabet, seed, columns, widest, workers, stretch=Stretch()):
        self._processes = []
        if workers < 1:
            self._batches = Batches(PictureMaker(recipe, alphabet, seed), columns, widest, stretch)
            return
        context = multiprocessing.get_context("spawn")
        self._outbox = context.Queue(maxsize=4 * workers)
        for worker in range(workers):
            arguments = (
                recipe,
                alphabet,
                seed * 1000 + worker,
                columns,
                widest,
                stretch,
                self._outbox,
                os.getpid(),
            )
            self._processes.append(context.Process(target=_work, args=arguments, daemon=True))
            self._processes[-1].start()

    def next(self):
        if not self._processes:
            return self._batches.next()
        while True:
            try:
                return self._outbox.get(timeout=20)
            except queue.Empty:
                if not any(process.is_alive() for process in self._processes):
                    raise RuntimeError(
                        "the workers that draw pictures have ended; their messages are above"
                    ) from None

    def close(self):
        for process in self._processes:
            process.terminate()
            process.join()
