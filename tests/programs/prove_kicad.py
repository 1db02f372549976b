#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""KiCad 6 finds everything that a copied project names.

Its editors have no mode without a window: they run on a display of their own, and the system calls say which
files they open, in which order, and which they miss. kicad2step exports a board with the models in it, each
instance named after its footprint, so that its size tells which model KiCad put there.
"""
import contextlib
import functools
import hashlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time

import proof

PYTHON = "/usr/bin/python3"
MAKER = proof.TESTS / "plugins/kicad/make-corpus.py"
MODELS = proof.TESTS / "plugins/kicad/corpus"
BOARDS = pathlib.Path(__file__).with_name("kicad_board.py")
TOPS = ("Platine Größe/Haupt 木.kicad_pro", "Platine Größe/Haupt 木.kicad_sch", "Zweite/Zweite Platine.kicad_pcb")
QUIET = 4
PATIENCE = 90


class Display:
    """A display without a screen, and settings of a user who has been asked everything before."""

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="corsync-kicad-"))
        settings = self.folder / "6.0"
        settings.mkdir()
        for name in ("kicad_common", "eeschema", "pcbnew"):
            (settings / f"{name}.json").write_text('{"system": {"first_run_shown": true}}')
        for name in ("sym", "fp"):
            (settings / f"{name}-lib-table").write_text(f"({name}_lib_table\n)\n")
        reader, writer = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1280x800x24"],
                                       pass_fds=[writer], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as numbers:
            number = numbers.readline().strip()
        proof.check(number, "Xvfb did not start")
        self.environment = dict(os.environ, DISPLAY=f":{number}", KICAD_CONFIG_HOME=str(self.folder),
                                HOME=str(self.folder), NO_AT_BRIDGE="1", LC_ALL="C.UTF-8")
        return self

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


def text_of(quoted):
    """A path as strace prints it."""
    return re.sub(rb"\\([0-7]{1,3}|.)", lambda m: bytes([int(m[1], 8)]) if m[1].isdigit() else m[1],
                  quoted).decode()


def opened(trace):
    """(path, whether it was found) of every file opened for reading so far."""
    calls = re.findall(rb'openat\(AT_FDCWD, "((?:[^"\\]|\\.)*)", O_RDONLY[^)]*\) = (-?\d+)', trace.read_bytes())
    return [(text_of(path), int(result) >= 0) for path, result in calls]


def watch(display, folder, command, is_wanted, is_done=None):
    """The wanted files that a program with a window opens, until it is done, or opens nothing at all any more."""
    trace = display.folder / "trace"
    trace.write_bytes(b"")
    # The board editor sets the variable for its exporter, which reads none with letters beyond ASCII.
    environment = dict(display.environment, KIPRJMOD=".") if is_done else display.environment
    program = subprocess.Popen(["strace", "-f", "-s", "4096", "-e", "trace=openat", "-o", trace, *command], cwd=folder,
                               env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, start_new_session=True)
    try:
        begin = last = time.monotonic()
        size = 0
        while program.poll() is None:
            now = time.monotonic()
            if trace.stat().st_size != size:
                last, size = now, trace.stat().st_size
            has_files = any(is_wanted(file) for file, _ in opened(trace))
            if is_done() if is_done else has_files and now - last > QUIET:
                break
            proof.check(now - begin < PATIENCE, f"{command[0]} did not get done within {PATIENCE} s")
            time.sleep(0.3)
        return [file for file in opened(trace) if is_wanted(file[0])]
    finally:
        with contextlib.suppress(ProcessLookupError):  # it may have ended by itself
            os.killpg(program.pid, signal.SIGKILL)
        program.wait()


def first_times(files):
    """Each file once, in the order in which it was met."""
    return list(dict.fromkeys(files))


def content_of(path):
    """All of the file but the names of others."""
    links = {".kicad_pro": rb'("page_layout_descr_file"\s*:\s*)"[^"]*"', ".kicad_pcb": rb'(\(model )"[^"]*"',
             ".kicad_sch": rb'(\(property "(?:Sheet file|Datasheet)" )"[^"]*"'}
    text = path.read_bytes()
    if path.suffix in links:
        text = re.sub(links[path.suffix], rb'\1""', text)
    return hashlib.sha256(text).hexdigest()[:16]


def references_of(label, folder, files):
    references = []
    for number, (name, is_found) in enumerate(first_times(files)):
        path = pathlib.Path(os.path.normpath(folder / name))
        references.append(proof.Reference(f"{label} {number}", str(path) if is_found else None,
                                          content_of(path) if is_found else None))
    return references


class Step:
    """What a STEP file says of the instances in an assembly."""

    def __init__(self, text):
        self.entities = {int(n): body for n, body in re.findall(r"#(\d+)\s*=\s*(.*?);\s*(?=#|ENDSEC)", text, re.S)}
        self.links = {n: [int(r) for r in re.findall(r"#(\d+)", body)] for n, body in self.entities.items()}
        self.children = {}
        self.shapes = {}
        for n, body in self.entities.items():
            if body.startswith("NEXT_ASSEMBLY_USAGE_OCCURRENCE"):
                parent, child = self.links[n][:2]
                self.children.setdefault(parent, []).append((re.findall(r"'([^']*)'", body)[1], child))
            elif body.startswith("SHAPE_DEFINITION_REPRESENTATION"):
                definition, shape = self.links[n][:2]
                self.shapes.setdefault(self.links[definition][-1], []).append(shape)
            elif body.startswith("SHAPE_REPRESENTATION_RELATIONSHIP"):
                self.links[self.links[n][0]].append(self.links[n][1])

    def instances(self):
        """(name, base name of the model, size) of each named instance."""
        for children in self.children.values():
            for name, product in children:
                if re.fullmatch(r"U\d+", name):
                    yield name, self.name(product), self.size(product)

    def name(self, product):
        formation = self.links[product][0]
        return re.search(r"'([^']*)'", self.entities[self.links[formation][0]])[1]

    def size(self, product):
        points, seen, pending = [], set(), list(self.shapes.get(product, []))
        for _, child in self.children.get(product, []):
            pending += self.shapes.get(child, [])
        while pending:
            n = pending.pop()
            if n in seen:
                continue
            seen.add(n)
            if self.entities[n].startswith("VERTEX_POINT"):
                point = self.entities[self.links[n][0]]
                points.append([float(x) for x in re.search(r"\(([^()]*)\)\)", point)[1].split(",")])
            pending += self.links[n]
        return "x".join(f"{max(axis) - min(axis):.3f}" for axis in zip(*points))


def models(display, board):
    """One reference per footprint: the model that KiCad exports for it."""
    footprints = json.loads(proof.run([PYTHON, BOARDS, board], env=display.environment).stdout)
    result = display.folder / "board.step"
    result.unlink(missing_ok=True)

    def is_done():
        return result.exists() and result.read_bytes().rstrip().endswith(b"END-ISO-10303-21;")

    files = watch(display, board.parent, ["kicad2step", "--subst-models", "-f", "-o", result, board.name],
                  lambda path: path.endswith((".step", ".kicad_pcb")) and path != str(result), is_done)
    by_stem = {pathlib.Path(name).stem: os.path.normpath(board.parent / name)
               for name, is_found in files if is_found}
    # The exporter takes the bytes of a name for single characters.
    text = result.read_bytes().decode("utf-8")
    placed = {name: (stem.encode("latin-1").decode("utf-8"), size) for name, stem, size in Step(text).instances()}
    references = []
    for footprint in footprints:
        stem, size = placed.get(footprint, (None, None))
        references.append(proof.Reference(f"model of {footprint}", by_stem.get(stem), size))
    return references


def inspect(display, top):
    folder = top.parent
    schematic, board = top.with_suffix(".kicad_sch"), top.with_suffix(".kicad_pcb")
    proof.check(schematic.exists() and board.exists(), f"{top} has no schematic or no board beside it")

    def is_wanted(path):
        return path.endswith((".kicad_sch", ".kicad_pro", ".kicad_wks", ".kicad_dru", folder.name + "/sym-lib-table"))

    references = references_of("schematic editor", folder,
                               watch(display, folder, ["eeschema", schematic], is_wanted))
    references += references_of("board editor", folder, watch(display, folder, ["pcbnew", board], is_wanted))
    return references + models(display, board)


def edit(file):
    """Larger paper, or another variable of the project."""
    if file.suffix == ".kicad_pro":
        proof.replace_in(file, ('"text_variables": {}', '"text_variables": {"NEU": "1"}'))
    else:
        proof.replace_in(file, ('(paper "A4")', '(paper "A3")'))
    return [file]


MISSING = {}
ORIGINALS = {}  # what was seen before anything was changed


def look(display, top):
    return ORIGINALS.pop(top, None) or inspect(display, top)


def prove(program):
    with Display() as display:
        def make(folder):
            proof.run([PYTHON, MAKER, folder, folder, MODELS], timeout=120)
            shutil.rmtree(MAKER.parent / "__pycache__", ignore_errors=True)
            for top in TOPS:
                ORIGINALS[folder / top] = inspect(display, folder / top)
                MISSING[top] = {reference.name for reference in ORIGINALS[folder / top] if reference.path is None}
                print(f"{top}: missing in the original: {sorted(MISSING[top])}")
            proof.check(len(MISSING[TOPS[0]]) == 3, "one sheet and two models are missing on purpose")

        proof.prove(program, make, functools.partial(look, display), TOPS, edit, missing=lambda top: MISSING[top],
                    exit_codes=lambda top: (0,) if top == TOPS[2] else (4,),
                    # Projects in one folder have their library tables in common.
                    folder=lambda top: pathlib.PurePath(top).parent.name,
                    plain_exit_codes=lambda top: (0,) if top == TOPS[2] else (7,))


if __name__ == "__main__":
    proof.main(prove)
