#!/usr/bin/env python3
"""Endurance of qxfx render: a 10-minute 640x360 clip that ffmpeg makes (15,000 frames)
through an effect that keeps the picture (the colour key with no key set), H.264 out,
with the resident memory of qxfx sampled twice a second. Passes when the memory does not
grow after the first tenth of the run (beyond a small allowance), the output has as
many frames as the clip, and its first and last frames are the clip's first and last
(each closer to its own frame than to the neighbouring one: none dropped or doubled).

usage: render_soak.py QXFX WORKDIR [--seconds N]
"""
import os
import subprocess
import sys
import time

ALLOWED_GROWTH_KIB = 8192


def run(args):
    return subprocess.run(args, check=True, capture_output=True, text=True).stdout


def make_clip(path, seconds):
    if not os.path.exists(path):
        run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=size=640x360:rate=25", "-t",
             str(seconds), "-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", path])


def frame_count(path):
    out = run(["ffprobe", "-v", "error", "-count_frames", "-select_streams", "v:0", "-show_entries",
               "stream=nb_read_frames", "-of", "csv=p=0", path])
    return int(out.strip())


def psnr(a, a_index, b, b_index):
    """PSNR (dB) of frame a_index of a against frame b_index of b."""
    graph = (f"[0:v]select=eq(n\\,{a_index}),setpts=N[x];[1:v]select=eq(n\\,{b_index}),setpts=N[y];"
             "[x][y]psnr")
    out = subprocess.run(["ffmpeg", "-v", "info", "-nostats", "-i", a, "-i", b, "-filter_complex", graph, "-frames:v",
                          "1", "-f", "null", "-"], capture_output=True, text=True).stderr
    for line in out.splitlines():
        if "PSNR" in line and "average:" in line:
            value = line.split("average:")[1].split()[0]
            return 100.0 if value == "inf" else float(value)
    raise RuntimeError("no PSNR in ffmpeg's output:\n" + out[-2000:])


def resident_kib(pid):
    try:
        with open(f"/proc/{pid}/status") as status:
            for line in status:
                if line.startswith("VmRSS:"):
                    return int(line.split()[1])
    except OSError:
        pass
    return None


def main():
    args = sys.argv[1:]
    seconds = 600
    if "--seconds" in args:
        at = args.index("--seconds")
        seconds = int(args[at + 1])
        del args[at:at + 2]
    qxfx, work = args
    os.makedirs(work, exist_ok=True)
    clip = os.path.join(work, f"soak-640x360-{seconds}s.mp4")
    out = os.path.join(work, "soak-out.mp4")
    make_clip(clip, seconds)
    frames = frame_count(clip)

    start = time.monotonic()
    process = subprocess.Popen([qxfx, "render", "-i", clip, "-e", "15", "-p", "-1;-1;", "-o", out])
    samples = []
    while process.poll() is None:
        rss = resident_kib(process.pid)
        if rss is not None:
            samples.append(rss)
        time.sleep(0.5)
    elapsed = time.monotonic() - start
    if process.returncode != 0:
        print(f"FAILED: qxfx render exited with {process.returncode}")
        return 1

    failures = []
    settled_at = max(1, len(samples) // 10)
    settled = samples[settled_at - 1] if samples else 0
    peak = max(samples[settled_at:], default=settled)
    print(f"qxfx render: {frames} frames in {elapsed:.1f} s ({frames / elapsed:.0f} frames/s); resident "
          f"{settled} KiB after a tenth of the run, peak {peak} KiB after ({peak - settled:+d} KiB), "
          f"{len(samples)} samples")
    if peak - settled > ALLOWED_GROWTH_KIB:
        failures.append("resident memory grew")
    rendered = frame_count(out)
    print(f"frames: {rendered} out of {frames} in")
    if rendered != frames:
        failures.append("frame count differs")
    else:
        for index, neighbour in ((0, 1), (frames - 1, frames - 2)):
            own = psnr(out, index, clip, index)
            other = psnr(out, index, clip, neighbour)
            print(f"frame {index}: {own:.1f} dB against its own input frame, {other:.1f} dB against frame {neighbour}")
            if own <= other or own < 30.0:
                failures.append(f"frame {index} is not the input's")
    print("FAILED: " + "; ".join(failures) if failures else "passed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
