# SPDX-License-Identifier: Apache-2.0
"""Makes maschine/ beside this script: an assembly in three levels with a picture, saved by SolveSpace 3.

    python3 make-corpus.py [FOLDER]

SolveSpace completes the models that are written here, and saves them (solvespace-cli regenerate). The output is
committed; tests read it and need no SolveSpace.
"""
import pathlib
import shutil
import struct
import subprocess
import sys
import zlib

HEAD = b"\xb1\xb2\xb3SolveSpaceREVa\n\n\n"
WORKPLANE, CIRCLE, IMAGE = 100, 400, 700
DRAWING_3D, DRAWING_WORKPLANE, EXTRUDE, LINKED = 5000, 5001, 5100, 5300
# The workplane of the second group.
PLANE = "80020000"


def record(kind, **values):
    lines = [f"{kind}.{key.replace('__', '.')}={value}" for key, value in values.items()]
    return "\n".join(lines) + f"\nAdd{kind}\n\n"


def param(handle, value):
    return f"Param.h.v.={handle:08x}\nParam.val={value:.20f}\nAddParam\n\n"


def group(handle, kind, name, **values):
    return record("Group", h__v=f"{handle:08x}", type=kind, order=handle - 1, name=name, **values, visible=1,
                  scale="1.00000000000000000000")


def drawing():
    """The groups that every model begins with."""
    return (group(1, DRAWING_3D, "#references") +
            group(2, DRAWING_WORKPLANE, "sketch-in-plane", activeWorkplane__v=PLANE, subtype=6000,
                  predef__q__w="1.00000000000000000000", predef__origin__v="00010001"))


def requests(*further):
    planes = [record("Request", h__v=f"{handle:08x}", type=WORKPLANE, group__v="00000001", construction=0)
              for handle in (1, 2, 3)]
    return "".join(planes) + "".join(further)


def linked(handle, file, opposite=""):
    return group(handle, LINKED, pathlib.PurePath(file).stem, activeWorkplane__v=PLANE,
                 color="00646464", impFileRel=file)


def place(handle, x, y):
    """Where a linked group stands, unturned."""
    first = 0x80000000 | handle << 16
    return "".join(param(first + i, value) for i, value in enumerate((x, y, 0, 1, 0, 0, 0)))


def part(radius, height):
    """A cylinder."""
    circle = record("Request", h__v="00000004", type=CIRCLE, workplane__v=PLANE, group__v="00000002", construction=0)
    extrude = group(3, EXTRUDE, "extrude", activeWorkplane__v=PLANE, opA__v="00000002", subtype=7000,
                    color="00646464", predef__entityB__v=PLANE)
    values = (param(0x00040010, 0) + param(0x00040011, 0) + param(0x00040040, radius) +
              param(0x80030000, 0) + param(0x80030001, 0) + param(0x80030002, height))
    return drawing() + extrude + values + requests(circle)


def picture(handle, file):
    return record("Request", h__v=f"{handle:08x}", type=IMAGE, workplane__v=PLANE, group__v="00000002",
                  construction=0, file=file, aspectRatio="1.00000000000000000000")


def corners(handle, x, y, size):
    first = handle << 16 | 0x10
    points = ((x, y), (x, y + size), (x + size, y + size), (x + size, y))
    return "".join(param(first + 3 * i + k, value[k]) for i, value in enumerate(points) for k in (0, 1))


def write_png(path, colour):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    rows = b"".join(b"\0" + bytes(colour) * 4 for _ in range(4))
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 4, 4, 8, 2, 0, 0, 0)) +
                     chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def save(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(HEAD + text.encode())
    result = subprocess.run(["solvespace-cli", "regenerate", path], capture_output=True, text=True, check=False)
    if result.returncode != 0 or "rror" in result.stderr:
        sys.exit(f"{path}: {result.stdout}{result.stderr}")


def make(out):
    for name, colour in (("Plan 木.png", (200, 30, 30)), ("Schild #1.png", (30, 30, 200))):
        (out / "Bilder & Pläne").mkdir(parents=True, exist_ok=True)
        write_png(out / "Bilder & Pläne" / name, colour)
    save(out / "Teile" / "Bolzen 木.slvs", part(3, 20))
    save(out / "Teile" / "Träger = groß.slvs", part(8, 5))
    save(out / "Baugruppen" / "Rad.slvs",
         drawing() + linked(3, "../Teile/Bolzen 木.slvs") + linked(4, "../Teile/Träger = groß.slvs") +
         linked(5, "../Teile/Bolzen 木.slvs") + place(3, 0, 0) + place(4, 30, 0) + place(5, 60, 0) +
         corners(4, 0, 0, 10) + requests(picture(4, "../Bilder & Pläne/Schild #1.png")))
    save(out / "Maschine Größe.slvs",
         drawing() + linked(3, "Baugruppen/Rad.slvs") + linked(4, "Teile/Bolzen 木.slvs") +
         place(3, 0, 0) + place(4, 0, 40) + corners(4, 0, 0, 10) + corners(5, 20, 20, 10) +
         requests(picture(4, "Bilder & Pläne/Plan 木.png"), picture(5, "Bilder & Pläne/Plan 木.png")))


def main():
    here = pathlib.Path(__file__).resolve().parent / "maschine"
    out = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else here
    shutil.rmtree(out, ignore_errors=True)
    make(out)


main()
