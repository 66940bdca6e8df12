"""How well a reader reads: line accuracy, character error rate, and which characters it takes for
which."""
from collections import Counter
from dataclasses import dataclass, field

import cv2
import numpy as np

from ..common.ctc import distance


@dataclass
class Score:
    """Counts over labelled pictures; `wrong` keeps (edits per character, path, read, truth) of
    every misread one."""

    lines: int = 0
    right: int = 0
    characters: int = 0
    edits: int = 0
    confusions: Counter = field(default_factory=Counter)
    wrong: list = field(default_factory=list)

    @property
    def line_accuracy(self):
        return self.right / max(1, self.lines)

    @property
    def character_error_rate(self):
        return self.edits / max(1, self.characters)

    def add(self, path, read, truth):
        edits = distance(read, truth)
        self.lines += 1
        self.right += edits == 0
        self.characters += len(truth)
        self.edits += edits
        if edits:
            self.wrong.append((edits / max(1, len(truth)), path, read, truth))
            self.confusions.update(pair for pair in aligned(read, truth) if pair[0] != pair[1])


# Bounds between which lines are counted: columns that a character has in the network's input, rows
# of the picture.
WIDTHS, HEIGHTS = (12, 16, 20), (16, 24, 40)


def by_size(sizes, right, bounds):
    """Lines by their size: (from, to, lines, right lines) for each range between the bounds that
    holds any; `to` of the last is None. `sizes` and `right` (whether it was read) go line by line.
    """
    place = np.searchsorted(bounds, sizes, side="right")
    total = np.bincount(place, minlength=len(bounds) + 1)
    good = np.bincount(place, weights=right, minlength=len(bounds) + 1).astype(int)
    edges = (0,) + bounds, bounds + (None,)
    return [row for row in zip(*edges, total.tolist(), good.tolist()) if row[2]]


def aligned(read, truth):
    """(truth character, read character) pairs of one best alignment; an empty string where one has
    no counterpart."""
    rows, columns = len(truth) + 1, len(read) + 1
    cost = np.zeros((rows, columns), int)
    cost[:, 0], cost[0] = range(rows), range(columns)
    for i in range(1, rows):
        for j in range(1, columns):
            cost[i, j] = min(
                cost[i - 1, j] + 1,
                cost[i, j - 1] + 1,
                cost[i - 1, j - 1] + (truth[i - 1] != read[j - 1]),
            )
    pairs, i, j = [], rows - 1, columns - 1
    while i or j:
        if i and j and cost[i, j] == cost[i - 1, j - 1] + (truth[i - 1] != read[j - 1]):
            i, j = i - 1, j - 1
            pairs.append((truth[i], read[j]))
        elif i and cost[i, j] == cost[i - 1, j] + 1:
            i -= 1
            pairs.append((truth[i], ""))
        else:
            j -= 1
            pairs.append(("", read[j]))
    return pairs[::-1]


def only(text, characters):
    """The text without what is not compared."""
    return (
        "".join(character for character in text if character in characters) if characters else text
    )


def confusion_picture(confusions, most=24):
    """The most frequent confusions as a table: rows are the truth, columns what was read, '_'
    stands for nothing."""
    frequent = [pair for pair, _ in confusions.most_common(4 * most)]
    rows = list(dict.fromkeys(truth for truth, _ in frequent))[:most] or [""]
    columns = list(dict.fromkeys(read for _, read in frequent))[:most] or [""]
    cell = 30
    picture = np.full(((len(rows) + 1) * cell, (len(columns) + 1) * cell, 3), 255, np.uint8)
    highest = max(confusions.values(), default=1)

    def write(text, row, column, colour=(0, 0, 0), size=0.5):
        cv2.putText(
            picture,
            text,
            (column * cell + 6, row * cell + 20),
            cv2.FONT_HERSHEY_SIMPLEX,
            size,
            colour,
            1,
            cv2.LINE_AA,
        )

    for column, read in enumerate(columns, 1):
        write(read or "_", 0, column, (160, 60, 0))
    for row, truth in enumerate(rows, 1):
        write(truth or "_", row, 0, (160, 60, 0))
        for column, read in enumerate(columns, 1):
            count = confusions.get((truth, read), 0)
            if count:
                shade = int(230 - 200 * count / highest)
                cv2.rectangle(
                    picture,
                    (column * cell, row * cell),
                    ((column + 1) * cell - 2, (row + 1) * cell - 2),
                    (shade, shade, 255),
                    -1,
                )
                write(str(count), row, column, size=0.38)
    return picture
