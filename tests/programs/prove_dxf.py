# SPDX-License-Identifier: Apache-2.0
"""DXF drawings, proved by ezdxf, which reads the references, and LibreCAD, which opens the pictures to print them."""
import ast
import json
import os
import pathlib
import re
import tempfile

import proof

HERE = pathlib.Path(__file__).resolve().parent
MAKE = proof.TESTS / "plugins/dxf/corpus/make-corpus.py"
HOUSE, OLD = "Bau/Pläne/Haus 木.dxf", "Bau/Pläne/Alt.dxf"
BINARY, OLDEST = "Bau/Pläne/Binär.dxf", "Bau/Pläne/R12 binär.dxf"
# References, and pictures that are printed.
COUNTS = {"Haus": (7, 3), "Alt": (4, 2), "Binär": (6, 3), "R12": (2, 0)}
PYTHON = "/usr/bin/python3"  # the one that has Debian's ezdxf


def make_project(folder):
    """The drawings, with one of each kind in a folder further away, by an absolute name and one with backslashes."""
    work, far = folder / "Bau", folder / "Normteile & Co"
    proof.run([PYTHON, MAKE, work])
    far.mkdir()
    (work / "Teile/Tür.dxf").rename(far / "Tür.dxf")
    for top, old, new in ((HOUSE, "../Teile/Tür.dxf", f"{far}/Tür.dxf"), (OLD, "../Teile/T\xfcr.dxf", "..\\..\\Normteile & Co\\T\xfcr.dxf"),
                          (BINARY, "../Teile/Tür.dxf", f"{far}/Tür.dxf")):
        encoding = "latin-1" if top == OLD else "utf-8"
        content = (folder / top).read_bytes()
        proof.check(content.count(old.encode(encoding)) == 1, f"{top}: {old}")
        (folder / top).write_bytes(content.replace(old.encode(encoding), new.encode(encoding)))


def edit(file):
    """A layer gets another name, and pictures were painted over."""
    content = file.read_bytes()
    proof.check(b"Standard" in content, f"{file} has no style")
    file.write_bytes(content.replace(b"Standard", b"Normales"))
    pictures = next(folder for folder in file.parents if folder.name == "Bau") / "Bilder & mehr"
    return [file, *proof.exchange(pictures / "Grün 50%.png", pictures / "木目.png")]


def content_of(path):
    return proof.digest(path)


def references_of(file):
    found = json.loads(proof.run([PYTHON, HERE / "inspect_dxf.py", file]).stdout)
    references = []
    for name, stored in found:
        path = file.parent / stored.replace("\\", "/")
        references.append(proof.Reference(name, str(path) if path.is_file() else None,
                                          content_of(path) if path.is_file() else None))
    return references


def printed(file):
    """Pictures that LibreCAD opened; strace writes names as C strings of bytes."""
    with tempfile.TemporaryDirectory() as place:
        trace = pathlib.Path(place, "trace")
        environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "HOME": place, "XDG_CONFIG_HOME": place}
        proof.run(["strace", "-f", "-s", "4096", "-e", "trace=open,openat", "-o", trace,
                   "librecad", "dxf2pdf", "-t", place, file], env=environment, cwd=place)
        proof.check(list(pathlib.Path(place).glob("*.pdf")), f"{file} was not printed")
        names = re.findall(r'open(?:at)?\(.*?("(?:[^"\\]|\\.)*\.png"), O_RDONLY.*\) = \d', trace.read_text())
    paths = {os.path.realpath(ast.literal_eval("b" + name).decode()) for name in names}
    return [proof.Reference(f"printed {proof.digest(path)}", path, proof.digest(path)) for path in sorted(paths)]


def inspect(file):
    counts = COUNTS[re.match(r"\w+", file.name).group()]
    # LibreCAD does not come to an end with binary files of release 12.
    references, pictures = references_of(file), printed(file) if counts[1] else []
    proof.check((len(references), len(pictures)) == counts, f"{file}: {references} {pictures}")
    return references + pictures


def prove(corsync):
    proof.prove(corsync, make_project, inspect, [HOUSE, OLD, BINARY, OLDEST], edit)


proof.main(prove)
