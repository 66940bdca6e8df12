import random
import unittest

import cv2
import numpy as np

from scribokit import marks, plates
from scribokit.alphabet import read_alphabet
from scribokit.batches import Batches
from scribokit.camera import shoot
from scribokit.conditions import Paint, View, emboss
from scribokit.ctc import steps_needed
from scribokit.dots import COLUMNS, FORMS, ROWS, DotFace
from scribokit.faces import CAP_HEIGHT, FontFace, Glyph, StrokeFace, rounded
from scribokit.fontlist import PLATE, PRINT, font_files
from scribokit.legibility import all_stand_out, marks_of
from scribokit.lookalikes import is_told, undecided
from scribokit.maker import RECIPES, PictureMaker, SingleFace
from scribokit.noise import NoiseBank
from scribokit.scene import CLUTTER, FAINT, OUTSIDE, TEXT, Scene, set_line
from scribokit.texts import LOOKALIKES, PLATE_PATTERNS, even_text, fill, gtin_text, is_readable, label_of, plate_text, tempting

ALPHABET = read_alphabet()
PRINTED = Paint((200, 200, 200), (20, 20, 20), (0, 0, 0), (0, 0, 0), (0, 0, 0))


class Pictures(unittest.TestCase):
    def test_of_every_recipe_are_small_colour_pictures_with_labels_of_the_alphabet(self):
        for recipe in sorted(RECIPES):
            maker = PictureMaker(recipe, ALPHABET, 3)
            for _ in range(40):
                picture, label = maker.draw()
                self.assertEqual((picture.dtype, picture.shape[2]), (np.uint8, 3))
                self.assertTrue(12 <= picture.shape[0] <= 60, picture.shape)
                self.assertTrue(label and set(label) <= set(ALPHABET), label)

    def test_are_the_same_for_the_same_seed_and_others_for_another(self):
        first, again, other = ([PictureMaker("mix", ALPHABET, seed).draw() for _ in range(1)][0] for seed in (5, 5, 6))
        self.assertEqual(first[1], again[1])
        self.assertTrue(np.array_equal(first[0], again[0]))
        self.assertFalse(first[1] == other[1] and np.array_equal(first[0], other[0]))

    def test_are_not_blank(self):
        maker = PictureMaker("moderate", ALPHABET, 4)
        for _ in range(40):
            self.assertGreater(maker.draw()[0].std(), 2)

    def test_show_the_given_texts_only(self):
        maker = PictureMaker("clean", "01", 1, write=lambda dice: dice.choice(("01", "0 1", "X1", "10")))
        self.assertEqual({maker.draw()[1] for _ in range(40)}, {"01", "10"})


