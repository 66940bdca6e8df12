"""Selection: training on the lines that the network does not read surely yet (Jiang et al.,
Accelerating deep learning by focusing on the biggest losers, 2019), but for those that it cannot
make out at all, many of which nobody can (Mindermann et al., Prioritized training on points that
are learnable, worth learning, and not yet learnt, 2022). Reading a line takes less than a third of
the time of a training step on it, and the lines that are read surely hardly move the weights."""
import numpy as np

_PATIENCE = 200


class Selected:
    """next() gives batches of a supply's lines whose loss is above `least` and not above `most`, of
    one width and of `columns` picture columns or a little more. `losses` gives the loss of each
    line of a batch. When _PATIENCE batches do not fill one, the last of them is given whole, so
    that training goes on where everything is read surely.
    """

    def __init__(self, supply, losses, least, most, columns):
        self._supply = supply
        self._losses = losses
        self._least = least
        self._most = most
        self._columns = columns
        self._waiting = {}

    def next(self):
        for _ in range(_PATIENCE):
            pictures, labels = self._supply.next()
            width = pictures.shape[3]
            losses = self._losses(pictures, labels)
            kept = np.flatnonzero((losses > self._least) & (losses <= self._most))
            waiting = self._waiting.setdefault(width, ([], []))
            waiting[0].append(pictures[kept])
            waiting[1].extend(labels[place] for place in kept)
            if len(waiting[1]) * width >= self._columns:
                del self._waiting[width]
                return np.concatenate(waiting[0]), waiting[1]
        return pictures, labels

    def close(self):
        self._supply.close()
