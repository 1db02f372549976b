# SPDX-License-Identifier: Apache-2.0
"""Makes gehäuse/ beside this script: models, and parts that OpenSCAD exported for them.

    python3 make-corpus.py [FOLDER]

The output is committed; tests read it and need no OpenSCAD.
"""
import pathlib
import shutil
import subprocess
import sys

MODELS = {
    "Gehäuse 木.scad": """// A case.
include <gemeinsam/Maße.scad>
use <Teile/Deckel ü.scad>
use <gemeinsam/Schraube M3.scad>
/* import("nie.stl"); */
deckel();
translate([20, 0, 0]) schraube();
translate([40, 0, 0]) import("Teile/Platte #1.stl");
translate([60, 0, 0]) linear_extrude(height = dicke) import(file = "Teile/Umriss.dxf");
translate([80, 0, 0]) surface(file = "Teile/Höhe über Grund.dat");
zeichen = "Teile/\\u6728 Zeichen.off";
translate([100, 0, 0]) import(zeichen);
translate([120, 0, 0]) logo();
translate([140, 0, 0]) import("verloren.stl");
""",
    "Halter/Halter.scad": """use <../gemeinsam/Schraube M3.scad>
schraube();
translate([20, 0, 0]) import("../Teile/Platte #1.stl");
""",
    "gemeinsam/Maße.scad": """dicke = 3;
// Found from the model that includes this file.
module logo() { import("Logo.stl"); }
""",
    "gemeinsam/Schraube M3.scad": """use <Mutter.scad>
module schraube() { cube([3, 3, 9]); translate([0, 0, 12]) mutter(); }
function gewinde() = 3;
""",
    "gemeinsam/Mutter.scad": """use <Schraube M3.scad>
module mutter() { cube([gewinde(), 4, 2]); }
""",
    "Teile/Deckel ü.scad": """module deckel() { import("Platte 2.stl"); }
""",
}
PARTS = {
    "Teile/Platte #1.stl": "cube([10, 5, 1]);",
    "Teile/Platte 2.stl": "cube([8, 6, 2]);",
    "Teile/Umriss.dxf": "square([7, 4]);",
    "Teile/木 Zeichen.off": "cube([2, 3, 5]);",
    "Logo.stl": "cube([1, 2, 1]);",
}


def main():
    here = pathlib.Path(__file__).resolve().parent / "gehäuse"
    out = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else here
    shutil.rmtree(out, ignore_errors=True)
    out.mkdir(parents=True)
    for name, text in MODELS.items():
        (out / name).parent.mkdir(exist_ok=True)
        (out / name).write_text(text)
    source = out / "part.scad"
    for name, text in PARTS.items():
        source.write_text(text)
        subprocess.run(["openscad", "-o", out / name, source], check=True, timeout=60, capture_output=True)
    source.unlink()
    (out / "Teile/Höhe über Grund.dat").write_text("1 2 3\n2 3 4\n3 4 5\n")


main()
