"""Training on several processes, on one machine or on many: each draws its own lines, and all take
the same step by the mean of their gradients. torchrun starts them and tells each its place."""
import datetime
import os
from dataclasses import dataclass

import torch
from torch import distributed

# How long one waits for the others: a report takes minutes on a busy machine.
_PATIENCE = datetime.timedelta(minutes=60)


@dataclass
class Team:
    """A process among `size` that train together; `rank` 0 reports and saves. A team of one does
    nothing of what is below."""

    rank: int = 0
    size: int = 1

    @property
    def leads(self):
        return self.rank == 0

    def gather_gradients(self, model, counts, lines):
        """Gives the model of every process the mean gradient of those whose batch counts, and the
        mean of the statistics of normalisation; returns (how many batches count, the lines of
        all)."""
        if self.size == 1:
            return int(counts), lines
        parameters = list(model.parameters())
        parts = [torch.zeros_like(p) if p.grad is None else p.grad for p in parameters]
        buffers = [buffer for buffer in model.buffers() if buffer.is_floating_point()]
        flat = [part.detach().flatten().cpu() for part in parts + buffers]
        shared = torch.cat(flat + [torch.tensor([float(counts), float(lines)])])
        distributed.all_reduce(shared)
        counted, all_lines = int(shared[-2]), int(shared[-1])
        pieces = shared[:-2].split([part.numel() for part in flat])
        with torch.no_grad():
            for parameter, piece in zip(parameters, pieces):
                mean = piece.view(parameter.shape) / max(1, counted)
                parameter.grad = mean.to(parameter.device)
            for buffer, piece in zip(buffers, pieces[len(parameters) :]):
                buffer.copy_(piece.view(buffer.shape) / self.size)
        return counted, all_lines

    def agree(self, seconds, stops):
        """(the seconds of rank 0, whether any process stops), the same in all."""
        if self.size == 1:
            return seconds, stops
        values = torch.tensor([seconds if self.leads else -1.0, float(stops)], dtype=torch.float64)
        distributed.all_reduce(values, op=distributed.ReduceOp.MAX)
        return float(values[0]), bool(values[1])

    def align(self, model):
        """Gives the model of every process the values of rank 0's."""
        if self.size > 1:
            for value in model.state_dict().values():
                distributed.broadcast(value, 0)

    def leave(self):
        if self.size > 1:
            distributed.destroy_process_group()


def join():
    """The team that torchrun's environment names, or one of this process alone. ValueError when the
    others cannot be reached."""
    size = int(os.environ.get("WORLD_SIZE", "1"))
    if size == 1:
        return Team()
    try:
        distributed.init_process_group("gloo", timeout=_PATIENCE)
    except RuntimeError as error:
        raise ValueError(f"the other processes cannot be reached: {error}") from None
    return Team(distributed.get_rank(), size)


def processes_here():
    """How many of the team run on this machine."""
    return int(os.environ.get("LOCAL_WORLD_SIZE", "1"))
