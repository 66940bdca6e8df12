"""The training loop: CTC, Adam, a learning rate that rises and falls, averaged weights, checkpoints
that a later run goes on from."""
import copy
import io
import json
import math
import os
import pickle
import signal
import time
from dataclasses import dataclass
from pathlib import Path

import torch
from torch import nn

from ..common.ctc import decode_scores, distance, encode
from ..common.inputs import as_picture
from .model import Crnn, Shape, to_input
from .team import Team


_AVERAGED_STEPS = 500


@dataclass
class Progress:
    """What is kept besides the weights: steps done, pictures trained on, pictures read to find
    those, seconds trained, the best line accuracy so far."""

    steps: int = 0
    pictures: int = 0
    read: int = 0
    seconds: float = 0.0
    best: float = -1.0


def learning_rate(step, done, peak, warm_up=100):
    """Up in a straight line over the first steps, then down along half a cosine to a fiftieth of
    the peak; `done` is the part of the training that is over, 0 to 1."""
    fall = 0.02 + 0.98 * 0.5 * (1 + math.cos(math.pi * min(1.0, done)))
    return peak * fall * min(1.0, (step + 1) / warm_up)


class Trainer:
    """Trains `model`. `average` is the mean of its weights over about the last tenth of the steps,
    500 at most (Polyak and Juditsky, Acceleration of stochastic approximation by averaging, 1992):
    it reads better than the weights of any one step, so it is what is measured, and exported.
    `team`: the processes that train the same model together."""

    def __init__(self, model, alphabet, rate=1e-3, device="cpu", team=Team()):
        # A processor convolves and pools faster with the channels of a pixel side by side.
        self.model = model.to(device, memory_format=torch.channels_last)
        self.average = copy.deepcopy(self.model).eval()
        self.alphabet = alphabet
        self.device = device
        self.rate = rate
        self.optimizer = torch.optim.AdamW(model.parameters(), lr=rate, weight_decay=1e-4)
        self._ctc = nn.CTCLoss(blank=0, reduction="none", zero_infinity=True)
        self.progress = Progress()
        self.team = team

    def step(self, pictures, labels, rate):
        """One batch; gives its loss. A batch whose loss is not a number changes no weight. In a
        team all processes call this, each with its own batch."""
        self.model.train()
        for group in self.optimizer.param_groups:
            group["lr"] = rate
        loss = self._losses(self.model, pictures, labels).mean()
        self.optimizer.zero_grad(set_to_none=True)
        finite = bool(torch.isfinite(loss))
        if finite:
            loss.backward()
        counted, lines = self.team.gather_gradients(self.model, finite, len(labels))
        if counted:
            nn.utils.clip_grad_norm_(self.model.parameters(), 5.0)
            self.optimizer.step()
            self._keep_average()
        self.progress.steps += 1
        self.progress.pictures += lines
        return float(loss)

    def losses(self, pictures, labels):
        """How badly the averaged network reads each line: its CTC loss divided by its characters,
        an array. Another thread may call this during step(), and meet weights of two steps."""
        self.progress.read += len(labels)
        with torch.no_grad():
            return self._losses(self.average, pictures, labels).numpy()

    def _losses(self, model, pictures, labels):
        scores = model(to_input(pictures, self.device))
        classes = [encode(label, self.alphabet) for label in labels]
        target = torch.tensor([value for label in classes for value in label], dtype=torch.long)
        lengths = torch.tensor([len(label) for label in classes])
        steps = torch.full((len(labels),), scores.shape[0], dtype=torch.long)
        return self._ctc(scores.float().cpu(), target, steps, lengths) / lengths

    def _keep_average(self):
        steps = self.progress.steps
        part = max(1 / _AVERAGED_STEPS, 9 / (steps + 10))
        with torch.no_grad():
            for mean, latest in zip(self.average.parameters(), self.model.parameters()):
                mean.lerp_(latest, part)
            for mean, latest in zip(self.average.buffers(), self.model.buffers()):
                mean.copy_(latest)

    def read(self, pictures):
        with torch.no_grad():
            return decode_scores(
                self.average(to_input(pictures, self.device)).cpu().numpy(), self.alphabet
            )

    def measure(self, batches):
        """(line accuracy, character error rate, list of wrong (picture, read, truth)) over
        (pictures, labels) pairs."""
        lines = right = edits = characters = 0
        wrong = []
        for pictures, labels in batches:
            for index, (read, truth) in enumerate(zip(self.read(pictures), labels)):
                lines, right, characters = (
                    lines + 1,
                    right + (read == truth),
                    characters + len(truth),
                )
                if read != truth:
                    edits += distance(read, truth)
                    wrong.append((as_picture(pictures[index]), read, truth))
        return right / max(1, lines), edits / max(1, characters), wrong


def save_checkpoint(path, trainer):
    """Writes beside the old file and renames, so that a stop in the middle leaves the old one."""
    path = Path(path)
    path.parent.mkdir(parents=True, exist_ok=True)
    state = {
        "shape": json.dumps(trainer.model.shape.as_dict()),
        "alphabet": trainer.alphabet,
        "model": trainer.model.state_dict(),
        "average": trainer.average.state_dict(),
        "optimizer": trainer.optimizer.state_dict(),
        "progress": vars(trainer.progress),
        "rate": trainer.rate,
    }
    beside = path.with_suffix(".part")
    torch.save(state, beside)
    os.replace(beside, path)


def _load_state(path):
    data = io.BytesIO(Path(path).read_bytes())
    try:
        return torch.load(data, map_location="cpu")
    except (RuntimeError, ValueError, EOFError, pickle.UnpicklingError):
        raise ValueError(f"{path}: not a checkpoint, or damaged") from None


def load_model(path):
    """(averaged model in evaluation, alphabet, progress) of a checkpoint. OSError or ValueError
    when there is none."""
    state = _load_state(path)
    model = Crnn(_shape(state))
    model.load_state_dict(state["average"])
    return model.eval(), state["alphabet"], Progress(**state["progress"])


def load_trainer(path, device="cpu"):
    """A trainer that goes on where the checkpoint was saved. OSError or ValueError when there is
    none."""
    state = _load_state(path)
    trainer = Trainer(Crnn(_shape(state)), state["alphabet"], state["rate"], device)
    trainer.model.load_state_dict(state["model"])
    trainer.average.load_state_dict(state["average"])
    trainer.optimizer.load_state_dict(state["optimizer"])
    trainer.progress = Progress(**state["progress"])
    return trainer


def _shape(state):
    """Checkpoints from before the stages name the widths of six convolutions."""
    values = json.loads(state["shape"])
    if "channels" in values:
        first, second, *third, fourth, fifth = values.pop("channels")
        values["stages"] = ((first,), (second,), third, (fourth,), (fifth,))
    return Shape(**values)


class StopKey:
    """Ctrl-C, from now on, ends a training behind its current step, so that nothing of it is lost;
    pressed twice, it ends the program at once."""

    def __init__(self):
        self.pressed = False
        signal.signal(signal.SIGINT, self._press)

    def _press(self, *_):
        if self.pressed:
            raise KeyboardInterrupt
        self.pressed = True


class Clock:
    """Seconds since the last lap."""

    def __init__(self):
        self._last = time.monotonic()

    def lap(self):
        now = time.monotonic()
        passed, self._last = now - self._last, now
        return passed
