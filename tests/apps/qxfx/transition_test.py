#!/usr/bin/env python3
"""`qxfx transition` run as a user runs it on clips that ffmpeg makes, and the frei0r
mixer "qxfx-transition" inside MLT's melt and GStreamer giving the very frames
`qxfx transition` gives, and so does the GStreamer element qxtransition, which also takes
a second stream of another size and format that ends early.

usage: transition_test.py QXFX FREI0R_DIR GSTREAMER_DIR WORK_DIR
(the plugin folders "-": no host comparison, as in sanitizer builds, whose instrumented
modules the hosts' plain programs cannot load)

The first clip has 20 frames at 10 frames per second. An overlap of 0.5 s is 5 frames,
at progress 0, 0.25 ... 1; the output has 20 + 20 - 5 = 35 frames.
"""
import os
import shutil
import subprocess
import sys

WIDTH, HEIGHT, FRAMES, RATE = 160, 120, 20, 10
FRAME = WIDTH * HEIGHT * 4
failures = []


def run(command, expect_ok=True, env=None):
    result = subprocess.run(command, capture_output=True, text=True, timeout=300, env=env)
    if expect_ok and result.returncode != 0:
        sys.exit(f"failed ({result.returncode}): {' '.join(command)}\n{result.stderr[-2000:]}")
    return result


def check(name, condition, detail=""):
    if not condition:
        failures.append(f"{name}: {detail}")
    print(("ok   " if condition else "FAIL ") + name + ("" if condition else f" ({detail})"))


def frames_of(source, work, size=(WIDTH, HEIGHT)):
    raw = os.path.join(work, "frames.raw")
    run(["ffmpeg", "-v", "error", "-y", "-i", source, "-s", f"{size[0]}x{size[1]}", "-f", "rawvideo",
         "-pix_fmt", "bgra", raw])
    with open(raw, "rb") as f:
        data = f.read()
    return [data[i:i + FRAME] for i in range(0, len(data), FRAME)]


def difference(a, b):
    """Mean difference of the colour channels of two frames."""
    total = sum(abs(a[i] - b[i]) for i in range(0, len(a)) if i % 4 != 3)
    return total / (len(a) * 3 / 4)


def clip(work, name, source, frames, rate=RATE, size=(WIDTH, HEIGHT)):
    path = os.path.join(work, name)
    run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"{source}=size={size[0]}x{size[1]}:rate={rate}",
         "-frames:v", str(frames), "-c:v", "ffv1", "-pix_fmt", "bgra", path])
    return path


def transition(qxfx, work, first, second, overlap, name, *extra):
    out = os.path.join(work, name)
    run([qxfx, "transition", "-a", first, "-b", second, "--overlap", str(overlap), "--lossless", "-o", out, *extra])
    return frames_of(out, work)


def test_same_size(qxfx, work, first, second):
    a, b = frames_of(first, work), frames_of(second, work)
    out = transition(qxfx, work, first, second, 0.5, "same.mkv")
    in_turn = transition(qxfx, work, first, second, 0.5, "same-in-turn.mkv", "--threads", "1")
    check("the same frames in turn as in a pipeline", in_turn == out)
    check("frame count: both clips less the overlap", len(out) == 35, f"{len(out)} frames")
    check("the first clip plays unchanged before the transition", out[:15] == a[:15])
    check("the second clip plays on unchanged after it", out[20:] == b[5:])
    check("progress 0 shows the first clip's frame", difference(out[15], a[15]) < 10, difference(out[15], a[15]))
    check("progress 1 shows the second clip's frame", difference(out[19], b[4]) < 10, difference(out[19], b[4]))
    middle = out[17]
    check("halfway differs from both clips", difference(middle, a[17]) > 20 and difference(middle, b[2]) > 20,
          f"{difference(middle, a[17])}, {difference(middle, b[2])}")
    # The cube has turned an eighth: the first clip's face goes back on the left, the
    # second's on the right, and black backdrop shows in the corners.
    def half(frame, right):
        rows = [frame[y * WIDTH * 4:(y + 1) * WIDTH * 4] for y in range(HEIGHT)]
        return b"".join(row[WIDTH * 2:] if right else row[:WIDTH * 2] for row in rows)
    for name, right, mine, other in (("left", False, a[17], b[2]), ("right", True, b[2], a[17])):
        near, far = difference(half(middle, right), half(mine, right)), difference(half(middle, right), half(other, right))
        check(f"halfway, the {name} half shows its clip", near < far, f"{near} against {far}")
    corner = middle[8:11]
    check("halfway, the backdrop shows in the corner", max(corner) < 40, list(corner))
    return out


