"""Improving a model on labelled pictures of one line, without forgetting what it reads."""
import random
from collections import Counter

import cv2
import numpy as np

from ..common.ctc import steps_needed
from ..common.inputs import Stretch, network_input
from .batches import WIDTH_STEP


def split(pairs, held_out_part, seed):
    """(training, held-out) of labelled pictures, at least one each. Pictures of one label stay
    together, so that the held-out part shows texts never trained on; only where every label has
    more pictures than are to be held out, they are taken as they come. Half of the labels at most
    are held out, however few pictures they have."""
    sizes = Counter(label for _, label in pairs)
    labels = sorted(sizes)
    random.Random(seed).shuffle(labels)
    wanted = min(max(1, round(held_out_part * len(pairs))), len(pairs) - 1)
    held, count = set(), 0
    for label in labels:
        if len(held) < len(labels) // 2 and count + sizes[label] <= wanted:
            held.add(label)
            count += sizes[label]
    if held:
        return [p for p in pairs if p[1] not in held], [p for p in pairs if p[1] in held]
    shuffled = sorted(pairs, key=lambda pair: str(pair[0]))
    random.Random(seed).shuffle(shuffled)
    return shuffled[wanted:], shuffled[:wanted]


def varied(picture, dice):
    """A picture as the same camera could have taken it a moment later: shifted, turned, brighter,
    blurred, noisier."""
    height, width = picture.shape[:2]
    reach = 0.04 * height
    source = np.float32([[0, 0], [width, 0], [width, height], [0, height]])
    target = source + np.float32([[dice.gauss(0, reach), dice.gauss(0, reach)] for _ in range(4)])
    picture = cv2.warpPerspective(
        picture,
        cv2.getPerspectiveTransform(source, target),
        (width, height),
        borderMode=cv2.BORDER_REPLICATE,
    )
    picture = picture.astype(np.float32) * dice.uniform(0.7, 1.2) + dice.uniform(-25, 25)
    if dice.random() < 0.3:
        picture = cv2.GaussianBlur(picture, (0, 0), dice.uniform(0.3, 0.9) * height / 32)
    if dice.random() < 0.5:
        grain = np.random.default_rng(dice.getrandbits(32)).standard_normal(
            picture.shape[:2] + (1,), np.float32
        )
        picture = picture + grain * dice.uniform(1, 8)
    return np.clip(picture, 0, 255).astype(np.uint8)


class MixedMaker:
    """draw() gives a varied picture of the line, or, with the chance `rehearsal`, a freshly drawn
    one, so that the network goes on being asked what it already knew."""

    def __init__(self, pictures, drawn, rehearsal, seed, stretch=Stretch()):
        """pictures: (picture, label) pairs; drawn: a maker; stretch: that of the network."""
        self._pictures = [
            (picture, label)
            for picture, label in pictures
            if steps_needed(label)
            <= stretch.columns(network_input(picture).shape[2] - WIDTH_STEP) // 4
        ]
        if not self._pictures:
            raise ValueError("no picture is wide enough for its label")
        self._drawn = drawn
        self._rehearsal = rehearsal
        self._dice = random.Random(seed)

    def draw(self):
        if self._dice.random() < self._rehearsal:
            return self._drawn.draw()
        picture, label = self._dice.choice(self._pictures)
        return varied(picture, self._dice), label
