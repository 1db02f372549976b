# SPDX-License-Identifier: Apache-2.0
"""Makes a project of .blend files, in Blender itself.

    blender -b --factory-startup -P make-corpus.py -- FOLDER

    Szenen/Haus 木.blend      zstd; every kind of link: relative, absolute, sets, one missing, packed data
    Szenen/Garten.blend       not compressed; shares the library with the house
    Szenen/Alter Garten.blend the same, gzip, as Blender wrote before version 3.0
    lib/Möbel.blend           the library, which links an object of the house: a cycle
    lib/Dächer/Dach.blend     linked by an absolute path

The .blend files of the folder /tmp/Projekt Größe are committed in corpus/, where tests read them and
need no Blender.
"""
import gzip
import pathlib
import shutil
import struct
import subprocess
import sys
import wave

import bpy

FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf"
VDB = """
import sys, pyopenvdb as vdb
for number, path in enumerate(sys.argv[1:], 1):
    grid = vdb.FloatGrid()
    grid.name = "density %d" % number
    grid.fill((0, 0, 0), (number, number, number), float(number))
    vdb.write(path, [grid])
"""


def color(seed):
    return [(seed * 37 % 64) / 63, (seed * 17 % 64) / 63, (seed * 7 % 64) / 63, 1.0]


def picture(path, size, seed):
    path.parent.mkdir(parents=True, exist_ok=True)
    image = bpy.data.images.new("picture", size, size)
    image.pixels = color(seed) * (size * size)
    image.file_format = "PNG"
    image.filepath_raw = str(path)
    image.save()
    bpy.data.images.remove(image)


def sound(path, seconds):
    path.parent.mkdir(parents=True, exist_ok=True)
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(8000)
        file.writeframes(b"".join(struct.pack("<h", i * 37 % 2000) for i in range(int(8000 * seconds))))


def movie(path, frames, seed):
    """A film of one color, rendered by the video editor."""
    path.parent.mkdir(parents=True, exist_ok=True)
    bpy.ops.wm.read_factory_settings(use_empty=True)
    scene = bpy.context.scene
    scene.render.resolution_x = scene.render.resolution_y = 32
    scene.render.image_settings.file_format = "AVI_JPEG"
    scene.render.filepath = str(path)
    scene.render.use_file_extension = False
    scene.frame_start, scene.frame_end = 1, frames
    strip = scene.sequence_editor_create().sequences.new_effect("color", "COLOR", 1, 1, frame_end=frames + 1)
    strip.color = color(seed)[:3]
    bpy.ops.render.render(animation=True)


def point_cache(path, points):
    path.parent.mkdir(parents=True, exist_ok=True)
    data = struct.pack("<12siiffi", b"POINTCACHE2\0", 1, len(points), 1.0, 1.0, 1)
    path.write_bytes(data + b"".join(struct.pack("<3f", *point) for point in points))


def volumes(*paths):
    paths[0].parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(["/usr/bin/python3", "-c", VDB, *map(str, paths)], check=True, timeout=120)


