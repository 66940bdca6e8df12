"""Labels as CTC class numbers and back, and the distance between two readings. Class 0 is the
blank; class k is the k-th character of the alphabet."""
import numpy as np

BLANK = 0


def encode(text, alphabet):
    """Class numbers of a text. ValueError for a character outside the alphabet."""
    return [alphabet.index(character) + 1 for character in text]


def decode(classes, alphabet):
    """The text of one class per time step: runs are taken once, blanks dropped."""
    text, last = [], BLANK
    for value in classes:
        if value != last and value != BLANK:
            text.append(alphabet[value - 1])
        last = value
    return "".join(text)


def decode_scores(scores, alphabet):
    """The readings of scores shaped steps×pictures×classes."""
    return [decode(column, alphabet) for column in np.asarray(scores).argmax(2).T]


def steps_needed(text):
    """The fewest time steps that can say a text: one each, and a blank between equal neighbours."""
    return len(text) + sum(a == b for a, b in zip(text, text[1:]))


def distance(read, truth):
    """Insertions, deletions and replacements that make one of the other."""
    row = list(range(len(truth) + 1))
    for i, a in enumerate(read, 1):
        diagonal, row[0] = row[0], i
        for j, b in enumerate(truth, 1):
            diagonal, row[j] = row[j], min(row[j] + 1, row[j - 1] + 1, diagonal + (a != b))
    return row[-1]
