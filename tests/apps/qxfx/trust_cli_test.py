#!/usr/bin/env python3
"""qxfx render keeps what a user's clip carries, on clips that ffmpeg makes here: audio,
timestamps of a variable frame rate, a turn stored as metadata, frames outside the
effect's span; it refuses bad parameter texts by slot, never writes over an input or an
existing file unasked, leaves no broken file, and passes frames through pipes.

usage: trust_cli_test.py QXFX WORK_DIR
"""
import os
import shutil
import signal
import subprocess
import sys
import time

failures = []


def check(name, condition, detail=""):
    if not condition:
        failures.append(f"{name}: {detail}")
    print(("ok   " if condition else "FAIL ") + name)


def qxfx(*args, **kwargs):
    return subprocess.run([QXFX, *args], capture_output=True, text=True, timeout=300, **kwargs)


def ffmpeg(*args):
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *args], check=True, timeout=120)


def probe(path, entries, stream="v:0", count=False):
    """The values of `entries` of one stream, as ffprobe gives them."""
    command = ["ffprobe", "-v", "error", "-select_streams", stream, "-show_entries", f"stream={entries}",
               "-of", "csv=p=0", path]
    if count:
        command.insert(1, "-count_frames")
    return subprocess.run(command, capture_output=True, text=True, timeout=120).stdout.strip()


def frame_times(path):
    result = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries", "frame=pts_time",
                             "-of", "csv=p=0", path], capture_output=True, text=True, timeout=120)
    return [round(float(t.strip(",")), 3) for t in result.stdout.split() if t.strip(",")]


def rgb_frames(path, width, height):
    """Every frame of `path` as bytes of RGB samples."""
    data = subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-i", path, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"],
                          capture_output=True, timeout=120).stdout
    size = width * height * 3
    return [data[i:i + size] for i in range(0, len(data) - size + 1, size)]


def audio_length(path):
    """Seconds from the first audio packet's start to the last one's end."""
    result = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "a:0", "-show_entries",
                             "packet=pts_time,duration_time", "-of", "csv=p=0", path],
                            capture_output=True, text=True, timeout=120)
    packets = [[float(v) for v in line.strip(",").split(",")[:2]] for line in result.stdout.split() if line.strip(",")]
    return packets[-1][0] + packets[-1][1] - packets[0][0] if packets else 0.0


def mean_difference(a, b):
    return sum(abs(x - y) for x, y in zip(a, b)) / max(1, len(a))


def test_audio(work):
    aac = os.path.join(work, "aac.mp4")
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=160x90:rate=25", "-f", "lavfi", "-i", "sine=f=440:r=48000", "-t", "2",
           "-c:v", "libx264", "-pix_fmt", "yuv420p", "-c:a", "aac", "-shortest", aac)
    pcm = os.path.join(work, "pcm.mov")
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=160x90:rate=25", "-f", "lavfi", "-i", "sine=f=440:r=48000", "-t", "2",
           "-c:v", "mpeg4", "-c:a", "pcm_s16le", "-shortest", pcm)
    for name, source, target, codec in (("AAC in MP4, copied", aac, "aac-out.mp4", "aac"),
                                        ("PCM in MOV, copied", pcm, "pcm-out.mov", "pcm_s16le"),
                                        ("PCM into MP4, encoded", pcm, "pcm-out.mp4", "aac")):
        out = os.path.join(work, target)
        result = qxfx("render", "-i", source, "-e", "3", "-o", out)
        before, after = audio_length(source), audio_length(out)
        kept = probe(out, "codec_name", "a:0")
        check(f"audio kept, {name}", result.returncode == 0 and kept == codec and before > 1.9
              and abs(after - before) < 0.03, f"{kept} {after} vs {before}: {result.stderr}")
    logo = os.path.join(work, "logo.png")
    ffmpeg("-f", "lavfi", "-i", "color=red:s=16x16", "-frames:v", "1", logo)
    out = os.path.join(work, "composed.mp4")
    result = qxfx("composite", "-i", aac, "--overlay", logo, "--width", "0.2", "--height", "0.2", "-o", out)
    check("composite keeps the background's audio", result.returncode == 0 and probe(out, "codec_name", "a:0") == "aac"
          and abs(audio_length(out) - audio_length(aac)) < 0.03, result.stderr)
    out = os.path.join(work, "silent.mp4")
    result = qxfx("render", "-i", aac, "--no-audio", "-o", out)
    check("--no-audio leaves it out", result.returncode == 0 and probe(out, "codec_name", "a:0") == "", result.stderr)
    out = os.path.join(work, "trimmed.mkv")
    result = qxfx("render", "-i", aac, "-ss", "0.4", "-t", "1", "-o", out)
    video = frame_times(out)
    sound = audio_length(out)
    check("-ss and -t trim picture and sound", result.returncode == 0 and len(video) == 25 and video[0] == 0.0
          and abs(sound - 1.0) < 0.05, f"{video[:3]} sound {sound}: {result.stderr}")
    return aac


