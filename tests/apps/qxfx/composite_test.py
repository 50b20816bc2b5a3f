#!/usr/bin/env python3
"""`qxfx composite` and `qxfx swf` run as a user runs them, and the frei0r filter
"qxfx-composite" inside ffmpeg giving the very frames `qxfx composite` gives, for a
picture, an SWF animation and a movie over a lossless clip.

usage: composite_test.py QXFX SWF_SAMPLE PLUGIN_DIR WORK_DIR
(PLUGIN_DIR "-": no frei0r comparison, as in sanitizer builds, whose instrumented
module the plain ffmpeg cannot load)

The clip has 5 frames at 10 frames per second: ffmpeg hands the filter times 0 to 400
ms, and a span of 0.4 s puts the frames at progress 0, 0.25 ... 1, as `qxfx composite`
does over 5 frames with --duration 0.4. The span is given both ways a user may give it:
as the `span` text in seconds with the unit of the host's time left for the filter to
find, and as the older duration in thousands of seconds (0.0004) with the milliseconds
flag.
"""
import os
import shutil
import subprocess
import sys

WIDTH, HEIGHT, FRAMES, RATE = 160, 120, 5, 10
failures = []


def run(command, expect_ok=True):
    result = subprocess.run(command, capture_output=True, text=True, timeout=300)
    if expect_ok and result.returncode != 0:
        sys.exit(f"failed ({result.returncode}): {' '.join(command)}\n{result.stderr[-2000:]}")
    return result


def check(name, condition, detail=""):
    if not condition:
        failures.append(f"{name}: {detail}")
    print(("ok   " if condition else "FAIL ") + name)


def to_raw(source, raw):
    run(["ffmpeg", "-v", "error", "-y", "-i", source, "-f", "rawvideo", "-pix_fmt", "bgra", raw])
    with open(raw, "rb") as f:
        return f.read()


def frames_of(raw):
    size = WIDTH * HEIGHT * 4
    return [raw[i:i + size] for i in range(0, len(raw), size)]


def prepare(work, swf_sample):
    clip = os.path.join(work, "clip.mkv")
    run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"testsrc=size={WIDTH}x{HEIGHT}:rate={RATE}",
         "-frames:v", str(FRAMES), "-c:v", "ffv1", "-pix_fmt", "bgra", clip])
    picture = os.path.join(work, "logo.png")
    run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "color=c=0x20C040:s=40x30,format=rgb24",
         "-vf", "drawbox=x=10:y=10:w=20:h=10:color=0xFF00FF:t=fill", "-frames:v", "1", picture])
    animation = os.path.join(work, "anim.swf")
    run([swf_sample, animation, "8"])
    movie = os.path.join(work, "movie.mkv")
    run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=size=80x60:rate=10", "-frames:v", "20",
         "-c:v", "ffv1", movie])
    return clip, picture, animation, movie


def composite_equal_to_frei0r(qxfx, work, clip, name, overlay, geometry, span_text=True):
    """geometry: (x, y, width, height, angle in degrees, opacity, key RRGGBB or '', similarity 0..255);
    span_text: the span as seconds in the `span` text, else as the duration with the milliseconds flag"""
    x, y, w, h, angle, opacity, key, similarity = geometry
    out = os.path.join(work, f"{name}-%02d.png")
    command = [qxfx, "composite", "-i", clip, "--overlay", overlay, "--x", str(x), "--y", str(y), "--width", str(w),
               "--height", str(h), "--angle", str(angle), "--opacity", str(opacity), "--duration", "0.4",
               "-o", out]
    if key:
        command += ["--key", key, "--similarity", str(similarity)]
    run(command)
    ours = to_raw(out, os.path.join(work, f"{name}-qxfx.raw"))
    source = to_raw(clip, os.path.join(work, "clip.raw"))
    check(f"{name}: qxfx composite changes the clip", ours != source and len(ours) == len(source))
    if "FREI0R_PATH" not in os.environ:
        return
    params = "|".join([overlay, str(x), str(y), str(w), str(h), "0", "0", "1", "1", repr(angle / 360.0),
                       str(opacity), key, repr(similarity / 255.0), "0"]
                      + (["0", "n", "0", "0.4"] if span_text else ["0.0004", "y", "0"]))
    theirs = os.path.join(work, f"{name}-ffmpeg.raw")
    run(["ffmpeg", "-v", "error", "-y", "-i", clip, "-vf", f"frei0r=qxfx-composite:{params}", "-f", "rawvideo",
         "-pix_fmt", "bgra", theirs])
    with open(theirs, "rb") as f:
        got = f.read()
    differing = [i for i, (a, b) in enumerate(zip(frames_of(got), frames_of(ours))) if a != b]
    check(f"{name}: frei0r in ffmpeg gives qxfx composite's frames", len(got) == len(ours) and not differing,
          f"{len(got)} bytes against {len(ours)}, frames differing: {differing}")


