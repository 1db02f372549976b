# SPDX-License-Identifier: Apache-2.0
"""Runs inside Blender: imports a glTF scene and writes what it found at each reference, as JSON.

    blender -b --factory-startup -P inspect_gltf.py -- FILE OUTPUT

Pictures are told by their pixels, buffers by the points of the meshes that they made. Which buffer was read
is told by the files that the importer opened.
"""
import hashlib
import json
import os
import pathlib
import sys

import bpy
import numpy

# Blender 3.4's importer is older than Debian's numpy, which took this name away.
numpy.bool = bool

found = []
opened = []


def digest(value):
    return hashlib.sha256(repr(value).encode()).hexdigest()[:16]


def watch(event, arguments):
    if event == "open" and isinstance(arguments[0], str) and arguments[0].endswith(".bin"):
        opened.append(os.path.abspath(arguments[0]))


def images():
    for image in bpy.data.images:
        if image.source != "FILE" or image.packed_file:
            continue
        image.reload()
        loaded = len(image.pixels) > 0
        found.append({"name": f"Blender: picture {image.name}",
                      "path": bpy.path.abspath(image.filepath) if loaded else None,
                      "content": digest(image.pixels[:]) if loaded else None})


def buffers():
    points = [[tuple(vertex.co) for vertex in mesh.vertices]
              for mesh in sorted(bpy.data.meshes, key=lambda mesh: mesh.name)]
    for number, path in enumerate(dict.fromkeys(opened)):
        found.append({"name": f"Blender: buffer {number}", "path": path, "content": digest(points)})


def main():
    file, output = sys.argv[sys.argv.index("--") + 1:]
    bpy.ops.wm.read_factory_settings(use_empty=True)
    sys.addaudithook(watch)
    result = bpy.ops.import_scene.gltf(filepath=file, import_pack_images=False)
    if result != {"FINISHED"}:
        raise RuntimeError("the import failed")
    images()
    buffers()
    pathlib.Path(output).write_text(json.dumps(found))


try:
    main()
except BaseException:
    import traceback
    traceback.print_exc()
    os._exit(1)
