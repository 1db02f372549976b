# SPDX-License-Identifier: Apache-2.0
"""FreeCAD opens the copies of its documents and finds every linked document and file in them."""
import json
import os
import pathlib
import tempfile
import zipfile

import proof

HERE = pathlib.Path(__file__).resolve().parent
TOP = "Baugruppen/Haupt Größe.FCStd"
SUB = "Baugruppen/Unter Gruppe.FCStd"  # links TOP, which links it
MISSING = {TOP: ["top: Lost.LinkedObject[0]"], SUB: []}
FOUND = {TOP: 22, SUB: 9}


def run_in_freecad(script, **variables):
    """FreeCAD ends with success whatever happens to a script: what it must leave behind tells."""
    with tempfile.TemporaryDirectory() as home:
        environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", HOME=home, XDG_RUNTIME_DIR=home, **variables)
        return proof.run(["freecadcmd", script], env=environment, cwd=home).stdout


def replace_in_document(file, old, new):
    with zipfile.ZipFile(file) as archive:
        entries = [(info, archive.read(info)) for info in archive.infolist()]
        comment = archive.comment
    with zipfile.ZipFile(file, "w", zipfile.ZIP_DEFLATED) as archive:
        archive.comment = comment
        for info, content in entries:
            if info.filename == "Document.xml":
                proof.check(old.encode() in content, f"{file} does not hold {old}")
                content = content.replace(old.encode(), new.encode())
            archive.writestr(info, content)


def make_project(folder):
    script = proof.TESTS / "plugins/freecad/corpus/make-corpus.py"
    output = run_in_freecad(script, CORSYNC_PROJECT=str(folder), CORSYNC_PROJECT_FULL="1")
    proof.check((folder / SUB).exists(), f"FreeCAD made no project:\n{output}")
    # FreeCAD writes absolute names for documents on another drive; there is but one here.
    replace_in_document(folder / SUB, 'file="../Teile/', f'file="{folder}/Teile/')
    replace_in_document(folder / TOP, 'file="../Tabellen/', f'file="{folder}/Tabellen/')


def edit(file):
    """Somebody says that the document is theirs, and a picture was painted over."""
    creator = '<Property name="CreatedBy" type="App::PropertyString">\n            <String value="'
    replace_in_document(file, creator, creator + "Ann")
    pictures = file.parent.parent / "Zutaten & Bilder"
    return [file, *proof.exchange(pictures / "Foto 1.png", pictures / "Foto 2.png")]


def inspect(file):
    with tempfile.TemporaryDirectory() as place:
        result = pathlib.Path(place) / "references.json"
        output = run_in_freecad(HERE / "inspect_freecad.py", CORSYNC_FILE=str(file), CORSYNC_RESULT=str(result))
        proof.check(result.exists(), f"FreeCAD did not look through {file}:\n{output}")
        references = [proof.Reference(*entry) for entry in json.loads(result.read_text())]
    found = sum(reference.path is not None for reference in references)
    expected = FOUND[TOP if "Haupt" in file.name else SUB]
    proof.check(found == expected, f"FreeCAD found {found} references in {file}, not {expected}")
    return references


def prove(corsync):
    proof.prove(corsync, make_project, inspect, [TOP, SUB], edit, missing=MISSING.get, exit_codes=(4,))


proof.main(prove)
