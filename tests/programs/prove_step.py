# SPDX-License-Identifier: Apache-2.0
"""STEP assemblies with parts in other files, proved by Open CASCADE: the files that it opened (strace sees them)
and the body that it made of them."""
import os
import pathlib
import re
import sys
import tempfile

import draw
import proof

MAKE = proof.TESTS / "plugins" / "step" / "corpus" / "make-corpus.py"


def escaped(text):
    return "".join(c if c < "\x80" else f"\\X2\\{ord(c):04X}\\X0\\" for c in text).replace("'", "''")


def point(file, old, new):
    """Gives all strings of a reference, three of them, another name."""
    text = file.read_text()
    proof.check(text.count(f"'{old}'") == 3, f"{file.name}: {old} stands there {text.count(old)} times")
    file.write_text(text.replace(f"'{old}'", f"'{new}'"))


def make_project(folder):
    """Open CASCADE's assemblies, spread over folders: one shares a part with the other, which is a part of it."""
    work = folder / "Anlage"
    proof.run([sys.executable, MAKE, work])
    plant, motor = work / "Anlage 木.stp", folder / "Motor & Co" / "Motor.stp"
    norm = folder / "Normteile"
    norm.mkdir()
    motor.parent.mkdir()
    (work / "Teil_Welle 1.stp").rename(norm / "Welle 1.stp")
    (work / "Motor.stp").rename(motor)
    (work / "Motor_Rotor's Blech.stp").rename(motor.parent / "Rotor's Blech.stp")
    (work / "Teil_Größe.stp").rename(norm / "Größe 木.stp")
    for unused in ("Motor_Welle 1.stp", "Teil_Platz.stp", "Teil_Rest.stp"):
        (work / unused).unlink()
    point(plant, "Teil_Welle 1.stp", "../Normteile/Welle 1.stp")
    point(plant, "Teil_Größe.stp", escaped(f"{norm}/Größe 木.stp"))
    point(plant, "Teil_Platz.stp", "..\\\\Motor & Co\\\\Motor.stp")
    point(plant, "Teil_Rest.stp", "../Normteile/verloren.stp")
    point(motor, "Motor_Welle 1.stp", "../Normteile/Welle 1.stp")
    point(motor, "Motor_Rotor''s Blech.stp", "Rotor''s Blech.stp")


def edit(file):
    """The assembly gets a comment."""
    proof.replace_in(file, ("DATA;", "DATA;\n/* edited */"))
    return [file]


def content_of(path):
    """Assemblies change where they name files; the rest of them must not."""
    return re.sub(r"'(?:[^']|'')*'", "''", path.read_text())


def opened(trace):
    """The exchange files that a program opened, and those that it did not find; bytes come as octal escapes."""
    files = {}
    for name, result in re.findall(r'open(?:at)?\([^"]*"((?:[^"\\]|\\.)*\.stp)"[^)]*\) = (-?\d+)', trace):
        path = name.encode().decode("unicode_escape").encode("latin-1").decode()
        files[path] = files.get(path, False) or int(result) >= 0
    return files


def inspect(file):
    script = f'ReadStep D "{file}"\nXGetOneShape s D\nputs [vprops s 1e-4]\nputs [bounding s]\n'
    with tempfile.TemporaryDirectory() as name:
        place = pathlib.Path(name)
        line, environment = draw.command(script, place)
        log = place / "trace"
        result = proof.run(["strace", "-f", "-s", "4096", "-e", "trace=open,openat", "-o", log, *line],
                           env=environment, cwd=place)
        files = opened(log.read_text())
    mass = re.search(r"Mass :.*", result.stdout, re.S)
    proof.check(mass is not None, f"{file.name}: no body\n{result.stdout}\n{result.stderr}")
    proof.check(files.pop(str(file), False), f"{file.name} was not opened")
    references = [proof.Reference("the body", str(file), mass[0])]
    for path, found in files.items():
        path = pathlib.Path(path)
        name = re.sub(r" \(\d+\)$", "", path.stem)
        references.append(proof.Reference(name, str(path) if found else None, content_of(path) if found else None))
    return references


def missing(top):
    return ["verloren"] if "木" in top else []


def prove_cycle(program):
    """Open CASCADE goes round in a cycle without end; the import must not."""
    with tempfile.TemporaryDirectory() as name:
        place = pathlib.Path(name)
        make_project(place)
        motor = place / "Motor & Co" / "Motor.stp"
        point(motor, "Rotor''s Blech.stp", escaped("../Anlage/Anlage 木.stp"))
        corsync = proof.Corsync(program, place)
        events = corsync.import_files(place / "Anlage" / "Anlage 木.stp", "--to", "Demo", expect=(4,))
        copies = [proof.target_of(events, file) for file in (place / "Anlage" / "Anlage 木.stp", motor)]
        names = [re.findall(r"ASSIGNMENT\(\s*'([^']*)'", copy.read_text()) for copy in copies]
        for copy, other, links in zip(copies, reversed(copies), names):
            wanted = [escaped(os.path.relpath(other, copy.parent))]
            proof.check(set(wanted) & set(links), f"{copy.name} links {links}, not {wanted}")
        print(f"a cycle of {len(copies)} assemblies: each copy links the other")


def prove(corsync):
    proof.prove(corsync, make_project, inspect, ["Anlage/Anlage 木.stp", "Motor & Co/Motor.stp"], edit, missing=missing,
                exit_codes=lambda top: (4,) if missing(top) else (0,))
    prove_cycle(corsync)


proof.main(prove)
