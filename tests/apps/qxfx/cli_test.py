#!/usr/bin/env python3
"""qxfx run as a user runs it: renders and the demo produce what they say, and bad input
ends with one line naming the problem and a non-zero exit code, never a crash.

usage: cli_test.py QXFX WORK_DIR
"""
import json
import os
import re
import shutil
import struct
import subprocess
import sys

failures = []


def qxfx(*args, cwd=None):
    return subprocess.run([QXFX, *args], capture_output=True, text=True, timeout=300, cwd=cwd)


def check(name, condition, detail=""):
    if not condition:
        failures.append(f"{name}: {detail}")
    print(("ok   " if condition else "FAIL ") + name)


def png_size(path):
    with open(path, "rb") as f:
        header = f.read(24)
    if header[:8] != b"\x89PNG\r\n\x1a\n":
        return None
    return struct.unpack(">II", header[16:24])


def probe_frames(path):
    result = subprocess.run(["ffprobe", "-v", "error", "-count_frames", "-select_streams", "v:0", "-show_entries",
                             "stream=nb_read_frames,width,height", "-of", "csv=p=0", path],
                            capture_output=True, text=True, timeout=120)
    return result.stdout.strip()


def test_bad_input(work):
    garbage = os.path.join(work, "garbage.mp4")
    with open(garbage, "wb") as f:
        f.write(bytes(range(256)) * 40)
    text_file = os.path.join(work, "notes.txt")
    with open(text_file, "w") as f:
        f.write("not a video\n")
    cases = [
        ("unknown effect", ["render", "--discard", "-e", "16"], "unknown effect id 16"),
        ("unknown table index", ["render", "--discard", "--index", "25"], "no effect at table index 25"),
        ("parameters refused", ["render", "--discard", "-p", "1;" * 17], "refused"),
        ("missing file", ["render", "--discard", "-i", os.path.join(work, "absent.mp4")], "No such file"),
        ("not a video", ["render", "--discard", "-i", text_file], "notes.txt"),
        ("garbage video", ["render", "--discard", "-i", garbage], "garbage.mp4"),
        ("unwritable output", ["render", "--frames", "2", "-o", os.path.join(work, "no", "dir", "x.mp4")],
         "cannot write"),
        ("unknown container", ["render", "--frames", "2", "-o", os.path.join(work, "x.qqq")], "no output format"),
        ("png without number", ["render", "--frames", "2", "-o", os.path.join(work, "x.png")], "numbered"),
        ("size too large", ["render", "--discard", "--size", "16000x16000"], "out of range"),
        ("size malformed", ["render", "--discard", "--size", "12by4"], "--size"),
        ("frames not a number", ["render", "--discard", "--frames", "ten"], "--frames"),
        ("no output", ["render"], "-o OUTPUT or --discard"),
        ("option without value", ["render", "--discard", "-e"], "needs a value"),
        ("unknown option", ["render", "--discard", "--zoom"], "unknown option"),
        ("source too long", ["render", "--discard", "--source", "s" * 300], "source path longer"),
        ("demo even frames", ["demo", "--frames", "4", "--out", os.path.join(work, "d")], "odd"),
        ("demo unwritable", ["demo", "--out", "/proc/qxfx-demo"], "cannot create"),
        ("unknown command", ["paint"], "unknown command"),
        ("list, unknown option", ["list", "--xml"], "unknown option"),
    ]
    for name, args, expected in cases:
        result = qxfx(*args)
        lines = result.stderr.strip().splitlines()
        check(f"bad input, {name}", result.returncode > 0 and len(lines) == 1 and expected in lines[0],
              f"exit {result.returncode}, stderr {result.stderr!r}")


def test_help():
    for command in (["--help"], ["list", "--help"], ["render", "--help"], ["demo", "--help"]):
        result = qxfx(*command)
        check(f"help of {' '.join(command)}", result.returncode == 0 and "usage: qxfx" in result.stdout,
              result.stderr)


