# SPDX-License-Identifier: Apache-2.0
"""Blender opens imported .blend files and finds everything that they link: see README.md."""
import json
import os
import pathlib
import tempfile

from proof import Reference, TESTS, check, main, prove, run_blender

HERE = pathlib.Path(__file__).resolve().parent
GENERATOR = TESTS / "plugins/blender/make-corpus.py"
HOUSE = "Szenen/Haus 木.blend"
TOPS = (HOUSE, "Szenen/Garten.blend", "Szenen/Alter Garten.blend", "lib/Möbel.blend")
MISSING = {HOUSE: {"image Verloren"}}


def make_project(folder):
    run_blender("-P", GENERATOR, "--", folder)


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
    prove(corsync, make_project, inspect, TOPS, missing=lambda top: MISSING.get(top, ()), exit_codes=(4,))


if __name__ == "__main__":
    main(proof)
