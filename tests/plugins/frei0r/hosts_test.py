#!/usr/bin/env python3
"""The frei0r filter "qxfx" run by real hosts (ffmpeg, GStreamer, MLT's melt), each
compared sample for sample with `qxfx render` on the same lossless clip.

usage: hosts_test.py HOST QXFX PLUGIN_DIR WORK_DIR   (HOST: ffmpeg, gstreamer or melt)

The clip has 5 frames at 10 frames per second, so its times (0, 0.1 ... 0.4 s) are whole
milliseconds in every container, and a span of 0.4 s puts the frames at progress 0, 0.25,
0.5, 0.75 and 1, as `qxfx render` does over 5 frames. The duration parameter counts
thousands of seconds: 0.4 s is 0.0004.
"""
import os
import shutil
import subprocess
import sys

WIDTH, HEIGHT, FRAMES, RATE = 320, 240, 5, 10
ZOOM_PARAMS = "100;100;900;900;"
SPAN = "0.0004"


def run(command, **kwargs):
    result = subprocess.run(command, capture_output=True, text=True, timeout=120, **kwargs)
    if result.returncode != 0:
        sys.exit(f"failed ({result.returncode}): {' '.join(command)}\n{result.stderr[-2000:]}")
    return result


def to_raw(source, raw):
    run(["ffmpeg", "-v", "error", "-y", "-i", source, "-f", "rawvideo", "-pix_fmt", "bgra", raw])
    with open(raw, "rb") as f:
        return f.read()


def compare(name, got, expected):
    frame = WIDTH * HEIGHT * 4
    if len(got) != len(expected):
        sys.exit(f"{name}: {len(got) // frame} frames, expected {len(expected) // frame}")
    for index in range(len(expected) // frame):
        a = got[index * frame:(index + 1) * frame]
        b = expected[index * frame:(index + 1) * frame]
        if a != b:
            differing = sum(1 for x, y in zip(a, b) if x != y)
            sys.exit(f"{name}: frame {index} differs from qxfx render in {differing} bytes")
    print(f"{name}: {len(expected) // frame} frames equal")


def prepare(qxfx, work):
    clip = os.path.join(work, "clip.mkv")
    run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"testsrc=size={WIDTH}x{HEIGHT}:rate={RATE}",
         "-frames:v", str(FRAMES), "-c:v", "ffv1", "-pix_fmt", "bgra", clip])
    frames = os.path.join(work, "qxfx-%02d.png")
    run([qxfx, "render", "-i", clip, "-e", "0", "-p", ZOOM_PARAMS, "-o", frames])
    expected = to_raw(frames, os.path.join(work, "qxfx.raw"))
    source = to_raw(clip, os.path.join(work, "clip.raw"))
    if expected == source:
        sys.exit("qxfx render left the clip unchanged: the comparison would prove nothing")
    return clip, expected, source


def test_ffmpeg(qxfx, work, clip, expected, source):
    out = os.path.join(work, "ffmpeg.raw")
    # ffmpeg splits filter chains at ';': the parameter text needs its semicolons escaped.
    escaped = ZOOM_PARAMS.replace(";", "\\;")
    run(["ffmpeg", "-v", "error", "-y", "-i", clip, "-vf", f"frei0r=qxfx:0|{escaped}|0|{SPAN}|y",
         "-f", "rawvideo", "-pix_fmt", "bgra", out])
    compare("ffmpeg, progress from time in ms", open(out, "rb").read(), expected)

    # The span as seconds of text, without the milliseconds flag: the plugin tells the unit
    # from the frame step.
    run(["ffmpeg", "-v", "error", "-y", "-i", clip, "-vf", f"frei0r=qxfx:0|{escaped}|0|0|n|||0.4",
         "-f", "rawvideo", "-pix_fmt", "bgra", out])
    compare("ffmpeg, span in seconds, unit found", open(out, "rb").read(), expected)

    # Explicit progress 1 with the defaults of effect 2 against the last of two frames of
    # a still image in qxfx render.
    still = os.path.join(work, "still.png")
    run(["ffmpeg", "-v", "error", "-y", "-i", clip, "-frames:v", "1", still])
    run([qxfx, "render", "-i", still, "-e", "2", "--frames", "2", "-o", os.path.join(work, "still-%02d.png")])
    last = to_raw(os.path.join(work, "still-02.png"), os.path.join(work, "still-last.raw"))
    run(["ffmpeg", "-v", "error", "-y", "-i", still, "-vf", "frei0r=qxfx:2||1",
         "-f", "rawvideo", "-pix_fmt", "bgra", out])
    compare("ffmpeg, explicit progress", open(out, "rb").read(), last)

    # The rectangle filter with the sides of the zoom's defaults as doubles.
    run(["ffmpeg", "-v", "error", "-y", "-i", clip, "-vf", f"frei0r=qxfx-rect:0|0.1|0.1|0.9|0.9|0.5|0.5|1|1|0|{SPAN}|y",
         "-f", "rawvideo", "-pix_fmt", "bgra", out])
    compare("ffmpeg, rectangle filter", open(out, "rb").read(), expected)

    # An id outside the catalogue cannot be set up: frames pass through unchanged.
    run(["ffmpeg", "-v", "error", "-y", "-i", clip, "-vf", "frei0r=qxfx:16", "-f", "rawvideo", "-pix_fmt", "bgra",
         out])
    compare("ffmpeg, unknown effect passes through", open(out, "rb").read(), source)


