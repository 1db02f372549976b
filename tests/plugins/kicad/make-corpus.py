#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the projects of the KiCad tests: make-corpus.py FOLDER. Needs KiCad 6 (its Python module
pcbnew) and FreeCAD, which makes the models.

Boards and project files are saved by pcbnew. KiCad 6 saves schematics from its window only; these
are written here in its format, and prove_kicad.py opens them in its editor.
"""
import json
import pathlib
import shutil
import subprocess
import sys
import uuid

NAMES = uuid.UUID("5f0c9c0e-7f3d-4a51-9d2e-6b2f0a4f8f11")
MAIN = "Platine Größe/Haupt 木"
SECOND = "Zweite/Zweite Platine"


def identifier(name):
    """The same for the same name: a schematic made again differs in nothing."""
    return str(uuid.uuid5(NAMES, name))


def sheet(name, file, position):
    return f'''
  (sheet (at {position} 50) (size 20 20) (fields_autoplaced)
    (stroke (width 0.1524) (type solid) (color 0 0 0 0))
    (fill (color 0 0 0 0.0000))
    (uuid {identifier("sheet " + name)})
    (property "Sheet name" "{name}" (id 0) (at {position} 49 0)
      (effects (font (size 1.27 1.27)) (justify left bottom))
    )
    (property "Sheet file" "{file}" (id 1) (at {position} 71 0)
      (effects (font (size 1.27 1.27)) (justify left top))
    )
  )
'''


def schematic(path, sheets=()):
    text = f'''(kicad_sch (version 20211123) (generator eeschema)

  (uuid {identifier(path.name)})

  (paper "A4")

  (lib_symbols
  )

  (text "say \\"{path.stem}\\" (not a link)" (at 20 20 0)
    (effects (font (size 1.27 1.27)) (justify left bottom))
    (uuid {identifier("text " + path.name)})
  )
'''
    text += "".join(sheet(f"{path.stem} {name}", file, 50 + 30 * i) for i, (name, file) in enumerate(sheets))
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text + ")\n")


def board(path, models):
    import pcbnew
    made = pcbnew.BOARD()
    outline = pcbnew.PCB_SHAPE(made)
    outline.SetShape(pcbnew.SHAPE_T_RECT)
    outline.SetStart(pcbnew.wxPointMM(0, 0))
    outline.SetEnd(pcbnew.wxPointMM(60, 20))
    outline.SetLayer(pcbnew.Edge_Cuts)
    made.Add(outline)
    for number, name in enumerate(models):
        footprint = pcbnew.FOOTPRINT(made)
        footprint.SetReference(f"U{number}")
        footprint.SetPosition(pcbnew.wxPointMM(5 + 5 * number, 10))
        model = pcbnew.FP_3DMODEL()
        model.m_Filename = name
        model.m_Scale.x = model.m_Scale.y = model.m_Scale.z = 1
        footprint.Models().push_back(model)
        made.Add(footprint)
    path.parent.mkdir(parents=True, exist_ok=True)
    pcbnew.SaveBoard(str(path), made)
    path.with_suffix(".kicad_prl").unlink()


def drawing_sheets(project, of_schematic, of_board):
    settings = json.loads(project.read_text())
    settings.setdefault("schematic", {})["page_layout_descr_file"] = of_schematic
    settings["pcbnew"]["page_layout_descr_file"] = of_board
    project.write_text(json.dumps(settings, indent=2, ensure_ascii=False) + "\n")


def table(path, kind, *libraries):
    lines = "".join(f'  (lib (name "{name}")(type "KiCad")(uri "{uri}")(options "")(descr ""))\n'
                    for name, uri in libraries)
    path.write_text(f"({kind}\n{lines})\n")


def make_main(folder, absolute):
    """The first project. `absolute` is where the folder will be, for the links that say so."""
    top = folder / MAIN
    here = top.parent
    board(top.with_suffix(".kicad_pcb"),
          ["${KIPRJMOD}/3d/Würfel 木.step", '3d/Quader (q).wrl', "../gemeinsam/Block.step",
           "${KIPRJMOD}/../gemeinsam/Block.step", f"{absolute}/anderswo/Absolut.step", "${KIPRJMOD}/3d/verloren.step",
           "${KICAD6_3DMODEL_DIR}/Nirgends.3dshapes/x.step"])
    drawing_sheets(top.with_suffix(".kicad_pro"), "zeichnung/Rahmen ü.kicad_wks",
                   "${KIPRJMOD}/zeichnung/Rahmen ü.kicad_wks")
    schematic(top.with_suffix(".kicad_sch"),
              [("eins", "blätter/Netz teil.kicad_sch"), ("zwei", "../gemeinsam/Geteilt.kicad_sch"),
               ("drei", f"{absolute}/anderswo/Absolut.kicad_sch"), ("vier", "blätter/verloren.kicad_sch")])
    schematic(here / "blätter/Netz teil.kicad_sch", [("tief", "tief/Regler.kicad_sch")])
    schematic(here / "blätter/tief/Regler.kicad_sch")
    top.with_suffix(".kicad_dru").write_text("(version 1)\n")
    table(here / "sym-lib-table", "sym_lib_table", ("Teile", "${KIPRJMOD}/lib/Teile.kicad_sym"),
          ("Device", "${KICAD6_SYMBOL_DIR}/Device.kicad_sym"))
    table(here / "fp-lib-table", "fp_lib_table", ("Füße", "${KIPRJMOD}/lib/Füße.pretty"))
    (here / "lib/Füße.pretty").mkdir(parents=True)
    (here / "lib/Teile.kicad_sym").write_text("(kicad_symbol_lib (version 20211014) (generator kicad_symbol_editor)\n)\n")
    (here / "lib/Füße.pretty/R.kicad_mod").write_text('(footprint "R" (version 20211014) (generator pcbnew) (layer "F.Cu"))\n')
    (here / "zeichnung").mkdir()
    (here / "zeichnung/Rahmen ü.kicad_wks").write_text(
        "(kicad_wks (version 20210606) (generator pl_editor)\n(setup (textsize 1.5 1.5)(linewidth 0.15)"
        "(textlinewidth 0.15)\n(left_margin 10)(right_margin 10)(top_margin 10)(bottom_margin 10))\n"
        '(line (name "") (start 0 0 ltcorner) (end 0 0))\n)\n')


def make_second(folder):
    """A project that shares parts with the first one."""
    top = folder / SECOND
    board(top.with_suffix(".kicad_pcb"), ["../gemeinsam/Block.step", "${KIPRJMOD}/../Platine Größe/3d/Würfel 木.step"])
    schematic(top.with_suffix(".kicad_sch"), [("eins", "../gemeinsam/Geteilt.kicad_sch")])


def make_models(folder):
    """Boxes of different sizes."""
    models = {"Platine Größe/3d/Würfel 木.step": (2, 2, 2), 'Platine Größe/3d/Quader (q).step': (1, 2, 3),
              "gemeinsam/Block.step": (4, 1, 1), "anderswo/Absolut.step": (3, 3, 1)}
    lines = ["import Part"]
    for name, size in models.items():
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        lines.append(f"Part.makeBox{size}.exportStep({str(folder / name)!r})")
    script = folder / "models.py"
    script.write_text("\n".join(lines) + "\n")
    subprocess.run(["freecadcmd", str(script)], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, timeout=120,
                   check=True)
    script.unlink()
    (folder / 'Platine Größe/3d/Quader (q).wrl').write_text("#VRML V2.0 utf8\nShape { geometry Box { size 1 2 3 } }\n")


def make(folder, absolute, models=None):
    """Everything below an empty folder; the models are made, or copied from another such folder."""
    if models:
        for file in (*models.rglob("*.step"), *models.rglob("*.wrl")):
            target = folder / file.relative_to(models)
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(file, target)
    else:
        make_models(folder)
    make_main(folder, absolute)
    make_second(folder)
    schematic(folder / "gemeinsam/Geteilt.kicad_sch")
    schematic(folder / "anderswo/Absolut.kicad_sch")


if __name__ == "__main__":
    arguments = [pathlib.Path(argument) for argument in sys.argv[1:]]
    make(arguments[0].resolve(), arguments[1] if len(arguments) > 1 else "/projekte",
         arguments[2].resolve() if len(arguments) > 2 else None)
