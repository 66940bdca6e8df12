"""Cases of single layers and of what exporters write around them."""

import torch
from torch import nn
import torch.nn.functional as F

from torch_vectors import Do, case


# Convolutions


@case(3, 8)
def conv_plain():
    return nn.Conv2d(3, 8, 3, padding=1)


@case(3, 8)
def conv_no_bias():
    return nn.Conv2d(3, 5, 3, padding=1, bias=False)


@case(2, 6)
def conv_1x1():
    return nn.Conv2d(2, 7, 1)


@case(3, 12, (17, 32))
def conv_5x3_stride_2x1():
    return nn.Conv2d(3, 6, (5, 3), stride=(2, 1), padding=(2, 1))


@case(3, 12, (17, 33))
def conv_stride_3_no_padding():
    return nn.Conv2d(3, 6, 3, stride=3)


@case(4, 8)
def conv_groups():
    return nn.Conv2d(4, 8, 3, padding=1, groups=2)


@case(6, 8)
def conv_depthwise():
    return nn.Conv2d(6, 6, 3, padding=1, groups=6)


@case(3, 12, (13, 24))
def conv_dilated():
    return nn.Conv2d(3, 4, 3, padding=(2, 3), dilation=(2, 3))


@case(3, 8)
def conv_uneven_padding():
    return nn.Sequential(nn.ZeroPad2d((2, 1, 0, 3)), nn.Conv2d(3, 4, (4, 2)))


@case(3, 2)
def conv_full_height():
    return nn.Conv2d(3, 16, (2, 3), padding=(0, 1))


@case(2, 4)
def conv_1d():
    return Do(lambda x, conv: conv(x.flatten(1, 2)), nn.Conv1d(8, 5, 3, padding=2, stride=2))


@case(3, 8, opset=(11, 12, 13, 14))
def conv_batch_norm_relu():
    return nn.Sequential(nn.Conv2d(3, 8, 3, padding=1), nn.BatchNorm2d(8), nn.ReLU())


@case(3, 8)
def batch_norm_alone():
    return nn.Sequential(nn.BatchNorm2d(3), nn.Conv2d(3, 4, 1))


@case(3, 8)
def batch_norm_behind_shared_convolution():
    return Do(
        lambda x, conv, norm: torch.cat([conv(x), norm(conv(x))], 1),
        nn.Conv2d(3, 4, 3),
        nn.BatchNorm2d(4),
    )


@case(3, 8)
def residual():
    return Do(
        lambda x, a, b: F.relu(a(x) + b(x)), nn.Conv2d(3, 4, 3, padding=1), nn.Conv2d(3, 4, 1)
    )


# Pooling and reductions


@case(3, 8)
def max_pool():
    return nn.MaxPool2d(2)


@case(3, 8, (9, 15))
def max_pool_height_only():
    return nn.MaxPool2d((2, 1), (2, 1))


@case(3, 9, (10, 17))
def max_pool_3x3_stride_2_padding():
    return nn.MaxPool2d(3, 2, padding=1)


@case(3, 9, (10, 17))
def max_pool_ceil():
    return nn.MaxPool2d(2, 2, ceil_mode=True)


@case(3, 8)
def max_pool_crnn():
    return nn.MaxPool2d((2, 2), (2, 1), (0, 1))


@case(3, 8, opset=(11, 13))
def average_pool():
    return nn.AvgPool2d(2)


@case(3, 8, (9, 14))
def average_pool_padding_counted():
    return nn.AvgPool2d(3, 2, padding=1)


@case(3, 8, (9, 14))
def average_pool_padding_not_counted():
    return nn.AvgPool2d(3, 2, padding=1, count_include_pad=False)


@case(3, 8)
def global_average_pool():
    return Do(lambda x: x * F.adaptive_avg_pool2d(x, 1))


@case(3, 8)
def global_max_pool():
    return Do(lambda x: x - F.adaptive_max_pool2d(x, 1))


@case(3, 8, opset=(11, 13))
def mean_over_height():
    return Do(lambda x: x.mean(2).permute(2, 0, 1))


@case(3, 8, opset=(11, 13))
def sum_and_max():
    return Do(lambda x: x.sum((1, 2), keepdim=True) + x.amax(1, keepdim=True))


@case(3, 8)
def resize_by_scales():
    return Do(lambda x: F.interpolate(x, scale_factor=(2, 3), mode="bilinear", align_corners=False))


@case(3, 8)
def resize_by_width():
    return Do(
        lambda x: F.interpolate(x, (6, x.shape[3] * 3 + 1), mode="bilinear", align_corners=False)
    )


@case(3, 8, opset=16)
def grid_samples():
    """As recognisers straighten bent lines; some places lie beyond the picture."""

    def straighten(x, sampled):
        grid = sampled(x)[:, :2].permute(0, 2, 3, 1) * 2
        return torch.cat(
            [
                F.grid_sample(x, grid, padding_mode=padding, align_corners=corners)
                for padding in ("zeros", "border")
                for corners in (False, True)
            ],
            1,
        )

    return Do(straighten, nn.Conv2d(3, 2, 3, padding=1, stride=(2, 1)))


