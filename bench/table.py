"""Prints the medians of a benchmark run as a table: each work beside its peer, their ratio and the goal for it."""

import json
import statistics
import sys

MEMORY = "memory/streaming stores"
BILINEAR = "demosaic/OpenCV bilinear"

# Work, peer, and what the library may take at most, as a multiple of the peer's time.
ROWS = [
    ("direct demosaic", BILINEAR, 0.8),
    ("5 x 5 demosaic", BILINEAR, 1.0),
    ("5 x 5 demosaic, gains, matrix, gamma", BILINEAR, 1.6),
    ("whole chain", "whole chain/OpenCV in cache strips", 0.25),
    ("whole chain", "whole chain/OpenCV step by step", 0.1),
    ("whole chain", MEMORY, 4.0),
    ("dot filter", "dot filter/OpenCV median and threshold", 1.0),
    ("sharpness", "sharpness/OpenCV box filter and addWeighted", 0.3),
    ("YUV 4:2:2 to BGRA", "YUV 4:2:2 to BGRA/libyuv", 1.0),
    ("Resample", "Resample/libyuv bilinear", 1.0),
    ("grey-world sums", "grey-world sums/OpenCV sums", 1.5),
    ("JPEG", "JPEG/libjpeg", 1.02),
    ("direct demosaic", MEMORY, None),
    ("5 x 5 demosaic", MEMORY, None),
    ("5 x 5 demosaic", "demosaic/OpenCV edge-aware", None),
    ("whole chain and dot filter", MEMORY, None),
    ("white balance statistics", MEMORY, None),
    ("white pixel cancelling", MEMORY, None),
]


def medians(path):
    """Milliseconds of thread time by name."""
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    times = {}
    for run in runs:
        if run["run_type"] == "iteration":
            times.setdefault(run["run_name"], []).append(run["cpu_time"] / 1e6)
    return {name: statistics.median(values) for name, values in times.items()}


def main():
    times = medians(sys.argv[1])
    print("| work | ms | beside | ms | ratio | at most |")
    print("|---|---|---|---|---|---|")
    for work, peer, goal in ROWS:
        ours = times.get(work + "/zelcam")
        theirs = times.get(peer)
        if ours is None or theirs is None:
            print(f"| {work} | {ours or '-'} | {peer} | not installed | - | {goal or '-'} |")
            continue
        ratio = ours / theirs
        verdict = "-" if goal is None else f"{goal:g}{'' if ratio <= goal else ' **missed**'}"
        print(f"| {work} | {ours:.2f} | {peer} | {theirs:.2f} | {ratio:.2f} | {verdict} |")


main()
