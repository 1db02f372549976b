# SPDX-License-Identifier: Apache-2.0
"""Makes a project of glTF scenes with Blender's exporter.

    blender -b --factory-startup -P make_gltf_project.py -- FOLDER

    Szenen/Haus 木.gltf   as exported: encoded names, pictures in ../Bilder, one of them lost afterwards
    Szenen/Garten.gltf    as exported; shares two of these pictures
    Szenen/Roh.gltf       the garden with names that are not encoded, as some exporters write them
    Szenen/Datei.gltf     the garden with file:// addresses, and an extension that names a file
    Kiste.glb             the garden in binary form, its pictures outside
"""
import json
import pathlib
import struct
import sys
import urllib.parse

import bpy

NAMES = ("Höhe über Grund.png", "50% grün.png", "Straße #1.png", "木目.png", "verloren.png")


def picture(path, size, seed):
    path.parent.mkdir(parents=True, exist_ok=True)
    image = bpy.data.images.new("picture", size, size)
    image.pixels = [seed / 10, seed * 3 % 10 / 10, seed * 7 % 10 / 10, 1.0] * (size * size)
    image.file_format = "PNG"
    image.filepath_raw = str(path)
    image.save()


def plane(number, image):
    bpy.ops.mesh.primitive_plane_add(size=1 + number, location=(number, 0, 0))
    material = bpy.data.materials.new(f"Material {number}")
    material.use_nodes = True
    nodes = material.node_tree.nodes
    texture = nodes.new("ShaderNodeTexImage")
    texture.image = bpy.data.images.load(str(image))
    material.node_tree.links.new(texture.outputs["Color"], nodes["Principled BSDF"].inputs["Base Color"])
    bpy.context.object.data.materials.append(material)


def export(path, pictures, first):
    bpy.ops.wm.read_factory_settings(use_empty=True)
    for number, image in enumerate(pictures, first):
        plane(number, image)
    path.parent.mkdir(exist_ok=True)
    result = bpy.ops.export_scene.gltf(filepath=str(path), export_format="GLTF_SEPARATE",
                                       export_keep_originals=True)
    if result != {"FINISHED"}:
        sys.exit("the export failed")


def every_uri(scene):
    return scene["images"] + scene["buffers"]


def write(path, scene):
    path.write_text(json.dumps(scene, ensure_ascii=False, indent=1))


def make_raw(garden):
    scene = json.loads(garden.read_text())
    for entry in every_uri(scene):
        entry["uri"] = urllib.parse.unquote(entry["uri"])
    write(garden.with_name("Roh.gltf"), scene)


def make_addresses(garden):
    scene = json.loads(garden.read_text())
    for entry in every_uri(scene):
        file = (garden.parent / urllib.parse.unquote(entry["uri"])).resolve()
        entry["uri"] = file.as_uri()
    scene["extensionsUsed"] = ["EXT_lights_ies"]
    scene["extensions"] = {"EXT_lights_ies": {"lights": [{"uri": "../Licht/Laterne%20%C3%B6.ies"}]}}
    write(garden.with_name("Datei.gltf"), scene)


def make_binary(garden, target):
    scene = json.loads(garden.read_text())
    data = (garden.parent / urllib.parse.unquote(scene["buffers"][0].pop("uri"))).read_bytes()
    for image in scene["images"]:
        image["uri"] = image["uri"].removeprefix("../")
    text = json.dumps(scene).encode()
    chunks = b"".join(struct.pack("<I4s", len(chunk), kind) + chunk
                      for kind, chunk in ((b"JSON", text + b" " * (-len(text) % 4)),
                                          (b"BIN\0", data + b"\0" * (-len(data) % 4))))
    target.write_bytes(struct.pack("<4sII", b"glTF", 2, 12 + len(chunks)) + chunks)


def main():
    root = pathlib.Path(sys.argv[sys.argv.index("--") + 1]).resolve()
    pictures = [root / "Bilder" / name for name in NAMES]
    for number, path in enumerate(pictures):
        picture(path, 4 + number, number)
    (root / "Licht").mkdir()
    (root / "Licht/Laterne ö.ies").write_text("IESNA:LM-63-1995\nTILT=NONE\n")
    garden = root / "Szenen/Garten.gltf"
    export(root / "Szenen/Haus 木.gltf", pictures, 1)
    export(garden, pictures[:3], 11)
    make_raw(garden)
    make_addresses(garden)
    make_binary(garden, root / "Kiste.glb")
    pictures[-1].unlink()


try:
    main()
except BaseException:
    import traceback
    traceback.print_exc()
    sys.exit(1)
