# SPDX-License-Identifier: Apache-2.0
"""3DS, LightWave, DirectX and PLY meshes, proved by assimp, which made all of them but the LightWave objects."""
import pathlib
import re
import struct
import tempfile

import proof

CORPUS = proof.TESTS / "plugins" / "scenes" / "corpus" / "möbel" / "Bilder für alle"
PICTURES = "Bilder für alle"
OBJECT = """mtllib teil.mtl
v 0 0 0
v 1 0 0
v 0 1 0
vt 0 0
vt 1 0
vt 0 1
vn 0 0 1
usemtl Eiche
f 1/1/1 2/2/1 3/3/1
usemtl Kiefer
f 1/1/1 3/3/1 2/2/1
"""
TOPS = ["Objekte/Stuhl grün.3ds", "Objekte/Tisch 木.x", "Objekte/neu.lwo", "Scan.ply"]


def chunk(kind, content, size=">I"):
    return kind + struct.pack(size, len(content)) + content + b"\0" * (len(content) % 2)


def name(text):
    data = text.encode() + b"\0"
    return data + b"\0" * (len(data) % 2)


def triangle():
    return chunk(b"PNTS", struct.pack(">9f", 0, 0, 0, 1, 0, 0, 0, 1, 0))


def lightwave_object(*pictures):
    """Of the form LWO2: this assimp finds nothing in objects of the old form."""
    clips = b"".join(chunk(b"CLIP", struct.pack(">I", number) + chunk(b"STIL", name(picture), ">H"))
                     for number, picture in enumerate(pictures, 1))
    surfaces = b""
    for number in range(1, len(pictures) + 1):
        head = chunk(b"IMAP", name("a" * number) + chunk(b"CHAN", b"COLR", ">H"), ">H")
        block = head + chunk(b"PROJ", struct.pack(">H", 0), ">H") + chunk(b"IMAG", struct.pack(">H", number), ">H")
        surfaces += chunk(b"SURF", name(f"Holz {number}") + name("") + chunk(b"BLOK", block, ">H"))
    tags = b"".join(name(f"Holz {number}") for number in range(1, len(pictures) + 1))
    polygons = chunk(b"POLS", b"FACE" + struct.pack(">4H", 3, 0, 1, 2) * len(pictures))
    assigned = chunk(b"PTAG", b"SURF" + b"".join(struct.pack(">2H", i, i) for i in range(len(pictures))))
    layer = chunk(b"LAYR", struct.pack(">2H3f", 0, 0, 0, 0, 0) + name(""))
    return chunk(b"FORM", b"LWO2" + chunk(b"TAGS", tags) + layer + triangle() + polygons + assigned + clips + surfaces)


def make_project(folder):
    pictures = folder / PICTURES
    pictures.mkdir()
    for number, file in enumerate(sorted(CORPUS.glob("*.png"))):
        (pictures / f"Bild {number}.png").write_bytes(file.read_bytes())
    far = folder / "weit weg" / "木目.png"
    far.parent.mkdir()
    far.write_bytes((pictures / "Bild 2.png").read_bytes())
    (folder / "Objekte").mkdir()
    up = f"../{PICTURES}"
    export(folder / TOPS[0], f"{up}/Bild 0.png", "../weit weg/木目.png")
    export(folder / TOPS[1], f"{up}/Bild 1.png", f"{folder}/{PICTURES}/Bild 0.png")
    export(folder / TOPS[3], "verloren.png", f"{PICTURES}/Bild 0.png")
    (folder / TOPS[2]).write_bytes(lightwave_object(f"{up}/Bild 0.png", "../weit weg/木目.png", str(pictures / "Bild 1.png")))


def export(file, first, second):
    with tempfile.TemporaryDirectory() as place:
        place = pathlib.Path(place)
        (place / "teil.obj").write_text(OBJECT)
        (place / "teil.mtl").write_text(f"newmtl Eiche\nKd 1 0 0\nmap_Kd {first}\nnewmtl Kiefer\nKd 0 1 0\nmap_Kd {second}\n")
        proof.run(["assimp", "export", "teil.obj", "out" + file.suffix], cwd=place)
        file.write_bytes((place / ("out" + file.suffix)).read_bytes())


def text_of(data):
    """assimp hands on the bytes that the file has."""
    try:
        return data.decode()
    except UnicodeDecodeError:
        return data.decode("latin-1")


def inspect(file):
    """assimp names pictures without opening them: what lies there is looked at here."""
    with tempfile.TemporaryDirectory() as place:
        result = pathlib.Path(place, "result.assxml")
        proof.run(["assimp", "dump", file.name, result], cwd=file.parent)
        data = result.read_bytes()
    references = []
    for number, found in enumerate(re.findall(rb'key="\$tex\.file"[^>]*>\s*"(.*?)"\s*</MatProperty>', data, re.S)):
        path = file.parent / text_of(found.strip()).replace("&amp;", "&")
        there = path.is_file()
        references.append(proof.Reference(f"picture {number}", str(path) if there else None,
                                          proof.digest(path) if there else None))
    return references


def edit(file):
    """Something that does not name pictures changes, and a picture was painted over."""
    pictures = next(folder / PICTURES for folder in file.parents if (folder / PICTURES).exists())
    changed = proof.exchange(pictures / "Bild 0.png", pictures / "Bild 1.png")
    data = file.read_bytes()
    if file.suffix == ".lwo":
        file.write_bytes(data.replace(struct.pack(">f", 1), struct.pack(">f", 2), 1))
    else:
        file.write_bytes(data + b"\n")
    return [file, *changed]


def prove(corsync):
    # Of the pictures of a PLY file assimp takes the last one.
    proof.prove(corsync, make_project, inspect, TOPS, edit,
                exit_codes=lambda top: (4,) if top.endswith(".ply") else (0,))


proof.main(prove)
