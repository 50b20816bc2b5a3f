#!/usr/bin/env python3
"""The README's examples of qxfx run as written, in an empty folder: every line of the
block that follows the marker comment must succeed, with `qxfx` the binary under test.

usage: readme_examples_test.py README QXFX WORK_DIR
"""
import os
import shutil
import subprocess
import sys

MARKER = "<!-- examples run by tests/apps/qxfx/readme_examples_test.py -->"


def example_lines(readme):
    text = open(readme, encoding="utf-8").read()
    if MARKER not in text:
        sys.exit("the README has no block of examples to run")
    block = text.split(MARKER, 1)[1].split("```sh", 1)[1].split("```", 1)[0]
    return [line for line in block.splitlines() if line.strip()]


def main():
    readme, qxfx, work = sys.argv[1], os.path.abspath(sys.argv[2]), sys.argv[3]
    shutil.rmtree(work, ignore_errors=True)
    bin_dir = os.path.join(work, "bin")
    run_dir = os.path.join(work, "run")
    os.makedirs(bin_dir)
    os.makedirs(run_dir)
    os.symlink(qxfx, os.path.join(bin_dir, "qxfx"))
    env = dict(os.environ, PATH=bin_dir + os.pathsep + os.environ["PATH"])
    failures = []
    lines = example_lines(readme)
    for line in lines:
        result = subprocess.run(["bash", "-o", "pipefail", "-c", line], cwd=run_dir, env=env, capture_output=True,
                                text=True, timeout=300)
        ok = result.returncode == 0
        print(("ok   " if ok else "FAIL ") + line)
        if not ok:
            failures.append(f"{line}: exit {result.returncode}, {result.stderr.strip()}")
    if len(lines) < 2:
        failures.append("the block holds no examples")
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