class BatchesOfPictures(unittest.TestCase):
    def test_have_one_width_and_labels_that_fit_its_steps(self):
        batches = Batches(PictureMaker("mix", ALPHABET, 8), 512, 192)
        for _ in range(10):
            pictures, labels = batches.next()
            self.assertEqual(pictures.shape[:3], (len(labels), 3, 32))
            self.assertTrue(32 <= pictures.shape[3] <= 192 and pictures.shape[3] % 16 == 0)
            self.assertGreaterEqual(pictures.shape[3] * len(labels), 512)
            for label in labels:
                self.assertLessEqual(steps_needed(label), pictures.shape[3] // 4)

    def test_take_longer_labels_for_a_network_that_stretches(self):
        class Narrow:
            """A picture of 64 columns, which are 16 steps, or stretched towards 128 they are 24."""

            def __init__(self, *labels):
                self._labels = iter(labels)

            def draw(self):
                return np.zeros((32, 64, 3), np.uint8), next(self._labels)

        labels = ("1" * 13, "12" * 8, "1" * 12)
        self.assertEqual(Batches(Narrow(*labels), 64).next()[1], ["12" * 8])
        self.assertEqual(Batches(Narrow(*labels), 64, stretch_below=128).next()[1], ["12" * 8])
        self.assertEqual(Batches(Narrow(*labels[2:]), 64, stretch_below=128).next()[1], ["1" * 12])


class Texts(unittest.TestCase):
    def test_fill_patterns(self):
        dice = random.Random(1)
        for _ in range(200):
            self.assertRegex(fill("AA-99 ?*", dice), r"^[A-Z]{2}-\d{2} [A-Z0-9]\*$")

    def test_of_article_numbers_carry_the_check_digit(self):
        dice = random.Random(2)
        for _ in range(50):
            digits = [int(d) for d in gtin_text(dice)]
            self.assertEqual(sum(d * (3 if i % 2 else 1) for i, d in enumerate(digits)) % 10, 0)

    def test_of_plates_have_capitals_and_digits(self):
        dice = random.Random(3)
        for _ in range(200):
            self.assertRegex(plate_text(dice), r"^[A-Z0-9 *.-]+$")
        self.assertEqual(len(set(PLATE_PATTERNS)), len(PLATE_PATTERNS))

    def test_drawn_evenly_hold_nothing_that_nobody_can_tell(self):
        dice = random.Random(4)
        texts = [even_text(ALPHABET, dice) for _ in range(3000)]
        self.assertEqual(set("".join(texts)), set(ALPHABET))
        for text in texts:
            for group in ("0Oo", "1Il", "Cc", "Kk", "Pp", "Ss", "Uu", "Vv", "Ww", "Xx", "Zz"):
                self.assertLessEqual(len(set(text) & set(group)), 1, text)

    def test_drawn_evenly_take_any_alphabet(self):
        dice = random.Random(5)
        self.assertEqual({c for _ in range(200) for c in even_text("01", dice)}, set("01"))

    def test_drawn_evenly_have_o_i_and_l_away_from_digits_and_show_how_tall_capitals_are(self):
        dice = random.Random(8)
        for text in (even_text(ALPHABET, dice) for _ in range(3000)):
            self.assertFalse(set(text) & set("0123456789") and set(text) & set("OoIl"), text)
            letters = [character for character in text if character.isalpha()]
            if letters and not set(text) & set("0123456789"):
                self.assertTrue(set("".join(letters).lower()) - set("ckopsuvwxz"), text)

    def test_drawn_evenly_have_0_and_1_beside_another_digit(self):
        dice = random.Random(10)
        for text in (even_text(ALPHABET, dice) for _ in range(3000)):
            if set(text) & set("01"):
                self.assertTrue(set(text) & set("23456789"), text)

    def test_drawn_evenly_come_from_an_alphabet_that_cannot_show_it_too(self):
        self.assertLessEqual(set(even_text("xX", random.Random(9))), set("xX"))

    def test_fill_either_without_o_i_0_and_1(self):
        dice = random.Random(6)
        self.assertFalse(set("OI01") & set("".join(fill("????????", dice) for _ in range(300))))

    def test_fill_letters_with_o_and_i_only_in_groups_of_letters(self):
        dice = random.Random(7)
        for pattern, expected in (("AA-999", "OI"), ("AAA", "OI"), ("9 AA", "OI"), ("A", ""), ("A*9999", ""), ("AAA999", ""), ("999AAA", ""),
                                  ("9AAA9", ""), ("AA?", ""), ("?AA", "")):
            drawn = "".join(fill(pattern, dice) for _ in range(300))
            self.assertEqual(set("OI") & set(drawn), set(expected), pattern)
            self.assertIn("Q", drawn)

    def test_fill_groups_of_letters_with_one_that_looks_like_no_digit(self):
        dice = random.Random(12)
        for _ in range(3000):
            first, second = fill("AA-AAA", dice).split("-")
            self.assertTrue(set(first) - set("OI") and set(second) - set("OI"), (first, second))

    def test_of_plates_have_lookalikes_in_each_others_places(self):
        dice = random.Random(3)
        drawn = [tempting("8B 999", dice) for _ in range(400)]
        self.assertEqual(set(drawn), {"8B 999", "BB 999", "88 999"})
        self.assertTrue(150 < drawn.count("8B 999") < 250)
        self.assertEqual({LOOKALIKES[LOOKALIKES[character]] for character in LOOKALIKES}, set(LOOKALIKES))
        self.assertTrue(all(character.isdigit() != other.isdigit() for character, other in LOOKALIKES.items()))

    def test_of_plates_stay_as_they_are_with_o_or_i_or_no_lookalike(self):
        dice = random.Random(3)
        self.assertEqual({tempting(text, dice) for text in ("BO 888", "BI 888", "199") for _ in range(200)}, {"BO 888", "BI 888", "199"})

    def test_are_labelled_without_gaps_and_emblems(self):
        self.assertEqual(label_of("A*BC 12-3", ALPHABET), "ABC12-3")

    def test_outside_the_alphabet_are_not_readable(self):
        self.assertTrue(is_readable("1 2*", "12"))
        for text in ("13", " *", ""):
            self.assertFalse(is_readable(text, "12"), text)


class Faces(unittest.TestCase):
    def test_held_out_are_never_trained_on(self):
        for use in (PLATE, PRINT):
            held, others = font_files(use, True), font_files(use, False)
            self.assertTrue(held)
            self.assertTrue(others)
            self.assertFalse(set(held) & set(others))

    def test_have_one_cap_height(self):
        for path in font_files(PRINT, False)[::25]:
            self.assertTrue(36 <= FontFace(path).glyph("H").mask.shape[0] <= 44, path)

    def test_have_digits_as_tall_as_capitals(self):
        for held_out in (False, True):
            for path in font_files(PRINT, held_out):
                self.assertGreater(FontFace(path).glyph("0").mask.shape[0], 0.8 * CAP_HEIGHT, path)

    def test_know_whether_their_small_letters_are_capitals(self):
        for path in font_files(PRINT, False):
            self.assertEqual(FontFace(path).capitals_only, "BebasNeue" in path, path)

    def test_without_small_letters_are_labelled_in_capitals(self):
        face = next(path for path in font_files(PRINT, False) if "BebasNeue" in path)
        maker = PictureMaker("clean", ALPHABET, 1, faces=SingleFace(face), write=lambda dice: "Model")
        self.assertEqual({label for _, label in (maker.draw() for _ in range(30)) if label.isalpha()}, {"MODEL"})

    def test_lack_what_the_font_lacks(self):
        face = FontFace(font_files(PRINT, False)[0])
        self.assertIsNone(face.glyph("\uffff"))
        self.assertIsNone(set_line("A\uffff", face))

    def test_of_strokes_have_capitals_and_digits_and_nothing_else(self):
        face = StrokeFace(1)
        for character in "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-":
            self.assertGreater(face.glyph(character).mask.max(), 200)
        self.assertIsNone(face.glyph("a"))

    def test_of_strokes_keep_ends_and_round_corners(self):
        points = rounded(np.array([[0.0, 0], [10, 0], [10, 10]]), 3)
        self.assertTrue(np.allclose(points[0], [0, 0]) and np.allclose(points[-1], [10, 10]))
        self.assertFalse(any(np.allclose(point, [10, 0]) for point in points))

    def test_of_strokes_have_8_and_0_rounder_than_b_and_d(self):
        for seed in range(160):
            face = StrokeFace(seed)
            corners = {character: int(face.glyph(character).mask[:8, :8].sum()) for character in "8B0D"}
            self.assertLess(corners["8"], 0.9 * corners["B"], seed)
            self.assertLess(corners["0"], 0.9 * corners["D"], seed)

    def test_of_dots_have_the_whole_alphabet_and_nothing_else(self):
        self.assertEqual(set(FORMS), set(ALPHABET))
        for character, forms in FORMS.items():
            for rows in forms:
                self.assertEqual((len(rows), {len(row) for row in rows}), (ROWS, {COLUMNS}), character)
            self.assertGreater(DotFace(3).glyph(character).mask.max(), 200)
        self.assertIsNone(DotFace(3).glyph("?"))

    def test_of_dots_draw_no_two_characters_alike_but_0_and_o(self):
        owners = {}
        for character, forms in FORMS.items():
            for rows in forms:
                owners.setdefault(tuple(rows), set()).add(character)
        self.assertEqual([owner for owner in owners.values() if len(owner) > 1], [{"0", "O"}])

    def test_set_a_line_that_is_too_long_as_none(self):
        self.assertIsNone(set_line("W" * 80, StrokeFace(1)))
        self.assertIsNone(set_line(" * ", StrokeFace(1)))


class Marks(unittest.TestCase):
    def test_lose_no_point_and_no_dash(self):
        dice, noise = random.Random(10), NoiseBank(1)
        mask = set_line("A.9-B:", FontFace(font_files(PRINT, False)[0]))[0]
        mask[2:5, 2:5] = mask[2:4, 10:20] = 255
        self.assertFalse(all(marks.shows_all(mask, marks.dot_matrix(mask, dice)) for _ in range(20)))
        changed = 0
        for _ in range(200):
            result = marks.marked(mask, dice, noise)
            leaning = result.shape != mask.shape
            self.assertTrue(leaning or marks.shows_all(mask, result))
            changed += not np.array_equal(result, mask)
        self.assertGreater(changed, 40)

    def test_keep_the_insides_of_letters_open(self):
        dice, noise = random.Random(10), NoiseBank(1)
        mask = np.zeros((40, 40), np.uint8)
        mask[4:36, 4:36] = 255
        mask[18:21, 18:21] = 0
        self.assertTrue(all((marks.marked(mask, dice, noise)[18:21, 18:21] < 192).any() for _ in range(300)))

    def test_lean_without_losing_ink(self):
        dice, mask, leaning = random.Random(11), np.full((68, 40), 255, np.uint8), 0
        for _ in range(100):
            result = marks.slanted(mask, dice)
            self.assertAlmostEqual(int(result.sum()) / int(mask.sum()), 1, delta=0.01)
            leaning += result.shape != mask.shape
        self.assertTrue(15 < leaning < 45, leaning)

    def test_are_missed_where_they_are_gone_or_nearly(self):
        mask = np.zeros((20, 40), np.uint8)
        mask[2:18, 2:12] = mask[14:18, 20:24] = 255
        self.assertTrue(marks.shows_all(mask, mask))
        for rows, columns in ((slice(14, 18), slice(20, 24)), (slice(2, 18), slice(2, 11))):
            less = mask.copy()
            less[rows, columns] = 0
            self.assertFalse(marks.shows_all(mask, less))


class DrawnFace:
    """A face of these characters, each given as rows of ink and gaps: "# .# ##"."""

    def __init__(self, forms):
        self._forms = forms

    def glyph(self, character):
        if character not in self._forms:
            return None
        cells = np.array([[255 * (cell == "#") for cell in row] for row in self._forms[character].split()], np.uint8)
        return Glyph(np.kron(cells, np.ones((4, 4), np.uint8)), 0, 0, 0)


class Lookalikes(unittest.TestCase):
    def test_are_undecided_where_nothing_beside_them_is_of_their_kind(self):
        for text, expected in {"A0": {"0O"}, "A0B": {"0O"}, "0": set(), "A 0 7": {"0O"}, "A07": set(), "A10": set(), "-1.2": set(),
                               "K1": {"1I"}, "k1": {"1I", "1l"}, "O": {"0O"}, "UN:O": {"0O"}, "NO": set(), "4I7": {"1I"}, "IN": set(),
                               "a-l": {"1l"}, "al": set(), "4O1I": {"0O", "1I"}, "": set()}.items():
            self.assertEqual(undecided(text), expected, text)

    def test_are_told_by_a_slash_or_a_dot_in_the_zero(self):
        ring = ".##. #..# #..# #..# #..# .##."
        for zero, told in ((ring, False), ("#### #..# #..# #..# #..# ####", False), (".##. #..# #.## ##.# #..# .##.", True),
                           (".###. #...# #...# #.#.# #...# .###.", True)):
            face = DrawnFace({"0": zero, "O": ring})
            self.assertEqual(is_told("A0", face), told, zero)
            self.assertEqual(is_told("4O", face), told, zero)
            self.assertTrue(is_told("A00", face), zero)

    def test_are_told_by_flags_and_feet(self):
        bar, flag, feet = "# # # # # #", "..# .## #.# ..# ..# ..#", "### .#. .#. .#. .#. ###"
        for one, capital, told in ((bar, bar, False), (flag, bar, True), (flag, feet, True), (feet, feet, False),
                                  ("##. .#. .#. .#. .#. ###", feet, False), ("##. ##. ##. .#. .#. ###", feet, True)):
            self.assertEqual(is_told("A1", DrawnFace({"1": one, "I": capital})), told, (one, capital))

    def test_are_told_in_a_face_that_has_only_one_of_them(self):
        self.assertTrue(is_told("A0 I", DrawnFace({"0": "# #"})))

    def test_stand_undecided_in_no_line_of_print_but_in_given_texts(self):
        path = next(path for path in font_files(PRINT, False) if not is_told("A0", FontFace(path)))
        face, maker = FontFace(path), PictureMaker("clean", ALPHABET, 1, faces=SingleFace(path))
        self.assertEqual([label for label in (maker.draw()[1] for _ in range(600)) if not is_told(label, face)], [])
        self.assertEqual(PictureMaker("clean", ALPHABET, 1, faces=SingleFace(path), write=lambda dice: "A0B").draw()[1], "A0B")


class Legibility(unittest.TestCase):
    """A bar and a point beside it, 100 grey levels darker than the surface."""

    def setUp(self):
        ink = np.zeros((30, 60), np.uint8)
        ink[5:25, 5:15] = ink[20:24, 30:34] = 255
        self.bare = np.full((30, 60, 3), 180, np.float32)
        self.picture = self.bare - np.float32(ink / 255 * 100)[:, :, None]
        self.places, self.owners = marks_of(ink)

    def stands_out(self, noise=0.0, capitals=20):
        return all_stand_out(self.places, self.owners, self.picture, self.bare, capitals, noise)

    def test_takes_a_few_pixels_of_every_mark_and_no_specks(self):
        self.assertEqual(np.bincount(self.owners).tolist(), [50, 4])
        speck = np.zeros((9, 9), np.uint8)
        speck[3, 3] = 255
        self.assertEqual(len(marks_of(speck)[0]), 0)

    def test_asks_for_more_contrast_than_noise_has(self):
        self.assertTrue(self.stands_out())
        self.assertTrue(self.stands_out(noise=80))
        self.assertFalse(self.stands_out(noise=90))

    def test_misses_a_point_that_light_has_swallowed(self):
        for colour in (180, 175):
            self.picture[18:26, 28:36] = colour
            self.assertFalse(self.stands_out(), colour)

    def test_misses_what_is_white_in_both(self):
        self.bare[:, 28:36] += 200
        self.picture[:, 28:36] += 200
        self.assertFalse(self.stands_out())

    def test_misses_a_letter_of_which_a_third_is_gone(self):
        self.picture[18:25, 5:15] = 180
        self.assertFalse(self.stands_out())
        self.picture[18:22, 5:15] = 80
        self.assertTrue(self.stands_out())

    def test_takes_one_colour_for_enough(self):
        self.picture[:, :, 1:] = self.bare[:, :, 1:]
        self.assertTrue(self.stands_out())

    def test_takes_the_edges_of_a_relief_for_its_marks(self):
        self.picture[7:23, 7:13] = 180
        self.assertFalse(self.stands_out())
        self.assertTrue(self.stands_out(capitals=48))

    def test_takes_places_outside_of_the_picture_for_its_edge(self):
        self.places = self.places + [-40, 0]
        self.assertFalse(self.stands_out())
        self.picture[:, 0] = 80
        self.assertTrue(self.stands_out())

    def test_of_nothing_is_given(self):
        self.places, self.owners = marks_of(np.zeros((30, 60), np.uint8))
        self.assertTrue(self.stands_out())


class Cameras(unittest.TestCase):
    """A line 100 pixels of the scene wide, around which the box leaves some room."""

    def shot(self, view, room, characters=5, paint=PRINTED, gaps=0):
        """A picture of a solid block, or of uprights 6 pixels wide with gaps."""
        scene = Scene(100, characters)
        for x in range(scene.left, scene.right, 6 + gaps):
            scene.planes[TEXT][scene.top:scene.bottom, x:min(x + 6, scene.right)] = 255
        box = scene.left - room, scene.top - room, scene.right + room, scene.bottom + room
        return shoot(scene, box, view, paint, random.Random(1), NoiseBank(1))

    def test_take_the_picture_at_the_height_that_is_asked_for(self):
        for height in (12, 30, 60):
            self.assertEqual(self.shot(View(height), 0).shape[0], height)

    def test_take_it_higher_when_capitals_would_have_less_than_seven_pixels(self):
        picture = self.shot(View(12), CAP_HEIGHT / 2, 2)
        self.assertEqual(picture.shape[0], 14)
        self.assertGreaterEqual((picture[:, picture.shape[1] // 2, 0] < 110).sum(), 7)
        self.assertEqual(self.shot(View(12, detail=0.5), CAP_HEIGHT / 2, 2).shape[0], 28)

    def test_take_it_higher_when_characters_would_have_less_than_five_pixels(self):
        self.assertEqual(self.shot(View(12), CAP_HEIGHT / 2).shape[0], 20)
        self.assertGreaterEqual(self.shot(View(12, stretch=0.5), 0).shape[0], 20)

    def test_take_none_where_even_the_highest_shows_too_little(self):
        self.assertIsNone(self.shot(View(12), 10 * CAP_HEIGHT))

    def test_take_none_where_too_little_is_left_in_the_networks_input(self):
        tall = CAP_HEIGHT * 32 / 8  # a box of this height leaves a capital 8 of 32 rows
        for room, characters, legible in ((CAP_HEIGHT, 3, True), (CAP_HEIGHT, 4, False), (tall / 2 - 21, 1, True), (tall / 2 - 19, 1, False)):
            self.assertEqual(self.shot(View(60), room, characters) is not None, legible, (room, characters))

    def test_take_none_of_a_line_too_long_for_the_networks_input(self):
        for characters, legible in ((44, True), (47, False)):
            scene = Scene(700, characters)
            scene.planes[TEXT][scene.top:scene.bottom, scene.left:scene.right] = 255
            box = scene.left, scene.top + 10, scene.right, scene.bottom - 10
            self.assertEqual(shoot(scene, box, View(60), PRINTED, random.Random(1), NoiseBank(1)) is not None, legible, characters)

    def test_take_none_where_a_mark_would_not_be_seen(self):
        faint, dark = (Paint((200, 200, 200), (ink,) * 3, (0,) * 3, (0,) * 3, (0,) * 3) for ink in (190, 150))
        self.assertIsNone(self.shot(View(40), 10, paint=faint))
        self.assertIsNotNone(self.shot(View(40), 10, paint=dark))
        self.assertIsNone(self.shot(View(40, noise=60), 10, paint=dark))

    def test_look_for_the_marks_where_the_picture_shows_them(self):
        """Points of 4 pixels at both ends of the line are found whatever the view."""
        for seed in range(40):
            scene = Scene(200, 5)
            for x in (scene.left, scene.right - 4):
                scene.stamp(TEXT, np.full((4, 4), 255, np.uint8), x, (scene.top + scene.bottom) / 2)
            box = scene.left - 5, scene.top - 5, scene.right + 5, scene.bottom + 5
            view = View(40, tilt=4, shear=0.1, slope=0.05, keystone=0.01, jitter=0.05, curvature=(-0.9, 0, 0.9)[seed % 3])
            self.assertIsNotNone(shoot(scene, box, view, PRINTED, random.Random(seed), NoiseBank(1)), seed)

    def test_cut_off_no_character(self):
        """Discs in the corners of the line, seen askew in a box that is too small and misplaced, keep their sizes."""
        scene = Scene(200, 5)
        for x in (scene.left, scene.right):
            for y in (scene.top, scene.bottom + 12):
                scene.disc(TEXT, x, y, 9)
        box = scene.left + 5, scene.top + 5, scene.right - 5, scene.bottom - 5
        for seed in range(60):
            view = View(60, tilt=4, shear=0.1, slope=0.05, keystone=0.01, jitter=0.05, curvature=(-0.9, 0, 0.9)[seed % 3])
            picture = shoot(scene, box, view, PRINTED, random.Random(seed), NoiseBank(1))
            _, _, found, _ = cv2.connectedComponentsWithStats((picture[:, :, 0] < 110).view(np.uint8))
            areas = found[1:, cv2.CC_STAT_AREA]
            self.assertTrue(len(areas) == 4 and areas.min() > 0.65 * areas.max(), (seed, areas))

    def test_see_embossed_marks_by_both_edges_whatever_the_surface_and_the_size(self):
        for brightness in (0, 120, 255):
            for seed in range(10):
                lit = {}
                for height in (16, 60):
                    view, paint = View(height), Paint((brightness,) * 3, (20,) * 3, (0,) * 3, (0,) * 3, (0,) * 3)
                    emboss(paint, view, random.Random(seed))
                    paint.relief_ink = 0.0
                    levels = self.shot(view, CAP_HEIGHT / 2, 2, paint, gaps=14).astype(int)[height // 2, :, 0]
                    lit[height] = levels.max() - paint.surface[0], paint.surface[0] - levels.min()
                    self.assertGreater(min(lit[height]), 20, (height, brightness, seed))
                self.assertGreater(sum(lit[60]), 0.6 * sum(lit[16]), (brightness, seed))

    def test_blur_no_more_than_leaves_a_capital_its_gaps(self):
        sharp, blurred = (self.shot(View(40, blur=blur), CAP_HEIGHT, 2) for blur in (2.0, 200.0))
        self.assertLess(np.abs(sharp.astype(int) - blurred).mean(), 4)
        self.assertGreater(np.ptp(self.shot(View(40, motion=400.0), CAP_HEIGHT, 2)), 100)

    def test_see_a_line_climb_whose_strokes_stay_upright(self):
        picture = self.shot(View(60, slope=0.6), 0)
        ink = picture[:, :, 0] < 110
        first, last = np.flatnonzero(ink.any(0))[[0, -1]]
        self.assertGreater(abs(np.flatnonzero(ink[:, first + 3])[0] - np.flatnonzero(ink[:, last - 3])[0]), 4)
        self.assertGreater(ink[:, first + 3].sum(), 0.9 * ink[:, (first + last) // 2].sum())


class Plates(unittest.TestCase):
    def setUp(self):
        self.scene = Scene(300, 7)
        self.edge = self.scene.left - 10, self.scene.top - 12, self.scene.right + 14, self.scene.bottom + 9
        self.face = StrokeFace(1)

    def inside(self, room):
        x0, y0, x1, y1 = (int(v) for v in self.edge)
        return self.scene.planes[CLUTTER][y0 + room:y1 - room, x0 + room:x1 - room]

    def test_have_frames_around_them_and_not_across(self):
        for seed in range(60):
            self.setUp()
            outer = plates.frame(self.scene, self.face, self.edge, random.Random(seed))
            self.assertTrue(outer[0] < self.edge[0] and outer[1] < self.edge[1] and outer[2] > self.edge[2] and outer[3] > self.edge[3])
            self.assertFalse(self.inside(4).any(), seed)
            self.assertTrue(self.scene.planes[CLUTTER][int(outer[1]), int(outer[0]):int(outer[2])].all(), seed)

    def test_have_bodywork_around_them_and_not_across(self):
        marked = 0
        for seed in range(60):
            self.setUp()
            plates.bodywork(self.scene, self.edge, random.Random(seed))
            self.assertFalse(self.inside(0).any(), seed)
            marked += self.scene.planes[CLUTTER].any()
        self.assertGreater(marked, 50)

    def test_have_seals_larger_than_the_dots_of_a_colon(self):
        for seed in range(60):
            self.setUp()
            plates.seals(self.scene, self.scene.left + 100, 0.25, random.Random(seed))
            rows = np.flatnonzero((self.scene.planes[CLUTTER] | self.scene.planes[FAINT]).any(1))
            self.assertGreater(rows[-1] - rows[0], CAP_HEIGHT * 0.45, seed)

    def test_are_seen_with_all_their_characters(self):
        dice = random.Random(2)
        for _ in range(60):
            scene, box = plates.plate("AB*123", self.face, self.face, dice)
            rows, columns = (np.flatnonzero(scene.planes[TEXT].any(axis)) for axis in (1, 0))
            self.assertTrue(box[0] <= columns[0] + 1 and box[1] <= rows[0] + 1 and box[2] >= columns[-1] - 1 and box[3] >= rows[-1] - 1, box)
            x0, y0, x1, y1 = columns[0], rows[0], columns[-1], rows[-1]
            self.assertFalse(scene.planes[OUTSIDE][y0:y1, x0:x1].any())


if __name__ == "__main__":
    unittest.main()
