# SPDX-License-Identifier: Apache-2.0
"""SolveSpace models, proved by SolveSpace: the files that it opened, and the bodies that it made of them."""
import ast
import hashlib
import pathlib
import re
import sys
import tempfile

import proof

MAKE = proof.TESTS / "plugins/solvespace/corpus/make-corpus.py"
TOP, SUB = "Maschine/Maschine Größe.slvs", "Maschine/Baugruppen/Rad.slvs"
BIG = "Träger = groß.slvs"


def make_project(folder):
    """The assembly, with one part and one picture in other folders beside it."""
    work, far = folder / "Maschine", folder / "Normteile & Co"
    proof.run([sys.executable, MAKE, work])
    far.mkdir()
    (work / "Teile" / BIG).rename(far / BIG)
    (work / "Bilder & Pläne" / "Plan 木.png").rename(far / "Plan 木.png")
    proof.replace_in(folder / SUB, (f"../Teile/{BIG}", f"../../Normteile & Co/{BIG}"))
    top = folder / TOP
    top.write_bytes(top.read_bytes().replace("=Bilder & Pläne/Plan".encode(), "=../Normteile & Co/Plan".encode()))


def edit(file):
    """A group gets another name, and the pictures were painted over."""
    proof.replace_in(file, ("Group.name=sketch-in-plane", "Group.name=neu"))
    project = file.parents[2 if file.parent.name == "Baugruppen" else 1]
    return [file, *proof.exchange(project / "Maschine/Bilder & Pläne/Schild #1.png",
                                  project / "Normteile & Co/Plan 木.png")]


def opened(trace):
    """Files that SolveSpace read; strace writes names as C strings of bytes."""
    names = re.findall(r'open(?:at)?\(.*?("(?:[^"\\]|\\.)*"), O_RDONLY.*\) = \d', trace.read_text())
    paths = {pathlib.Path(ast.literal_eval("b" + name).decode()) for name in names}
    return sorted(path for path in paths if path.suffix in (".slvs", ".png") and "share" not in path.parts)


def content_of(path):
    """Models change where they name files; the rest of them must not."""
    if path.suffix != ".slvs":
        return proof.digest(path)
    return hashlib.sha256(re.sub(rb"(\.impFileRel|\.file)=.*", rb"\1", path.read_bytes())).hexdigest()[:16]


def triangles_of(body):
    """SolveSpace writes them in any order."""
    data = body.read_bytes()
    records = sorted(data[at:at + 50] for at in range(84, len(data), 50))
    proof.check(len(records) > 100, f"{body}: {len(records)} triangles")
    return hashlib.sha256(b"".join(records)).hexdigest()[:16]


def inspect(file):
    with tempfile.TemporaryDirectory() as place:
        body, trace = pathlib.Path(place, "body.stl"), pathlib.Path(place, "trace")
        # A linked model that is not there is the end of SolveSpace.
        proof.run(["strace", "-f", "-s", "4096", "-e", "trace=open,openat", "-o", trace,
                   "solvespace-cli", "export-mesh", "-o", body, file], cwd=place)
        references = [proof.Reference("the body", str(file), triangles_of(body))]
        for path in opened(trace):
            name = re.sub(r" \(\d+\)$", "", path.stem) + path.suffix
            references.append(proof.Reference(name, str(path), content_of(path)))
    proof.check(len(references) == (6 if file.name.startswith("Maschine") else 5), f"{file}: {[reference.name for reference in references]}")
    return references


def prove(corsync):
    proof.prove(corsync, make_project, inspect, [TOP, SUB], edit)


proof.main(prove)
