#!/usr/bin/python3
"""Draws the sample pictures and the job file that says where to read and what to expect.

    samples/draw_samples.py [FOLDER]        default: the folder of this script

Every picture is drawn from a fixed seed, so that the same packages give the same pictures. Needs
python3-pil, python3-opencv, python3-numpy, fonts-dejavu-core and fonts-liberation.
"""
import argparse
import json
import math
from pathlib import Path

import cv2
import numpy as np
from PIL import Image, ImageDraw, ImageFont

WIDTH, HEIGHT = 640, 420
FONTS = {
    "sans": "/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf",
    "sansbold": "/usr/share/fonts/truetype/liberation/LiberationSans-Bold.ttf",
    "mono": "/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf",
    "monobold": "/usr/share/fonts/truetype/liberation/LiberationMono-Bold.ttf",
    "dejavu": "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
}


def font(name, size):
    return ImageFont.truetype(FONTS[name], size)


def textured(rng, colour, grain, size=(WIDTH, HEIGHT)):
    """A surface of one colour with fine grain and slow changes of light."""
    width, height = size
    slow = cv2.resize(
        rng.normal(0, 1, (5, 7)).astype(np.float32), size, interpolation=cv2.INTER_CUBIC
    )
    fine = rng.normal(0, 1, (height, width)).astype(np.float32)
    light = (slow * grain * 1.5 + fine * grain)[:, :, None]
    return Image.fromarray(np.clip(np.array(colour, np.float32) + light, 0, 255).astype(np.uint8))


def line_box(picture, position, text, face):
    """The box of a text line in the picture, with the margin that a line engineer would leave."""
    left, top, right, bottom = ImageDraw.Draw(picture).textbbox(position, text, font=face)
    margin = round((bottom - top) * 0.22)
    return [left - margin, top - margin, right - left + 2 * margin, bottom - top + 2 * margin]


def write(picture, position, text, face, colour):
    ImageDraw.Draw(picture).text(position, text, font=face, fill=colour)
    return line_box(picture, position, text, face)


def write_dots(picture, position, text, colour, pitch, radius, rng):
    """Continuous ink-jet: a 7-row dot matrix, each dot a little off its place."""
    face = font("monobold", 12)
    mask = Image.new("L", (12 * len(text) + 8, 20))
    ImageDraw.Draw(mask).text((2, 2), text, font=face, fill=255)
    dots = np.array(mask.crop(mask.getbbox())) > 110
    draw = ImageDraw.Draw(picture)
    for row, column in zip(*np.nonzero(dots)):
        x = position[0] + column * pitch + rng.normal(0, 0.3)
        y = position[1] + row * pitch + rng.normal(0, 0.3)
        draw.ellipse([x - radius, y - radius, x + radius, y + radius], fill=colour)
    rows, columns = dots.shape
    margin = round(rows * pitch * 0.2)
    return [
        position[0] - margin,
        position[1] - margin,
        round(columns * pitch) + 2 * margin,
        round(rows * pitch) + 2 * margin,
    ]


def blurred(picture, sigma):
    return Image.fromarray(cv2.GaussianBlur(np.array(picture), (0, 0), sigma))


def tilted(picture, degrees):
    """Turns the picture about its middle; lines near the middle stay in their boxes."""
    matrix = cv2.getRotationMatrix2D((WIDTH / 2, HEIGHT / 2), degrees, 1.0)
    return Image.fromarray(
        cv2.warpAffine(np.array(picture), matrix, (WIDTH, HEIGHT), borderMode=cv2.BORDER_REPLICATE)
    )


def carton(rng):
    picture = textured(rng, (186, 148, 104), 5)
    draw = ImageDraw.Draw(picture)
    draw.rectangle([0, 300, WIDTH, 306], fill=(150, 114, 76))
    draw.text((70, 60), "FRAGILE", font=font("sansbold", 54), fill=(140, 62, 44))
    box = write(picture, (150, 200), "2026-11-21", font("mono", 52), (48, 40, 36))
    return blurred(picture, 0.8), [(box, "2026-11-21")]


def can(rng):
    shade = 150 + 80 * np.cos(np.linspace(-1.3, 1.3, WIDTH))
    metal = np.repeat(shade[None, :, None], HEIGHT, 0).repeat(3, 2) + rng.normal(
        0, 4, (HEIGHT, WIDTH, 1)
    )
    picture = Image.fromarray(np.clip(metal, 0, 255).astype(np.uint8))
    box = write(picture, (170, 180), "LOT:A4827", font("sans", 56), (30, 30, 46))
    return blurred(picture, 1.0), [(box, "LOT:A4827")]


