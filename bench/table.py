"""Prints the medians of benchmark runs as tables: table.py IMAGING.json CAPTURE.json

Imaging: each work beside its peer, their ratio and the goal for it. Capture: what a frame costs, family by family.
"""

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


def imaging(path):
    times = medians(path)
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


def capture(path):
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    cameras = {}
    play = None
    for run in runs:
        if run["name"].startswith("play/"):
            play = run
            continue
        kind, camera = run["name"].removesuffix("/real_time").split("/")[:2]
        cameras.setdefault(camera, {})[kind] = run
    print("| camera | frames/s | frame, ms | of it the simulated camera, ms | memcpy of a frame, ms | library's own, us | "
          "allocations | arrival to callback, us |")
    print("|---|---|---|---|---|---|---|---|")
    for camera, run in cameras.items():
        frames = run["frames"]
        print(f"| {camera} | {frames['fps']:.1f} | {frames['real_time']:.2f} | {frames['camera_ms']:.2f} | "
              f"{run['memcpy']['real_time']:.3f} | {run['overhead']['own_us']:.1f} | "
              f"{run['overhead']['allocations']:.0f} | {run['latency']['median_us']:.1f} |")
    print()
    print(f"Play of a 2560 x 1920 camera: {play['own_us'] / 1000:.2f} ms until the workers run, "
          f"{play['megabytes']:.1f} MB while it plays")


imaging(sys.argv[1])
print()
capture(sys.argv[2])