def test_other_size_and_rate(qxfx, work, first):
    # 1.5 s at 20 frames a second, twice the size: 15 frames at the first clip's rate.
    second = clip(work, "big.mkv", "smptebars", 30, rate=20, size=(WIDTH * 2, HEIGHT * 2))
    out = transition(qxfx, work, first, second, 0.5, "mixed.mkv")
    check("another size and rate: frames at the first clip's rate", len(out) == 30, f"{len(out)} frames")
    expected_last = frames_of(second, work)[-1]
    check("another size and rate: the last frame is the second clip's, scaled",
          difference(out[-1], expected_last) < 8, difference(out[-1], expected_last))


def test_short_and_bad_input(qxfx, work, first, second):
    short = clip(work, "short.mkv", "smptebars", 3)
    out = transition(qxfx, work, first, short, 2.0, "short-out.mkv")
    check("an overlap longer than a clip is cut to it", len(out) == 20, f"{len(out)} frames")
    check("a short second clip ends the output", difference(out[-1], frames_of(short, work)[-1]) < 6)

    def fails(name, args, message):
        result = run([qxfx, "transition", *args], expect_ok=False)
        check(name, result.returncode == 1 and message in result.stderr, result.stderr.strip())

    out = os.path.join(work, "never.mkv")
    fails("a missing scene is named", ["-a", first, "-b", second, "--overlap", "1", "--scene", "Nowhere.afx", "-o",
                                       out], "'Nowhere.afx' cannot be loaded")
    fails("a missing clip is named", ["-a", first, "-b", os.path.join(work, "none.mkv"), "--overlap", "1", "-o", out],
          "none.mkv")
    fails("the overlap is required", ["-a", first, "-b", second, "-o", out], "--overlap")
    check("nothing is written on an error", not os.path.exists(out))
    # The output is written as render's is: never over a clip, an existing file only with -y.
    fails("the output may not be a clip", ["-a", first, "-b", second, "--overlap", "0.2", "-o", second], "input")
    existing = os.path.join(work, "same.mkv")
    fails("an existing output needs -y", ["-a", first, "-b", second, "--overlap", "0.2", "-o", existing], "-y")
    replaced = run([qxfx, "transition", "-a", first, "-b", second, "--overlap", "0.5", "-y", "--lossless", "-o",
                    existing], expect_ok=False)
    check("-y replaces it", replaced.returncode == 0 and len(frames_of(existing, work)) == 35, replaced.stderr)
    check("no temporary file is left", not [n for n in os.listdir(work) if ".part" in n], os.listdir(work))
    usage = run([qxfx, "transition", "--help"])
    check("--help explains the options", "--overlap" in usage.stdout and "--scene" in usage.stdout)


def test_hosts(plugin_dir, work, first, second, expected):
    env = dict(os.environ, FREI0R_PATH=plugin_dir, GST_REGISTRY=os.path.join(work, "gst-registry.bin"))
    # melt mixes the last 5 frames of the first clip with the first 5 of the second (on one
    # thread that drops no frame, however slow the scene is on a loaded machine), the
    # progress keyframed from 0 to 1 over them, or following melt's time, which runs from
    # the transition's start: a span of 0.4 s puts progress 1 on the fifth frame.
    for name, setting in (("keyframed progress", "progress=0=0;4=1"), ("progress from time", "duration=0.0004")):
        melt = os.path.join(work, "melt.mkv")
        run(["melt", "-silent", first, second, "-mix", "5", "-mixer", "frei0r.qxfx-transition", setting,
             "-consumer", f"avformat:{melt}", "vcodec=ffv1", "pix_fmt=bgra", "an=1", "real_time=-1"], env=env)
        got = frames_of(melt, work)
        differing = next((i for i, (x, y) in enumerate(zip(got, expected)) if x != y), None)
        check(f"melt, {name}: the frames of qxfx transition", got == expected,
              f"{len(got)} frames, first differing at {differing}")

    # GStreamer's frei0r mixer over the whole clips: a transition of 20 frames.
    whole = frames_of(os.path.join(work, "whole.mkv"), work)
    raws = []
    for index, source in enumerate((first, second)):
        raw = os.path.join(work, f"input{index}.raw")
        run(["ffmpeg", "-v", "error", "-y", "-i", source, "-f", "rawvideo", "-pix_fmt", "bgra", raw])
        raws.append(raw)
    out = os.path.join(work, "gst.raw")
    parse = ["rawvideoparse", f"width={WIDTH}", f"height={HEIGHT}", "format=bgra", f"framerate={RATE}/1"]
    run(["gst-launch-1.0", "-q", "frei0r-mixer-qxfx-transition", "name=mix", "duration=0.0019", "!", "filesink",
         f"location={out}", "filesrc", f"location={raws[0]}", "!", *parse, "!", "mix.sink_0", "filesrc",
         f"location={raws[1]}", "!", *parse, "!", "mix.sink_1"], env=env)
    with open(out, "rb") as f:
        data = f.read()
    got = [data[i:i + FRAME] for i in range(0, len(data), FRAME)]
    check("gstreamer: the frames of qxfx transition over the whole clips", got == whole, f"{len(got)} frames")
    check("gstreamer: explicit progress and a missing scene cut at the middle",
          run_gst_cut(env, raws, parse, work) == [frames_of(second, work)[i] for i in range(FRAMES)])


