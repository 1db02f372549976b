# SPDX-License-Identifier: Apache-2.0
"""Run inside FreeCAD: opens CORSYNC_FILE and writes, as JSON to CORSYNC_RESULT, every reference that FreeCAD
resolved in it and in the documents that it loaded with it: [name, path or null, content or null].

Names do not depend on those of the files: they are made of the documents' Ids and of objects and properties.
"""
import hashlib
import json
import os
import re

import FreeCAD

REFERENCES = []
# Links that FreeCAD adds to every object of some kinds and leaves empty here.
UNUSED = {"Context", "LinkCopyOnChangeSource", "_CopiedLink"}


def add(name, path=None, content=None):
    REFERENCES.append([name, path, content])


def describe(target):
    """What a link led to: which document, which object, how large."""
    linked = target.getLinkedObject(True)
    size = f"{linked.Shape.Volume:.3f}" if hasattr(linked, "Shape") else f"{linked.width}"
    return f"{target.Document.Id}#{target.Name} {size}"


def targets(value):
    """The objects of a link property of any kind: object, (object, names), or a list of either."""
    if isinstance(value, list):
        return [target for item in value for target in targets(item)]
    return [value[0]] if isinstance(value, tuple) else [value]


def add_links(owner, name, value):
    for number, target in enumerate(targets(value)):
        label = f"{name}[{number}]"
        if target is None:
            add(label)
        elif target.Document != owner.Document:
            add(label, target.Document.FileName, describe(target))


def add_expression(name, text, value):
    """The document that an expression names by its label, as FreeCAD resolves it."""
    for label in re.findall(r"<<([^>]*)>>#", text):
        found = [document for document in FreeCAD.listDocuments().values() if document.Label == label]
        add(name, found[0].FileName if len(found) == 1 else None, f"{found[0].Id} {value}" if found else None)


def digest(path):
    """None for a file that FreeCAD did not take in."""
    if not path or not os.path.getsize(path):
        return None
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest()[:16]


def read_again(item, name):
    """Makes FreeCAD read the file that a property names, and says what it then holds."""
    path = getattr(item, name)
    if item.TypeId == "TechDraw::DrawViewImage":
        item.ImageFile = ""
        item.ImageFile = path
        return digest(item.ImageIncluded)
    if item.TypeId == "TechDraw::DrawGeomHatch":
        pattern = item.NamePattern
        item.FilePattern = ""
        item.FilePattern = path
        item.NamePattern = pattern
        return digest(item.PatIncluded)
    item.touch()
    item.Document.recompute([item], True)
    if "Invalid" in item.State:
        return None
    return f"{item.Mesh.Volume:.3f}" if hasattr(item, "Mesh") else f"{item.Shape.BoundBox.DiagonalLength:.6f}"


def add_file(name, item, prop):
    path = getattr(item, prop)
    # Files of the installation, and the template's, which a document holds itself.
    if not path or "/Mod/" in path or item.TypeId == "TechDraw::DrawSVGTemplate":
        return
    content = read_again(item, prop)
    add(name, os.path.abspath(path) if content else None, content)


def add_references(item):
    start = f"{item.Document.Id}: {item.Name}."
    for prop in item.PropertiesList:
        kind = item.getTypeIdOfProperty(prop)
        if kind.startswith("App::PropertyXLink") and prop not in UNUSED:
            add_links(item, start + prop, getattr(item, prop))
        elif kind == "App::PropertyFile" or (prop == "FileName" and item.TypeId.startswith("Part::Import")):
            add_file(start + prop, item, prop)
    for path, text in item.ExpressionEngine:
        add_expression(start + path, text, getattr(item, path))
    if item.TypeId == "Spreadsheet::Sheet":
        for cell in re.findall(r'<Cell address="(\w+)"', item.cells.Content):
            add_expression(start + cell, item.getContents(cell), item.get(cell))


def main():
    os.chdir("/")  # relative names must not be found by chance
    opened = FreeCAD.openDocument(os.environ["CORSYNC_FILE"])
    for document in FreeCAD.listDocuments().values():
        for item in document.Objects:
            item.touch()
    opened.recompute(None, True)
    for document in sorted(FreeCAD.listDocuments().values(), key=lambda entry: entry.Id):
        for item in document.Objects:
            add_references(item)
    with open(os.environ["CORSYNC_RESULT"], "w", encoding="utf-8") as result:
        json.dump(REFERENCES, result)


main()
