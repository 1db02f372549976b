# SPDX-License-Identifier: Apache-2.0
"""Makes blender-scene/ beside this script: a scene as an exporter not ours writes it.

    blender -b --factory-startup -P make-blender-corpus.py

The output is committed; tests read it and need no Blender. It is one .gltf with its .bin and a
picture for each of 36 materials, whose names hold blanks, umlauts and other characters that a uri
must encode.
"""
import pathlib
import shutil
import sys

import bpy

OUT = pathlib.Path(__file__).resolve().parent / "blender-scene"
NAMES = ["Eiche hell", "Höhe über Grund", "Grün 50%", "Beton & Stahl", "Straße #1", "Öl+Wasser",
         "naïve façade", "Дерево", "木目", "a,b;c=d", "Ziegel (rot)", "plain"]
SIZE = 8


def make_image(name, seed):
    image = bpy.data.images.new(name, SIZE, SIZE)
    pixels = []
    for i in range(SIZE * SIZE):
        pixels += [(i * 7 + seed * 31) % 64 / 63, (i * 3 + seed * 17) % 64 / 63, seed / 36, 1.0]
    image.pixels = pixels
    image.file_format = "PNG"
    image.pack()
    return image


def make_material(name, seed):
    material = bpy.data.materials.new(name)
    material.use_nodes = True
    nodes, links = material.node_tree.nodes, material.node_tree.links
    texture = nodes.new("ShaderNodeTexImage")
    texture.image = make_image(name, seed)
    links.new(texture.outputs["Color"], nodes["Principled BSDF"].inputs["Base Color"])
    return material


def make_scene():
    bpy.ops.wm.read_factory_settings(use_empty=True)
    for i in range(36):
        name = "%s %02d" % (NAMES[i % len(NAMES)], i)
        bpy.ops.mesh.primitive_plane_add(size=1, location=(i % 6, i // 6, 0))
        bpy.context.object.name = name
        bpy.context.object.data.materials.append(make_material(name, i))


def main():
    shutil.rmtree(OUT, ignore_errors=True)
    OUT.mkdir()
    make_scene()
    result = bpy.ops.export_scene.gltf(filepath=str(OUT / "Muster und Maße.gltf"),
                                       export_format="GLTF_SEPARATE",
                                       export_texture_dir="Bilder für Szene")
    if result != {"FINISHED"}:
        sys.exit("the export failed")


main()
