# SPDX-License-Identifier: Apache-2.0
"""Makes möbel/ beside this script: two objects that Blender exported, with their materials and pictures.

    blender -b --factory-startup -P make-corpus.py [-- FOLDER]

The output is committed; tests read it and need no Blender.
"""
import pathlib
import shutil
import sys

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


def make_material(name, colour, image, socket):
    material = bpy.data.materials.new(name)
    material.use_nodes = True
    nodes, links = material.node_tree.nodes, material.node_tree.links
    shader = nodes["Principled BSDF"]
    shader.inputs["Base Color"].default_value = (*colour, 1)
    texture = nodes.new("ShaderNodeTexImage")
    texture.image = image
    if socket == "Normal":
        bump = nodes.new("ShaderNodeNormalMap")
        links.new(texture.outputs["Color"], bump.inputs["Color"])
        links.new(bump.outputs["Normal"], shader.inputs["Normal"])
    else:
        links.new(texture.outputs["Color"], shader.inputs[socket])
    return material


def export(folder, name, materials):
    for number, material in enumerate(materials):
        bpy.ops.mesh.primitive_plane_add(size=1, location=(number, 0, 0))
        bpy.context.object.name = material.name
        bpy.context.object.data.materials.append(material)
    result = bpy.ops.wm.obj_export(filepath=str(folder / name), path_mode="RELATIVE")
    bpy.ops.object.select_all(action="SELECT")
    bpy.ops.object.delete()
    if result != {"FINISHED"}:
        sys.exit("the export failed")


def main():
    here = pathlib.Path(__file__).resolve().parent / "möbel"
    out = pathlib.Path(sys.argv[sys.argv.index("--") + 1]) if "--" in sys.argv else here
    shutil.rmtree(out, ignore_errors=True)
    pictures = out / "Bilder für alle"
    pictures.mkdir(parents=True)
    bpy.ops.wm.read_factory_settings(use_empty=True)
    materials = []
    for seed, (name, file) in enumerate(PICTURES.items(), 1):
        image = make_picture(pictures / file, seed)
        colour = (seed / 4, 1 - seed / 4, 0.5)
        materials.append(make_material(name, colour, image, "Base Color"))
        materials.append(make_material(name + " rau", colour[::-1], image, "Roughness"))
    materials.append(make_material("Relief", (0.1, 0.2, 0.3), make_picture(pictures / "Relief.png", 9), "Normal"))
    export(out, "Stuhl grün.obj", materials[:4])
    export(out, "Tisch 木.obj", materials[2:])


main()