def test_list():
    result = qxfx("list", "--json")
    try:
        entries = {entry["id"]: entry for entry in json.loads(result.stdout)}
    except ValueError as error:
        entries = {}
        check("list --json is JSON", False, str(error))
    film = entries.get(9, {}).get("params", [])
    check("list --json gives each effect's parameters",
          len(entries) == 25 and [p["name"] for p in film][:2] == ["shake level", "shake strength"]
          and film[6]["minimum"] == 2 and film[6]["maximum"] == 64 and film[6]["default"] == 20
          and entries[0]["params"][0]["kind"] == "rectangle side" and entries[2000]["params"] == [],
          result.stdout[:300])
    text = qxfx("list").stdout
    check("list shows the parameters under each effect", "shake strength" in text and "1 to 20" in text, text[:300])


def test_render(work):
    frames = os.path.join(work, "pattern-%03d.png")
    result = qxfx("render", "-e", "2", "--size", "96x54", "--frames", "4", "-o", frames)
    written = sorted(n for n in os.listdir(work) if n.startswith("pattern-"))
    check("render of the pattern to PNG frames",
          result.returncode == 0 and written == [f"pattern-{i:03d}.png" for i in (1, 2, 3, 4)]
          and all(png_size(os.path.join(work, n)) == (96, 54) for n in written), result.stderr)

    clip = os.path.join(work, "clip.mp4")
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc=size=160x90:rate=25",
                    "-frames:v", "12", clip], check=True, timeout=120)
    out = os.path.join(work, "out.mp4")
    result = qxfx("render", "-i", clip, "-e", "3", "-o", out)
    check("render of a video keeps its frames and size", result.returncode == 0 and probe_frames(out) == "160,90,12",
          f"{probe_frames(out)!r} {result.stderr}")

    out = os.path.join(work, "held.mkv")
    result = qxfx("render", "-i", clip, "--frames", "20", "-o", out)
    check("a short input holds its last frame", result.returncode == 0 and probe_frames(out) == "160,90,20",
          f"{probe_frames(out)!r} {result.stderr}")

    still = os.path.join(work, "still.png")
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-i", clip, "-frames:v", "1", still], check=True, timeout=120)
    out = os.path.join(work, "still.mp4")
    result = qxfx("render", "-i", still, "-o", out)
    check("a still image gives 50 frames", result.returncode == 0 and probe_frames(out) == "160,90,50",
          f"{probe_frames(out)!r} {result.stderr}")

    result = qxfx("render", "--discard", "--frames", "3")
    check("discarded render is quiet", result.returncode == 0 and result.stderr == "" and result.stdout == "",
          result.stderr)


def test_demo(work):
    result = qxfx("demo", "--size", "64x36", "--frames", "3", "--out", "demo-out", cwd=work)
    out = os.path.join(work, "demo-out")
    entries = len(qxfx("list", "--json").stdout.split('"index"')) - 1
    # The pack's particle, flare and filter scenes and its two compositions follow the
    # catalogue: their number is what the closing line counts beyond the catalogue.
    counted = re.search(r"of (\d+) effects, scenes and compositions", result.stderr)
    sheet = frames = None
    ok = result.returncode == 0 and entries > 0 and counted is not None and int(counted.group(1)) > entries
    if ok:
        cells = int(counted.group(1))
        sheet = png_size(os.path.join(out, "contact-sheet.png"))
        frames = probe_frames(os.path.join(out, "demo.mp4"))
        skipped = result.stderr.count("skipped effect")
        # Two effects a row under a header; every effect and scene gets its cell.
        rows = (cells + 1) // 2
        ok = sheet == (1264, 34 + rows * 154) and frames == f"64,36,{3 * (cells - skipped)}"
    check("demo writes the video and the contact sheet", ok, f"{result.stderr} sheet {sheet} frames {frames}"
          if result.returncode == 0 else result.stderr)


def main():
    global QXFX
    QXFX, work = os.path.abspath(sys.argv[1]), sys.argv[2]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    test_bad_input(work)
    test_help()
    test_list()
    test_render(work)
    test_demo(work)
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