def test_ffmpeg_cube(qxfx, work, clip):
    """The cube (5000) from the pack the plugin finds by itself, as qxfx render plays it."""
    frames = os.path.join(work, "cube-%02d.png")
    run([qxfx, "render", "-i", clip, "-e", "5000", "-o", frames])
    expected = to_raw(frames, os.path.join(work, "cube.raw"))
    out = os.path.join(work, "ffmpeg-cube.raw")
    run(["ffmpeg", "-v", "error", "-y", "-i", clip, "-vf", f"frei0r=qxfx:5000||0|{SPAN}|y",
         "-f", "rawvideo", "-pix_fmt", "bgra", out])
    if expected == to_raw(clip, os.path.join(work, "clip-again.raw")):
        sys.exit("qxfx render left the clip unchanged under the cube: the scene context did not start")
    compare("ffmpeg, the cube", open(out, "rb").read(), expected)


def test_gstreamer(work, clip_raw, expected):
    out = os.path.join(work, "gst.raw")
    run(["gst-launch-1.0", "-q", "filesrc", f"location={clip_raw}", "!", "rawvideoparse", f"width={WIDTH}",
         f"height={HEIGHT}", "format=bgra", f"framerate={RATE}/1", "!", "frei0r-filter-qxfx", "effect=0",
         f"params={ZOOM_PARAMS}", f"duration={SPAN}", "!", "filesink", f"location={out}"])
    compare("gstreamer, progress from time in s", open(out, "rb").read(), expected)
    # The rectangle filter's defaults are the zoom's rectangle.
    run(["gst-launch-1.0", "-q", "filesrc", f"location={clip_raw}", "!", "rawvideoparse", f"width={WIDTH}",
         f"height={HEIGHT}", "format=bgra", f"framerate={RATE}/1", "!", "frei0r-filter-qxfx-rect", "effect=0",
         f"duration={SPAN}", "!", "filesink", f"location={out}"])
    compare("gstreamer, rectangle filter", open(out, "rb").read(), expected)


def test_melt(work, clip, expected):
    out = os.path.join(work, "melt.mkv")
    run(["melt", "-silent", clip, "-filter", "frei0r.qxfx", "effect=0", f"params={ZOOM_PARAMS}",
         f"duration={SPAN}", "-consumer", f"avformat:{out}", "vcodec=ffv1", "pix_fmt=bgra", "an=1"])
    compare("melt, progress from time in s", to_raw(out, os.path.join(work, "melt.raw")), expected)


def main():
    host, qxfx, plugin_dir, work = sys.argv[1:5]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    os.environ["FREI0R_PATH"] = plugin_dir
    # A registry of our own, so that GStreamer scans the plugin of this build.
    os.environ["GST_REGISTRY"] = os.path.join(work, "gst-registry.bin")
    clip, expected, source = prepare(qxfx, work)
    if host == "ffmpeg":
        test_ffmpeg(qxfx, work, clip, expected, source)
        test_ffmpeg_cube(qxfx, work, clip)
    elif host == "gstreamer":
        test_gstreamer(work, os.path.join(work, "clip.raw"), expected)
    elif host == "melt":
        test_melt(work, clip, expected)
    else:
        sys.exit(f"unknown host {host}")


if __name__ == "__main__":
    main()
