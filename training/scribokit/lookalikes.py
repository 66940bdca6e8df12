"""Digits and letters of one shape: which of a text only their shape tells, and whether a face's shapes do."""
import cv2
import numpy as np

# Uprights, stretched to one size, differ by this part of it or more where one has a flag or a foot that the other lacks.
_LEAST_DIFFERENCE = 0.11
_SIZE = 24, 40


def is_told(text, face):
    """Whether place or shape tells every 0 from O and every 1 from I and l: a digit beside a digit is one, and so is a
    letter beside a letter; of others the face has to tell."""
    return all(_differ(face, pair) for pair in undecided(text))


def undecided(text):
    """The pairs, as "0O", of which the text holds one that its place does not decide."""
    letters, small = (any(map(kind, text)) for kind in (str.isalpha, str.islower))
    pairs = set()
    for place, character in enumerate(text):
        beside = text[max(place - 1, 0):place] + text[place + 1:place + 2]
        if character in "01" and letters and not any(map(str.isdigit, beside)):
            pairs |= {"0O"} if character == "0" else {"1I", "1l"} if small else {"1I"}
        if character in "OIl" and not any(map(str.isalpha, beside)):
            pairs.add({"O": "0O", "I": "1I", "l": "1l"}[character])
    return pairs


def _differ(face, pair):
    one, other = (face.glyph(character) for character in pair)
    if one is None or other is None:
        return True
    if pair == "0O":
        return _parts(one.mask) != _parts(other.mask)
    return np.mean(cv2.absdiff(*(cv2.resize(glyph.mask, _SIZE, interpolation=cv2.INTER_AREA) for glyph in (one, other)))) >= _LEAST_DIFFERENCE * 255


def _parts(mask):
    """Into how many marks and how many surfaces a character divides its place: a slash or a dot in a 0 adds to them."""
    inked = cv2.copyMakeBorder((mask > 127).view(np.uint8), 1, 1, 1, 1, cv2.BORDER_CONSTANT, value=0)
    return cv2.connectedComponents(inked)[0], cv2.connectedComponents(1 - inked, connectivity=4)[0]
