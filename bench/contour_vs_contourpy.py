#!/usr/bin/python3
"""Side-by-side contour tracing: this library's engine against contourpy's
serial generator on the same 1000x1000 surface and levels.

Reads the Google Benchmark JSON of surface_contour_bench (BM_ContourTrace) from
the file named on the command line, traces the same levels with contourpy, and
prints output points per second of both and their ratio. Both sides are timed
in processor time, so a busy machine hurts neither more than the other.
"""
import json
import sys
import time

import contourpy
import numpy as np

N = 1000


def surface():
    x = np.linspace(-3.0, 3.0, N)
    y = np.linspace(-3.0, 3.0, N)
    xx, yy = np.meshgrid(x, y)
    z = np.sin(3 * xx) * np.cos(2 * yy) + 0.5 * np.exp(-(xx**2 + yy**2))
    return x, y, z


def levels(z, count):
    lo, hi = float(z.min()), float(z.max())
    return [lo + (hi - lo) * k / (count + 1) for k in range(1, count + 1)]


def contourpy_run(x, y, z, lv, repeats):
    best = float("inf")
    points = 0
    for _ in range(repeats):
        start = time.process_time()
        gen = contourpy.contour_generator(x, y, z, name="serial")
        points = 0
        for level in lv:
            lines = gen.lines(level)
            points += sum(len(line) for line in lines)
        best = min(best, time.process_time() - start)
    return best, points


def ours(path):
    with open(path) as f:
        data = json.load(f)
    out = {}
    for b in data["benchmarks"]:
        if not b["name"].startswith("BM_ContourTrace/") or b.get("run_type") == "aggregate":
            continue
        count = int(b["name"].split("/")[1])
        unit = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}[b["time_unit"]]
        seconds = b["cpu_time"] * unit
        best = out.get(count, (float("inf"), 0))
        out[count] = (min(best[0], seconds), int(b["out_pts"]))
    return out


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: contour_vs_contourpy.py BENCH_JSON")
    mine = ours(sys.argv[1])
    x, y, z = surface()
    print(f"{'levels':>6} {'points':>8} {'qvgui s':>9} {'contourpy s':>11} {'qvgui pts/s':>12} "
          f"{'contourpy pts/s':>15} {'ratio':>6}")
    for count in sorted(mine):
        t_mine, p_mine = mine[count]
        t_cp, p_cp = contourpy_run(x, y, z, levels(z, count), repeats=5)
        rate_mine, rate_cp = p_mine / t_mine, p_cp / t_cp
        print(f"{count:>6} {p_mine:>8} {t_mine:>9.4f} {t_cp:>11.4f} {rate_mine:>12.3e} "
              f"{rate_cp:>15.3e} {rate_mine / rate_cp:>6.2f}")
        if p_mine != p_cp:
            print(f"       note: contourpy traced {p_cp} points")


if __name__ == "__main__":
    main()