# Activations


@case(2, 3, (7,))
def activations():
    return Do(
        lambda x: torch.cat(
            [
                F.relu(x),
                F.leaky_relu(x, 0.1),
                torch.sigmoid(x),
                torch.tanh(x),
                F.elu(x, 0.7),
                F.softplus(x),
                x.clamp(-0.5, 0.75),
                x.clamp(min=-0.25),
                x.clamp(max=0.3),
                F.relu6(3 * x),
            ],
            1,
        )
    )


@case(2, 3, (7,), opset=(11, 14))
def hard_activations():
    return Do(lambda x: torch.cat([F.hardsigmoid(3 * x), F.hardswish(3 * x), F.silu(x)], 1))


@case(3, 6, opset=(9, 13))
def hard_swish_written_out():
    """As PaddlePaddle exports it, with the scale and shift that its recognisers put around it."""

    def layers(x, first, second):
        y = first(x) * 1.4 - 0.2
        y = y * F.relu6(y + 3) / 6 * 0.7 + 0.1
        y = second(y) * 0.9
        return y * torch.sigmoid(y * 1.0)

    return Do(layers, nn.Conv2d(3, 8, 3, padding=1), nn.Conv2d(8, 8, 3, padding=1, groups=8))


@case(2, 3, (7,))
def scaled_activations():
    return Do(
        lambda x: torch.cat(
            [torch.tanh(x) * 2 + 1, 0.5 - torch.sigmoid(x) / 4, F.hardtanh(x, 0, 0.5) * -1], 1
        )
    )


@case(3, 3, (12,), opset=14)
def scaled_hard_sigmoid_behind_convolution():
    return Do(
        lambda x, conv: F.hardsigmoid(3 * conv(x)) * -1.8 + 0.6, nn.Conv2d(3, 8, 3, padding=1)
    )


@case(2, 3, (7,))
def gelu_written_out():
    return nn.GELU()


@case(2, 3, (7,))
def prelu_single():
    return nn.PReLU(1, 0.2)


@case(4, 3, (7,))
def prelu_channels():
    layer = nn.PReLU(4)
    nn.init.uniform_(layer.weight, -1, 1)
    return nn.Sequential(nn.Conv2d(4, 4, 1), layer)


@case(3, 6)
def activation_behind_convolution():
    return Do(
        lambda x, a, b, c, d, e: torch.cat(
            [
                F.leaky_relu(a(x), 0.2),
                F.hardswish(b(x)),
                F.silu(c(x)),
                F.hardtanh(d(x), -0.2, 0.3),
                F.elu(e(x)),
            ],
            1,
        ),
        *[nn.Conv2d(3, 3, 3, padding=1) for _ in range(5)],
    )


# Recurrent layers


def steps(x):
    """The picture's columns as a sequence: T x 1 x (C * H)."""
    return x.flatten(1, 2).permute(2, 0, 1)


def recurrent(kind, **options):
    return Do(lambda x, layer: layer(steps(x))[0], kind(8, 6, **options))


@case(2, 4, (1, 9))
def lstm():
    return recurrent(nn.LSTM)


@case(2, 4, opset=(11, 12, 13, 14))
def lstm_bidirectional():
    return recurrent(nn.LSTM, bidirectional=True)


@case(2, 4)
def lstm_two_layers():
    return recurrent(nn.LSTM, num_layers=2)


@case(2, 4, (2, 9, 16))
def lstm_two_layers_bidirectional():
    return recurrent(nn.LSTM, num_layers=2, bidirectional=True)


@case(2, 4)
def lstm_batch_first():
    return Do(
        lambda x, layer: layer(x.flatten(1, 2).permute(0, 2, 1))[0].permute(1, 0, 2),
        nn.LSTM(8, 6, batch_first=True, bidirectional=True),
    )


@case(2, 4)
def lstm_no_bias():
    return recurrent(nn.LSTM, bias=False)


@case(2, 4)
def lstm_last_states():
    def last(x, layer):
        sequence, (hidden, cell) = layer(steps(x))
        return sequence, hidden, cell

    return Do(last, nn.LSTM(8, 6, bidirectional=True))


@case(2, 4)
def lstm_initial_state():
    hidden, cell = torch.randn(2, 1, 6), torch.randn(2, 1, 6)
    return Do(
        lambda x, layer: layer(steps(x), (hidden, cell))[0], nn.LSTM(8, 6, bidirectional=True)
    )


@case(2, 4, (1, 9))
def gru():
    return recurrent(nn.GRU)


@case(2, 4, opset=(11, 12, 13, 14))
def gru_bidirectional():
    return recurrent(nn.GRU, bidirectional=True)


@case(2, 4, (2, 9, 16))
def gru_two_layers_bidirectional():
    return recurrent(nn.GRU, num_layers=2, bidirectional=True)


@case(2, 4)
def gru_initial_state():
    hidden = torch.randn(1, 1, 6)
    return Do(lambda x, layer: layer(steps(x), hidden)[1], nn.GRU(8, 6))


# Products


@case(2, 4)
def linear():
    return Do(lambda x, layer: layer(steps(x)), nn.Linear(8, 5))