def make_files(root):
    picture(root / "Bilder/Höhe über Grund.png", 4, 1)
    picture(root / "Bilder/absolut 1.png", 5, 2)
    picture(root / "Szenen/Skizze 木.png", 6, 3)
    picture(root / "Bilder/Möbel.png", 7, 4)
    picture(root / "Bilder/verloren.png", 4, 5)
    picture(root / "Bilder/gepackt.png", 4, 6)
    for number, tile in enumerate((1001, 1002, 1011)):
        picture(root / f"Kacheln/Holz hell.{tile}.png", 8 + number, 10 + number)
    for frame in (1, 2, 3, 4):
        picture(root / f"Folge/Welle_{frame:04}.png", 16, 20 + frame)
    for number, name in enumerate(("Auftakt.png", "Mitte ü.png", "Ende.png")):
        picture(root / "Schnitt" / name, 12, 30 + number)
    movie(root / "Film/Kamera fahrt.avi", 3, 41)
    movie(root / "Film/Schnitt.avi", 4, 42)
    sound(root / "Ton/Glocke Ö.wav", 0.5)
    sound(root / "Ton/Regen.wav", 0.25)
    volumes(root / "Nebel/Dunst.vdb")
    volumes(*(root / f"Nebel/Rauch_{frame:03}.vdb" for frame in (1, 2, 3)))
    point_cache(root / "Cache/Tuch.pc2", [(0, 0, 1), (2, 0, 1), (0, 3, 1), (2, 3, 1)])
    (root / "Cache/Strand.abc").write_bytes(b"not loaded by every build of Blender")
    (root / "Licht").mkdir()
    (root / "Licht/Laterne.ies").write_text("IESNA:LM-63-1995\nTILT=NONE\n")
    (root / "Szenen/Notiz.txt").write_text("Maße prüfen\n")
    (root / "Schrift").mkdir()
    shutil.copy(FONT, root / "Schrift/Mono 字.ttf")


def new_file(path, compress):
    path.parent.mkdir(parents=True, exist_ok=True)
    bpy.ops.wm.read_factory_settings(use_empty=True)
    save(path, compress)


def save(path, compress):
    bpy.context.preferences.filepaths.save_version = 0  # no Haus.blend1 beside it
    bpy.ops.wm.save_as_mainfile(filepath=str(path), compress=compress)


def add_mesh(name, points, faces):
    mesh = bpy.data.meshes.new(name)
    mesh.from_pydata(points, [], faces)
    thing = bpy.data.objects.new(name, mesh)
    bpy.context.scene.collection.objects.link(thing)
    return thing


def add_chair(name, height):
    return add_mesh(name, [(0, 0, height), (1, 0, height), (0, 1, height)], [(0, 1, 2)])


def link(library, *names):
    with bpy.data.libraries.load(str(library), link=True, relative=True) as (_, into):
        into.objects = list(names)
    for thing in into.objects:
        bpy.context.scene.collection.objects.link(thing)


def add_image(path, name, source="FILE"):
    image = bpy.data.images.load(str(path))
    image.name = name
    image.source = source
    image.use_fake_user = True
    return image


def add_images(root):
    add_image(root / "Bilder/Höhe über Grund.png", "Höhe")
    add_image(root / "Szenen/Skizze 木.png", "Skizze")
    add_image(root / "Bilder/absolut 1.png", "Absolut")
    add_image(root / "Bilder/verloren.png", "Verloren")
    add_image(root / "Bilder/gepackt.png", "Gepackt").pack()
    add_image(root / "Folge/Welle_0001.png", "Welle", "SEQUENCE")
    tiles = add_image(root / "Kacheln/Holz hell.1001.png", "Holz", "TILED")
    tiles.filepath = str(root / "Kacheln/Holz hell.<UDIM>.png")
    for tile in (1002, 1011):
        tiles.tiles.new(tile)


def add_clips(root):
    bpy.data.movieclips.load(str(root / "Film/Kamera fahrt.avi")).name = "Fahrt"
    bpy.data.movieclips.load(str(root / "Folge/Welle_0001.png")).name = "Wellenclip"
    for clip in bpy.data.movieclips:
        clip.use_fake_user = True


def add_strips(root):
    strips = bpy.context.scene.sequence_editor_create().sequences
    images = strips.new_image("Schnitt", str(root / "Schnitt/Auftakt.png"), 1, 1)
    images.elements.append("Mitte ü.png")
    images.elements.append("Ende.png")
    strips.new_movie("Filmschnitt", str(root / "Film/Schnitt.avi"), 2, 10)
    strips.new_sound("Regen", str(root / "Ton/Regen.wav"), 3, 1)


def add_volumes(root):
    for name, file, frames in (("Dunst", "Dunst.vdb", 0), ("Rauch", "Rauch_001.vdb", 3)):
        volume = bpy.data.volumes.new(name)
        volume.filepath = str(root / "Nebel" / file)
        volume.is_sequence = frames > 0
        volume.frame_duration = frames
        volume.use_fake_user = True


