"""Digits and letters that look alike: which of a text only their shape tells, and whether a face's
shapes do."""
import re

import cv2
import numpy as np

# Uprights, stretched to one size, differ by this part of it or more where one has a flag or a foot
# that the other lacks.
_LEAST_DIFFERENCE = 0.11
_SIZE = 24, 40
_PAIRS = "0O", "1I", "1l"
_A_DIGIT, _A_LETTER = r"\d", r"[^\W\d_]"


def is_told(text, face):
    """Whether place or shape tells every 0 from O and every 1 from I and l: a digit beside a digit
    is one, and so is a letter beside a letter; of others the face has to tell."""
    return all(_differ(face, pair) for pair in undecided(text))


def undecided(text):
    """The pairs, as "0O", of which the text holds one that its place does not decide."""
    return {
        digit + letter
        for digit, letter in _PAIRS
        if (_has_its_like(letter, text) and _stands_alone(digit, _A_DIGIT, text))
        or _stands_alone(letter, _A_LETTER, text)
    }


def _has_its_like(letter, text):
    """Whether the text has letters among which this one would not surprise: l only among small
    ones."""
    return any(map(str.isalpha if letter.isupper() else str.islower, text))


def _stands_alone(character, kind, text):
    """Whether the text has this character anywhere without another of its kind, a regular
    expression, beside it."""
    return re.search(f"(?<!{kind}){character}(?!{kind})", text) is not None


def _differ(face, pair):
    one, other = (face.glyph(character) for character in pair)
    if one is None or other is None:
        return True
    if pair == "0O":
        return _parts(one.mask) != _parts(other.mask)
    stretched = (
        cv2.resize(glyph.mask, _SIZE, interpolation=cv2.INTER_AREA) for glyph in (one, other)
    )
    return np.mean(cv2.absdiff(*stretched)) >= _LEAST_DIFFERENCE * 255


def _parts(mask):
    """Into how many marks and how many surfaces a character divides its place: a slash or a dot in
    a 0 adds to them."""
    inked = cv2.copyMakeBorder(
        (mask > 127).view(np.uint8), 1, 1, 1, 1, cv2.BORDER_CONSTANT, value=0
    )
    return cv2.connectedComponents(inked)[0], cv2.connectedComponents(1 - inked, connectivity=4)[0]
