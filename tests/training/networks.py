"""Networks small enough for tests."""
import torch

from scribokit.network.model import Crnn, Shape

SMALL = Shape(((4,), (6,), (8, 8), (10,), (12,)), 8, 4)


def stirred():
    """A network whose normalisation has seen something."""
    torch.manual_seed(2)
    model = Crnn(SMALL).train()
    for _ in range(3):
        model(torch.randn(4, 3, 32, 64) * 2 + 0.5)
    return model.eval()
