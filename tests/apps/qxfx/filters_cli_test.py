#!/usr/bin/env python3
"""qxfx scenes and qxfx crop run as a user runs them, on clips that ffmpeg makes.

usage: filters_cli_test.py QXFX WORK_DIR

- scenes: a clip of six patterns of 25 frames each, joined end to end, has its cuts at
  frames 25, 50, 75, 100 and 125. qxfx must find exactly the first four; ffmpeg's scdet
  filter runs on the same clip and its list is compared with ours (see the comment
  there for the one cut where they differ).
- crop: frames of known samples come out centred in the size asked for, with the
  anti-flicker blur where its geometry puts it.
- anim: a composition file of the user's own plays with a picture filling the frame, for
  the duration asked, and fits a wide picture inside with bars; the pack's slideshow
  starts from black.
- bad input ends with one line naming the problem and exit code 1.
"""
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import time

RATE = 25
SEGMENT = 25
failures = []


def check(name, condition, detail=""):
    if not condition:
        failures.append(f"{name}: {detail}")
    print(("ok   " if condition else "FAIL ") + name)


def run(command, **kwargs):
    return subprocess.run(command, capture_output=True, text=True, timeout=300, **kwargs)


def ffmpeg(*args):
    result = run(["ffmpeg", "-v", "error", "-y", *args])
    if result.returncode != 0:
        sys.exit(f"ffmpeg failed: {' '.join(args)}\n{result.stderr[-2000:]}")


def make_cut_clip(path, size="320:240"):
    """Six segments: bars, white, the test source, dark grey, bars, and the bars mirrored,
    scaled to `size` (W:H, odd sides allowed)."""
    sources = ["smptebars=", "color=c=white:", "testsrc=", "color=c=0x202020:", "smptebars=", "smptebars="]
    inputs = []
    for source in sources:
        inputs += ["-f", "lavfi", "-i", f"{source}size=320x240:rate={RATE}:duration={SEGMENT / RATE}"]
    graph = f"[5:v]hflip[mirror];[0:v][1:v][2:v][3:v][4:v][mirror]concat=n=6:v=1:a=0,scale={size},format=yuv420p"
    ffmpeg(*inputs, "-filter_complex", graph, "-c:v", "ffv1", path)


def scdet_frames(path):
    """The frames where ffmpeg's scdet sees a scene change, at its default threshold."""
    result = run(["ffmpeg", "-hide_banner", "-i", path, "-vf", "scdet,metadata=mode=print", "-f", "null", "-"])
    times = [float(t) for t in re.findall(r"lavfi\.scd\.time=([0-9.]+)", result.stderr)]
    return [round(t * RATE) for t in times]


def test_scenes(qxfx, work):
    clip = os.path.join(work, "cuts.mkv")
    make_cut_clip(clip)
    result = run([qxfx, "scenes", "-i", clip, "--json"])
    check("scenes --json runs", result.returncode == 0, result.stderr)
    report = json.loads(result.stdout)
    frames = [cut["frame"] for cut in report["cuts"]]
    check("scenes finds the four cuts between patterns of different brightness", frames == [25, 50, 75, 100],
          str(frames))
    # The cut time is the start of the new scene's first frame plus 0.1 s.
    seconds = [cut["seconds"] for cut in report["cuts"]]
    check("cut times are 0.1 s after the frame", seconds == [f / RATE + 0.1 for f in frames], str(seconds))
    check("scenes counts the frames", report["frames"] == 6 * SEGMENT, str(report["frames"]))

    # ffmpeg's scdet measures the mean absolute difference of co-located pixels, ours
    # the difference of the 16-bin luma histograms. They agree on every cut between
    # pictures of different brightness; the cut at 125 joins the bars to their own
    # mirror image, whose histogram is the same, so only scdet finds it.
    theirs = scdet_frames(clip)
    check("scdet finds the same cuts and the mirror cut", theirs == frames + [125], f"scdet {theirs}, ours {frames}")

    text = run([qxfx, "scenes", "-i", clip])
    check("scenes prints a table", text.returncode == 0 and text.stdout.startswith("4 cuts in 150 frames")
          and re.search(r"^\s+100\s+4\.100$", text.stdout, re.M) is not None, text.stdout)

    one = os.path.join(work, "one.mkv")
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=64x48:rate=25", "-frames:v", "1", "-c:v", "ffv1", one)
    result = run([qxfx, "scenes", "-i", one])
    check("a one-frame clip has no cuts", result.returncode == 0 and result.stdout == "0 cuts in 1 frame\n",
          result.stdout)

    # Odd sizes: the chroma planes are half the size rounded up.
    odd = os.path.join(work, "odd.mkv")
    make_cut_clip(odd, "161:91")
    result = run([qxfx, "scenes", "-i", odd, "--json"])
    check("odd sizes find the same cuts", result.returncode == 0 and
          [c["frame"] for c in json.loads(result.stdout)["cuts"]] == [25, 50, 75, 100], result.stdout + result.stderr)


