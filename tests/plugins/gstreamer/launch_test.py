#!/usr/bin/env python3
"""The qxfx GStreamer plugin in real gst-launch-1.0 pipelines, on clips that ffmpeg
makes, against qxfx on the same clips; and gst-inspect-1.0 on the plugin.

usage: launch_test.py QXFX PLUGIN_DIR WORK_DIR

- qxscenecut finds the cuts qxfx scenes finds, at the same frames and times;
- qxcrop writes the same bytes as qxfx crop, anti-flicker included;
- qxanimsrc plays the pack's slideshow with three pictures as qxfx anim does, and ends;
- gst-inspect-1.0 describes the plugin and its elements without a warning;
- a format the elements do not take is refused when the pipeline links.
"""
import json
import os
import re
import shutil
import subprocess
import sys

failures = []


def check(name, condition, detail=""):
    if not condition:
        failures.append(f"{name}: {detail}")
    print(("ok   " if condition else "FAIL ") + name)


def run(command, env=None):
    return subprocess.run(command, capture_output=True, text=True, timeout=300, env=env)


def ffmpeg(*args):
    result = run(["ffmpeg", "-v", "error", "-y", *args])
    if result.returncode != 0:
        sys.exit(f"ffmpeg failed: {' '.join(args)}\n{result.stderr[-2000:]}")


def gst_env(plugin_dir, work):
    env = dict(os.environ)
    env["GST_PLUGIN_PATH_1_0"] = plugin_dir
    env["GST_REGISTRY_1_0"] = os.path.join(work, "registry.bin")
    return env


def make_cut_clip(path):
    """Patterns of 25 frames joined end to end, raw video in Matroska, which GStreamer's
    own demuxer reads: cuts at 25, 50, 75 and 100 (the last segment mirrors the bars
    before it, which the histograms cannot tell apart)."""
    sources = ["smptebars=", "color=c=white:", "testsrc=", "color=c=0x202020:", "smptebars=", "smptebars="]
    inputs = []
    for source in sources:
        inputs += ["-f", "lavfi", "-i", f"{source}size=160x120:rate=25:duration=1"]
    graph = "[5:v]hflip[mirror];[0:v][1:v][2:v][3:v][4:v][mirror]concat=n=6:v=1:a=0,format=yuv420p"
    ffmpeg(*inputs, "-filter_complex", graph, "-c:v", "rawvideo", path)


def gst_cuts(output):
    """The frames and times of the end-of-stream message of qxscenecut, from gst-launch -m."""
    match = re.search(r"qx-scene-cuts, count=\(uint\)(\d+), times=\(\w+\)<([^>]*)>, frames=\(\w+\)<([^>]*)>", output)
    if not match:
        return None, None
    values = lambda text: [int(v) for v in re.findall(r"\d+", text)]
    return values(match.group(3)), values(match.group(2))


def test_scene_cuts(qxfx, env, work):
    clip = os.path.join(work, "cuts.mkv")
    make_cut_clip(clip)
    ours = json.loads(run([qxfx, "scenes", "-i", clip, "--json"]).stdout)
    result = run(["gst-launch-1.0", "-m", "filesrc", f"location={clip}", "!", "decodebin", "!", "videoconvert", "!",
                  "video/x-raw,format=YV12", "!", "qxscenecut", "!", "fakesink"], env)
    check("qxscenecut runs in gst-launch-1.0", result.returncode == 0, result.stderr[-2000:])
    frames, times = gst_cuts(result.stdout)
    check("qxscenecut finds the cuts qxfx scenes finds", frames == [c["frame"] for c in ours["cuts"]] == [25, 50, 75, 100],
          f"gst {frames}, qxfx {ours['cuts']}")
    check("at the same times", times == [round(c["seconds"] * 1e9) for c in ours["cuts"]], str(times))
    per_cut = re.findall(r"qx-scene-cut, time=\(guint64\)(\d+)", result.stdout)
    check("a message for each cut as it is found", [int(t) for t in per_cut] == times, str(per_cut))


