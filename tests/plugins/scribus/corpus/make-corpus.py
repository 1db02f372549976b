# SPDX-License-Identifier: Apache-2.0
"""Makes heft/: two documents with pictures, one of them compressed, saved by Scribus.

    QT_QPA_PLATFORM=offscreen scribus -g -ns -py make-corpus.py FOLDER

The output is committed; tests read it and need no Scribus.
"""
import pathlib
import shutil
import struct
import sys
import zlib

import scribus

PICTURES = {"Foto #1.png": (200, 30, 30), "Grün & 50%.png": (30, 200, 30), "木目.png": (30, 30, 200)}


def write_png(path, colour):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    rows = b"".join(b"\0" + bytes(colour) * 4 for _ in range(4))
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 4, 4, 8, 2, 0, 0, 0)) +
                     chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def document(path, pictures):
    scribus.newDocument(scribus.PAPER_A4, (10, 10, 10, 10), scribus.PORTRAIT, 1, scribus.UNIT_POINTS, scribus.PAGE_1,
                        0, 1)
    for number, picture in enumerate(pictures):
        name = scribus.createImage(10 + 60 * number, 10, 50, 50, f"Bild {number}")
        scribus.loadImage(str(picture), name)
    text = scribus.createText(10, 200, 300, 100, "Text")
    scribus.setText("Größe & <Maße>", text)
    path.parent.mkdir(parents=True, exist_ok=True)
    scribus.saveDocAs(str(path))
    scribus.closeDoc()


def main():
    out = pathlib.Path(sys.argv[-1]).absolute()
    shutil.rmtree(out, ignore_errors=True)
    pictures = out / "Bilder"
    pictures.mkdir(parents=True)
    for name, colour in PICTURES.items():
        write_png(pictures / name, colour)
    files = [pictures / name for name in PICTURES]
    document(out / "Heft/Heft Größe.sla", [*files, files[0]])
    document(out / "Heft/Beilage.sla.gz", files[1:])


main()
