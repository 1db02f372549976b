# SPDX-License-Identifier: Apache-2.0
"""Wavefront objects and materials, proved by Blender and by assimp."""
import json
import pathlib
import re
import tempfile

import proof

CORPUS = proof.TESTS / "plugins" / "wavefront" / "corpus" / "make-corpus.py"
MATERIALS = "Material & Farbe"
PICTURES = "Bilder für alle"

# Blender says what it imported: for each material's picture its file and its pixels.
INSPECTOR = """
import bpy, hashlib, json, os, sys
file, result = sys.argv[sys.argv.index("--") + 1:]
bpy.ops.wm.read_factory_settings(use_empty=True)
bpy.ops.wm.obj_import(filepath=file)
found = []
for material in bpy.data.materials:
    for node in material.node_tree.nodes if material.node_tree else []:
        if node.type != "TEX_IMAGE":
            continue
        image, link = node.image, node.outputs[0].links[0]
        loaded = image.size[0] > 0
        pixels = repr([round(value, 3) for value in image.pixels]) if loaded else ""
        found.append({"name": material.name + "/" + link.to_socket.name,
                      "path": os.path.abspath(bpy.path.abspath(image.filepath).replace("\\\\", "/")) if loaded else None,
                      "content": hashlib.sha256(pixels.encode()).hexdigest()[:16] if loaded else None})
json.dump(found, open(result, "w"))
"""


def edit(file):
    """The object gets a comment, and a picture was painted over."""
    file.write_bytes(file.read_bytes() + b"# edited\n")
    pictures = next(folder / PICTURES for folder in file.parents if (folder / PICTURES).exists())
    return [file, *proof.exchange(pictures / "Eiche hell.png", pictures / "Relief.png")]


def make_project(folder):
    """Blender's export, then spread over folders: the libraries are shared, the links of every kind."""
    proof.run_blender("-P", CORPUS, "--", folder)
    (folder / MATERIALS).mkdir()
    for name in ("Stuhl grün", "Tisch 木"):
        (folder / f"{name}.mtl").rename(folder / MATERIALS / f"{name}.mtl")
    far = folder / "weit weg" / "木目 50%.png"
    far.parent.mkdir()
    (folder / PICTURES / "木目 50%.png").rename(far)
    chair, table = folder / MATERIALS / "Stuhl grün.mtl", folder / MATERIALS / "Tisch 木.mtl"
    proof.replace_in(chair, (f"map_Kd {PICTURES}/Eiche hell.png", f"map_Kd -s 1 1 1 ../{PICTURES}/Eiche hell.png"),
                     (f"map_Ns {PICTURES}/Eiche hell.png", f"map_Ns {folder}/{PICTURES}/Eiche hell.png"),
                     (f"map_Kd {PICTURES}/Höhe #1.png", f"map_Kd ..\\{PICTURES}\\Höhe #1.png"),
                     (f"map_Ns {PICTURES}/Höhe #1.png", "map_Ns ../verloren.png"))
    proof.replace_in(table, (f"map_Kd {PICTURES}/Höhe #1.png", f"map_Kd ../{PICTURES}/Höhe #1.png"),
                     (f"map_Ns {PICTURES}/Höhe #1.png", "map_Ns ../verloren.png"),
                     (f"map_Kd {PICTURES}/木目 50%.png", f"map_Kd {far}"),
                     (f"map_Ns {PICTURES}/木目 50%.png", "map_Ns ../weit weg/木目 50%.png"),
                     (f"map_Bump -bm 1.000000 {PICTURES}/Relief.png", f"map_Bump -bm 0.5 ../{PICTURES}/Relief.png"))
    (folder / "Objekte").mkdir()
    # The first library is shared; the second is found by the name of the object alone.
    (folder / "Stuhl grün.obj").rename(folder / "Objekte" / "Stuhl grün.obj")
    proof.replace_in(folder / "Objekte" / "Stuhl grün.obj", ("mtllib Stuhl grün.mtl", f"mtllib ../{MATERIALS}/Stuhl grün.mtl"))
    proof.replace_in(folder / "Tisch 木.obj",
                     ("mtllib Tisch 木.mtl", f"mtllib {MATERIALS}/Tisch 木.mtl\r\nmtllib {MATERIALS}/Stuhl grün.mtl\r\n"))
    # Blender takes no absolute library, assimp takes one from where the object is.
    (folder / "absolut.obj").write_text((folder / "Objekte" / "Stuhl grün.obj").read_text())
    proof.replace_in(folder / "absolut.obj", (f"mtllib ../{MATERIALS}/", f"mtllib {folder}/{MATERIALS}/"))
    own = "newmtl Relief\nKd 0.9 0.8 0.7\nmap_Kd Bilder für alle/Relief.png\n"
    (folder / "Tisch Kopie.mtl").write_text(own)
    lines = (folder / "Tisch 木.obj").read_text().splitlines(keepends=True)
    (folder / "Tisch Kopie.obj").write_text("".join(line for line in lines if not line.startswith("mtllib")))


def ask_blender(file):
    with tempfile.TemporaryDirectory() as place:
        script, result = pathlib.Path(place, "inspect.py"), pathlib.Path(place, "result.json")
        script.write_text(INSPECTOR)
        proof.run_blender("-P", script, "--", file, result)
        return [proof.Reference("Blender: " + entry["name"], entry["path"], entry["content"])
                for entry in json.loads(result.read_text())]


def ask_assimp(file):
    """assimp reads material libraries, and names pictures without opening them. It does not say which file
    a material is from: with the source away, none but the copies can have answered."""
    with tempfile.TemporaryDirectory() as place:
        result = pathlib.Path(place, "result.assxml")
        # From the folder of the object: otherwise assimp puts that folder before an absolute name, too.
        proof.run(["assimp", "dump", file.name, result], cwd=file.parent)
        text = result.read_text(errors="replace")
    references = []
    for block in re.findall(r"<Material>.*?</Material>", text, re.S):
        name = re.search(r'key="\?mat\.name"[^>]*>\s*"(.*?)"\s*</MatProperty>', block, re.S)
        colour = re.search(r'key="\$clr\.diffuse"[^>]*>\s*(.*?)\s*</MatProperty>', block, re.S)
        pictures = block.count('key="$tex.file"')
        if name and name[1] != "DefaultMaterial":
            found = bool(pictures)
            references.append(proof.Reference("assimp: " + name[1], str(file) if found else None,
                                              f"{colour[1] if colour else ''} {pictures}" if found else None))
    return references


def inspect(file):
    if "absolut" in file.name:
        return ask_assimp(file)
    references = ask_blender(file)
    if "Kopie" not in file.name:  # assimp takes no library that no statement names
        references += ask_assimp(file)
    return references


def missing(top):
    return [] if "Kopie" in top or "absolut" in top else ["Blender: Höhe_über_Grund_rau/Roughness"]


def prove(corsync):
    proof.prove(corsync, make_project, inspect,
                ["Objekte/Stuhl grün.obj", "Tisch 木.obj", "absolut.obj", "Tisch Kopie.obj"], edit,
                missing=missing, exit_codes=lambda top: (0,) if "Kopie" in top else (4,))


proof.main(prove)
