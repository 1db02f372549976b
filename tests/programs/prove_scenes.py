# SPDX-License-Identifier: Apache-2.0
"""Collada, X3D and VRML scenes, proved by Blender, and Collada by assimp as well."""
import json
import pathlib
import re
import shutil
import tempfile

import proof

CORPUS = proof.TESTS / "plugins" / "scenes" / "corpus" / "möbel"
PICTURES = "Bilder für alle"
PART = "Teile/Regal.wrl"
TOPS = ["Szenen/Stuhl grün.dae", "Szenen/Stuhl grün.x3d", "Szenen/Zimmer 木.wrl"]

# Blender says which pictures it has loaded, and for which material.
# Blender says "rU" to open(), which this Python does not know any more.
INSPECTOR = """
import bpy, builtins, hashlib, json, os, sys
plain_open = builtins.open
builtins.open = lambda file, mode="r", *more, **named: plain_open(file, mode.replace("U", ""), *more, **named)
file, result = sys.argv[sys.argv.index("--") + 1:]
bpy.ops.wm.read_factory_settings(use_empty=True)
if file.endswith(".dae"):
    bpy.ops.wm.collada_import(filepath=file)
else:
    bpy.ops.preferences.addon_enable(module="io_scene_x3d")
    bpy.ops.import_scene.x3d(filepath=file)
found = []
for image in bpy.data.images:
    if image.size[0] > 0:
        pixels = repr([round(value, 3) for value in image.pixels])
        users = sorted(material.name for material in bpy.data.materials if material.node_tree
                       for node in material.node_tree.nodes if getattr(node, "image", None) == image)
        found.append({"name": " ".join(users), "path": os.path.abspath(bpy.path.abspath(image.filepath)),
                      "content": hashlib.sha256(pixels.encode()).hexdigest()[:16]})
json.dump(found, open(result, "w"))
"""


def make_project(folder):
    """Blender's export, spread over folders; the room shows a shelf of another file."""
    shutil.copytree(CORPUS / PICTURES, folder / PICTURES)
    (folder / "Szenen").mkdir()
    far = folder / "weit weg" / "木目 50%.png"
    far.parent.mkdir()
    (folder / PICTURES / "木目 50%.png").rename(far)
    for name in ("Stuhl grün.dae", "Stuhl grün.x3d"):
        shutil.copy(CORPUS / name, folder / "Szenen" / name)
    collada, scene = folder / TOPS[0], folder / TOPS[1]
    encoded = "Bilder%20f%C3%BCr%20alle/"
    proof.replace_in(collada, (f"{encoded}Eiche", f"../{encoded}Eiche"), (f"{encoded}H%C3%B6he%20#1", f"../{encoded}H%C3%B6he%20%231"),
                     (f"{encoded}%E6%9C%A8%E7%9B%AE%2050%", "../weit%20weg/%E6%9C%A8%E7%9B%AE%2050%25"))
    proof.replace_in(scene, (f"{PICTURES}/Eiche", f"../{PICTURES}/Eiche"), (f"{PICTURES}/Höhe %231", f"../{PICTURES}/Relief"),
                     (f"{PICTURES}/木目", "../weit weg/木目"))
    shutil.copy(folder / PICTURES / "Höhe #1.png", folder / PICTURES / "Relief.png")
    shelf = folder / PART
    shelf.parent.mkdir()
    shelf.write_text(vrml(f"../{PICTURES}/Relief.png"))
    (folder / TOPS[2]).write_text(vrml(f"../{PICTURES}/Eiche hell.png") +
                                  "Inline { url \"../Teile/Regal.wrl\" }\n")


def vrml(picture):
    return ("#VRML V2.0 utf8\nShape { appearance Appearance { material Material { diffuseColor 1 0 0 } texture "
            f"ImageTexture {{ url \"{picture}\" }} }} geometry IndexedFaceSet {{ coord Coordinate {{ point [ 0 0 0, 1 0 0, "
            "0 1 0 ] } texCoord TextureCoordinate { point [ 0 0, 1 0, 0 1 ] } coordIndex [ 0 1 2 -1 ] } }\n")


def ask_blender(file):
    with tempfile.TemporaryDirectory() as place:
        script, result = pathlib.Path(place, "inspect.py"), pathlib.Path(place, "result.json")
        script.write_text(INSPECTOR)
        proof.run_blender("-P", script, "--", file, result)
        return [proof.Reference("Blender: " + entry["name"], entry["path"], entry["content"])
                for entry in json.loads(result.read_text())]


def ask_assimp(file):
    """assimp names pictures without opening them: what lies there is looked at here."""
    with tempfile.TemporaryDirectory() as place:
        result = pathlib.Path(place, "result.assxml")
        proof.run(["assimp", "dump", file.name, result], cwd=file.parent)
        text = result.read_text(errors="replace")
    references = []
    for number, found in enumerate(re.findall(r'key="\$tex\.file"[^>]*>\s*"(.*?)"\s*</MatProperty>', text, re.S)):
        path = file.parent / found
        there = path.is_file()
        references.append(proof.Reference(f"assimp: picture {number}", str(path) if there else None,
                                          proof.digest(path) if there else None))
    return references


def inspect(file):
    return ask_blender(file) + (ask_assimp(file) if file.suffix == ".dae" else [])


def edit(file):
    """The scene gets a blank, and a picture was painted over."""
    file.write_bytes(file.read_bytes() + b"\n")
    pictures = next(folder / PICTURES for folder in file.parents if (folder / PICTURES).exists())
    return [file, *proof.exchange(pictures / "Eiche hell.png", pictures / "Relief.png")]


def prove(corsync):
    # An alternative of one scene is missing on purpose.
    proof.prove(corsync, make_project, inspect, TOPS, edit, exit_codes=lambda top: (4,) if top.endswith(".x3d") else (0,))


proof.main(prove)
