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
import resource
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
FRAMES = 250


def children_cpu():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def best_seconds(command, runs):
    """The best wall time and the best processor time of `runs` runs."""
    best_wall = best_cpu = None
    for _ in range(runs):
        cpu = children_cpu()
        start = time.perf_counter()
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wall = time.perf_counter() - start
        cpu = children_cpu() - cpu
        best_wall = wall if best_wall is None else min(best_wall, wall)
        best_cpu = cpu if best_cpu is None else min(best_cpu, cpu)
    return best_wall, best_cpu


def report(name, seconds):
    wall, cpu = seconds
    print(f"{name:28s} {FRAMES / wall:7.1f} frames/s wall ({wall:5.2f} s), "
          f"{FRAMES / cpu:7.1f} frames/s of processor time ({cpu:5.2f} s)")


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
