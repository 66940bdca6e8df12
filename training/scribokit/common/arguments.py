"""Kinds of command line arguments, checked when they are parsed."""
import argparse
import math


def positive(text):
    """A whole number from 1."""
    if not text.isdecimal() or int(text) < 1:
        raise argparse.ArgumentTypeError(f"{text}: must be a whole number from 1")
    return int(text)


def fraction(text):
    """A number between 0 and 1."""
    try:
        value = float(text)
    except ValueError:
        value = 0.0
    if not 0 < value < 1:
        raise argparse.ArgumentTypeError(f"{text}: must be a number between 0 and 1")
    return value


def numbers(text):
    """Numbers with commas between them, as a tuple."""
    try:
        values = tuple(float(part) for part in text.split(","))
    except ValueError:
        values = ()
    if not values or not all(map(math.isfinite, values)):
        raise argparse.ArgumentTypeError(f"{text}: must be numbers with commas between them")
    return values
