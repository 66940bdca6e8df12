"""The picture maker: draws labelled pictures of one recipe from a seed, the same ones each time."""
import random
from collections import namedtuple

from . import camera, codes, conditions, containers, counters, displays, layouts, paints, plates
from . import texts
from .dots import DotFace
from .faces import FontFace, StrokeFace, WideFace
from . import fontlist
from .lookalikes import is_told
from .noise import NoiseBank
from .recipes import CONTAINER, COUNTER, DATECODE, DISPLAY, PLATE, PRINT, RECIPES
from .segments import SegmentFace

_FONT_USES = (
    ("plate", fontlist.PLATE),
    ("print", fontlist.PRINT),
    ("segment", fontlist.SEGMENT),
)
# Faces that are drawn from a seed: their kind and how many of them there are.
_DRAWN_FACES = {
    "strokes": (StrokeFace, 160),
    "wide": (WideFace, 80),
    "dots": (DotFace, 90),
    "segments": (SegmentFace, 120),
}
_HELD_OUT_SEED = 100_000
# What the kinds of lines are drawn with, and how often.
_PRINT_USES = ("print", "plate", "dots", "strokes", "wide", "segment"), (68, 12, 11, 4, 2, 3)
_DATECODE_USES = ("dots", "print", "plate", "strokes"), (45, 40, 12, 3)
_PLATE_USES = ("strokes", "plate", "wide"), (42, 43, 15)
_CONTAINER_USES = ("plate", "print", "strokes", "wide"), (50, 25, 13, 12)
_COUNTER_USES = ("print", "plate", "strokes", "wide"), (48, 34, 14, 4)
_DISPLAY_USES = ("segments", "segment"), (72, 28)

# A line as it is laid out (scene, box; None when that failed), seen and painted.
_Drawn = namedtuple("_Drawn", "text laid view paint")


class FaceSet:
    """Faces by use, opened when first drawn; fonts that cannot be opened are left out."""

    def __init__(self, held_out):
        self._files = {
            name: fontlist.font_files(patterns, held_out) for name, patterns in _FONT_USES
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

    Texts are the kit's, or what `write` gives for lines of print when called with a random.Random;
    a text with characters outside the alphabet is drawn again, other than gaps and emblems, which
    are not read. `faces` replaces the kit's fonts. Lines of print and date codes, unless `write`
    gives them, hold no 0 or 1 that neither its place nor the face tells from a letter.
    """

    def __init__(self, recipe, alphabet, seed, held_out=False, faces=None, write=None):
        self._recipe = RECIPES[recipe]
        self._alphabet = alphabet
        self._dice = random.Random(seed)
        self._noise = NoiseBank(7)
        self._faces = faces or FaceSet(held_out)
        self._write = write or (lambda dice: texts.print_text(alphabet, dice))
        self._is_told = (lambda text, face: True) if write else is_told
        self._draw_kind = {
            PRINT: self._print,
            PLATE: self._plate,
            CONTAINER: self._container,
            COUNTER: self._counter,
            DISPLAY: self._display,
            DATECODE: self._datecode,
        }

    def draw(self):
        while True:
            drawn = self._try()
            if drawn:
                return drawn

    def draw_around(self, room):
        """(picture, label, box): the picture with `room` cap heights more on all sides, and where
        the line itself is in it: left, top, right and bottom."""
        while True:
            drawn = self._laid()
            if drawn:
                scene, box = drawn.laid
                shot = camera.shoot_around(
                    scene, box, drawn.view, drawn.paint, self._dice, self._noise, room
                )
                if shot:
                    return shot[0], texts.label_of(drawn.text, self._alphabet), shot[1]

    def _try(self):
        drawn = self._laid()
        if drawn is None:
            return None
        scene, box = drawn.laid
        picture = camera.shoot(scene, box, drawn.view, drawn.paint, self._dice, self._noise)
        return None if picture is None else (picture, texts.label_of(drawn.text, self._alphabet))

    def _laid(self):
        """A line that is ready to be shot, or None when it cannot be set."""
        dice = self._dice
        level = dice.uniform(self._recipe.low, self._recipe.high)
        kinds = self._recipe.kinds
        kind = dice.choices(list(kinds), list(kinds.values()))[0]
        drawn = self._draw_kind[kind](level, self._faces.draw("print", dice))
        return drawn if drawn and drawn.laid else None

    def _readable(self, text):
        return texts.is_readable(text, self._alphabet)

    def _plate(self, level, small_face):
        dice = self._dice
        text = texts.plate_text(dice)
        if not self._readable(text):
            return None
        face = self._faces.draw(dice.choices(*_PLATE_USES)[0], dice)
        laid = plates.plate(text, face, small_face, dice)
        view = conditions.draw_view(dice, level, stretch=(0.4, 1.05), askew=0.6)
        return _Drawn(text, laid, view, conditions.draw_plate_paint(dice, level))

    def _print(self, level, small_face):
        dice = self._dice
        text = self._write(dice)
        use = dice.choices(*_PRINT_USES)[0]
        if use == "segment" and not set(text) <= set("0123456789-.:"):
            text = texts.fill(dice.choice(("99.9", "9999", "99:99", "-99.9", "999999")), dice)
        return self._printed(text, use, level, small_face)

    def _datecode(self, level, small_face):
        use = self._dice.choices(*_DATECODE_USES)[0]
        return self._printed(codes.datecode_text(self._dice), use, level, small_face)

    def _printed(self, text, use, level, small_face):
        dice = self._dice
        face = self._faces.draw(use, dice)
        text = text.upper() if face.capitals_only else text
        if not (self._readable(text) and self._is_told(text, face)):
            return None
        laid = layouts.printed(text, face, small_face, dice, self._noise, level)
        view = conditions.draw_view(dice, level)
        if dice.random() < 0.06 * level:
            view.curvature = dice.uniform(0.3, 0.9) * dice.choice((-1, 1))
        paint = conditions.draw_paint(dice, level)
        kind = dice.random()
        if kind < 0.05:
            conditions.emboss(paint, view, dice)
        elif kind < 0.05 + 0.06 * level:
            conditions.steel(paint, view, dice)
        return _Drawn(text, laid, view, paint)

    def _container(self, level, small_face):
        dice = self._dice
        text = codes.container_text(dice)
        face = self._faces.draw(dice.choices(*_CONTAINER_USES)[0], dice)
        if not self._readable(text):
            return None
        laid = containers.container(text, face, small_face, dice, self._noise)
        view = conditions.draw_view(dice, level, stretch=(0.6, 1.3), askew=0.5)
        return _Drawn(text, laid, view, paints.draw_container_paint(dice, level))

    def _counter(self, level, small_face):
        dice = self._dice
        text = codes.counter_text(dice)
        face = self._faces.draw(dice.choices(*_COUNTER_USES)[0], dice)
        if not self._readable(text):
            return None
        laid = counters.counter(text, face, small_face, dice)
        view = conditions.draw_view(dice, level, stretch=(0.7, 1.3), askew=0.3)
        return _Drawn(text, laid, view, paints.draw_counter_paint(dice, level))

    def _display(self, level, small_face):
        dice = self._dice
        text = codes.display_text(dice)
        face = self._faces.draw(dice.choices(*_DISPLAY_USES)[0], dice)
        if not self._readable(text):
            return None
        laid = displays.display(text, face, small_face, dice)
        view = conditions.draw_view(dice, level, stretch=(0.7, 1.4), askew=0.3)
        view.glare = 0.3 * level
        return _Drawn(text, laid, view, paints.draw_display_paint(dice, level))
