# SPDX-License-Identifier: Apache-2.0
"""Runs inside Blender, with a file open: writes what Blender found at each reference, as JSON.

    blender -b --factory-startup FILE -P inspect_blend.py -- OUTPUT

Contents are what Blender loaded: pixels, points, frames that it rendered, sound that it mixed. Only where
it loads nothing without a display (a cache, a lamp's profile) the bytes of the file at the path that
Blender gives have to do.
"""
import hashlib
import json
import os
import pathlib
import re
import shutil
import sys
import tempfile

import bpy

found = []
work = pathlib.Path(tempfile.mkdtemp(prefix="inspect-blend-"))


def note(name, path, content):
    path = os.path.abspath(path) if path and content is not None else None
    found.append({"name": name, "path": path, "content": content})


def absolute(text, owner):
    return bpy.path.abspath(text, library=owner.library)


def bytes_of(path):
    return hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()[:16] if os.path.isfile(path) else None


def pixels(image):
    if not image.has_data and not len(image.pixels):
        return None
    return f"{tuple(image.size)} {hashlib.sha256(repr(image.pixels[:]).encode()).hexdigest()[:16]}"


def library_name(library):
    """Without what a copy's new name adds: Blender names a library that a library links by its file."""
    return re.sub(r" \(\d+\)(?=\.)", "", library.name)


def full_name(thing):
    return f"{library_name(thing.library)}/{thing.name}" if thing.library else thing.name


def rendered(label):
    """The picture that the scene gives for the current frame; None when it is empty."""
    scene = bpy.context.scene
    scene.render.filepath = str(work / f"{label} {scene.frame_current}.png")
    bpy.ops.render.render(write_still=True)
    image = bpy.data.images.load(scene.render.filepath)
    content = pixels(image) if any(image.pixels[:]) else None
    bpy.data.images.remove(image)
    return content


def frame_path(path, frame):
    folder, name = os.path.split(path)
    digits = (list(re.finditer(r"\d+", os.path.splitext(name)[0])) or [None])[-1]
    if not digits:
        return path  # a film
    return os.path.join(folder, name[:digits.start()] + f"{frame:0{len(digits[0])}}" + name[digits.end():])


def composed(label, node, path, frames):
    """Frames as the compositor shows them."""
    scene = bpy.context.scene
    scene.use_nodes, scene.render.use_sequencer = True, False
    output = scene.node_tree.nodes.new("CompositorNodeComposite")
    scene.node_tree.links.new(node.outputs["Image"], output.inputs["Image"])
    for frame in range(1, frames + 1):
        scene.frame_set(frame)
        note(f"{label} frame {frame}", frame_path(path, frame), rendered(label))
    scene.node_tree.nodes.clear()
    scene.use_nodes = False


def compositor_node(kind):
    scene = bpy.context.scene
    scene.use_nodes = True
    scene.node_tree.nodes.clear()
    return scene.node_tree.nodes.new(kind)


def image_sequence(image, path):
    node = compositor_node("CompositorNodeImage")
    node.image, node.frame_duration, node.frame_start = image, 4, 1
    composed(f"image {full_name(image)}", node, path, 4)


def images():
    for image in list(bpy.data.images):
        path = absolute(image.filepath, image)
        name = f"image {full_name(image)}"
        if image.source == "TILED":
            for tile in image.tiles:
                size = tuple(tile.size)
                file = path.replace("<UDIM>", str(tile.number))
                note(f"{name} tile {tile.number}", file, f"{size} {bytes_of(file)}" if any(size) else None)
        elif image.source == "SEQUENCE":
            image_sequence(image, path)
        elif image.source == "FILE" and not image.packed_file:
            image.reload()
            note(name, path, pixels(image))


def clips():
    for clip in bpy.data.movieclips:
        path = absolute(clip.filepath, clip)
        name = f"clip {full_name(clip)}"
        node = compositor_node("CompositorNodeMovieClip")
        node.clip = clip
        if any(clip.size):
            composed(name, node, path, clip.frame_duration)
        else:
            note(name, path, None)