@case(2, 4)
def linear_no_bias_relu():
    return Do(lambda x, layer: F.relu(layer(steps(x))), nn.Linear(8, 5, bias=False))


@case(2, 4, opset=(11, 13))
def gemm():
    return Do(lambda x, layer: F.relu(layer(steps(x).squeeze(1))), nn.Linear(8, 5))


@case(2, 4)
def gemm_scaled():
    weights, bias = torch.randn(8, 5), torch.randn(5)
    return Do(lambda x: torch.addmm(bias, steps(x).squeeze(1), weights, beta=0.5, alpha=2))


@case(2, 4)
def attention():
    def attend(x, query, key, value):
        x = x.flatten(1, 2).permute(0, 2, 1)
        scores = query(x) @ key(x).transpose(1, 2) / 6**0.5
        return (F.softmax(scores, -1) @ value(x)).permute(1, 0, 2)

    return Do(attend, nn.Linear(8, 6), nn.Linear(8, 6), nn.Linear(8, 6))


# Normalisation and soft-max


@case(2, 4, opset=(11, 13))
def softmax():
    return Do(lambda x: F.softmax(steps(x), 2))


@case(2, 4, opset=(11, 13))
def softmax_inner_axis():
    return Do(lambda x: F.softmax(3 * x, 1))


@case(2, 4, opset=(11, 13))
def log_softmax():
    return Do(lambda x: F.log_softmax(steps(x), 2))


@case(2, 4, opset=(13, 17))
def layer_norm():
    return Do(lambda x, norm: norm(steps(x)), nn.LayerNorm(8))


# Layout and arithmetic


@case(2, 4, opset=(11, 13))
def squeeze_unsqueeze():
    return Do(lambda x, conv: conv(x).squeeze(2).unsqueeze(0).squeeze(1), nn.Conv2d(2, 3, (4, 1)))


@case(2, 4, opset=(11, 12, 13, 14))
def reshape_from_shape():
    def fold(x):
        batch, channels, height, width = x.size()
        return x.reshape(batch, channels * height, width).permute(2, 0, 1)

    return Do(fold)


@case(2, 4)
def view_by_time():
    def merge(x, layer):
        x = steps(x)
        count, batch, size = x.size()
        return layer(x.reshape(count * batch, size)).view(count, batch, -1)

    return Do(merge, nn.Linear(8, 5))


@case(2, 4, opset=(11, 13))
def slices():
    return Do(
        lambda x: torch.cat(
            [x[:, :, 1:3, 2:], x[:, :, ::2, :-2], x[:, 1:, -2:, 1:-1].repeat(1, 2, 1, 1)], 2
        )
    )


@case(2, 4, opset=9)
def slices_of_old():
    return Do(lambda x: torch.cat([x[:, :, 1:3, 2:], x[:, :, -2:, :-2]], 2))


@case(4, 4, opset=(11, 13))
def splits():
    return Do(lambda x: torch.cat([x.split((1, 3), 1)[1], x.chunk(2, 1)[0]], 1))


@case(2, 4, opset=(9, 11, 13))
def pads():
    return Do(lambda x: F.pad(F.pad(x, (1, 2, 3, 0)), (0, 1, 1, 0), value=0.5))


@case(2, 4)
def gathers():
    picks = torch.tensor([1, 0, 1])
    return Do(
        lambda x: torch.cat([x[:, picks], x.index_select(1, picks[:2])], 1) + x[:, 0:1, -1:, :]
    )


@case(2, 4, opset=(11, 13))
def arithmetic():
    return Do(
        lambda x: (x + 2) * (1 - x) / (x.abs() + 1.5)
        - x.pow(2)
        + (x * x + 0.1).sqrt()
        - torch.exp(-x)
        + torch.log(x.abs() + 1)
        + 1 / (x.abs() + 3)
        + torch.maximum(x, -x)
        + torch.minimum(x, x * 0.5)
    )


@case(2, 4)
def broadcasting():
    column, channel = torch.randn(4, 1), torch.randn(2, 1, 1)
    return Do(lambda x: x * column + channel - x.mean(3, keepdim=True) * x[:, :, :1])


@case(2, 4)
def expands():
    row = torch.randn(1, 2, 1, 1)
    return Do(lambda x: torch.cat([x, row.expand(1, 2, 4, x.size(3))], 1))


@case(2, 4)
def position_of_columns():
    return Do(lambda x: x + torch.ones_like(x) * x.size(3) / 16)


@case(2, 4)
def two_outputs():
    return Do(lambda x: (steps(x), steps(x).mean(2, keepdim=True)))


@case(3, 8)
def squeeze_excite():
    def gate(x, reduce, widen):
        return x * F.hardsigmoid(widen(F.relu(reduce(F.adaptive_avg_pool2d(x, 1)))))

    return Do(gate, nn.Conv2d(3, 2, 1), nn.Conv2d(2, 3, 1))


@case(2, 4)
def dropout_is_gone():
    return Do(lambda x, drop, layer: layer(drop(steps(x))), nn.Dropout(), nn.Linear(8, 4))
