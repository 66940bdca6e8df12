"""Containers, counters, displays, boxes and backgrounds: what their scenes hold."""
import random
import unittest

import cv2
import numpy as np

from scribokit.drawing import backgrounds, boxes, containers, counters, displays, paints
from scribokit.drawing.camera import shoot
from scribokit.drawing.conditions import NARROW, WIDE, View, draw_stretch, draw_view, steel
from scribokit.drawing.conditions import Paint, draw_paint
from scribokit.drawing.faces import CAP_HEIGHT, StrokeFace, WideFace
from scribokit.drawing.noise import NoiseBank
from scribokit.drawing.pieces import CROPS, TIGHT, WIDE as WIDE_CROP, margins
from scribokit.drawing.recipes import RECIPES
from scribokit.drawing.scene import CLUTTER, FAINT, OUTSIDE, TEXT, Scene, set_line
from scribokit.drawing.segments import SEGMENTS, SegmentFace

FACE = StrokeFace(3)


def marks_in(plane):
    """The connected marks of a layer, as (x, y, width, height)."""
    return cv2.connectedComponentsWithStats((plane > 127).view(np.uint8))[2][1:, :4]


class Lines(unittest.TestCase):
    def test_tell_where_each_character_is(self):
        line = set_line("AB 1", FACE, spacing=0.2)
        self.assertIsNone(line.spans[2])
        for span in (line.spans[0], line.spans[1], line.spans[3]):
            self.assertTrue(line.mask[:, span[0] : span[1]].any())
        inked = np.flatnonzero(line.mask.any(0))
        self.assertLessEqual(line.spans[0][0], inked[0])
        self.assertGreaterEqual(line.spans[3][1], inked[-1])

    def test_keep_the_distances_that_are_asked_for(self):
        plain, aired = (set_line("ABC", FACE, airs=airs) for airs in (None, {1: 20, 2: 7}))
        for place, moved in ((0, 0), (1, 20), (2, 27)):
            self.assertEqual(aired.spans[place][0] - plain.spans[place][0], moved)


class Boxes(unittest.TestCase):
    def test_keep_clear_of_all_characters(self):
        for seed in range(200):
            dice = random.Random(seed)
            wish = boxes.draw_wish("AB 12*3", dice)
            line = set_line("AB 12*3", FACE, airs=boxes.airs(wish))
            scene = Scene(line.mask.shape[1], 7)
            scene.stamp(TEXT, line.mask, scene.left, scene.top - 12)
            boxes.draw_box(scene, line.spans_in(scene), wish, dice)
            self.assertTrue(scene.planes[CLUTTER].any(), seed)
            touched = (scene.planes[CLUTTER] > 127) & (scene.planes[TEXT] > 127)
            self.assertFalse(touched.any(), seed)

    def test_stand_around_one_character_a_group_or_all(self):
        dice, kinds = random.Random(1), set()
        for _ in range(100):
            wish = boxes.draw_wish("AB 123", dice)
            self.assertTrue(0 <= wish.first <= wish.last <= 5)
            kinds.add((wish.first, wish.last))
        self.assertTrue({(5, 5), (0, 1), (3, 5), (0, 5)} <= kinds, kinds)


