"""Batches that a thread gets ready while the training computes, and some of the latest once more
while none is ready (Choi et al., Faster neural network training with data echoing, 2019): where
lines are drawn and read to find the few to train on, getting a batch ready takes several times as
long as a step with it."""
import queue
import random
import threading

_READY = 4
_LOOK_SECONDS = 0.5


class Ahead:
    """next() gives a batch of `supply` that none was given before, or one of the latest `kept` when
    none is ready. What the supply raises is raised by next(). Only the thread calls the supply,
    until close() has ended it.
    """

    def __init__(self, supply, kept=200):
        self._supply = supply
        self._kept = kept
        self._latest = []
        self._ready = queue.Queue(_READY)
        self._error = None
        self._ends = threading.Event()
        self._thread = threading.Thread(target=self._fill, name="ahead", daemon=True)
        self._thread.start()

    def next(self):
        while True:
            try:
                batch = self._ready.get(block=not self._latest, timeout=_LOOK_SECONDS)
            except queue.Empty:
                if self._error:
                    raise self._error from None
                if not self._latest:
                    continue
                return random.choice(self._latest)
            self._latest = self._latest[1 - self._kept :] + [batch]
            return batch

    def close(self):
        self._ends.set()
        self._thread.join()
        self._supply.close()

    def _fill(self):
        try:
            while not self._ends.is_set():
                self._put(self._supply.next())
        except Exception as error:
            self._error = error

    def _put(self, batch):
        while not self._ends.is_set():
            try:
                return self._ready.put(batch, timeout=_LOOK_SECONDS)
            except queue.Full:
                pass
