#!/usr/bin/env python3
"""Makes the zip archives that the content-access tests read.

Real producers make most of them: Python's zipfile and Info-ZIP's zip. A few header cases
that no tool writes (entry names in the OEM code page, the 0x0100 descriptor flag, long
names, a cut archive) are written byte by byte here.

    make_archives.py OUTPUT_FOLDER          the test archives
    make_archives.py --many COUNT ARCHIVE   an archive of COUNT small entries
"""
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import zipfile
import zlib


def noise_bytes(count):
    """Bytes that deflate can't shrink, so that zip stores them: bits 16 to 23 of the
    C library's classic linear congruential generator, from seed 1."""
    state, out = 1, bytearray()
    for _ in range(count):
        state = (state * 1103515245 + 12345) % 2**31
        out.append((state >> 16) & 0xFF)
    return bytes(out)


def python_archive(path):
    with zipfile.ZipFile(path, "w") as archive:
        archive.writestr(zipfile.ZipInfo("x/"), b"")
        archive.writestr("x/y.txt", b"inside x", zipfile.ZIP_DEFLATED)
        archive.writestr("A/B.TXT", b"upper case entry", zipfile.ZIP_DEFLATED)
        archive.writestr("stored.bin", bytes(range(256)), zipfile.ZIP_STORED)
        archive.writestr("deflated.txt", b"repeat " * 1000, zipfile.ZIP_DEFLATED)
        archive.writestr("empty_stored.txt", b"", zipfile.ZIP_STORED)
        archive.writestr("empty_deflated.txt", b"", zipfile.ZIP_DEFLATED)
        archive.writestr("Dir/one.txt", b"one", zipfile.ZIP_STORED)
        archive.writestr("dir/two.txt", b"two", zipfile.ZIP_STORED)
        archive.writestr("Scenes/Misc/Cube.afx", b"Camera\n{\n}\n", zipfile.ZIP_DEFLATED)
        archive.writestr("data/a.txt", b"data a", zipfile.ZIP_STORED)
        archive.writestr("data/sub/c.txt", b"data sub c", zipfile.ZIP_STORED)
        archive.writestr("other/b.txt", b"other b", zipfile.ZIP_STORED)
        archive.writestr("dup.txt", b"first", zipfile.ZIP_STORED)
        # zipfile warns about the second entry of the same name, and writes it.
        import warnings
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            archive.writestr("dup.txt", b"second", zipfile.ZIP_STORED)


def write_tree(root, files):
    for name, data in files.items():
        path = os.path.join(root, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as out:
            out.write(data)


def infozip(archive, folder, *options):
    """Runs Info-ZIP's zip on every file and folder under `folder`, names relative to it."""
    archive = os.path.abspath(archive)
    if os.path.exists(archive):
        os.remove(archive)
    subprocess.run(["zip", "-q", "-r", "-X", *options, archive, "."], cwd=folder, check=True)


def infozip_archives(out, work):
    noise = noise_bytes(5000)
    content = os.path.join(work, "content")
    write_tree(content, {
        "Images/Cartes/Sample 1.dds": noise,
        "Effects/common.fxh": b"float4x4 World;\r\n" * 200,
        "Scenes/Misc/Cube.afx": b"Camera\r\n{\r\n}\r\n",
        "Scenes/Empty.txt": b"",
        "Mixed/CaSe.TxT": b"mixed case",
    })
    infozip(os.path.join(out, "infozip.zip"), content)

    # Two archives for one alias: the first mounted wins where both have a file.
    first = os.path.join(work, "first")
    write_tree(first, {"Scenes/title.txt": b"from first", "Scenes/only_first.txt": b"first only"})
    infozip(os.path.join(out, "first.zip"), first)
    second = os.path.join(work, "second")
    write_tree(second, {"Scenes/title.txt": b"from second", "Scenes/only_second.txt": b"second only"})
    infozip(os.path.join(out, "second.zip"), second)

    # Reading a pipe and writing to one, zip can't know the sizes for the local header: it
    # writes 0xFFFFFFFF there, with the zip64 marks, and data descriptors behind the data.
    with open(os.path.join(content, "Effects/common.fxh"), "rb") as source:
        piped = subprocess.run(["zip", "-q", "-", "-"], stdin=source, stdout=subprocess.PIPE, check=True)
    with open(os.path.join(out, "streamed.zip"), "wb") as streamed:
        streamed.write(piped.stdout)


def local_header(name, data, flags=0, method=0, sizes=None):
    compressed = data if method == 0 else zlib.compress(data)[2:-4]
    sizes = sizes or (len(compressed), len(data))
    header = struct.pack("<IHHHHHIIIHH", 0x04034B50, 20, flags, method, 0, 0,
                         zlib.crc32(data), sizes[0], sizes[1], len(name), 0)
    return header + name + compressed


def handmade_archives(out):
    def write(name, data):
        with open(os.path.join(out, name), "wb") as archive:
            archive.write(data)

    # An entry name in CP850, as zip tools on Windows write it: 0x82 is "é".
    write("oem.zip", local_header(b"caf\x82.txt", b"cafe"))
    # The 0x0100 flag announces 12 bytes behind the data; bit 0x0008 does not here, so
    # its 16-byte descriptor is scanned over as unknown signatures.
    write("descriptors.zip",
          local_header(b"flagged.txt", b"flagged", flags=0x0100) + b"D" * 12
          + local_header(b"after_flagged.txt", b"after")
          + local_header(b"bit3.txt", b"bit three", flags=0x0008)
          + struct.pack("<IIII", 0x08074B50, 0x11111111, 9, 9)
          + local_header(b"after_bit3.txt", b"after bit 3"))
    # A name of 300 bytes keeps its first 255; the next entry is still found.
    write("longname.zip", local_header(b"n" * 300, b"long") + local_header(b"next.txt", b"next"))
    # Four bytes of junk are passed over as one unknown signature; three bytes put every
    # signature off its four-byte step, and nothing is found.
    body = local_header(b"a.txt", b"aligned")
    write("junk4.zip", b"JUNK" + body)
    write("junk3.zip", b"JNK" + body)
    # A deflated entry that claims more than deflate can give.
    write("claims_too_much.zip", local_header(b"big.txt", b"x" * 100, method=8, sizes=(10, 0x7FFFFFFF)))


def cut_archive(out):
    """The Python archive cut inside the header of its fourth entry."""
    source = os.path.join(out, "python.zip")
    with zipfile.ZipFile(source) as archive:
        fourth = archive.infolist()[3].header_offset
    with open(source, "rb") as archive:
        data = archive.read(fourth + 10)
    with open(os.path.join(out, "cut.zip"), "wb") as archive:
        archive.write(data)


def many_entries(count, path):
    with zipfile.ZipFile(path, "w") as archive:
        for index in range(count):
            archive.writestr(f"folder{index % 100}/entry{index}.txt", f"entry {index}\n" * 4,
                             zipfile.ZIP_DEFLATED if index % 2 else zipfile.ZIP_STORED)


def main():
    if len(sys.argv) == 4 and sys.argv[1] == "--many":
        many_entries(int(sys.argv[2]), sys.argv[3])
        return
    out = sys.argv[1]
    os.makedirs(out, exist_ok=True)
    python_archive(os.path.join(out, "python.zip"))
    cut_archive(out)
    handmade_archives(out)
    with tempfile.TemporaryDirectory() as work:
        infozip_archives(out, work)


if __name__ == "__main__":
    main()
