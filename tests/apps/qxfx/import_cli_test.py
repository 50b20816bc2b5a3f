#!/usr/bin/env python3
"""qxfx import run as a user runs it: an OBJ model with its material and texture becomes
an object file in Objects/ and its texture in Images/, and bad input ends with one line
naming the problem and a non-zero exit code.

usage: import_cli_test.py QXFX WORK_DIR
"""
import os
import shutil
import struct
import subprocess
import sys

failures = []


def qxfx(*args):
    return subprocess.run([QXFX, *args], capture_output=True, text=True, timeout=120)


def check(name, condition, detail=""):
    if not condition:
        failures.append(f"{name}: {detail}")
    print(("ok   " if condition else "FAIL ") + name)


def write_model(folder):
    """A textured square: square.obj, square.mtl and a 1x1 BMP."""
    os.makedirs(folder, exist_ok=True)
    bmp = b"BM" + struct.pack("<IHHI", 58, 0, 0, 54) + struct.pack("<IiiHHIIiiII", 40, 1, 1, 1, 24, 0, 4, 0, 0, 0, 0)
    with open(os.path.join(folder, "paint.bmp"), "wb") as f:
        f.write(bmp + b"\x00\x80\xff\x00")
    with open(os.path.join(folder, "square.mtl"), "w") as f:
        f.write("newmtl paint\nKd 1 1 1\nmap_Kd paint.bmp\n")
    with open(os.path.join(folder, "square.obj"), "w") as f:
        f.write("mtllib square.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                "usemtl paint\nf 1/1 2/2 3/3 4/4\n")
    return os.path.join(folder, "square.obj")


def test_import(work):
    model = write_model(os.path.join(work, "model"))
    data = os.path.join(work, "data")
    result = qxfx("import", model, "-o", os.path.join(data, "Objects", "square.qxo"))
    object_file = os.path.join(data, "Objects", "square.qxo")
    texture = os.path.join(data, "Images", "square", "paint.bmp")
    with open(object_file, "rb") as f:
        header = f.read(4) if result.returncode == 0 else b""
    check("import writes the object and its texture beside it",
          result.returncode == 0 and header == b"FORM" and os.path.isfile(texture)
          and "1 mesh item(s), 1 texture(s)" in result.stdout, result.stderr + result.stdout)

    elsewhere = os.path.join(work, "pictures")
    result = qxfx("import", model, "-o", os.path.join(work, "out.qxo"), "--images", elsewhere)
    check("--images chooses the folder of the textures",
          result.returncode == 0 and os.path.isfile(os.path.join(elsewhere, "out", "paint.bmp")), result.stderr)


def test_bad_input(work):
    broken = os.path.join(work, "broken.gltf")
    with open(broken, "w") as f:
        f.write('{"asset":{"version":"2.0"},"nodes":[')
    cases = [
        ("missing model", ["import", os.path.join(work, "absent.obj"), "-o", "x.qxo"], "absent.obj: no such file"),
        ("broken JSON", ["import", broken, "-o", os.path.join(work, "x.qxo")], "broken.gltf:"),
        ("no model", ["import", "-o", "x.qxo"], "give the model"),
        ("no output", ["import", broken], "-o"),
        ("two models", ["import", "a.obj", "b.obj", "-o", "x.qxo"], "one model"),
        ("unknown option", ["import", "a.obj", "--scale", "2"], "unknown option"),
    ]
    for name, args, expected in cases:
        result = qxfx(*args)
        lines = result.stderr.strip().splitlines()
        check(f"bad input, {name}", result.returncode > 0 and len(lines) == 1 and expected in lines[0],
              f"exit {result.returncode}, stderr {result.stderr!r}")
    result = qxfx("--help")
    check("the command is listed", "import" in result.stdout, result.stdout)
    result = qxfx("import", "--help")
    check("import --help", result.returncode == 0 and "--images" in result.stdout, result.stdout)


def main():
    global QXFX
    QXFX, work = os.path.abspath(sys.argv[1]), sys.argv[2]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    test_import(work)
    test_bad_input(work)
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