def test_crop(qxfx, env, work):
    clip = os.path.join(work, "bgra.avi")
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=160x120:rate=25", "-frames:v", "5", "-c:v", "rawvideo", "-pix_fmt",
           "bgra", clip)
    gst_raw = os.path.join(work, "gst.raw")
    result = run(["gst-launch-1.0", "filesrc", f"location={clip}", "!", "decodebin", "!", "videoconvert", "!",
                  "video/x-raw,format=BGRA", "!", "qxcrop", "width=201", "height=150", "anti-flicker=25", "!",
                  "filesink", f"location={gst_raw}"], env)
    check("qxcrop runs in gst-launch-1.0", result.returncode == 0, result.stderr[-2000:])
    frames = os.path.join(work, "qxfx-%02d.png")
    result = run([qxfx, "crop", "-i", clip, "--size", "201x150", "--anti-flicker", "25", "-o", frames])
    check("qxfx crop runs", result.returncode == 0, result.stderr)
    ours = subprocess.run(["ffmpeg", "-v", "error", "-i", frames, "-f", "rawvideo", "-pix_fmt", "bgra", "-"],
                          capture_output=True, timeout=120).stdout
    with open(gst_raw, "rb") as f:
        theirs = f.read()
    check("qxcrop and qxfx crop write the same frames", len(ours) == 5 * 201 * 150 * 4 and ours == theirs,
          f"{len(theirs)} bytes from GStreamer, {len(ours)} from qxfx")


def colour_bytes(raw):
    """The blue, green and red bytes of BGRx samples, the fourth left out."""
    return bytes(b for i, b in enumerate(raw) if i % 4 != 3)


def test_anim(qxfx, env, work):
    pictures = []
    for i, source in enumerate(["testsrc2=size=400x300", "mandelbrot=size=320x240", "smptebars=size=400x300"]):
        path = os.path.join(work, f"picture{i}.png")
        ffmpeg("-f", "lavfi", "-i", source, "-frames:v", "1", "-update", "1", path)
        pictures.append(path)
    gst_raw = os.path.join(work, "anim.raw")
    images = [f"image{i + 1}={p}" for i, p in enumerate(pictures)]
    result = run(["gst-launch-1.0", "qxanimsrc", "composition=Compositions/Slideshow.cpo", *images, "duration=2",
                  "!", "video/x-raw,width=320,height=180,framerate=5/1", "!", "filesink", f"location={gst_raw}"], env)
    check("qxanimsrc runs in gst-launch-1.0 and ends", result.returncode == 0, result.stderr[-2000:])
    frames = os.path.join(work, "anim-%02d.png")
    command = [qxfx, "anim", "Compositions/Slideshow.cpo", "--duration", "2", "--size", "320x180", "--fps", "5",
               "-o", frames]
    for p in pictures:
        command += ["--image", p]
    result = run(command)
    check("qxfx anim runs", result.returncode == 0, result.stderr)
    ours = subprocess.run(["ffmpeg", "-v", "error", "-i", frames, "-f", "rawvideo", "-pix_fmt", "bgra", "-"],
                          capture_output=True, timeout=120).stdout
    with open(gst_raw, "rb") as f:
        theirs = f.read()
    check("qxanimsrc and qxfx anim make the same ten frames",
          len(theirs) == 10 * 320 * 180 * 4 and colour_bytes(ours) == colour_bytes(theirs),
          f"{len(theirs)} bytes from GStreamer, {len(ours)} from qxfx")
    check("the frames are not black", max(theirs) > 200)


def test_inspect(env):
    for name in ("qxfx", "qxcrop", "qxscenecut", "qxanimsrc"):
        result = run(["gst-inspect-1.0", name], env)
        check(f"gst-inspect-1.0 {name} is clean", result.returncode == 0 and result.stderr == "", result.stderr)
    listing = run(["gst-inspect-1.0", "qxfx"], env).stdout
    check("the plugin's name is its file's", "libgstqxfx.so" in listing, listing)


def test_refusal(env):
    result = run(["gst-launch-1.0", "videotestsrc", "num-buffers=1", "!", "video/x-raw,format=I420", "!", "qxcrop",
                  "!", "fakesink"], env)
    check("qxcrop refuses I420 when linking", result.returncode != 0 and "qxcrop" in result.stderr, result.stderr)
    result = run(["gst-launch-1.0", "videotestsrc", "num-buffers=1", "!", "video/x-raw,format=BGRx", "!", "qxscenecut",
                  "!", "fakesink"], env)
    check("qxscenecut refuses BGRx when linking", result.returncode != 0 and "qxscenecut" in result.stderr,
          result.stderr)


def main():
    qxfx, plugin_dir, work = sys.argv[1:4]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    env = gst_env(plugin_dir, work)
    test_inspect(env)
    test_refusal(env)
    test_scene_cuts(qxfx, env, work)
    test_crop(qxfx, env, work)
    test_anim(qxfx, env, work)
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
