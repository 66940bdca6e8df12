"""The picture maker: draws labelled pictures of one recipe from a seed, the same ones each time."""
import random

from . import camera, conditions, layouts, plates, texts
from .dots import DotFace
from .faces import FontFace, StrokeFace
from .fontlist import PLATE, PRINT, SEGMENT, font_files
from .lookalikes import is_told
from .noise import NoiseBank

# name: (chance of a plate, lowest level, highest level)
RECIPES = {
    "moderate": (0.0, 0.15, 0.4),
    "hard": (0.0, 0.7, 1.0),
    "plates": (1.0, 0.3, 1.0),
    "mix": (0.45, 0.0, 1.0),
    "clean": (0.0, 0.0, 0.0),
}
# Faces that are drawn from a seed: their kind and how many of them there are.
_DRAWN_FACES = {"strokes": (StrokeFace, 160), "dots": (DotFace, 60)}
_HELD_OUT_SEED = 100_000
# What lines of print are drawn with, and how often.
_PRINT_USES = ("print", "plate", "dots", "strokes", "segment"), (70, 12, 10, 5, 3)


class FaceSet:
    """Faces by use, opened when first drawn; fonts that cannot be opened are left out."""

    def __init__(self, held_out):
        self._files = {
            name: font_files(patterns, held_out)
            for name, patterns in (("plate", PLATE), ("print", PRINT), ("segment", SEGMENT))
        }
        if not self._files["print"]:
            raise RuntimeError("no fonts found: install the packages of training/packages.txt")
        self._first_seed = _HELD_OUT_SEED if held_out else 0
        self._open = {}

    def draw(self, use, dice):
        if use in _DRAWN_FACES:
            kind, count = _DRAWN_FACES[use]
            return self._opened(self._first_seed + dice.randrange(count), kind)
        files = self._files[use] or self._files["print"]
        for _ in range(20):
            face = self._opened(dice.choice(files), FontFace)
            if face:
                return face
        raise RuntimeError("the installed fonts cannot be opened")

    def _opened(self, source, kind):
        key = kind, source
        if key not in self._open:
            try:
                self._open[key] = kind(source)
            except (OSError, ValueError, ZeroDivisionError):
                self._open[key] = None
        return self._open[key]


class SingleFace:
    """One font file for everything, to draw what a certain printer prints. ValueError when it lacks
    capitals."""

    def __init__(self, path):
        self._face = FontFace(path)

    def draw(self, use, dice):
        return self._face


class PictureMaker:
    """draw() gives (picture, label): height×width×3 bytes BGR, 12 to 60 pixels high, and the
    characters to read.

    Texts are the kit's, or what `write` gives when called with a random.Random; a text with
    characters outside the alphabet is drawn again, other than gaps and emblems, which are not read.
    `faces` replaces the kit's fonts. Lines of print, unless `write` gives them, hold no 0 or 1 that
    neither its place nor the face tells from a letter.
    """

    def __init__(self, recipe, alphabet, seed, held_out=False, faces=None, write=None):
        self._plates, self._low, self._high = RECIPES[recipe]
        self._alphabet = alphabet
        self._dice = random.Random(seed)
        self._noise = NoiseBank(7)
        self._faces = faces or FaceSet(held_out)
        self._write = write or (lambda dice: texts.print_text(alphabet, dice))
        self._is_told = (lambda text, face: True) if write else is_told

    def draw(self):
        while True:
            drawn = self._try()
            if drawn:
                return drawn

    def _try(self):
        dice = self._dice
        level = dice.uniform(self._low, self._high)
        small_face = self._faces.draw("print", dice)
        if dice.random() < self._plates:
            text = texts.plate_text(dice)
            if not texts.is_readable(text, self._alphabet):
                return None
            face = self._faces.draw("strokes" if dice.random() < 0.5 else "plate", dice)
            laid = plates.plate(text, face, small_face, dice)
            view = conditions.draw_view(dice, level, stretch=(0.4, 1.05), askew=0.6)
            paint = conditions.draw_plate_paint(dice, level)
        else:
            text = self._write(dice)
            use = dice.choices(*_PRINT_USES)[0]
            face = self._faces.draw(use, dice)
            if use == "segment" and not set(text) <= set("0123456789-.:"):
                text = texts.fill(dice.choice(("99.9", "9999", "99:99", "-99.9", "999999")), dice)
            elif face.capitals_only:
                text = text.upper()
            if not (texts.is_readable(text, self._alphabet) and self._is_told(text, face)):
                return None
            laid = layouts.printed(text, face, small_face, dice, self._noise, level)
            view = conditions.draw_view(dice, level)
            view.curvature = (
                dice.uniform(0.3, 0.9) * dice.choice((-1, 1))
                if dice.random() < 0.06 * level
                else 0.0
            )
            paint = conditions.draw_paint(dice, level)
            if dice.random() < 0.06:
                conditions.emboss(paint, view, dice)
        if laid is None:
            return None
        scene, box = laid
        picture = camera.shoot(scene, box, view, paint, dice, self._noise)
        return None if picture is None else (picture, texts.label_of(text, self._alphabet))
