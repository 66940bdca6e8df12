"""Cases of whole recognisers."""

from torch import nn
import torch.nn.functional as F

from torch_vectors import Do, case


class Crnn(nn.Module):
    def __init__(self, cell, layers, softmax=True):
        super().__init__()

        def block(inputs, outputs):
            return [nn.Conv2d(inputs, outputs, 3, padding=1), nn.BatchNorm2d(outputs), nn.ReLU()]

        self.features = nn.Sequential(
            *block(3, 8),
            nn.MaxPool2d(2, 2),
            *block(8, 12),
            nn.MaxPool2d(2, 2),
            *block(12, 16),
            nn.MaxPool2d((2, 1), (2, 1)),
            nn.Conv2d(16, 16, 2, padding=(0, 1)),
            nn.MaxPool2d((3, 1)),
            nn.ReLU(),
        )
        self.sequence = cell(16, 12, num_layers=layers, bidirectional=True)
        self.head = nn.Linear(24, 11)
        self.softmax = softmax

    def forward(self, x):
        x = self.features(x).squeeze(2).permute(2, 0, 1)
        x = self.head(self.sequence(x)[0])
        return F.softmax(x, 2) if self.softmax else x


@case(3, 32, (32, 57, 100), opset=(9, 11, 12, 13, 14))
def crnn_lstm():
    return Crnn(nn.LSTM, 1)


@case(3, 32, (32, 57, 100), opset=(11, 14))
def crnn_gru():
    return Crnn(nn.GRU, 1)


@case(3, 32, (32, 64))
def crnn_two_lstm():
    return Crnn(nn.LSTM, 2, softmax=False)


class RowsThroughLinear(nn.Module):
    """A recurrent layer whose steps go through a linear layer as the rows of one matrix, as the
    first CRNNs had it."""

    def __init__(self, inputs, hidden, outputs):
        super().__init__()
        self.sequence = nn.LSTM(inputs, hidden, bidirectional=True)
        self.linear = nn.Linear(2 * hidden, outputs)

    def forward(self, x):
        x = self.sequence(x)[0]
        count, batch, size = x.size()
        return self.linear(x.view(count * batch, size)).view(count, batch, -1)


@case(1, 16, (32, 45), opset=(9, 13))
def crnn_of_old():
    return Do(
        lambda x, net, rows: rows(net(x).squeeze(2).permute(2, 0, 1)),
        nn.Sequential(
            nn.Conv2d(1, 8, 3, padding=1),
            nn.ReLU(),
            nn.MaxPool2d(2, 2),
            nn.Conv2d(8, 12, 3, padding=1),
            nn.BatchNorm2d(12),
            nn.ReLU(),
            nn.MaxPool2d((2, 2), (2, 1), (0, 1)),
            nn.Conv2d(12, 12, (4, 2)),
            nn.ReLU(),
        ),
        nn.Sequential(RowsThroughLinear(12, 10, 10), RowsThroughLinear(10, 10, 7)),
    )
