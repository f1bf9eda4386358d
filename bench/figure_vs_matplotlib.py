#!/usr/bin/python3
"""Side-by-side figures: the sample filled-contour and lit-surface figures of
this library against matplotlib's Agg back end on the same data, levels, view
and size (1600 x 1200 pixels at 200 dpi), PNG writing included on both sides.

Reads the Google Benchmark JSON of plot_figure_bench from the file named on
the command line, draws the same figures with matplotlib, and prints the
processor time per figure of both and their ratio. Processor time is used so
that a busy machine hurts neither side more than the other.
"""
import json
import os
import sys
import tempfile
import time

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402

LEVELS = [-0.8, -0.6, -0.4, -0.2, 0, 0.2, 0.4, 0.6, 0.8, 1.0]


def contourf_figure(path):
    x = np.linspace(-3, 3, 161)
    y = np.linspace(-2.5, 2.5, 121)
    xx, yy = np.meshgrid(x, y)
    z = np.exp(-((xx - 1) ** 2 + yy**2)) - 0.8 * np.exp(-((xx + 1) ** 2 + (yy - 0.5) ** 2) / 0.7) + 0.1 * xx
    fig, ax = plt.subplots(figsize=(8, 6), dpi=200)
    filled = ax.contourf(x, y, z, levels=LEVELS)
    lines = ax.contour(x, y, z, levels=LEVELS, colors="k", linewidths=0.6)
    ax.clabel(lines, fontsize=8)
    fig.colorbar(filled, label="height z")
    ax.set_title(r"Two hills: $z = e^{-r_1^2} - 0.8 e^{-r_2^2/0.7} + 0.1x$")
    ax.set_xlabel("x (m)")
    ax.set_ylabel("y (m)")
    fig.savefig(path)
    plt.close(fig)


def surface_figure(path):
    x = np.linspace(-8, 8, 49)
    y = np.linspace(-8, 8, 49)
    xx, yy = np.meshgrid(x, y)
    r = np.hypot(xx, yy) + 1e-9
    z = np.sin(r) / r
    fig = plt.figure(figsize=(8, 6), dpi=200)
    ax = fig.add_subplot(projection="3d")
    # The library's azimuth is measured from -y; matplotlib's from +x.
    ax.view_init(elev=30, azim=-37.5 - 90)
    surf = ax.plot_surface(xx, yy, z, cmap="viridis", rstride=1, cstride=1, shade=True, linewidth=0.2,
                           edgecolor=(0, 0, 0, 0.2))
    fig.colorbar(surf, shrink=0.7)
    ax.set_title("sin(r)/r, lit")
    ax.set_xlabel("x")
    ax.set_ylabel("y")
    ax.set_zlabel("z")
    fig.savefig(path)
    plt.close(fig)


def cpu_seconds(draw, repeat=5):
    path = os.path.join(tempfile.gettempdir(), "qvgui_mpl_figure.png")
    draw(path)  # warm-up: font caches, first-use imports
    start = time.process_time()
    for _ in range(repeat):
        draw(path)
    os.remove(path)
    return (time.process_time() - start) / repeat


def ours(json_path):
    with open(json_path) as f:
        data = json.load(f)
    out = {}
    for b in data["benchmarks"]:
        if b.get("aggregate_name", "mean") != "mean" and b.get("run_type") == "aggregate":
            continue
        unit = {"ms": 1e-3, "us": 1e-6, "ns": 1e-9, "s": 1.0}[b.get("time_unit", "ns")]
        name = b["run_name"] if "run_name" in b else b["name"]
        if b.get("run_type") == "aggregate" or name not in out:
            out[name] = b["cpu_time"] * unit
    return out


def main():
    mine = ours(sys.argv[1])
    rows = [("filled contour", "BM_FigureContourf", contourf_figure), ("lit surface", "BM_FigureSurface", surface_figure)]
    print(f"{'figure (1600x1200 PNG)':26} {'qvgui':>10} {'matplotlib':>12} {'ratio':>8}")
    for label, bench, draw in rows:
        a = mine[bench]
        b = cpu_seconds(draw)
        print(f"{label:26} {a * 1e3:8.1f}ms {b * 1e3:10.1f}ms {b / a:7.1f}x")


if __name__ == "__main__":
    main()