def add_parts(root):
    cloth = add_mesh("Tuch", [(0, 0, 0), (1, 0, 0), (0, 1, 0), (1, 1, 0)], [(0, 1, 3, 2)])
    cache = cloth.modifiers.new("Cache", "MESH_CACHE")
    cache.cache_format = "PC2"
    cache.filepath = str(root / "Cache/Tuch.pc2")
    lamp = bpy.data.lights.new("Laterne", "POINT")
    lamp.use_fake_user = lamp.use_nodes = True
    node = lamp.node_tree.nodes.new("ShaderNodeTexIES")
    node.mode = "EXTERNAL"
    node.filepath = str(root / "Licht/Laterne.ies")
    bpy.ops.cachefile.open(filepath=str(root / "Cache/Strand.abc"))
    bpy.data.cache_files[0].use_fake_user = True


def add_texts(root):
    bpy.data.texts.load(str(root / "Szenen/Notiz.txt"))
    bpy.data.texts.new("nur hier").write("kein Link")
    text = bpy.data.curves.new("Schild", "FONT")
    text.body = "Größe"
    text.font = bpy.data.fonts.load(str(root / "Schrift/Mono 字.ttf"))
    bpy.context.scene.collection.objects.link(bpy.data.objects.new("Schild", text))
    bpy.data.sounds.load(str(root / "Ton/Glocke Ö.wav")).use_fake_user = True


def make_library(root):
    new_file(root / "lib/Möbel.blend", True)
    for name, height in (("Stuhl", 1), ("Tisch", 2)):
        add_chair(name, height)
    add_image(root / "Bilder/Möbel.png", "Bezug")
    bpy.ops.file.make_paths_relative()
    save(root / "lib/Möbel.blend", True)
    new_file(root / "lib/Dächer/Dach.blend", True)
    add_chair("Dach", 9)
    save(root / "lib/Dächer/Dach.blend", True)


def make_house(root):
    house = root / "Szenen/Haus 木.blend"
    new_file(house, True)
    add_chair("Haus", 5)
    link(root / "lib/Möbel.blend", "Stuhl", "Tisch")
    link(root / "lib/Dächer/Dach.blend", "Dach")
    for add in (add_images, add_clips, add_strips, add_volumes, add_parts, add_texts):
        add(root)
    bpy.ops.file.make_paths_relative()
    bpy.data.images["Absolut"].filepath = str(root / "Bilder/absolut 1.png")
    bpy.data.libraries["Dach.blend"].filepath = str(root / "lib/Dächer/Dach.blend")
    save(house, True)


def make_garden(root):
    garden = root / "Szenen/Garten.blend"
    new_file(garden, False)
    link(root / "lib/Möbel.blend", "Stuhl")
    add_image(root / "Bilder/Höhe über Grund.png", "Höhe")
    bpy.ops.file.make_paths_relative()
    save(garden, False)
    with gzip.open(root / "Szenen/Alter Garten.blend", "wb") as old:
        old.write(garden.read_bytes())


def close_cycle(root):
    bpy.ops.wm.open_mainfile(filepath=str(root / "lib/Möbel.blend"))
    link(root / "Szenen/Haus 木.blend", "Haus")
    bpy.data.objects["Stuhl"].parent = bpy.data.objects["Haus"]
    save(root / "lib/Möbel.blend", True)


def main():
    root = pathlib.Path(sys.argv[sys.argv.index("--") + 1]).resolve()
    root.mkdir(parents=True, exist_ok=True)
    make_files(root)
    make_library(root)
    make_house(root)
    make_garden(root)
    close_cycle(root)
    (root / "Bilder/verloren.png").unlink()


try:
    main()
except BaseException:
    import traceback
    traceback.print_exc()
    sys.exit(1)
