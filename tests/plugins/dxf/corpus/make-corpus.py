# SPDX-License-Identifier: Apache-2.0
"""Makes bau/ beside this script: drawings of several versions in both forms that refer to each other and to pictures,
written by ezdxf.

    python3 make-corpus.py [FOLDER]

The output is committed; tests read it and need no ezdxf.
"""
import pathlib
import shutil
import struct
import sys
import zlib

import ezdxf

HOUSE, OLD, BINARY, OLDEST = "Pläne/Haus 木.dxf", "Pläne/Alt.dxf", "Pläne/Binär.dxf", "Pläne/R12 binär.dxf"
PICTURES = {"Foto #1.png": (200, 30, 30), "Grün 50%.png": (30, 200, 30), "木目.png": (30, 30, 200)}


def write_png(path, colour):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    rows = b"".join(b"\0" + bytes(colour) * 4 for _ in range(4))
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 4, 4, 8, 2, 0, 0, 0)) +
                     chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def drawing(version, xrefs=(), pictures=(), underlays=()):
    document = ezdxf.new(version)
    space = document.modelspace()
    space.add_line((0, 0), (10, 10))
    for number, (name, path) in enumerate(xrefs):
        document.add_xref_def(path, name)
        space.add_blockref(name, (10 * number, 0))
    for number, path in enumerate(pictures):
        space.add_image(document.add_image_def(path, (4, 4)), insert=(10 * number, 20), size_in_units=(8, 8))
    for number, path in enumerate(underlays):
        space.add_underlay(document.add_underlay_def(path, "pdf", "1"), insert=(10 * number, 40))
    return document


def part(path, length):
    document = ezdxf.new("R2000")
    document.modelspace().add_line((0, 0), (length, 0))
    document.saveas(path)


def make(out):
    for folder in ("Pläne", "Teile", "Bilder & mehr"):
        (out / folder).mkdir(parents=True)
    for name, colour in PICTURES.items():
        write_png(out / "Bilder & mehr" / name, colour)
    (out / "Bilder & mehr" / "Grundriß.pdf").write_bytes(b"%PDF-1.4\n%%EOF\n")
    part(out / "Teile/Tür.dxf", 1)
    part(out / "Teile/Fenster.dxf", 2)
    part(out / "Pläne/Dach.dxf", 3)
    doors = [("Tür", "../Teile/Tür.dxf"), ("Dach", "Dach.dxf")]
    pictures = [f"../Bilder & mehr/{name}" for name in PICTURES]
    drawing("R2018", doors, [*pictures, pictures[0]], ["../Bilder & mehr/Grundriß.pdf"]).saveas(out / HOUSE)
    # A picture whose name the code page has, and one whose name it has not.
    drawing("R2000", doors, pictures[1:]).saveas(out / OLD)
    drawing("R2010", [("Fenster", "..\\Teile\\Fenster.dxf"), *doors], pictures).saveas(out / BINARY, fmt="bin")
    drawing("R12", [("Fenster", "..\\Teile\\Fenster.dxf"), ("DACH", "Dach.dxf")]).saveas(out / OLDEST, fmt="bin")


def main():
    here = pathlib.Path(__file__).resolve().parent / "bau"
    out = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else here
    shutil.rmtree(out, ignore_errors=True)
    make(out)


main()
