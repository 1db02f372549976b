# SPDX-License-Identifier: Apache-2.0
"""Makes möbel/ beside this script: scenes with materials and pictures that Blender exported, as Collada and as X3D.

    blender -b --factory-startup -P make-corpus.py [-- FOLDER]

The output is committed; tests read it and need no Blender.
"""
import gzip
import pathlib
import re
import shutil
import sys
import urllib.parse

import bpy

PICTURES = {"Eiche hell": "Eiche hell.png", "Höhe über Grund": "Höhe #1.png", "木目": "木目 50%.png"}
SIZE = 4


def make_picture(path, seed):
    image = bpy.data.images.new(path.stem, SIZE, SIZE)
    image.pixels = [value for i in range(SIZE * SIZE)
                    for value in ((i * 5 + seed) % 16 / 15, (i * 3 + seed * 7) % 16 / 15, seed / 9, 1.0)]
    image.filepath_raw = str(path)
    image.file_format = "PNG"
    image.save()
    return image


def make_plane(number, name, image):
    material = bpy.data.materials.new(name)
    material.use_nodes = True
    nodes = material.node_tree.nodes
    texture = nodes.new("ShaderNodeTexImage")
    texture.image = image
    material.node_tree.links.new(texture.outputs["Color"], nodes["Principled BSDF"].inputs["Base Color"])
    bpy.ops.mesh.primitive_plane_add(size=1, location=(number, 0, 0))
    bpy.context.object.name = f"Fläche {number}"
    bpy.context.object.data.materials.append(material)


def spread(out):
    """Blender writes the names of pictures into Collada with this folder, and into X3D not at all any more."""
    table = out / "Tisch 木.x3dz"
    scene = out / "Stuhl grün.x3d"
    collada = out / "Stuhl grün.dae"
    own = urllib.parse.quote(str(out)) + "/"
    text = collada.read_text(encoding="utf-8")
    if text.count(own) != len(PICTURES):
        sys.exit(f"{own} is not in the document as expected")
    collada.write_text(text.replace(own, ""), encoding="utf-8", newline="")
    pictures = iter(PICTURES.values())

    def with_picture(match):
        # Blender takes no encoded names, but a plain "#" would begin a part of the picture.
        address = f"Bilder für alle/{next(pictures)}".replace("#", "%23")
        return f"{match[0]}\n<ImageTexture url='\"verloren.png\" \"{address}\"'/>"

    text = re.sub(r"<Material DEF=[^>]*/>", with_picture, scene.read_text(encoding="utf-8"))
    scene.write_text(text, encoding="utf-8", newline="")
    table.write_bytes(gzip.compress(text.encode().replace(b"verloren.png", b"fort.png"), mtime=0))


def main():
    here = pathlib.Path(__file__).resolve().parent / "möbel"
    out = pathlib.Path(sys.argv[sys.argv.index("--") + 1]) if "--" in sys.argv else here
    shutil.rmtree(out, ignore_errors=True)
    pictures = out / "Bilder für alle"
    pictures.mkdir(parents=True)
    bpy.ops.wm.read_factory_settings(use_empty=True)
    bpy.ops.preferences.addon_enable(module="io_scene_x3d")
    for number, (name, file) in enumerate(PICTURES.items(), 1):
        make_plane(number, name, make_picture(pictures / file, number))
    results = {bpy.ops.wm.collada_export(filepath=str(out / "Stuhl grün.dae"), use_texture_copies=False).pop(),
               bpy.ops.export_scene.x3d(filepath=str(out / "Stuhl grün.x3d"), path_mode="RELATIVE").pop(),
               bpy.ops.export_scene.x3d(filepath=str(out / "Tisch 木.x3dz"), path_mode="RELATIVE",
                                        use_compress=True).pop()}
    if results != {"FINISHED"}:
        sys.exit("the export failed")
    spread(out)


main()