def strips():
    scene = bpy.context.scene
    editor = scene.sequence_editor
    scene.render.use_sequencer, scene.use_nodes = True, False
    every = list(editor.sequences_all) if editor else []
    for strip in every:
        for other in every:
            other.mute = other != strip
        if strip.type == "SOUND":
            mix = work / "mix.wav"
            bpy.ops.sound.mixdown(filepath=str(mix), container="WAV", codec="PCM")
            silent = not any(mix.read_bytes()[44:])
            note(f"strip {strip.name}", absolute(strip.sound.filepath, strip.sound),
                 None if silent else bytes_of(mix))
            continue
        folder = strip.directory if strip.type == "IMAGE" else ""
        names = [e.filename for e in strip.elements] if strip.type == "IMAGE" else [strip.filepath]
        for number, file in enumerate(names):
            scene.frame_set(int(strip.frame_final_start) + number)
            note(f"strip {strip.name} {number}", bpy.path.abspath(os.path.join(folder, file)),
                 rendered(f"strip {strip.name}"))


def volumes():
    scene = bpy.context.scene
    for volume in bpy.data.volumes:
        thing = bpy.data.objects.new("volume", volume)
        scene.collection.objects.link(thing)
        for frame in range(1, (volume.frame_duration if volume.is_sequence else 1) + 1):
            scene.frame_set(frame)
            grids = thing.evaluated_get(bpy.context.evaluated_depsgraph_get()).data.grids
            loaded = grids.load() and len(grids) > 0
            note(f"volume {full_name(volume)} frame {frame}", grids.frame_filepath,
                 " ".join(grid.name for grid in grids) + f" {bytes_of(grids.frame_filepath)}" if loaded else None)


def points(thing):
    return str([tuple(round(c, 4) for c in vertex.co) for vertex in thing.data.vertices])


def libraries():
    for library in bpy.data.libraries:
        content = sorted(f"{thing.name} {points(thing)}" for thing in bpy.data.objects
                         if thing.library == library and thing.type == "MESH" and len(thing.data.vertices))
        note(f"library {library_name(library)}", bpy.path.abspath(library.filepath),
             " ".join(content) or None)


def parts():
    graph = bpy.context.evaluated_depsgraph_get()
    for thing in bpy.data.objects:
        for modifier in thing.modifiers:
            if modifier.type == "MESH_CACHE":
                evaluated = points(thing.evaluated_get(graph))
                note(f"cache {thing.name}", absolute(modifier.filepath, thing),
                     evaluated if evaluated != points(thing) else None)
        if thing.type == "FONT":
            font = thing.data.font
            size = tuple(round(c, 3) for c in thing.evaluated_get(graph).dimensions)
            path = absolute(font.filepath, font)
            note(f"font {font.name}", path, f"{size} {bytes_of(path)}" if bytes_of(path) else None)
    for light in bpy.data.lights:
        for node in light.node_tree.nodes if light.node_tree else ():
            if node.type == "TEX_IES":
                path = absolute(node.filepath, light)
                note(f"profile {light.name}", path, bytes_of(path))


def files():
    for kind in ("sounds", "texts", "cache_files"):
        for thing in getattr(bpy.data, kind):
            if thing.filepath:
                path = absolute(thing.filepath, thing)
                note(f"{kind} {full_name(thing)}", path, bytes_of(path))


def main():
    scene = bpy.context.scene
    scene.render.resolution_x = scene.render.resolution_y = 16
    scene.render.image_settings.file_format = "PNG"
    known = sorted(bpy.utils.blend_paths(absolute=True))
    for look in (libraries, images, clips, strips, volumes, parts, files):
        look()
    output = {"references": found, "blend_paths": known}
    pathlib.Path(sys.argv[sys.argv.index("--") + 1]).write_text(json.dumps(output))
    shutil.rmtree(work)


try:
    main()
except BaseException:
    import traceback
    traceback.print_exc()
    os._exit(1)
