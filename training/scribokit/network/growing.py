"""Growing: a larger network that computes what a trained smaller one does, to train on from there
(after Chen et al., Net2Net: Accelerating learning via knowledge transfer, 2016)."""
from dataclasses import replace

import torch

from .model import Crnn, convolutions, folded


def grown(model, shape):
    """A network of this shape that gives the same scores, of pictures that both stretch alike. New
    channels and units begin at random and nobody listens to them yet; new convolutions come before
    the last of the last stage and after the others of the other stages, and pass on what they are
    given. ValueError when a part would have to shrink."""
    small = folded(model)
    if shape.hidden < small.shape.hidden:
        raise ValueError(f"an LSTM of {small.shape.hidden} cannot shrink to {shape.hidden}")
    large = Crnn(replace(shape, normalised=False))
    with torch.no_grad():
        _grow_convolutions(small, large)
        _grow_sequence(small, large)
        _grow_classifier(small, large)
    return large


def _grow_convolutions(small, large):
    """Old outputs hear old inputs alone; the channels that a convolution adds stand behind the old
    ones."""
    sources, planes = iter(convolutions(small)), 3
    for layer, is_new in zip(
        convolutions(large), _which_are_new(small.shape.stages, large.shape.stages)
    ):
        source = None if is_new else next(sources)
        kept = planes if is_new else source.out_channels
        if layer.out_channels < kept:
            raise ValueError(f"{kept} channels cannot shrink to {layer.out_channels}")
        layer.bias.zero_()
        layer.weight[:kept] = 0
        if is_new:
            layer.weight[range(kept), range(kept), 1, 1] = 1
        else:
            layer.weight[:kept, :planes] = source.weight
            layer.bias[:kept] = source.bias
        planes = kept


def _which_are_new(old_stages, new_stages):
    """For each convolution of the new stages, in their order, whether it is added."""
    result = []
    for number, (old, new) in enumerate(zip(old_stages, new_stages)):
        if len(new) < len(old):
            raise ValueError(f"a stage of {len(old)} convolutions cannot shrink to {len(new)}")
        before = len(old) - (number == len(new_stages) - 1)
        result += [False] * before + [True] * (len(new) - len(old)) + [False] * (len(old) - before)
    return result


def _grow_sequence(small, large):
    source, target = small.sequence, large.sequence
    for suffix in ("", "_reverse"):
        for name, columns in (
            ("weight_ih", source.input_size),
            ("weight_hh", source.hidden_size),
            ("bias_ih", None),
            ("bias_hh", None),
        ):
            old, new = (
                getattr(lstm, f"{name}_l0{suffix}").view(4, lstm.hidden_size, -1)
                for lstm in (source, target)
            )
            new[:, : source.hidden_size] = 0
            new[:, : source.hidden_size, :columns] = old


def _grow_classifier(small, large):
    source, target = small.classifier, large.classifier
    target.weight.zero_()
    for direction in range(2):
        old, new = direction * small.shape.hidden, direction * large.shape.hidden
        target.weight[:, new : new + small.shape.hidden] = source.weight[
            :, old : old + small.shape.hidden
        ]
    target.bias.copy_(source.bias)
