#!/usr/bin/env python3
"""qxfx scenes over a 1920x1080 clip of 250 frames (ten patterns of 25 frames joined end
to end), against ffmpeg's scdet filter on the same clip, both on one core (taskset -c 0,
one thread). The clip is taken twice: in H.264, decoding included, and as raw YUV 4:2:0
(y4m, 780 MB, read from the page cache), where reading costs little and the detectors'
own work shows. A run of ffmpeg that only reads or decodes shows how much of each figure
that takes, and the rates of the detection alone follow from the differences. The cuts
each finds are printed too.

usage: scenes_vs_scdet.py [QXFX] [--runs N]   (QXFX defaults to build/apps/qxfx/qxfx)
"""
import json
import os
import re
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "bench", "common"))
from timing import best_seconds, report  # noqa: E402

FRAMES = 250
PATTERNS = ["smptebars=", "testsrc2=", "color=c=white:", "color=c=navy:", "rgbtestsrc=", "color=c=0x303030:",
            "testsrc=", "pal75bars=", "yuvtestsrc=", "smptehdbars="]


def make_clip(path):
    if os.path.exists(path):
        return
    inputs = []
    for pattern in PATTERNS:
        inputs += ["-f", "lavfi", "-i", f"{pattern}size=1920x1080:rate=25:duration=1"]
    joined = "".join(f"[{i}:v]" for i in range(len(PATTERNS)))
    subprocess.run(["ffmpeg", "-v", "error", "-y", *inputs, "-filter_complex",
                    f"{joined}concat=n={len(PATTERNS)}:v=1:a=0,format=yuv420p", "-c:v", "libx264", "-preset",
                    "veryfast", path], check=True)


def rate_of_difference(total, decode):
    """Frames per second of processor time of what `total` does beyond decoding."""
    extra = total[1] - decode[1]
    return FRAMES / extra if extra > 0 else float("inf")


def compare(qxfx, clip, runs, label):
    one_core = ["taskset", "-c", "0"]
    ours = best_seconds(one_core + [qxfx, "scenes", "-i", clip, "--threads", "1"], runs)
    ffmpeg = one_core + ["ffmpeg", "-v", "error", "-threads", "1", "-filter_threads", "1", "-i", clip]
    theirs = best_seconds(ffmpeg + ["-vf", "scdet", "-f", "null", "-"], runs)
    decode = best_seconds(ffmpeg + ["-f", "null", "-"], runs)
    print(f"{label}:")
    report("  qxfx scenes", FRAMES, ours)
    report("  ffmpeg scdet", FRAMES, theirs)
    report("  ffmpeg reading alone", FRAMES, decode)
    print(f"  beyond reading, per second of processor time: qxfx scenes {rate_of_difference(ours, decode):.0f} "
          f"frames, scdet {rate_of_difference(theirs, decode):.0f} frames")


def main():
    args = sys.argv[1:]
    runs = 3
    if "--runs" in args:
        at = args.index("--runs")
        runs = int(args[at + 1])
        del args[at:at + 2]
    qxfx = args[0] if args else os.path.join(ROOT, "build", "apps", "qxfx", "qxfx")
    clip = os.path.join(ROOT, "build", "bench-1080p-cuts.mp4")
    make_clip(clip)
    raw = os.path.join(ROOT, "build", "bench-1080p-cuts.y4m")
    if not os.path.exists(raw):
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-i", clip, raw], check=True)
    compare(qxfx, clip, runs, "H.264")
    compare(qxfx, raw, runs, "raw YUV 4:2:0")

    cuts = json.loads(subprocess.run([qxfx, "scenes", "-i", clip, "--json"], capture_output=True, text=True,
                                     check=True).stdout)["cuts"]
    log = subprocess.run(["ffmpeg", "-hide_banner", "-i", clip, "-vf", "scdet,metadata=mode=print", "-f", "null", "-"],
                         capture_output=True, text=True).stderr
    scdet = [round(float(t) * 25) for t in re.findall(r"lavfi\.scd\.time=([0-9.]+)", log)]
    print(f"cut frames, qxfx scenes: {[c['frame'] for c in cuts]}")
    print(f"cut frames, ffmpeg scdet: {scdet}")


if __name__ == "__main__":
    main()
