"""Contact sheets: many pictures with their captions on one."""
import cv2
import numpy as np

_CELL_WIDTH, _PICTURE_HEIGHT, _CAPTION_HEIGHT = 330, 48, 20


def contact_sheet(entries, columns=5):
    """One picture of (picture, caption) pairs, row by row; an empty list gives one empty cell."""
    cells = [_cell(picture, caption) for picture, caption in entries] or [
        _cell(np.full((32, 32, 3), 255, np.uint8), "none")
    ]
    while len(cells) % columns:
        cells.append(np.full_like(cells[0], 255))
    return np.vstack(
        [np.hstack(cells[start : start + columns]) for start in range(0, len(cells), columns)]
    )


def _cell(picture, caption):
    cell = np.full((_PICTURE_HEIGHT + _CAPTION_HEIGHT, _CELL_WIDTH, 3), 255, np.uint8)
    if picture.ndim == 2:
        picture = cv2.cvtColor(picture, cv2.COLOR_GRAY2BGR)
    width = min(
        _CELL_WIDTH - 6, max(1, round(picture.shape[1] / picture.shape[0] * _PICTURE_HEIGHT))
    )
    cell[:_PICTURE_HEIGHT, :width] = cv2.resize(
        np.ascontiguousarray(picture), (width, _PICTURE_HEIGHT), interpolation=cv2.INTER_CUBIC
    )
    cv2.putText(
        cell,
        caption,
        (2, _PICTURE_HEIGHT + 14),
        cv2.FONT_HERSHEY_SIMPLEX,
        0.42,
        (0, 0, 200),
        1,
        cv2.LINE_AA,
    )
    return cell
