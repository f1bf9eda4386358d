#!/usr/bin/python3
"""Side-by-side triangle fills: this library's interpolating FillInterpPoly
(and its true-colour variant) against Pillow's flat ImageDraw.polygon on the
same 10,000 triangles of about 100 x 100 pixels.

Reads the Google Benchmark JSON of raster_fill_bench from the file named on
the command line, draws the same triangles with Pillow (the generator below
repeats the benchmark's), and prints filled pixels per second of both sides
and their ratio. The pixel count is the one the benchmark measured; Pillow
covers the same triangles (plus their outline pixels). Both sides are timed
in processor time, so a busy machine hurts neither more than the other.
"""
import json
import sys
import time

from PIL import Image, ImageDraw

TRIANGLES = 10000
CANVAS = 1024
MAX_BOX = 112


class Lcg:
    def __init__(self):
        self.state = 12345

    def next(self, n):
        self.state = (self.state * 1664525 + 1013904223) & 0xFFFFFFFF
        return (self.state >> 8) % n


def triangles():
    rng = Lcg()
    cx, cy = (0, 100, 100, 0), (0, 0, 100, 100)
    out = []
    for i in range(TRIANGLES):
        ox, oy = rng.next(CANVAS - MAX_BOX), rng.next(CANVAS - MAX_BOX)
        pts, value, rgb = [], [], []
        for k in range(3):
            c = (i % 4 + k) % 4
            pts.append((ox + cx[c] + rng.next(10), oy + cy[c] + rng.next(10)))
            value.append(rng.next(256))
            rgb.append(tuple(rng.next(256) for _ in range(3)))
        out.append((pts, value, rgb))
    return out


def pillow_seconds(tris, mode, repeats):
    image = Image.new(mode, (CANVAS, CANVAS))
    draw = ImageDraw.Draw(image)
    best = float("inf")
    for _ in range(repeats):
        start = time.process_time()
        for pts, value, rgb in tris:
            draw.polygon(pts, fill=value[0] if mode == "L" else rgb[0])
        best = min(best, time.process_time() - start)
    return best


def ours(path):
    with open(path) as f:
        data = json.load(f)
    out = {}
    for b in data["benchmarks"]:
        if b.get("run_type") == "aggregate":
            continue
        unit = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}[b["time_unit"]]
        seconds = b["cpu_time"] * unit
        name = b["name"].split("/")[0]
        best = out.get(name, (float("inf"), 0))
        out[name] = (min(best[0], seconds), int(b["pixels"]))
    return out


def main():
    measured = ours(sys.argv[1])
    tris = triangles()
    rows = [("BM_FillInterpPoly", "L", "interpolated colormap values"),
            ("BM_FillInterpPolyRGB", "RGB", "interpolated true colour")]
    for name, mode, what in rows:
        seconds, pixels = measured[name]
        theirs = pillow_seconds(tris, mode, 3)
        ours_rate, their_rate = pixels / seconds, pixels / theirs
        print(f"{what}: FillInterpPoly{'RGB' if mode == 'RGB' else ''} {ours_rate / 1e6:.0f} Mpx/s, "
              f"Pillow flat polygon ({mode}) {their_rate / 1e6:.0f} Mpx/s, ratio {ours_rate / their_rate:.2f}x")


if __name__ == "__main__":
    main()