def film(rng):
    picture = textured(rng, (214, 220, 226), 4)
    draw = ImageDraw.Draw(picture)
    for offset in range(-HEIGHT, WIDTH, 90):
        draw.line([offset, HEIGHT, offset + HEIGHT, 0], fill=(200, 208, 216), width=9)
    box = write_dots(picture, (130, 190), "EXP:03.27", (26, 24, 30), 5.6, 2.9, rng)
    return blurred(picture, 1.2), [(box, "EXP:03.27")]


def dark_housing(rng):
    picture = textured(rng, (38, 42, 48), 4)
    box = write(picture, (140, 180), "SN-804417", font("dejavu", 56), (226, 226, 220))
    return blurred(picture, 0.9), [(box, "SN-804417")]


def low_contrast(rng):
    picture = textured(rng, (128, 130, 132), 2)
    box = write(picture, (180, 180), "B7F2K9", font("sansbold", 64), (98, 100, 104))
    return blurred(picture, 1.2), [(box, "B7F2K9")]


def tilt(rng):
    picture = textured(rng, (206, 206, 198), 4)
    box = write(picture, (160, 176), "4051-2286", font("sans", 58), (44, 44, 60))
    return tilted(blurred(picture, 0.9), 1.8), [(box, "4051-2286")]


def out_of_focus(rng):
    picture = textured(rng, (226, 222, 210), 3)
    box = write(picture, (160, 180), "LOT#5583", font("dejavu", 60), (60, 48, 44))
    return blurred(picture, 2.6), [(box, "LOT#5583")]


def label(rng):
    picture = textured(rng, (120, 132, 148), 4)
    draw = ImageDraw.Draw(picture)
    draw.rounded_rectangle([90, 40, 550, 380], 14, fill=(246, 246, 242))
    for x in range(130, 510, 7):
        draw.rectangle([x, 316, x + 1 + (x * 7 % 4), 356], fill=(20, 20, 20))
    lines = [(60, "PN:7741-B"), (144, "2026.11.20"), (228, "REV(3)")]
    regions = [
        (write(picture, (140, y), text, font("sans", 52), (22, 22, 26)), text) for y, text in lines
    ]
    return blurred(picture, 0.8), regions


def laser(rng):
    picture = textured(rng, (92, 96, 100), 5)
    box = write(picture, (160, 180), "H2208.14", font("mono", 58), (176, 178, 174))
    return blurred(picture, 0.9), [(box, "H2208.14")]


def thermal(rng):
    picture = textured(rng, (240, 240, 236), 2)
    box = write(picture, (170, 180), "QTY:144", font("monobold", 66), (34, 34, 34))
    draw = ImageDraw.Draw(picture)
    draw.rectangle([box[0], 232, box[0] + box[2], 233], fill=(238, 238, 234))
    return blurred(picture, 0.7), [(box, "QTY:144")]


def grey_blister(rng):
    picture = textured(rng, (196, 198, 202), 4)
    draw = ImageDraw.Draw(picture)
    for x in range(60, WIDTH, 130):
        draw.ellipse([x, 30, x + 90, 120], fill=(226, 228, 232), outline=(150, 152, 158), width=3)
    box = write(picture, (150, 200), "CH.B:70619", font("sans", 54), (52, 54, 64))
    return blurred(picture, 0.9).convert("L"), [(box, "CH.B:70619")]


def wrong_lot(rng):
    picture = textured(rng, (222, 214, 196), 4)
    box = write(picture, (160, 180), "LOT:K3356", font("sans", 58), (36, 34, 40))
    return blurred(picture, 0.8), [(box, "LOT:K3358")]


def wrong_date(rng):
    picture = textured(rng, (176, 196, 184), 4)
    box = write(picture, (150, 180), "2027-06-31", font("dejavu", 54), (30, 36, 34))
    return blurred(picture, 0.9), [(box, "2027-05-31")]


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("folder", nargs="?", type=Path, default=Path(__file__).resolve().parent)
    folder = parser.parse_args().folder
    folder.mkdir(parents=True, exist_ok=True)
    scenes = [
        carton,
        can,
        film,
        dark_housing,
        low_contrast,
        tilt,
        out_of_focus,
        label,
        laser,
        thermal,
        grey_blister,
        wrong_lot,
        wrong_date,
    ]
    jobs = {}
    for number, scene in enumerate(scenes, 1):
        picture, regions = scene(np.random.default_rng(1000 + number))
        name = f"{number:02d}_{scene.__name__}.png"
        picture.save(folder / name, optimize=True)
        jobs[name] = [
            {"rect": [math.floor(v) for v in box], "reference": text} for box, text in regions
        ]
    rows = ",\n".join(
        f"    {json.dumps(name)}: {json.dumps(regions)}" for name, regions in jobs.items()
    )
    (folder / "jobs.json").write_text("{\n" + rows + "\n}\n", encoding="utf-8")


if __name__ == "__main__":
    main()