def test_element(gst_dir, work, first):
    env = dict(os.environ, GST_PLUGIN_PATH_1_0=gst_dir, GST_REGISTRY=os.path.join(work, "gst-element-registry.bin"))
    parse = ["rawvideoparse", f"width={WIDTH}", f"height={HEIGHT}", "format=bgra", f"framerate={RATE}/1"]
    raws = [os.path.join(work, f"input{index}.raw") for index in range(2)]
    out = os.path.join(work, "element.raw")

    def launch(*settings, second):
        run(["gst-launch-1.0", "-q", "qxtransition", "name=mix", *settings, "!", "filesink", f"location={out}",
             "filesrc", f"location={raws[0]}", "!", *parse, "!", "mix.sink_0", *second, "!", "mix.sink_1"], env=env)
        with open(out, "rb") as f:
            data = f.read()
        return [data[i:i + FRAME] for i in range(0, len(data), FRAME)]

    whole = frames_of(os.path.join(work, "whole.mkv"), work)
    got = launch("duration=1900000000", second=["filesrc", f"location={raws[1]}", "!", *parse])
    check("qxtransition: the frames of qxfx transition over the whole clips", got == whole, f"{len(got)} frames")
    # Five frames of I420 at twice the size: stretched to the first stream's size, then
    # the first stream goes on alone.
    got = launch("progress=0.5", second=["videotestsrc", "pattern=smpte", "num-buffers=5", "!",
                                         f"video/x-raw,format=I420,width={WIDTH * 2},height={HEIGHT * 2},"
                                         f"framerate={RATE}/1"])
    a = frames_of(first, work)
    check("qxtransition: as many frames as the first stream", len(got) == FRAMES, f"{len(got)} frames")
    check("qxtransition: the first stream alone once the second ended", got[5:] == a[5:len(got)])
    third = subprocess.run(["gst-launch-1.0", "-q", "qxtransition", "name=mix", "!", "fakesink",
                            *[arg for _ in range(3) for arg in ("videotestsrc", "num-buffers=2", "!", "mix.")]],
                           capture_output=True, text=True, timeout=60, env=env)
    check("qxtransition: a third stream is refused when linking", third.returncode == 1 and "could not link" in third.stderr,
          f"{third.returncode}: {third.stderr[-300:]}")
    halfway = got[0] if got else bytes(FRAME)
    check("qxtransition: a second stream of another size and format is in the scene",
          difference(halfway, a[0]) > 20 and max(halfway[8:11]) < 40, difference(halfway, a[0]))


def run_gst_cut(env, raws, parse, work):
    out = os.path.join(work, "gst-cut.raw")
    run(["gst-launch-1.0", "-q", "frei0r-mixer-qxfx-transition", "name=mix", "progress=0.75", "scene=Nowhere.afx",
         "!", "filesink", f"location={out}", "filesrc", f"location={raws[0]}", "!", *parse, "!", "mix.sink_0",
         "filesrc", f"location={raws[1]}", "!", *parse, "!", "mix.sink_1"], env=env)
    with open(out, "rb") as f:
        data = f.read()
    return [data[i:i + FRAME] for i in range(0, len(data), FRAME)]


def main():
    qxfx, plugin_dir, gst_dir, work = sys.argv[1:5]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    first = clip(work, "first.mkv", "testsrc", FRAMES)
    second = clip(work, "second.mkv", "smptebars", FRAMES)
    expected = test_same_size(qxfx, work, first, second)
    test_other_size_and_rate(qxfx, work, first)
    test_short_and_bad_input(qxfx, work, first, second)
    if plugin_dir != "-":
        transition(qxfx, work, first, second, 2.0, "whole.mkv")
        test_hosts(plugin_dir, work, first, second, expected)
    if gst_dir != "-":
        if plugin_dir == "-":
            transition(qxfx, work, first, second, 2.0, "whole.mkv")
            for index, source in enumerate((first, second)):
                run(["ffmpeg", "-v", "error", "-y", "-i", source, "-f", "rawvideo", "-pix_fmt", "bgra",
                     os.path.join(work, f"input{index}.raw")])
        test_element(gst_dir, work, first)
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