def raw_bgra(path):
    result = subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-f", "rawvideo", "-pix_fmt", "bgra", "-"],
                            capture_output=True, timeout=120)
    return result.stdout


def test_crop(qxfx, work):
    # A 6 x 4 white frame (PNG, lossless) into 10 x 9: x = 2, y = 2 (halves truncated),
    # so the extra row is at the bottom of the picture, and the padding is transparent.
    still = os.path.join(work, "white.png")
    ffmpeg("-f", "lavfi", "-i", "color=c=white:size=6x4", "-frames:v", "1", still)
    out = os.path.join(work, "crop-%02d.png")
    result = run([qxfx, "crop", "-i", still, "--size", "10x9", "-o", out])
    check("crop runs", result.returncode == 0, result.stderr)
    frame = raw_bgra(os.path.join(work, "crop-01.png"))
    check("crop output has the size asked for", len(frame) == 10 * 9 * 4, str(len(frame)))
    if len(frame) == 10 * 9 * 4:
        lit = sorted((i // 4 % 10, i // 40) for i in range(0, len(frame), 4) if frame[i + 3] != 0)
        expected = sorted((x, y) for x in range(2, 8) for y in range(2, 6))
        check("crop centres the frame on transparent black", lit == expected, str(lit))

    # Anti-flicker: rows 0..39 black, one white row at 20 of a 8 x 40 frame; level 30
    # gives a run of 40 / 100 * 30 / 10 = 1.2, rounded up to 2: the row and the one
    # above it (qxfx frames are top-down) at half the white.
    line = os.path.join(work, "line.png")
    ffmpeg("-f", "lavfi", "-i", "color=c=black:size=8x40", "-vf", "drawbox=x=0:y=20:w=8:h=1:color=white:t=fill",
           "-frames:v", "1", line)
    out = os.path.join(work, "flicker-%02d.png")
    result = run([qxfx, "crop", "-i", line, "--anti-flicker", "30", "-o", out])
    frame = raw_bgra(os.path.join(work, "flicker-01.png"))
    greys = [frame[y * 32] for y in range(40)] if len(frame) == 8 * 40 * 4 else []
    check("anti-flicker blurs the line into the row above", result.returncode == 0 and
          greys == [0] * 19 + [128, 128] + [0] * 19, str(greys))


def test_anim(qxfx, work):
    wide = os.path.join(work, "wide.png")
    ffmpeg("-f", "lavfi", "-i", "color=c=blue:size=80x20", "-frames:v", "1", wide)
    composition = os.path.join(work, "fill.cpo")
    with open(composition, "w") as f:
        f.write('Duration 1\nImage\n{\n  Name "Picture"\n  Size 4 3\n}\n')
    out = os.path.join(work, "anim-%02d.png")
    result = run([qxfx, "anim", composition, "--image", wide, "--duration", "0.4", "--fps", "10", "--size", "64x48",
                  "--fit", "stretch", "-o", out])
    check("anim runs", result.returncode == 0, result.stderr)
    frames = sorted(n for n in os.listdir(work) if n.startswith("anim-"))
    check("anim writes the duration's frames", len(frames) == 4, str(frames))
    frame = raw_bgra(os.path.join(work, "anim-01.png"))
    check("a stretched picture fills the frame", len(frame) == 64 * 48 * 4 and
          all(frame[i] > 200 and frame[i + 2] < 50 for i in range(0, len(frame), 4)), str(frame[:8]))
    out = os.path.join(work, "inside-%02d.png")
    result = run([qxfx, "anim", composition, "--image", wide, "--duration", "0.1", "--fps", "10", "--size", "64x48",
                  "--fit", "inside", "-o", out])
    frame = raw_bgra(os.path.join(work, "inside-01.png"))
    column = [frame[(y * 64 + 32) * 4] for y in range(48)] if len(frame) == 64 * 48 * 4 else []
    # 80 x 20 inside 64 x 48: 64 x 16, rows 16 to 31.
    check("a wide picture fitted inside has bars above and below", result.returncode == 0 and
          column[:15] == [0] * 15 and min(column[17:31]) > 200 and column[33:] == [0] * 15, str(column))
    out = os.path.join(work, "slides-%02d.png")
    result = run([qxfx, "anim", "Compositions/Slideshow.cpo", "--image", wide, "--duration", "0.1", "--fps", "10",
                  "--size", "64x48", "-o", out])
    frame = raw_bgra(os.path.join(work, "slides-01.png"))
    check("the pack's slideshow starts from black", result.returncode == 0 and len(frame) == 64 * 48 * 4 and
          max(frame[i] for i in range(0, len(frame), 4)) == 0, result.stderr)


def test_anim_interrupted(qxfx, work):
    # The first Ctrl-C finishes the file with the frames so far, as render does.
    out = os.path.join(work, "interrupted.mkv")
    process = subprocess.Popen([qxfx, "anim", "Compositions/Slideshow.cpo", "--image", os.path.join(work, "wide.png"),
                                "--duration", "3600", "--size", "64x48", "-o", out],
                               stderr=subprocess.PIPE, text=True)
    time.sleep(2)
    process.send_signal(signal.SIGINT)
    _, stderr = process.communicate(timeout=120)
    probe = subprocess.run(["ffprobe", "-v", "error", "-count_frames", "-show_entries", "stream=nb_read_frames",
                            "-of", "csv=p=0", out], capture_output=True, text=True).stdout.strip()
    check("Ctrl-C finishes an anim's file", process.returncode == 130 and probe.isdigit() and int(probe) > 0
          and f"{probe} frames written" in stderr and not [n for n in os.listdir(work) if ".part" in n],
          f"exit {process.returncode}, frames {probe!r}, {stderr}")


def test_bad_input(qxfx, work):
    text_file = os.path.join(work, "notes.txt")
    with open(text_file, "w") as f:
        f.write("not a video\n")
    cases = [
        ("scenes without input", ["scenes"], "give the video with -i"),
        ("scenes of a missing file", ["scenes", "-i", os.path.join(work, "absent.mkv")], "No such file"),
        ("scenes of text", ["scenes", "-i", text_file], "notes.txt"),
        ("scenes unknown option", ["scenes", "-i", text_file, "--fast"], "unknown option '--fast'"),
        ("crop without output", ["crop", "-i", text_file], "-o OUTPUT or --discard"),
        ("crop size malformed", ["crop", "-i", text_file, "--discard", "--size", "10by9"], "--size"),
        ("crop level out of range", ["crop", "-i", text_file, "--discard", "--anti-flicker", "40000"],
         "--anti-flicker"),
        ("anim without pictures", ["anim", "Compositions/Slideshow.cpo", "--discard"], "--image"),
        ("anim of a missing composition", ["anim", "Nothing/There.cpo", "--image", text_file, "--discard"],
         "no composition there"),
        ("anim with six pictures", ["anim", "x.cpo", *(["--image", text_file] * 6), "--discard"], "at most five"),
        ("anim fit unknown", ["anim", "x.cpo", "--image", text_file, "--fit", "zoom", "--discard"], "--fit"),
        ("anim over its picture", ["anim", "Compositions/Slideshow.cpo", "--image", text_file, "--duration", "1",
                                   "-o", text_file], "input"),
    ]
    for name, args, needle in cases:
        result = run([qxfx, *args])
        one_line = result.stderr.count("\n") == 1
        check(name, result.returncode == 1 and one_line and needle in result.stderr, result.stderr)


def main():
    qxfx, work = sys.argv[1], sys.argv[2]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    test_scenes(qxfx, work)
    test_crop(qxfx, work)
    test_anim(qxfx, work)
    test_anim_interrupted(qxfx, work)
    test_bad_input(qxfx, work)
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
