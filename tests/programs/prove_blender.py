# SPDX-License-Identifier: Apache-2.0
"""Blender opens imported .blend files and finds everything that they link: see README.md."""
import json
import os
import pathlib
import tempfile

from proof import Reference, TESTS, check, exchange, main, prove, run_blender

HERE = pathlib.Path(__file__).resolve().parent
GENERATOR = TESTS / "plugins/blender/make-corpus.py"
HOUSE = "Szenen/Haus 木.blend"
OLD = "Szenen/Alter Garten.blend"  # compressed as Blender does not write it any more
TOPS = (HOUSE, "Szenen/Garten.blend", OLD, "lib/Möbel.blend")
OLD = "Szenen/Alter Garten.blend"  # of a version whose layout Blender does not write any more
MISSING = {HOUSE: {"image Verloren"}}


def make_project(folder):
    run_blender("-P", GENERATOR, "--", folder)


def edit(file):
    """Blender saves it once more with another object in it, and a picture was painted over."""
    project = file.parent.parent
    pictures = exchange(project / "Bilder/Höhe über Grund.png", project / "Bilder/Möbel.png")
    if file.name == pathlib.PurePath(OLD).name:
        return pictures
    compress = not file.read_bytes().startswith(b"BLENDER")
    run_blender(file, "--python-expr", "import bpy; bpy.data.objects.new('Neu', None).use_fake_user = True; "
                f"bpy.ops.wm.save_mainfile(compress={compress}, relative_remap=False)")
    return [file, *pictures]


def inspect(file):
    with tempfile.TemporaryDirectory() as work:
        output = pathlib.Path(work, "found.json")
        run_blender(file, "-P", HERE / "inspect_blend.py", "--", output)
        found = json.loads(output.read_text())
    for path in found["blend_paths"]:
        seen = any(reference["path"] == os.path.abspath(path) for reference in found["references"])
        check(seen or "<UDIM>" in path or not os.path.exists(path), f"{file}: Blender knows {path}, the proof not")
    return [Reference(**reference) for reference in found["references"]]


def proof(corsync):
    prove(corsync, make_project, inspect, TOPS, edit, missing=lambda top: MISSING.get(top, ()), exit_codes=(4,))


if __name__ == "__main__":
    main(proof)
