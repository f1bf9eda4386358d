#!/usr/bin/python3
"""Side-by-side Floyd-Steinberg dithering: this library's dither_wrapper
against Pillow's Image.quantize(palette=..., dither=FLOYDSTEINBERG) on the same
2048x2048 image and 256-colour palette.

Reads the Google Benchmark JSON of raster_dither_bench (BM_DitherWrapper/2048) from
the file named on the command line, dithers the same image with Pillow, and
prints pixels per second of both and their ratio. Both sides are timed in
processor time, so a busy machine hurts neither more than the other.
"""
import json
import sys
import time

import numpy as np
from PIL import Image

SIDE = 2048


def image():
    # The formulas of testImage() in raster_dither_bench.cpp.
    y, x = np.mgrid[0:SIDE, 0:SIDE].astype(np.uint32)
    r = (x + y) * 255 // (2 * (SIDE - 1))
    g = (x * 7 + y * 13) & 255
    b = ((x * y) >> 6) & 255
    return Image.fromarray(np.dstack([r, g, b]).astype(np.uint8), "RGB")


def palette():
    # The colours of testPalette() in raster_dither_bench.cpp.
    values = []
    for k in range(256):
        values += [((k >> 5) & 7) * 255 // 7, ((k >> 2) & 7) * 255 // 7, (k & 3) * 255 // 3]
    pal = Image.new("P", (1, 1))
    pal.putpalette(values)
    return pal


def pillow_seconds(img, pal, repeats):
    best = float("inf")
    for _ in range(repeats):
        start = time.process_time()
        img.quantize(palette=pal, dither=Image.Dither.FLOYDSTEINBERG)
        best = min(best, time.process_time() - start)
    return best


def ours(path):
    with open(path) as f:
        data = json.load(f)
    unit = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
    times = [b["cpu_time"] * unit[b["time_unit"]] for b in data["benchmarks"]
             if b["name"].startswith("BM_DitherWrapper/2048") and b.get("run_type") != "aggregate"]
    return min(times)


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: dither_vs_pillow.py BENCH_JSON")
    pixels = SIDE * SIDE
    t_mine = ours(sys.argv[1])
    t_pil = pillow_seconds(image(), palette(), repeats=5)
    rate_mine, rate_pil = pixels / t_mine, pixels / t_pil
    print(f"{'pixels':>8} {'qvgui s':>9} {'Pillow s':>9} {'qvgui px/s':>11} {'Pillow px/s':>11} {'ratio':>6}")
    print(f"{pixels:>8} {t_mine:>9.4f} {t_pil:>9.4f} {rate_mine:>11.3e} {rate_pil:>11.3e} "
          f"{rate_mine / rate_pil:>6.2f}")


if __name__ == "__main__":
    main()
