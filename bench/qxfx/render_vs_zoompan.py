#!/usr/bin/env python3
"""qxfx render of the zoom effect (id 0, default parameters) over a 1920x1080 clip of
250 frames with the output discarded, against ffmpeg's zoompan doing the same zoom (1.25
to 1 about the middle) on the same clip with its default threading, in the same run, on
one core (taskset -c 0) and on two (taskset -c 0,1). Both decide their threads from the
cores they may run on: qxfx's decoder and its effect rows, ffmpeg's decoder and filters.

Per stage, on each core count: ffmpeg decoding alone, and decoding with the conversion
to 32-bit BGRA (what qxfx's reader does before the effect host sees a frame); what is
left of qxfx's time is the effect host (unpack, the zoom's clone and resampling, pack).
zoompan on BGRA frames is given too, as it then carries the bytes qxfx carries.

Each is run several times and the best run counts, since the machine may be shared; the
processor time of the run (user and system) is given beside the wall time, as it is what
sharing the machine changes least. The rate figures (frames a second) and the ratio of
qxfx to zoompan are of the wall time; the scaling factor is the rate on two cores over
the rate on one.

usage: render_vs_zoompan.py [QXFX] [--runs N]   (QXFX defaults to build/apps/qxfx/qxfx)
"""
import os
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "bench", "common"))
from timing import best_seconds, report as report_rate  # noqa: E402

FRAMES = 250
CORE_SETS = (("one core", "0"), ("two cores", "0,1"))


def report(name, seconds):
    report_rate(name, FRAMES, seconds)


def make_clip(path):
    if not os.path.exists(path):
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=size=1920x1080:rate=25",
                        "-frames:v", str(FRAMES), "-c:v", "libx264", "-preset", "veryfast", "-pix_fmt", "yuv420p",
                        path], check=True)


def measure(qxfx, clip, cores, runs):
    pinned = ["taskset", "-c", cores]
    # The zoom of effect 0 with its defaults: the rectangle 100..900 thousandths (a zoom of
    # 1.25) at the first frame, widening to the whole frame at the last.
    zoom = f"1.25-0.25*on/{FRAMES - 1}"
    zoompan = f"zoompan=z='{zoom}':x='iw/2-iw/zoom/2':y='ih/2-ih/zoom/2':d=1:s=1920x1080:fps=25"
    ffmpeg = pinned + ["ffmpeg", "-v", "error", "-i", clip]
    figures = {
        "qxfx render, zoom (id 0)": best_seconds(pinned + [qxfx, "render", "-i", clip, "-e", "0", "--discard"], runs),
        "ffmpeg zoompan (yuv420p)": best_seconds(ffmpeg + ["-vf", zoompan, "-f", "null", "-"], runs),
        "ffmpeg zoompan (bgra)": best_seconds(ffmpeg + ["-vf", "format=bgra," + zoompan, "-f", "null", "-"], runs),
        "decoding alone": best_seconds(ffmpeg + ["-f", "null", "-"], runs),
        "decoding to bgra": best_seconds(ffmpeg + ["-vf", "format=bgra", "-f", "null", "-"], runs),
    }
    return figures


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
    results = {}
    for name, cores in CORE_SETS:
        print(f"-- {name} (taskset -c {cores})")
        figures = measure(qxfx, clip, cores, runs)
        for label, seconds in figures.items():
            report(label, seconds)
        ours = figures["qxfx render, zoom (id 0)"]
        theirs = figures["ffmpeg zoompan (yuv420p)"]
        reader = figures["decoding to bgra"]
        print(f"qxfx / zoompan (yuv420p) rate: {theirs[0] / ours[0]:.2f} (wall), "
              f"{theirs[1] / ours[1]:.2f} (processor time)")
        for kind, at in (("wall", 0), ("processor time", 1)):
            print(f"qxfx per frame ({kind}): {ours[at] / FRAMES * 1000:.1f} ms, of which reading (decoding to "
                  f"bgra) {reader[at] / FRAMES * 1000:.1f} ms and the effect host the other "
                  f"{(ours[at] - reader[at]) / FRAMES * 1000:.1f} ms")
        results[name] = figures
    one, two = results["one core"], results["two cores"]
    for label in ("qxfx render, zoom (id 0)", "ffmpeg zoompan (yuv420p)"):
        print(f"scaling from one core to two, {label}: {one[label][0] / two[label][0]:.2f}x")


if __name__ == "__main__":
    main()