def test_timing(work):
    vfr = os.path.join(work, "vfr.mkv")
    # Ten frames 40 ms apart, then frames 100 ms apart.
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=160x90:rate=50", "-t", "2", "-vf",
           "setpts='if(lt(N,10),N*0.04,0.4+(N-10)*0.1)/TB'", "-fps_mode", "vfr", "-frames:v", "20", "-c:v", "ffv1", vfr)
    out = os.path.join(work, "vfr-out.mkv")
    result = qxfx("render", "-i", vfr, "-e", "3", "-o", out)
    before, after = frame_times(vfr), frame_times(out)
    check("a variable frame rate keeps its timestamps", result.returncode == 0 and len(before) == 20
          and before == after, f"{before} vs {after}: {result.stderr}")
    out = os.path.join(work, "vfr-25.mkv")
    result = qxfx("render", "-i", vfr, "--fps", "25", "-o", out)
    times = frame_times(out)
    # The last frame starts at 1.3 s and lasts a frame of the declared 50 a second: frames
    # every 40 ms from 0 up to 1.28 s, each the input's frame nearest its time.
    check("--fps converts the rate", result.returncode == 0 and len(times) == 33 and times[0] == 0.0
          and all(abs(b - a - 0.04) < 0.002 for a, b in zip(times, times[1:])), f"{times}: {result.stderr}")


def test_pattern_rate(work):
    out = os.path.join(work, "pattern-30.mp4")
    result = qxfx("render", "--fps", "30", "--frames", "30", "--size", "64x36", "-o", out)
    check("the test pattern at --fps 30", result.returncode == 0
          and probe(out, "r_frame_rate,nb_read_frames", count=True) == "30/1,30", result.stderr)


def test_rotation(work):
    flat = os.path.join(work, "flat.mp4")
    ffmpeg("-f", "lavfi", "-i", "color=red:s=160x90,drawbox=x=0:y=0:w=80:h=45:color=blue:t=fill", "-t", "0.4",
           "-c:v", "libx264", "-pix_fmt", "yuv420p", flat)
    turned = os.path.join(work, "turned.mp4")
    ffmpeg("-i", flat, "-c", "copy", "-metadata:s:v:0", "rotate=90", turned)
    out = os.path.join(work, "upright.mkv")
    result = qxfx("render", "-i", turned, "--start", "100", "-q", "--lossless", "-o", out)
    size = probe(out, "width,height")
    # ffmpeg shows the turned clip upright by itself: the two must agree.
    ours = rgb_frames(out, 90, 160)
    theirs = rgb_frames(turned, 90, 160)
    check("a clip with a turn comes out upright", result.returncode == 0 and size == "90,160" and ours and theirs
          and mean_difference(ours[0], theirs[0]) < 6, f"{size} {result.stderr}")


def test_span(work):
    clip = os.path.join(work, "span.mkv")
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=96x54:rate=25", "-t", "3", "-c:v", "ffv1", clip)
    out = os.path.join(work, "faded.mkv")
    result = qxfx("render", "-i", clip, "-e", "7", "--start", "1", "--length", "1", "--lossless", "-o", out)
    source, faded = rgb_frames(clip, 96, 54), rgb_frames(out, 96, 54)
    ok = result.returncode == 0 and len(source) == 75 and len(faded) == 75
    untouched = ok and all(source[i] == faded[i] for i in list(range(25)) + list(range(51, 75)))
    faded_in = ok and max(faded[25]) < 8 and 10 < mean_difference(source[37], faded[37])
    check("a fade over --start 1 --length 1 leaves the rest untouched", untouched and faded_in,
          result.stderr if not ok else f"untouched {untouched}, fading {faded_in}")


def test_threads(work):
    # Reading, the effect and writing run at once by default; one thread runs them in
    # turn. The frames and their times must not depend on it.
    clip = os.path.join(work, "threads.mkv")
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=160x90:rate=25", "-t", "4", "-c:v", "ffv1", clip)
    outputs = []
    for threads in ("1", "0", "3"):
        out = os.path.join(work, f"threads-{threads}.mkv")
        result = qxfx("render", "-i", clip, "-e", "0", "--start", "1", "--length", "2", "--lossless",
                      "--threads", threads, "-o", out)
        outputs.append((result.returncode, rgb_frames(out, 160, 90), frame_times(out)))
    one = outputs[0]
    check("frames and times are the same in turn and in a pipeline", one[0] == 0 and len(one[1]) == 100
          and all(other == one for other in outputs[1:]),
          f"exits {[o[0] for o in outputs]}, frames {[len(o[1]) for o in outputs]}")


