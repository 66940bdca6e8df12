#!/usr/bin/python3
"""Draws labels in Chinese and English, for recognisers that read both, and the job file that says
where.

    samples/published/draw_labels.py [FOLDER]        default: the folder of this script

Every picture is drawn from a fixed seed, so that the same packages give the same pictures. Needs
python3-pil, python3-opencv, python3-numpy and fonts-wqy-microhei.
"""
import json
import sys
from pathlib import Path

import cv2
import numpy as np
from PIL import Image, ImageDraw, ImageFont

FACE = "/usr/share/fonts/truetype/wqy/wqy-microhei.ttc"
SIZE = (640, 420)
LABELS = {
    "01_food.png": ((236, 228, 206), (40, 36, 44), 0.7, ["生产日期2026-11-21", "保质期12个月", "净含量500克"]),
    "02_part.png": ((176, 182, 186), (30, 44, 110), 1.1, ["产品编号PN7741-B", "检验合格", "MADE IN CHINA"]),
    "03_dark.png": ((52, 56, 60), (214, 216, 210), 0.9, ["批号A4827", "额定电压220V", "请勿倒置"]),
}


def label(rng, paper, ink, blur, lines):
    """A picture of these lines and, for each, its box and what stands in it."""
    picture = Image.new("RGB", SIZE, paper)
    face = ImageFont.truetype(FACE, 44)
    jobs = []
    for row, text in enumerate(lines):
        position = (70 + 6 * row, 60 + 110 * row)
        left, top, right, bottom = ImageDraw.Draw(picture).textbbox(position, text, font=face)
        ImageDraw.Draw(picture).text(position, text, font=face, fill=ink)
        margin = round((bottom - top) * 0.2)
        jobs.append(
            {
                "rect": [
                    left - margin,
                    top - margin,
                    right - left + 2 * margin,
                    bottom - top + 2 * margin,
                ],
                "reference": text,
            }
        )
    light = cv2.resize(
        rng.normal(0, 7, (4, 6)).astype(np.float32), SIZE, interpolation=cv2.INTER_CUBIC
    )
    pixels = (
        cv2.GaussianBlur(np.array(picture), (0, 0), blur).astype(np.float32) + light[:, :, None]
    )
    return Image.fromarray(np.clip(pixels, 0, 255).astype(np.uint8)), jobs


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent
    rng = np.random.default_rng(2026)
    jobs = {}
    for name, parts in LABELS.items():
        picture, jobs[name] = label(rng, *parts)
        picture.save(folder / name)
    rows = (
        f'    "{name}": {json.dumps(entries, ensure_ascii=False)}' for name, entries in jobs.items()
    )
    (folder / "jobs.json").write_text("{\n" + ",\n".join(rows) + "\n}\n", encoding="utf-8")


if __name__ == "__main__":
    main()
