#!/usr/bin/env python3
"""qxfx render of the zoom effect (id 0, default parameters) over a 1920x1080 clip of
250 frames with the output discarded, against ffmpeg's zoompan doing the same zoom (1.25
to 1 about the middle) on the same clip, both on one core (taskset -c 0, one thread),
decoding included, with zoompan both on the decoded yuv420p frames and on BGRA frames
(the format the effect host works in, as an editor hands it frames). Each is run several times and the best run counts, since the machine
may be shared; the processor time of the run (user and system) is given beside the wall
time, as it is what sharing the machine changes least. A decode-only run of ffmpeg
shows how much of each figure decoding takes.

usage: render_vs_zoompan.py [QXFX] [--runs N]   (QXFX defaults to build/apps/qxfx/qxfx)
"""
import os
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "bench", "common"))
from timing import best_seconds, report as report_rate  # noqa: E402

FRAMES = 250


def report(name, seconds):
    report_rate(name, FRAMES, seconds)


def make_clip(path):
    if not os.path.exists(path):
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=size=1920x1080:rate=25",
                        "-frames:v", str(FRAMES), "-c:v", "libx264", "-preset", "veryfast", "-pix_fmt", "yuv420p",
                        path], check=True)


def main():
    args = sys.argv[1:]
    runs = 3
    if "--runs" in args:
        at = args.index("--runs")
        runs = int(args[at + 1])
        del args[at:at + 2]
    qxfx = args[0] if args else os.path.join(ROOT, "build", "apps", "qxfx", "qxfx")
    clip = os.path.join(ROOT, "build", "bench-1080p-250.mp4")
    make_clip(clip)
    one_core = ["taskset", "-c", "0"]
    ours = best_seconds(one_core + [qxfx, "render", "-i", clip, "-e", "0", "--discard", "--threads", "1"], runs)
    # The zoom of effect 0 with its defaults: the rectangle 100..900 thousandths (a zoom of
    # 1.25) at the first frame, widening to the whole frame at the last.
    zoom = f"1.25-0.25*on/{FRAMES - 1}"
    zoompan = (f"zoompan=z='{zoom}':x='iw/2-iw/zoom/2':y='ih/2-ih/zoom/2':d=1:s=1920x1080:fps=25")
    ffmpeg = one_core + ["ffmpeg", "-v", "error", "-threads", "1", "-filter_threads", "1", "-i", clip]
    theirs = best_seconds(ffmpeg + ["-vf", zoompan, "-f", "null", "-"], runs)
    # The same zoom on the frames an editor hands an effect: 32-bit BGRA, as qxfx works.
    theirsBgra = best_seconds(ffmpeg + ["-vf", "format=bgra," + zoompan, "-f", "null", "-"], runs)
    decode = best_seconds(ffmpeg + ["-f", "null", "-"], runs)
    report("qxfx render, zoom (id 0)", ours)
    report("ffmpeg zoompan (yuv420p)", theirs)
    report("ffmpeg zoompan (bgra)", theirsBgra)
    report("ffmpeg decoding alone", decode)
    for name, other in (("zoompan (yuv420p)", theirs), ("zoompan (bgra)", theirsBgra)):
        print(f"qxfx / {name} rate: {other[0] / ours[0]:.2f} (wall), {other[1] / ours[1]:.2f} (processor time)")


if __name__ == "__main__":
    main()