def test_params():
    cases = [("abc;", "slot 0 (left"), ("100 100 900 900", "no ';'"), ("", "slot 0 (left"),
             ("100;100;", "slot 2 (right"), ("100;100;900;2000;", "slot 3 (bottom"), ("1;2;3;4;5;", "5 values")]
    for text, named in cases:
        result = qxfx("render", "-e", "0", "-p", text, "--discard")
        check(f"parameter text {text!r} refused", result.returncode == 1 and named in result.stderr, result.stderr)
    result = qxfx("render", "-e", "0", "--raw-params", "abc;", "--discard", "--frames", "2")
    check("--raw-params goes to the host unchecked", result.returncode == 0, result.stderr)


def test_safe_output(work, clip):
    original = open(clip, "rb").read()
    for args, expected in ((["-i", clip, "-o", clip, "-y"], "is an input"),
                           (["-i", clip, "-o", os.path.join(work, ".", os.path.basename(clip))], "is an input")):
        result = qxfx("render", *args)
        check(f"the input is never written over ({expected})", result.returncode == 1 and expected in result.stderr
              and open(clip, "rb").read() == original, result.stderr)
    existing = os.path.join(work, "existing.mp4")
    with open(existing, "w") as f:
        f.write("keep me")
    for flags, expected in (([], "give -y"), (["-y", "-n"], "-n keeps it")):
        result = qxfx("render", "--frames", "2", "-o", existing, *flags)
        check(f"an existing file is kept ({expected})", result.returncode == 1 and expected in result.stderr
              and open(existing).read() == "keep me", result.stderr)
    result = qxfx("render", "--frames", "2", "-o", existing, "-y", "--codec", "no-such-encoder")
    left = [n for n in os.listdir(work) if ".part" in n]
    check("a failed render leaves the old file and no temporary", result.returncode == 1
          and open(existing).read() == "keep me" and not left, f"{left} {result.stderr}")
    result = qxfx("render", "--frames", "2", "-o", os.path.join(work, "absent", "x.mp4"))
    check("a missing folder is named", result.returncode == 1 and "does not exist" in result.stderr, result.stderr)
    result = qxfx("render", "--frames", "2", "--size", "32x18", "-o", os.path.join(work, "made", "f-%02d.jpg"))
    names = sorted(os.listdir(os.path.join(work, "made"))) if os.path.isdir(os.path.join(work, "made")) else []
    with open(os.path.join(work, "made", names[0]), "rb") if names else open(os.devnull, "rb") as f:
        head = f.read(3)
    check("frame patterns get their folder, JPEG names get JPEG", result.returncode == 0
          and names == ["f-01.jpg", "f-02.jpg"] and head == b"\xff\xd8\xff", f"{names} {result.stderr}")


def test_interrupt(work):
    out = os.path.join(work, "interrupted.mp4")
    process = subprocess.Popen([QXFX, "render", "--frames", "100000", "--size", "320x180", "-o", out],
                               stderr=subprocess.PIPE, text=True)
    time.sleep(1.5)
    process.send_signal(signal.SIGINT)
    _, stderr = process.communicate(timeout=120)
    frames = probe(out, "nb_read_frames", count=True) if os.path.exists(out) else ""
    check("Ctrl-C finishes a file that plays", process.returncode == 130 and frames.isdigit() and int(frames) > 0
          and f"{frames} frames written" in stderr and not [n for n in os.listdir(work) if ".part" in n],
          f"exit {process.returncode}, frames {frames!r}, {stderr}")