def test_swf(qxfx, work, animation):
    out = os.path.join(work, "anim.mkv")
    run([qxfx, "swf", animation, "--lossless", "-o", out])
    probe = run(["ffprobe", "-v", "error", "-count_frames", "-select_streams", "v:0", "-show_entries",
                 "stream=nb_read_frames,width,height,r_frame_rate", "-of", "csv=p=0", out]).stdout.strip()
    check("swf: stage size, frame count and rate of the animation", probe == "640,360,25/1,8", probe)
    longer = os.path.join(work, "longer-%03d.png")
    run([qxfx, "swf", animation, "--frames", "12", "--size", "320x180", "--low-quality", "-o", longer])
    check("swf: more frames than the animation has", os.path.exists(os.path.join(work, "longer-012.png")))


def test_errors(qxfx, work, clip, picture):
    notes = os.path.join(work, "notes.swf")
    with open(notes, "w") as f:
        f.write("not an animation\n")
    cases = [
        ("composite without overlay", ["composite", "-i", clip, "--discard"], "--overlay"),
        ("composite missing overlay", ["composite", "-i", clip, "--overlay", os.path.join(work, "absent.png"),
                                       "--discard"], "no such file"),
        ("composite text as animation", ["composite", "-i", clip, "--overlay", notes, "--discard"],
         "not an SWF animation"),
        ("composite bad key", ["composite", "-i", clip, "--overlay", picture, "--key", "12345", "--discard"],
         "--key"),
        ("composite opacity out of range", ["composite", "--overlay", picture, "--opacity", "2", "--discard"],
         "--opacity"),
        ("swf missing file", ["swf", os.path.join(work, "absent.swf"), "--discard"], "not a readable SWF"),
        ("swf text file", ["swf", notes, "--discard"], "not a readable SWF"),
        ("swf without output", ["swf", notes], "-o OUTPUT"),
    ]
    for name, args, needle in cases:
        result = run([qxfx, *args], expect_ok=False)
        lines = result.stderr.strip().splitlines()
        check(name, result.returncode == 1 and len(lines) == 1 and needle in lines[0],
              f"rc {result.returncode}, stderr {result.stderr!r}")


def main():
    qxfx, swf_sample, plugin_dir, work = sys.argv[1:5]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    if plugin_dir != "-":
        os.environ["FREI0R_PATH"] = plugin_dir
    clip, picture, animation, movie = prepare(work, swf_sample)
    composite_equal_to_frei0r(qxfx, work, clip, "picture", picture, (0.5, 0.25, 0.4, 0.5, 30.0, 0.5, "FF00FF", 16))
    composite_equal_to_frei0r(qxfx, work, clip, "animation", animation, (0.25, 0.25, 0.5, 0.5, 0.0, 1.0, "", 0))
    composite_equal_to_frei0r(qxfx, work, clip, "movie", movie, (0.1, 0.1, 0.5, 0.5, 345.0, 0.75, "", 0),
                              span_text=False)
    test_swf(qxfx, work, animation)
    test_errors(qxfx, work, clip, picture)
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
