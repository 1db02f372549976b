# SPDX-License-Identifier: Apache-2.0
"""Makes a project of FreeCAD documents that link each other, with FreeCAD itself.

    CORSYNC_PROJECT=/some/empty/folder freecadcmd make-corpus.py

The committed output was made with FreeCAD 0.20. CORSYNC_PROJECT_FULL=1 makes the larger project of the proof:
also files that FreeCAD finds by absolute names only (an imported part, a mesh, a font, hatching, a picture).
Every document's Id says which one it is, whatever its file is called.
"""
import os
import pathlib
import shutil
import struct
import zlib

import FreeCAD
import Draft  # noqa: F401 (makes the scripted objects known)
import Mesh
import Part
import PartDesign  # noqa: F401
import TechDraw  # noqa: F401

PROJECT = pathlib.Path(os.environ["CORSYNC_PROJECT"])
FULL = os.environ.get("CORSYNC_PROJECT_FULL") == "1"


def new_document(identity, path):
    document = FreeCAD.newDocument("New")
    document.Id = identity
    target = PROJECT / path
    target.parent.mkdir(parents=True, exist_ok=True)
    document.saveAs(str(target))
    return document


def part(identity, path, length):
    document = new_document(identity, path)
    box = document.addObject("Part::Box", "Box")
    box.Length = length
    document.recompute()
    document.save()
    return document


def table(identity, path):
    document = new_document(identity, path)
    sheet = document.addObject("Spreadsheet::Sheet", "Sheet")
    sheet.set("A1", "7")
    sheet.setAlias("A1", "width")
    document.recompute()
    document.save()
    return document


def link(document, name, target):
    result = document.addObject("App::Link", name)
    result.LinkedObject = target
    return result


def picture(path, grey):
    """A picture of 4 x 4 pixels as PNG."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + bytes([grey] * 4) for _ in range(4))
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 4, 4, 8, 0, 0, 0, 0)) +
                     chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def add_property_links(cube, bolt, beam):
    for kind in ("XLink", "XLinkSub", "XLinkList", "XLinkSubList"):
        cube.addProperty("App::Property" + kind, "My" + kind)
    cube.MyXLink = beam.Box
    cube.MyXLinkSub = (bolt.Box, ["Face1", "Face2"])
    cube.MyXLinkList = [bolt.Box, beam.Box]
    cube.MyXLinkSubList = [(beam.Box, ["Face3"]), (bolt.Box, ["Edge1", "Edge2"])]


def add_files(document):
    """What FreeCAD takes from files of other formats."""
    folder = PROJECT / "Zutaten & Bilder"
    folder.mkdir()
    Part.makeBox(2, 3, 5).exportStep(str(folder / "Kopf ä.step"))
    Mesh.Mesh(Part.makeBox(1, 2, 3).tessellate(0.1)).write(str(folder / "Netz 網.stl"))
    shutil.copy("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", folder / "Schrift ß.ttf")
    picture(folder / "Foto 1.png", 40)
    picture(folder / "Foto 2.png", 200)
    (folder / "Muster.pat").write_text("*Linien\n45, 0,0, 0,3\n")
    document.addObject("Part::ImportStep", "Head").FileName = str(folder / "Kopf ä.step")
    document.addObject("Mesh::Import", "Net").FileName = str(folder / "Netz 網.stl")
    text = Draft.make_shapestring("ab", str(folder / "Schrift ß.ttf"), 10)
    text.Label = "Text"
    page = document.addObject("TechDraw::DrawPage", "Page")
    page.Template = document.addObject("TechDraw::DrawSVGTemplate", "Template")
    page.Template.Template = "/usr/share/freecad/Mod/TechDraw/Templates/A4_LandscapeTD.svg"
    for number in (1, 2):
        image = document.addObject("TechDraw::DrawViewImage", f"Photo{number}")
        image.ImageFile = str(folder / f"Foto {number}.png")
        page.addView(image)
    view = document.addObject("TechDraw::DrawViewPart", "View")
    page.addView(view)
    view.Source = [document.Cube]
    document.recompute()
    hatch = document.addObject("TechDraw::DrawGeomHatch", "Hatch")
    hatch.Source = (view, ["Face0"])
    hatch.FilePattern = str(folder / "Muster.pat")
    hatch.NamePattern = "Linien"


def main():
    bolt = part("bolt", "Teile/Bolzen 木.FCStd", 10)
    # Windows has no such characters in names: they are left to the proof.
    beam = part("beam", "Teile & <Bleche>/Träger's \"T\".FCStd" if FULL else "Teile & Bleche/Träger's T.FCStd", 20)
    lost = part("lost", "Teile/Verloren.FCStd", 30)
    sizes = table("sizes", "Tabellen/Maße.FCStd")
    sub = new_document("sub", "Baugruppen/Unter Gruppe.FCStd")
    top = new_document("top", "Baugruppen/Haupt Größe.FCStd")

    cube = top.addObject("Part::Box", "Cube")
    cube.setExpression("Length", "<<Maße>>#Sheet.width * 2 mm")
    sheet = top.addObject("Spreadsheet::Sheet", "Cells")
    sheet.set("A1", "=<<Maße>>#Sheet.width + 1")
    sheet.set("A2", "=<<Bolzen 木>>#Box.Length + 1 mm")
    add_property_links(cube, bolt, beam)
    link(top, "Bolt", bolt.Box)
    link(top, "Bolt2", bolt.Box)
    link(top, "Beam", beam.Box)
    link(top, "Lost", lost.Box)
    top.recompute()
    binder = top.addObject("PartDesign::SubShapeBinder", "Binder")
    binder.Support = [(bolt.Box, ("Face1",)), (beam.Box, ("Face2",))]
    link(sub, "Bolt", bolt.Box)
    link(sub, "Back", cube)  # the cycle: top links sub, sub links top
    link(top, "Sub", sub.Bolt)
    if FULL:
        add_files(top)
    for document in (top, sub):
        document.recompute()
        document.save()
    FreeCAD.closeDocument(lost.Name)
    (PROJECT / "Teile/Verloren.FCStd").unlink()
    for backup in PROJECT.rglob("*.FCStd1"):
        backup.unlink()


main()