def test_pipes(work):
    source = subprocess.Popen(["ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", "testsrc=size=160x90:rate=25",
                               "-frames:v", "200", "-pix_fmt", "yuv420p", "-f", "yuv4mpegpipe", "-"],
                              stdout=subprocess.PIPE)
    render = subprocess.Popen([QXFX, "render", "-i", "-", "-e", "3", "--length", "8", "-o", "-", "-f", "yuv4mpegpipe"],
                              stdin=source.stdout, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    source.stdout.close()
    out, err = render.communicate(timeout=300)
    source.wait(timeout=60)
    piped = os.path.join(work, "piped.y4m")
    with open(piped, "wb") as f:
        f.write(out)
    frames = probe(piped, "nb_read_frames,width,height", count=True)
    check("200 frames through pipes in and out", render.returncode == 0 and frames == "160,90,200", f"{frames} {err}")
    result = qxfx("render", "-o", "-", "--frames", "2")
    check("standard output needs a format", result.returncode == 1 and "-f" in result.stderr, result.stderr)


def test_odd_size(work):
    clip = os.path.join(work, "odd.mkv")
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=161x91:rate=25", "-t", "0.4", "-c:v", "ffv1", clip)
    for target, codec in (("odd.mp4", "h264"), ("odd.webm", "vp9")):
        out = os.path.join(work, target)
        result = qxfx("render", "-i", clip, "-o", out)
        check(f"an odd size goes into {codec} as 4:2:0", result.returncode == 0
              and probe(out, "codec_name,width,height,pix_fmt") == f"{codec},162,92,yuv420p", result.stderr)


def test_colour_tags(work):
    clip = os.path.join(work, "tagged.mp4")
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=160x90:rate=25", "-t", "0.4", "-c:v", "libx264", "-pix_fmt", "yuv420p",
           "-color_primaries", "bt709", "-color_trc", "bt709", "-colorspace", "bt709", "-color_range", "tv", clip)
    out = os.path.join(work, "tagged-out.mkv")
    result = qxfx("render", "-i", clip, "-e", "3", "--size", "64x64", "-o", out)
    tags = probe(out, "color_space,color_transfer,color_primaries,color_range")
    check("colour tags are kept", result.returncode == 0 and sorted(tags.split(",")) == ["bt709"] * 3 + ["tv"],
          f"{tags} {result.stderr}")
    check("--size with an input says it is ignored", "--size is ignored" in result.stderr, result.stderr)
    # A stream may declare colour numbers that FFmpeg has no names for (a fuzzer found it):
    # they are taken as unspecified.
    odd = os.path.join(work, "odd-tags.mp4")
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=160x90:rate=25", "-t", "0.4", "-c:v", "libx264", "-pix_fmt", "yuv420p",
           "-bsf:v", "h264_metadata=colour_primaries=200:transfer_characteristics=100:matrix_coefficients=150", odd)
    out = os.path.join(work, "odd-tags-out.mkv")
    result = qxfx("render", "-i", odd, "-e", "3", "-o", out)
    tags = probe(out, "color_space,color_transfer,color_primaries")
    check("colour numbers without names are taken as unspecified", result.returncode == 0
          and tags == "unknown,unknown,unknown", f"{tags} {result.stderr}")


def test_damaged_input(work):
    clip = os.path.join(work, "clean.ts")
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=160x90:rate=25", "-t", "1", "-c:v", "mpeg4", "-f", "mpegts", clip)
    data = bytearray(open(clip, "rb").read())
    for i in range(3000, len(data) - 3000, 211):
        data[i] ^= 0xFF
    damaged = os.path.join(work, "damaged.ts")
    open(damaged, "wb").write(data)
    result = qxfx("render", "-i", damaged, "--discard")
    check("damaged input is said", result.returncode == 0 and "input is damaged" in result.stderr, result.stderr)
    result = qxfx("render", "-i", clip, "--discard")
    check("a clean input is not", result.returncode == 0 and result.stderr == "", result.stderr)


def test_small_things():
    version = qxfx("--version")
    check("--version", version.returncode == 0 and version.stdout.startswith("qxfx "), version.stderr)
    help_text = qxfx("help", "render")
    check("qxfx help COMMAND", help_text.returncode == 0 and "--no-audio" in help_text.stdout, help_text.stderr)
    result = qxfx("render", "--discard", "--frames", "2", "--data", "/nonexistent", "-e", "5003")
    check("a missing data path is said", "warning" in result.stderr and "/nonexistent" in result.stderr,
          result.stderr)
    result = qxfx("render", "--discard", "--frames", "3", "-e", "5003", "--source", "Particles\\Absent.afx")
    check("an effect with nothing to play says so", "Absent.afx" in result.stderr
          and "changed no frame" in result.stderr, result.stderr)
    result = qxfx("render", "--discard", "--frames", "3", "-e", "5003")
    check("the pack's own scene draws without a warning", result.returncode == 0 and result.stderr == "",
          result.stderr)
    quiet = qxfx("render", "--discard", "--frames", "2", "--data", "/nonexistent", "-e", "5003", "-q")
    check("-q silences warnings", "warning" not in quiet.stderr, quiet.stderr)


def main():
    global QXFX
    QXFX, work = os.path.abspath(sys.argv[1]), sys.argv[2]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    clip = test_audio(work)
    test_timing(work)
    test_pattern_rate(work)
    test_rotation(work)
    test_span(work)
    test_threads(work)
    test_params()
    test_safe_output(work, clip)
    test_interrupt(work)
    test_pipes(work)
    test_odd_size(work)
    test_colour_tags(work)
    test_damaged_input(work)
    test_small_things()
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
