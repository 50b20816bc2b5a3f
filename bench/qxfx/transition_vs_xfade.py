#!/usr/bin/env python3
"""qxfx transition (the pack's cube) between two 1920x1080 clips of 50 frames at 25 a
second with an overlap of 1 s, output discarded, against ffmpeg's xfade doing a 2D
transition (a fade, and a wipe) over the same overlap of the same clips, both on one core
(taskset -c 0, one thread), decoding included, xfade both on yuv420p and on BGRA frames
(the format the transform works in). Each is run several times and the best run counts;
processor time is given beside wall time. A decode-only run shows what decoding takes.

usage: transition_vs_xfade.py [QXFX] [--runs N]   (QXFX defaults to build/apps/qxfx/qxfx)
"""
import os
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "bench", "common"))
from timing import best_seconds, report as report_rate  # noqa: E402

CLIP_FRAMES, OVERLAP_FRAMES, RATE = 50, 25, 25
FRAMES = 2 * CLIP_FRAMES - OVERLAP_FRAMES


def make_clip(path, source):
    if not os.path.exists(path):
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"{source}=size=1920x1080:rate={RATE}",
                        "-frames:v", str(CLIP_FRAMES), "-c:v", "libx264", "-preset", "veryfast", "-pix_fmt",
                        "yuv420p", path], check=True)


def main():
    args = sys.argv[1:]
    runs = 3
    if "--runs" in args:
        at = args.index("--runs")
        runs = int(args[at + 1])
        del args[at:at + 2]
    qxfx = args[0] if args else os.path.join(ROOT, "build", "apps", "qxfx", "qxfx")
    first = os.path.join(ROOT, "build", "bench-1080p-first.mp4")
    second = os.path.join(ROOT, "build", "bench-1080p-second.mp4")
    make_clip(first, "testsrc2")
    make_clip(second, "smptehdbars")
    one_core = ["taskset", "-c", "0"]
    overlap = OVERLAP_FRAMES / RATE
    ours = best_seconds(one_core + [qxfx, "transition", "-a", first, "-b", second, "--overlap", str(overlap),
                                    "--discard", "--threads", "1"], runs)
    ffmpeg = one_core + ["ffmpeg", "-v", "error", "-threads", "1", "-filter_threads", "1",
                         "-filter_complex_threads", "1", "-i", first, "-i", second]
    offset = (CLIP_FRAMES - OVERLAP_FRAMES) / RATE
    results = {}
    for name, chain in (("fade, yuv420p", ""), ("fade, bgra", "format=bgra,"), ("wipeleft, bgra", "format=bgra,")):
        kind = name.split(",")[0]
        graph = (f"[0]{chain}settb=AVTB[a];[1]{chain}settb=AVTB[b];"
                 f"[a][b]xfade=transition={kind}:duration={overlap}:offset={offset}")
        results[name] = best_seconds(ffmpeg + ["-filter_complex", graph, "-f", "null", "-"], runs)
    decode = best_seconds(one_core + ["ffmpeg", "-v", "error", "-threads", "1", "-i", first, "-i", second,
                                      "-map", "0", "-map", "1", "-f", "null", "-"], runs)
    report_rate("qxfx transition, cube", FRAMES, ours)
    for name, seconds in results.items():
        report_rate(f"ffmpeg xfade {name}", FRAMES, seconds)
    report_rate("ffmpeg decoding both clips alone", FRAMES, decode)
    for name, other in results.items():
        print(f"qxfx / xfade {name} rate: {other[0] / ours[0]:.2f} (wall), {other[1] / ours[1]:.2f} (processor time)")


if __name__ == "__main__":
    main()
