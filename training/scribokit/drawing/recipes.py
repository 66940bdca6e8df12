"""Recipes: which kinds of lines a set of pictures has, and how hard they are to read."""
from collections import namedtuple

# kinds: {kind of line: how often}; low, high: the levels of difficulty, 0 to 1.
Recipe = namedtuple("Recipe", "kinds low high")

PRINT, PLATE, CONTAINER, COUNTER, DISPLAY, DATECODE = (
    "print",
    "plate",
    "container",
    "counter",
    "display",
    "datecode",
)

RECIPES = {
    "clean": Recipe({PRINT: 1}, 0.0, 0.0),
    "moderate": Recipe({PRINT: 1}, 0.15, 0.4),
    "hard": Recipe({PRINT: 1}, 0.7, 1.0),
    "plates": Recipe({PLATE: 1}, 0.3, 1.0),
    "containers": Recipe({CONTAINER: 1}, 0.2, 1.0),
    "counters": Recipe({COUNTER: 1}, 0.2, 1.0),
    "displays": Recipe({DISPLAY: 1}, 0.2, 1.0),
    "datecodes": Recipe({DATECODE: 1}, 0.2, 1.0),
    "mix": Recipe(
        {PRINT: 30, PLATE: 27, DATECODE: 17, CONTAINER: 10, DISPLAY: 9, COUNTER: 7}, 0.0, 1.0
    ),
}
