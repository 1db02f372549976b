# SPDX-License-Identifier: Apache-2.0
"""OpenSCAD models, proved by OpenSCAD: the files that it opened, and the bodies that it made of them."""
import os
import pathlib
import re
import sys
import tempfile

import proof

MAKE = proof.TESTS / "plugins" / "openscad" / "corpus" / "make-corpus.py"


def make_project(folder):
    """The exported parts and their models, with an absolute link of each kind and one way out and back in."""
    proof.run([sys.executable, MAKE, folder / "Gehäuse"])
    work = folder / "Gehäuse"
    far = folder / "Normteile & Co"
    far.mkdir()
    (work / "Teile" / "Platte 2.stl").rename(far / "Platte 2.stl")
    proof.replace_in(work / "Teile" / "Deckel ü.scad", ("Platte 2.stl", f"{far}/Platte 2.stl"))
    proof.replace_in(work / "Halter" / "Halter.scad",
                     ("<../gemeinsam/Schraube M3.scad>", f"<{work}/gemeinsam/Schraube M3.scad>"))
    proof.replace_in(work / "Gehäuse 木.scad", ("Teile/Umriss.dxf", "../Gehäuse/Teile/Umriss.dxf"))


def edit(file):
    """The body gets another part, and one that is used another size."""
    file.write_text(file.read_text() + "translate([0, 0, 70]) cube(3);\n")
    screw = next(file.parents[1].rglob("Schraube M3.scad"))
    proof.replace_in(screw, ("cube([3, 3, 9])", "cube([4, 4, 9])"))
    return [file, screw]


def opened(depends):
    """The files of a rule for make that OpenSCAD wrote: all that it opened or wanted to."""
    text = depends.read_text().replace("\\\n", " ").split(":", 1)[1]
    return [pathlib.Path(name.replace("\\ ", " ")) for name in re.findall(r"(?:\\ |\S)+", text)]


def content_of(path):
    """Models change where they name files; the rest of them must not."""
    if path.suffix != ".scad":
        return proof.digest(path)
    return re.sub(r'<[^>]*>|"[^"]*"', "", path.read_text())


def inspect(file):
    with tempfile.TemporaryDirectory() as place:
        result, depends = pathlib.Path(place, "result.off"), pathlib.Path(place, "depends")
        # Not from the folder of the model: OpenSCAD takes the one it is started in for a library.
        proof.run(["openscad", "-d", depends, "-o", result, file], cwd=place, env={**os.environ, "OPENSCADPATH": ""})
        body = proof.digest(result)
        files = opened(depends)
    references = [proof.Reference("the body", str(file), body)]
    for path in files:
        name = re.sub(r" \(\d+\)$", "", path.stem) + path.suffix
        found = path.is_file()
        references.append(proof.Reference(name, str(path) if found else None, content_of(path) if found else None))
    return references


def missing(top):
    return ["verloren.stl"] if "木" in top else []


def prove(corsync):
    proof.prove(corsync, make_project, inspect, ["Gehäuse/Gehäuse 木.scad", "Gehäuse/Halter/Halter.scad"], edit,
                missing=missing, exit_codes=lambda top: (4,) if missing(top) else (0,))


proof.main(prove)
