# SPDX-License-Identifier: Apache-2.0
"""Inkscape and rsvg-convert show the copies of drawings with everything that the drawings use.

Every file of the project has a colour of its own, every reference a cell of the drawing. What a program puts into
a cell tells which file it took, and the system calls tell which files it opened.
"""
import ast
import gzip
import pathlib
import re
import struct
import sys
import tempfile
import zlib

import proof

INKSCAPE = ("Zeichnungen/Haupt Größe.svg", "Zeichnungen/Neben.svgz")
RSVG = ("Plan/Plan 1.svg", "Plan/Plan 2.svgz")
CELLS = {"Haupt": (0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 12), "Neben": (0, 1), "Plan": (0, 1, 2, 3, 4, 5, 6, 7, 10, 11, 12)}
MISSING = {"Haupt": "cell 8", "Plan": "cell 6"}


def kind_of(file):
    return re.match(r"\w+", pathlib.PurePath(file).name).group()


def rows_of(path):
    """The pixels of a PNG with 8 bits per channel, row by row, and the bytes per pixel."""
    data = path.read_bytes()
    at, packed = 8, b""
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        if kind == b"IHDR":
            width, height, _, colours = struct.unpack(">IIBB", body[:10])
        packed += body if kind == b"IDAT" else b""
        at += 12 + size
    step = {2: 3, 6: 4}[colours]
    return unfiltered(zlib.decompress(packed), width * step, height, step), step


def unfiltered(raw, length, height, step):
    rows, above = [], bytes(length)
    for y in range(height):
        start = y * (length + 1)
        row = bytearray(raw[start + 1:start + 1 + length])
        for x in range(length):
            left = row[x - step] if x >= step else 0
            corner = above[x - step] if x >= step else 0
            guess = left + above[x] - corner
            nearest = min((left, above[x], corner), key=lambda value: abs(guess - value))
            row[x] = (row[x] + (0, left, above[x], (left + above[x]) // 2, nearest)[raw[start]]) & 255
        rows.append(bytes(row))
        above = rows[-1]
    return rows


def colour_at(rows, step, cell):
    x, y = (cell % 10 * 10 + 4) * step, cell // 10 * 10 + 4
    pixel = rows[y][x:x + step]
    return pixel[:3].hex() if step == 3 or pixel[3] == 255 else None


def has_colour(file, colour):
    if file.suffix == ".png":
        rows, step = rows_of(file)
        return colour_at(rows, step, 0) == colour
    return f"#{colour}" in file.read_text(encoding="utf-8")


def opened_files(trace):
    """Files of the project that a program opened; strace writes names as C strings of bytes."""
    found = set()
    for literal in re.findall(r'open(?:at)?\(.*?("(?:[^"\\]|\\.)*"), O_RDONLY.*\) = \d', trace.read_text()):
        path = pathlib.Path(ast.literal_eval("b" + literal).decode())
        if path.is_absolute() and path.suffix in (".png", ".svg", ".css") and path.is_file():
            found.add(path)
    return found


def inspect(file):
    with tempfile.TemporaryDirectory() as place:
        place = pathlib.Path(place)
        output, trace = place / "out", place / "trace"
        if kind_of(file) == "Plan":
            command = ["rsvg-convert", file, "--output", output]
        else:
            command = ["inkscape", file, "--export-type=png", f"--export-filename={output}"]
        proof.run(["strace", "-f", "-s", "4096", "-e", "trace=open,openat", "-o", trace, *command], cwd=place)
        output = output if output.exists() else output.with_suffix(".png")
        rows, step = rows_of(output)
        # Not the picture that the program wrote.
        opened = {path for path in opened_files(trace) if place not in path.parents}
    references = []
    for cell in CELLS[kind_of(file)]:
        colour = colour_at(rows, step, cell)
        owners = [path for path in opened if colour and has_colour(path, colour)]
        proof.check(len(owners) < 2, f"{file}: {colour} stands in {owners}")
        references.append(proof.Reference(f"cell {cell}", str(owners[0]) if owners else None,
                                          colour if owners else None))
    return references


def make_project(folder):
    proof.run([sys.executable, proof.TESTS / "plugins/svg/corpus/make-corpus.py", folder, "--full"])


def edit(file):
    """The drawing gets a comment, and pictures were painted over."""
    is_packed = file.suffix == ".svgz"
    text = gzip.decompress(file.read_bytes()) if is_packed else file.read_bytes()
    text = text.replace(b"</svg>", b"<!-- edited --></svg>")
    file.write_bytes(gzip.compress(text) if is_packed else text)
    pictures = file.parent.parent / "Fern"
    return [file, *proof.exchange(pictures / "Oliv.png", pictures / "Orange (1).png")]


def prove(corsync):
    proof.prove(corsync, make_project, inspect, INKSCAPE + RSVG, edit,
                missing=lambda top: [MISSING[kind_of(top)]] if kind_of(top) in MISSING else [], exit_codes=(4,))


proof.main(prove)