class Backgrounds(unittest.TestCase):
    def test_change_the_light_or_what_is_behind_and_nothing_else(self):
        for draw in (
            backgrounds.printed_edge,
            backgrounds.glare_band,
            backgrounds.seam,
            backgrounds.folds,
            backgrounds.ribs,
        ):
            for seed in range(20):
                scene = Scene(300, 7)
                draw(scene, random.Random(seed))
                self.assertFalse(scene.planes[TEXT].any() or scene.planes[CLUTTER].any())
                line = slice(scene.top, scene.bottom), slice(scene.left, scene.right)
                if scene.shade is None:
                    self.assertTrue(scene.planes[FAINT].any(), (draw.__name__, seed))
                else:
                    self.assertGreater(np.ptp(scene.shade[line]), 0.01, (draw.__name__, seed))
                    self.assertGreater(scene.shade.min(), 0.1)

    def test_lie_on_the_picture(self):
        scene = Scene(100, 3)
        scene.stamp(TEXT, np.full((CAP_HEIGHT, 100), 255, np.uint8), scene.left, scene.top)
        paint = Paint((100,) * 3, (200,) * 3, (0,) * 3, (0,) * 3, (0,) * 3)
        box = scene.left - 10, scene.top - 10, scene.right + 10, scene.bottom + 10
        plain = shoot(scene, box, View(40), paint, random.Random(1), NoiseBank(1))
        scene.shaded()[:, : scene.width // 2] = 0.5
        shaded = shoot(scene, box, View(40), paint, random.Random(1), NoiseBank(1))
        third = plain.shape[1] // 3
        self.assertAlmostEqual(shaded[:, :third].mean() / plain[:, :third].mean(), 0.5, delta=0.02)
        self.assertTrue(np.array_equal(shaded[:, 2 * third :], plain[:, 2 * third :]))


class Containers(unittest.TestCase):
    def drawn(self, count=150):
        for seed in range(count):
            dice = random.Random(seed)
            laid = containers.container("MRKU 238667 9", FACE, FACE, dice, NoiseBank(1))
            if laid:
                yield seed, laid[0]

    def test_show_their_check_digit_alone_in_a_box_that_does_not_touch_it(self):
        boxed = 0
        for seed, scene in self.drawn():
            last = max(x + width for x, _, width, _ in marks_in(scene.planes[TEXT]))
            for x, y, width, height in marks_in(scene.planes[CLUTTER]):
                around = x < last - 2 and x + width > last and height > CAP_HEIGHT
                boxed += around and width < 2 * CAP_HEIGHT
            beside = scene.planes[CLUTTER][scene.top : scene.bottom] > 127
            ink = scene.planes[TEXT][scene.top : scene.bottom] > 127
            self.assertFalse((beside & ink).any(), seed)
        self.assertGreater(boxed, 60)

    def test_often_have_ribs_and_bars(self):
        shaded = sum(scene.shade is not None for _, scene in self.drawn())
        self.assertGreater(shaded, 80)

    def test_need_all_characters_of_their_face(self):
        self.assertIsNone(
            containers.container("M:1", SegmentFace(1), FACE, random.Random(1), NoiseBank(1))
        )


class Counters(unittest.TestCase):
    def test_show_each_digit_in_its_own_window(self):
        for seed in range(100):
            laid = counters.counter("01234", FACE, FACE, random.Random(seed))
            scene, box = laid
            ink, outside = scene.planes[TEXT] > 127, scene.planes[OUTSIDE] > 127
            self.assertFalse((ink & outside).any(), seed)
            columns = np.flatnonzero(ink.any(0))
            self.assertGreaterEqual(len(marks_in(scene.planes[TEXT])), 5, seed)
            self.assertTrue(box[0] < columns[-1] and box[2] > columns[0], seed)

    def test_show_whole_digits_a_little_high_or_low(self):
        tops = []
        for seed in range(100):
            scene, _ = counters.counter("88888", FACE, FACE, random.Random(seed))
            heights = {int(height) for _, _, _, height in marks_in(scene.planes[TEXT])}
            self.assertGreater(min(heights), 0.7 * CAP_HEIGHT, seed)
            tops += [int(y) - scene.top for _, y, _, _ in marks_in(scene.planes[TEXT])]
        self.assertGreater(np.std(tops), 1)
        self.assertLess(max(map(abs, tops)), 0.35 * CAP_HEIGHT)

    def test_have_last_wheels_of_another_colour_with_ink_of_its_own(self):
        coloured = 0
        for seed in range(60):
            scene, _ = counters.counter("12345", FACE, FACE, random.Random(seed))
            columns = np.flatnonzero(scene.planes[FAINT].any(0))
            coloured += len(columns) > 0
            if len(columns):
                self.assertGreater(columns[-1], scene.width / 2)
        self.assertTrue(30 < coloured < 60, coloured)
        self.assertIsNotNone(paints.draw_counter_paint(random.Random(1), 0.5).ink_on_faint)

    def test_take_digits_only(self):
        self.assertIsNone(counters.counter("1A", FACE, FACE, random.Random(1)))


class Displays(unittest.TestCase):
    def test_light_the_segments_of_their_digits(self):
        counts = {"1": 2, "7": 3, "8": 7, "-": 1, "0": 6}
        for seed in range(30):
            face = SegmentFace(seed)
            areas = {digit: int((face.glyph(digit).mask > 127).sum()) for digit in "0123456789-"}
            self.assertEqual(max(areas, key=areas.get), "8")
            for digit in "17-":
                self.assertLess(areas[digit], 0.75 * areas["8"], (seed, digit, counts))
            self.assertIsNone(face.glyph("A"))
        self.assertEqual({len(SEGMENTS[digit]) for digit in counts}, set(counts.values()))

    def test_have_points_that_stand_apart_at_the_foot(self):
        for seed in range(100):
            face = SegmentFace(seed)
            scene, _ = displays.display("8.8", face, FACE, random.Random(seed))
            ink = scene.planes[TEXT]
            middle = ink.copy()
            middle[: scene.top + int(CAP_HEIGHT * 0.6)] = 0
            without, _ = displays.display("88", face, FACE, random.Random(seed))
            self.assertGreater((ink > 127).sum(), (without.planes[TEXT] > 127).sum(), seed)

    def test_faintly_show_what_is_off(self):
        shown = 0
        for seed in range(60):
            scene, _ = displays.display("1.1", SegmentFace(seed), FACE, random.Random(seed))
            faint, ink = scene.planes[FAINT] > 127, scene.planes[TEXT] > 127
            shown += faint.any()
            if faint.any():
                self.assertGreater(faint.sum(), 1.5 * ink.sum(), seed)
        self.assertTrue(15 < shown < 45, shown)

    def test_lack_what_their_face_lacks(self):
        self.assertIsNone(displays.display("1A", SegmentFace(1), FACE, random.Random(1)))

    def test_of_light_glow(self):
        scene, box = displays.display("111", SegmentFace(1), FACE, random.Random(1))
        paint = Paint((10,) * 3, (240,) * 3, (10,) * 3, (10,) * 3, (10,) * 3)
        plain = shoot(scene, box, View(40), paint, random.Random(1), NoiseBank(1)).mean()
        paint.glow = 0.5
        glowing = shoot(scene, box, View(40), paint, random.Random(1), NoiseBank(1)).mean()
        self.assertGreater(glowing, plain + 3)


class Crops(unittest.TestCase):
    def test_go_from_too_tight_to_much_too_wide_and_off_centre(self):
        scene, dice, sides = Scene(300, 7), random.Random(5), []
        for _ in range(300):
            for crop in CROPS:
                x0, y0, x1, y1 = margins(scene, dice, crop)
                sides.append((scene.left - x0, scene.top - y0, x1 - scene.right, y1 - scene.bottom))
        sides = np.array(sides) / CAP_HEIGHT
        self.assertLess(abs(sides.min() - TIGHT[0]), 0.02)
        self.assertLess(abs(sides.max() - WIDE_CROP[1]), 0.02)
        self.assertGreater(np.abs(sides[:, 0] - sides[:, 2]).max(), 0.3)

    def test_cut_off_no_more_than_they_may(self):
        for cut in (0.0, 0.08):
            scene = Scene(100, 3)
            scene.stamp(TEXT, np.full((CAP_HEIGHT, 100), 255, np.uint8), scene.left, scene.top)
            box = scene.left + 10, scene.top + 10, scene.right - 10, scene.bottom - 10
            paint = Paint((100,) * 3, (200,) * 3, (0,) * 3, (0,) * 3, (0,) * 3)
            picture = shoot(scene, box, View(60, cut=cut), paint, random.Random(1), NoiseBank(1))
            ratio = picture.shape[1] / picture.shape[0]
            left = CAP_HEIGHT * (1 - 2 * cut)
            self.assertAlmostEqual(ratio, (100 - 2 * cut * CAP_HEIGHT) / left, delta=0.08)


class Conditions(unittest.TestCase):
    def test_stretch_lines_from_narrow_to_wide(self):
        dice = random.Random(8)
        drawn = [draw_stretch(dice, (0.9, 1.1)) for _ in range(2000)]
        self.assertTrue(NARROW <= min(drawn) < 0.45 and 2.3 < max(drawn) <= WIDE)
        self.assertTrue(0.5 < np.mean([0.9 <= value <= 1.1 for value in drawn]) < 0.75)

    def test_make_steel_rough_and_dark_in_its_edges(self):
        for seed in range(30):
            dice = random.Random(seed)
            view = draw_view(dice, 0.5)
            paint = draw_paint(dice, 0.5)
            steel(paint, view, dice)
            self.assertGreater(paint.rough, 0)
            self.assertNotEqual(paint.relief, 0)
            self.assertLess(sum(paint.ink), sum(paint.surface))


class Faces(unittest.TestCase):
    def test_of_wide_plates_are_wide_and_heavy(self):
        wide, usual = ([kind(seed) for seed in range(30)] for kind in (WideFace, StrokeFace))
        widths = [
            np.mean([face.glyph(letter).mask.shape[1] for face in faces for letter in "0WB8"])
            for faces in (wide, usual)
        ]
        self.assertGreater(widths[0], 1.3 * widths[1])


class Recipes(unittest.TestCase):
    def test_of_the_mix_hold_every_kind(self):
        kinds = {kind for recipe in RECIPES.values() for kind in recipe.kinds}
        self.assertEqual(set(RECIPES["mix"].kinds), kinds)


if __name__ == "__main__":
    unittest.main()
