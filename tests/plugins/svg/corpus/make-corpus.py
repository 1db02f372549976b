# SPDX-License-Identifier: Apache-2.0
"""Makes a project of SVG drawings that use each other, pictures and style sheets; Inkscape writes the drawings.

    python3 make-corpus.py /some/empty/folder [--full]

The committed output was made with Inkscape 1.2. --full adds what only a proof needs: links by absolute names.
Each file has a colour of its own, and each drawing shows one reference per cell of a grid of 10 x 10 points, so
that a picture of it tells which file every reference led to.
"""
import pathlib
import struct
import subprocess
import sys
import zlib

HEAD = ('<?xml version="1.0" encoding="UTF-8"?>\n{instructions}'
        '<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" '
        'xmlns:sodipodi="http://sodipodi.sourceforge.net/DTD/sodipodi-0.dtd" width="100" height="20">\n')


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8", newline="\n")


def picture(path, colour):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + bytes.fromhex(colour) * 8 for _ in range(8))
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 8, 8, 8, 2, 0, 0, 0)) +
                     chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def image(number, address, attribute="xlink:href", more=""):
    x, y = number % 10 * 10, number // 10 * 10
    return f'<image id="cell{number}" {attribute}="{address}" {more}x="{x}" y="{y}" width="8" height="8"/>\n'


def square(number, attributes):
    x, y = number % 10 * 10, number // 10 * 10
    return f'<rect id="cell{number}" {attributes} x="{x}" y="{y}" width="8" height="8"/>\n'


def use(number, address):
    return f'<use id="cell{number}" xlink:href="{address}" x="{number % 10 * 10}" y="{number // 10 * 10}"/>\n'


def save(path, body, instructions=""):
    """Has Inkscape write the drawing, compressed when the name says so."""
    draft = path.with_name("draft.svg")
    write(draft, HEAD.format(instructions=instructions) + body + "</svg>\n")
    subprocess.run(["inkscape", draft.name, f"--export-filename={path.name}"], cwd=path.parent, check=True,
                   stdin=subprocess.DEVNULL, capture_output=True, timeout=120)
    draft.unlink()
    assert path.exists(), path


def parts(path, colours, back):
    """What other drawings take parts of; one part comes from a drawing that uses this one: a cycle."""
    square_colour, gradient, flood = colours
    save(path, f'<linearGradient id="g"><stop stop-color="#{gradient}"/></linearGradient>\n'
               f'<rect id="r" width="8" height="8" fill="#{square_colour}"/>\n'
               f'<filter id="f" x="0" y="0" width="1" height="1"><feFlood flood-color="#{flood}"/></filter>\n'
               f'<use xlink:href="{back}" x="90"/>\n')


def add_absolute_names(drawing, project):
    """As they occur in the wild; Inkscape itself writes relative names where it can."""
    text = drawing.read_text(encoding="utf-8")
    for old, new in (("../Fern/Orange%20(1).png", (project / "Fern/Orange (1).png").as_uri()),
                     ("../Fern/Grau's.png", f"{project}/Fern/Grau's.png"),
                     ('"../Fern/Oliv.png"', f'"verzogen/Oliv.png" sodipodi:absref="{project}/Fern/Oliv.png"')):
        assert old in text, old
        text = text.replace(old, new)
    write(drawing, text)


def make_for_inkscape(project, full):
    """Inkscape follows links to anywhere, in xlink:href and url()."""
    folder = project / "Zeichnungen"
    picture(project / "Bilder & Texturen/Rot 赤.png", "ff0000")
    picture(project / "Bilder & Texturen/Grün #1 50%.png", "00c800")
    picture(folder / "Blau.png", "0000ff")
    picture(project / "Fern/Orange (1).png", "c86400")
    picture(project / "Fern/Grau's.png", "646464")
    picture(project / "Fern/Oliv.png", "808000")
    parts(folder / "Teile ü.svg", ("aa00aa", "123456", "00fe00"), "Haupt%20Gr%C3%B6%C3%9Fe.svg#cell0")
    save(folder / "Haupt Größe.svg",
         image(0, "../Bilder &amp; Texturen/Rot 赤.png") +
         image(1, "../Bilder%20&amp;%20Texturen/Gr%C3%BCn%20%231%2050%25.png") +
         image(2, "Blau.png") +
         image(3, "../Fern/Orange%20(1).png") +
         image(4, "../Fern/Grau's.png") +
         use(5, "Teile ü.svg#r") +
         square(6, 'fill="url(Teile%20ü.svg#g)"') +
         square(7, "style=\"filter:url('Teile ü.svg#f')\"") +
         image(8, "Gibt es nicht.png") +
         image(10, "../Bilder%20&amp;%20Texturen/Rot%20%E8%B5%A4.png") +
         image(11, "data:image/png;base64,iVBORw0KGgo=") +
         image(12, "../Fern/Oliv.png"))
    if full:
        add_absolute_names(folder / "Haupt Größe.svg", project)
    save(folder / "Neben.svgz", image(0, "../Bilder%20&amp;%20Texturen/Rot%20%E8%B5%A4.png") + use(1, "Teile ü.svg#r"))


def make_for_rsvg(project):
    """librsvg follows links to the drawing's own folder and those below it, also href without a prefix."""
    folder = project / "Plan"
    picture(folder / "Bilder/Türkis 青.png", "00aaaa")
    picture(folder / "Gelb 1.png", "fafa00")
    parts(folder / "Teile/Teile ü.svg", ("5500aa", "654321", "00ffaa"), "../Plan%201.svg#cell12")
    write(folder / "Stil/farben.css", '@import "mehr farben.css";\n.c1 { fill: #abcdef }\n')
    write(folder / "Stil/mehr farben.css", ".c2 { fill: #fedcba } /* url(nichts.png) */\n")
    write(folder / "Stil/eigene.css", ".c3 { fill: #0f0f0f }\n")
    body = (
        "<style><![CDATA[@import url(Stil/eigene.css);]]></style>\n" +
        image(0, "Bilder/T%C3%BCrkis%20%E9%9D%92.png", "href") +
        image(1, "Bilder/Türkis 青.png") +
        image(2, "Gelb 1.png", "href") +
        use(3, "Teile/Teile%20%C3%BC.svg#r") +
        square(4, 'fill="url(&quot;Teile/Teile ü.svg#g&quot;)"') +
        square(5, "filter=\"url('Teile/Teile%20ü.svg#f')\"") +
        image(6, "Verloren.png") +
        '<filter id="fi" x="0" y="0" width="1" height="1"><feImage id="fe" xlink:href="Gelb%201.png"/></filter>\n' +
        square(7, 'filter="url(#fi)"') +
        square(10, 'class="c1"') + square(11, 'class="c2"') + square(12, 'class="c3"'))
    style = '<?xml-stylesheet type="text/css" href="Stil/farben.css"?>\n'
    save(folder / "Plan 1.svg", body, style)
    save(folder / "Plan 2.svgz", body, style)


def main():
    project = pathlib.Path(sys.argv[1])
    make_for_inkscape(project, "--full" in sys.argv)
    make_for_rsvg(project)


main()
