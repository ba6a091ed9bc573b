#!/usr/bin/env python3
"""Draws the way of a run as an SVG picture, on standard output.

    tools/draw_run.py docs/run.txt >docs/run.svg

Each line of the text is a step, and behind a bar what else can happen there.
"""

import pathlib
import sys
from xml.sax.saxutils import escape

WIDTH, BOX, HEIGHT, GAP, MARGIN = 860, 430, 34, 18, 12


def step(number, text, aside, is_last):
    top = MARGIN + number * (HEIGHT + GAP)
    middle = top + HEIGHT // 2
    parts = [f'<rect x="{MARGIN}" y="{top}" width="{BOX}" height="{HEIGHT}" rx="6" fill="#eef3fa" stroke="#456"/>',
             f'<text x="{MARGIN + BOX // 2}" y="{middle + 5}" text-anchor="middle">{escape(text)}</text>']
    if not is_last:
        x, bottom = MARGIN + BOX // 2, top + HEIGHT
        parts.append(f'<path d="M{x} {bottom}v{GAP - 2}m-5 -6l5 6l5 -6" fill="none" stroke="#456"/>')
    if aside:
        x = MARGIN + BOX
        parts.append(f'<path d="M{x} {middle}h22m-6 -5l6 5l-6 5" fill="none" stroke="#a52"/>')
        parts.append(f'<text x="{x + 30}" y="{middle + 5}" fill="#a52">{escape(aside)}</text>')
    return parts


def draw(text):
    """The picture of `text`."""
    rows = [[part.strip() for part in line.split("|")] for line in text.splitlines() if line.strip()]
    height = 2 * MARGIN + len(rows) * (HEIGHT + GAP) - GAP
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" font-family="sans-serif" '
             'font-size="14">',
             f'<rect width="{WIDTH}" height="{height}" fill="#fff"/>']
    for number, (action, aside) in enumerate(rows):
        lines += step(number, action, aside, number == len(rows) - 1)
    return "\n".join([*lines, "</svg>"]) + "\n"


if __name__ == "__main__":
    print(draw(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")), end="")
