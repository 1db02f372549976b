#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the sample projects garden-shed/ and lost-poster/ and the damaged files in bad/, beside this script.

The same files come out every time. Nothing but Python's standard library is needed.
"""
import base64
import json
import math
import pathlib
import shutil
import struct
import zlib

HERE = pathlib.Path(__file__).resolve().parent
SHED = HERE / "garden-shed"
LOST = HERE / "lost-poster"
BAD = HERE / "bad"


def write(path, data):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(data)


# --- Pictures ---------------------------------------------------------------------------------


def png(size, colour_at):
    """An RGB picture of size x size pixels; colour_at(x, y) gives each one."""
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data)))
    rows = b"".join(b"\0" + b"".join(bytes(colour_at(x, y)) for x in range(size))
                    for y in range(size))
    return (b"\x89PNG\r\n\x1a\n"
            + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))


def planks(x, y):
    board = x // 8
    if x % 8 == 0:
        return (60, 38, 22)
    grain = int(12 * math.sin(y / 3 + board * 2))
    return (150 + grain, 100 + grain, 58 + board * 3)


def tiles(x, y):
    shift = 4 if (y // 8) % 2 else 0
    edge = y % 8 == 0 or (x + shift) % 8 == 0
    return (90, 36, 30) if edge else (168, 70 + y % 8 * 3, 52)


def poster_picture(x, y):
    if min(x, y) < 3 or max(x, y) > 60:
        return (240, 236, 220)
    return (236, 196, 60) if math.hypot(x - 32, y - 26) < 14 else (70 + y, 130 + y, 200 - y * 2)


def cork(x, y):
    speck = (x * 7 + y * 13 + x * y) % 11
    return (190 - speck * 4, 146 - speck * 3, 96 - speck * 2)


def height_map(x, y):
    level = int(128 + 60 * math.sin(x / 5) * math.cos(y / 7))
    return (level, level, 255 - level // 2)


# --- Geometry ---------------------------------------------------------------------------------


def box(width, height, depth):
    """Positions, normals, texture coordinates and indices of a box that stands on the ground."""
    w, d = width / 2, depth / 2
    faces = [((0, 0, 1), [(-w, 0, d), (w, 0, d), (w, height, d), (-w, height, d)]),
             ((0, 0, -1), [(w, 0, -d), (-w, 0, -d), (-w, height, -d), (w, height, -d)]),
             ((1, 0, 0), [(w, 0, d), (w, 0, -d), (w, height, -d), (w, height, d)]),
             ((-1, 0, 0), [(-w, 0, -d), (-w, 0, d), (-w, height, d), (-w, height, -d)]),
             ((0, 1, 0), [(-w, height, d), (w, height, d), (w, height, -d), (-w, height, -d)]),
             ((0, -1, 0), [(-w, 0, -d), (w, 0, -d), (w, 0, d), (-w, 0, d)])]
    return mesh(faces)


def roof(width, height, depth):
    """Two slopes and two gables."""
    w, d = width / 2, depth / 2
    length = math.hypot(w, height)
    nx, ny = height / length, w / length
    faces = [((nx, ny, 0), [(w, 0, d), (w, 0, -d), (0, height, -d), (0, height, d)]),
             ((-nx, ny, 0), [(-w, 0, -d), (-w, 0, d), (0, height, d), (0, height, -d)]),
             ((0, 0, 1), [(-w, 0, d), (w, 0, d), (0, height, d)]),
             ((0, 0, -1), [(w, 0, -d), (-w, 0, -d), (0, height, -d)])]
    return mesh(faces)


def mesh(faces):
    corners = [(0, 1), (1, 1), (1, 0), (0, 0)]
    positions, normals, uvs, indices = [], [], [], []
    for normal, points in faces:
        first = len(positions)
        for i, point in enumerate(points):
            positions.append(point)
            normals.append(normal)
            uvs.append(corners[i])
        for i in range(1, len(points) - 1):
            indices += [first, first + i, first + i + 1]
    return positions, normals, uvs, indices


def pack(shape):
    positions, normals, uvs, indices = shape
    data = b"".join(struct.pack("<%df" % len(v), *v) for part in (positions, normals, uvs)
                    for v in part)
    data += struct.pack("<%dH" % len(indices), *indices)
    return data + b"\0" * (-len(data) % 4)


# --- Documents --------------------------------------------------------------------------------


class Document:
    """Builds a glTF document out of shapes, each in a buffer of its own."""

    def __init__(self):
        self.json = {
            "asset": {"version": "2.0", "generator": "make-garden-shed.py"},
            "scene": 0,
            "scenes": [{"nodes": []}],
            "nodes": [], "meshes": [], "materials": [], "textures": [], "images": [],
            "samplers": [{"wrapS": 10497, "wrapT": 10497}],
            "accessors": [], "bufferViews": [], "buffers": [],
        }

    def image(self, uri, **more):
        self.json["images"].append({"uri": uri, **more})
        self.json["textures"].append({"sampler": 0, "source": len(self.json["images"]) - 1})
        return len(self.json["textures"]) - 1

    def material(self, name, texture, **more):
        self.json["materials"].append({
            "name": name,
            "pbrMetallicRoughness": {"baseColorTexture": {"index": texture},
                                     "metallicFactor": 0.0},
            **more})
        return len(self.json["materials"]) - 1

    def shape(self, name, shape, uri, material, at=(0, 0, 0)):
        """Adds the shape; uri None leaves the buffer to the binary form."""
        positions, normals, uvs, indices = shape
        data = pack(shape)
        buffer = {"byteLength": len(data)}
        if uri is not None:
            buffer["uri"] = uri
        self.json["buffers"].append(buffer)
        attributes, offset = {}, 0
        for key, kind, values in (("POSITION", "VEC3", positions), ("NORMAL", "VEC3", normals),
                                  ("TEXCOORD_0", "VEC2", uvs)):
            size = len(values) * len(values[0]) * 4
            attributes[key] = self.accessor(offset, size, 34962, 5126, len(values), kind,
                                            values if key == "POSITION" else None)
            offset += size
        index = self.accessor(offset, len(indices) * 2, 34963, 5123, len(indices), "SCALAR")
        self.json["meshes"].append({"name": name, "primitives": [
            {"attributes": attributes, "indices": index, "material": material}]})
        self.json["nodes"].append({"name": name, "mesh": len(self.json["meshes"]) - 1,
                                   "translation": list(at)})
        self.json["scenes"][0]["nodes"].append(len(self.json["nodes"]) - 1)
        return data

    def accessor(self, offset, size, target, component, count, kind, bounds=None):
        self.json["bufferViews"].append({"buffer": len(self.json["buffers"]) - 1,
                                         "byteOffset": offset, "byteLength": size,
                                         "target": target})
        accessor = {"bufferView": len(self.json["bufferViews"]) - 1, "componentType": component,
                    "count": count, "type": kind}
        if bounds:
            single = [[struct.unpack("<f", struct.pack("<f", v))[0] for v in p] for p in bounds]
            accessor["min"] = [min(axis) for axis in zip(*single)]
            accessor["max"] = [max(axis) for axis in zip(*single)]
        self.json["accessors"].append(accessor)
        return len(self.json["accessors"]) - 1

    def text(self):
        return (json.dumps(self.json, indent=2, ensure_ascii=False) + "\n").encode()


def glb(document, binary):
    text = json.dumps(document, separators=(",", ":"), ensure_ascii=False).encode()
    text += b" " * (-len(text) % 4)
    binary += b"\0" * (-len(binary) % 4)
    body = struct.pack("<II", len(text), 0x4E4F534A) + text
    body += struct.pack("<II", len(binary), 0x004E4942) + binary
    return struct.pack("<III", 0x46546C67, 2, 12 + len(body)) + body


def make_textures():
    write(SHED / "textures/Planks.png", png(64, planks))
    write(SHED / "textures/Roof tiles.png", png(64, tiles))
    write(SHED / "textures/Höhe über Grund.png", png(32, height_map))
    write(SHED / "textures/Poster (spring).png", png(64, poster_picture))
    write(SHED / "lights/Lantern.ies",
          b"IESNA:LM-63-2002\r\nTILT=NONE\r\n1 300 1 3 1 1 2 0 0 0\r\n1 1 4\r\n"
          b"0 45 90\r\n0\r\n300 200 0\r\n")


def make_shed():
    shed = Document()
    # Two entries for one picture: equal paths that only their place in the document tells apart.
    outside = shed.material("Planks outside", shed.image("../textures/Planks.png"))
    inside = shed.material("Planks inside",
                           shed.image("../textures/Planks.png", name="the same picture again"),
                           doubleSided=True)
    tiled = shed.material("Roof tiles", shed.image("../textures/Roof%20tiles.png"))
    ground = shed.material("Ground",
                           shed.image("../textures/H%C3%B6he%20%C3%BCber%20Grund.png"))
    poster = shed.material("Poster", shed.image("../textures/Poster%20%28spring%29.png"))
    dot = base64.b64encode(png(2, lambda x, y: (200, 180, 40))).decode()
    handle = shed.material("Handle", shed.image("data:image/png;base64," + dot))

    write(SHED / "scene/geometry/Walls.bin",
          shed.shape("Walls", box(3, 2, 4), "geometry/Walls.bin", outside))
    write(SHED / "scene/geometry/Shelf.bin",
          shed.shape("Shelf", box(2, 0.1, 0.4), "geometry/Shelf.bin", inside, (0, 1, 1.7)))
    write(SHED / "shared/geometry/Roof.bin",
          shed.shape("Roof", roof(3.4, 1, 4.4), "../shared/geometry/Roof.bin", tiled, (0, 2, 0)))
    write(SHED / "shared/geometry/Ground.bin",
          shed.shape("Ground", box(8, 0.1, 8), "../shared/geometry/Ground.bin", ground,
                     (0, -0.1, 0)))
    write(SHED / "scene/geometry/Small parts.bin",
          shed.shape("Poster", box(0.8, 1, 0.02), "geometry/Small%20parts.bin", poster,
                     (0, 0.6, 2.02)))
    # The same buffer file, once more.
    shed.shape("Handle", box(0.8, 1, 0.02), "geometry/Small%20parts.bin", handle, (1, 0.9, 2.05))
    shed.json["nodes"][-1]["scale"] = [0.1, 0.1, 2]
    # A link that only an extension makes, and a text that is none.
    shed.json["extensionsUsed"] = ["EXT_lights_ies"]
    shed.json["extensions"] = {"EXT_lights_ies": {"lights": [{"uri": "../lights/Lantern.ies"}]}}
    shed.json["extras"] = {"drawing": {"uri": "drawings/Shed.dwg", "note": "no link"}}
    write(SHED / "scene/Shed.gltf", shed.text())


def make_bench():
    bench = Document()
    wood = bench.material("Wood", bench.image("../textures/Planks.png"))
    write(SHED / "scene/geometry/Bench.bin",
          bench.shape("Bench", box(1.6, 0.8, 0.5), "geometry/Bench.bin", wood))
    write(SHED / "scene/Work bench.gltf", bench.text())


def make_lantern():
    lantern = Document()
    metal = lantern.material("Metal", lantern.image("textures/Roof%20tiles.png"))
    data = lantern.shape("Lantern", box(0.2, 0.4, 0.2), None, metal)
    write(SHED / "Lantern.glb", glb(lantern.json, data))


def make_lost_poster():
    board = Document()
    back = board.material("Cork", board.image("pictures/Cork.png"))
    # On purpose there is no such file.
    poster = board.material("Poster", board.image("pictures/Poster%20%28lost%29.png"))
    write(LOST / "pictures/Cork.png", png(32, cork))
    write(LOST / "geometry/Board.bin",
          board.shape("Board", box(1.2, 0.9, 0.02), "geometry/Board.bin", back, (0, 1, 0)))
    write(LOST / "geometry/Poster.bin",
          board.shape("Poster", box(0.4, 0.6, 0.01), "geometry/Poster.bin", poster, (0, 1.1, 0.015)))
    write(LOST / "Notice board.gltf", board.text())


def make_bad():
    small = {"asset": {"version": "2.0"}, "images": [{"uri": "a.png"}]}
    whole = glb(small, b"\1\2\3\4" * 4)
    write(BAD / "malformed.gltf", b'{"asset": {"version": "2.0"}, "images": [{"uri": "a.png"},]}\n')
    write(BAD / "truncated.glb", whole[:-6])
    write(BAD / "lying-length.glb", whole[:12] + struct.pack("<I", 0xFFFFFFF0) + whole[16:])
    write(BAD / "nul-in-uri.gltf",
          b'{"asset": {"version": "2.0"}, "images": [{"uri": "a\\u0000b.png"}]}\n')
    write(BAD / "long-uri.gltf",
          json.dumps({"asset": {"version": "2.0"},
                      "images": [{"uri": "a.png"}, {"uri": "x" * 9996 + ".png"}]}).encode() + b"\n")


def main():
    for folder in (SHED, LOST, BAD):
        shutil.rmtree(folder, ignore_errors=True)
    make_textures()
    make_shed()
    make_bench()
    make_lantern()
    make_lost_poster()
    make_bad()


if __name__ == "__main__":
    main()
