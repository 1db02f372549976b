# SPDX-License-Identifier: Apache-2.0
"""Worlds for the sweeps: a project, a cloud folder with what an import finds there, and the command that
imports the one into the other. A world is made anew for each point, so that a point can be repeated alone.
"""
import dataclasses
import hashlib
import os
import pathlib
import shutil
import sqlite3
import stat
import subprocess

ENDED_BY_KILL = -9


def svg(*links):
    images = "".join(f'<image href="{link}"/>' for link in links)
    return f'<svg xmlns="http://www.w3.org/2000/svg">{images}</svg>'.encode()


def project(version):
    """Some files that link each other, one that links nothing, and a part that several share."""
    return {
        "top.svg": svg("parts/a.svg", "parts/b.svg", "shared.png") + b"<!--%d-->" % version,
        "parts/a.svg": svg("../shared.png", "a.png"),
        "parts/b.svg": svg("../shared.png") + b"<!--%d-->" % version,
        "parts/a.png": b"picture a " * 400 + b"%d" % version,
        "shared.png": b"shared picture " * 300,
        "model.obj": b"mtllib model.mtl\nv 0 0 0\n",
        "model.mtl": b"newmtl wood\nmap_Kd wood.png\n",
        "wood.png": b"wood %d" % version * 50,
        "notes.txt": b"nothing is linked here",
    }


# Beside the project: linked, and not selected.
OUTSIDE = {"lib/bolt.png": b"bolt " * 100, "lib/nut.svg": svg("bolt.png")}


@dataclasses.dataclass(frozen=True)
class Kind:
    name: str
    arguments: tuple = ()
    # What stands in the cloud folder before.
    foreign: bool = False
    earlier: bool = False


KINDS = {kind.name: kind for kind in (
    Kind("copy"),
    Kind("replace", ("--collisions", "replace"), foreign=True),
    Kind("update", earlier=True),
    Kind("move", ("--move",)),
)}


class World:
    """Folders src, cloud and data below `root`, which must not exist."""

    def __init__(self, root, kind, corsync):
        self.root = pathlib.Path(root)
        self.kind = kind
        self.corsync = corsync
        self.root.mkdir(parents=True)
        for folder in ("home", "cloud", "data", "src"):
            (self.root / folder).mkdir()
        if kind.earlier:
            self._write_project(1)
            ended = self.run()
            if ended.returncode != 0:
                raise RuntimeError(f"the earlier import failed: {ended.stdout}{ended.stderr}")
        self._write_project(2)
        if kind.foreign:
            for name in ("top.svg", "parts/a.png", "wood.png"):
                self._write(f"cloud/P/src/{name}", b"stood here before: " + name.encode())
        self.before = self.contents()

    def _write(self, name, content):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        if not path.exists() or path.read_bytes() != content:
            path.write_bytes(content)

    def _write_project(self, version):
        for name, content in project(version).items():
            self._write("src/" + name, content)
        for name, content in OUTSIDE.items():
            self._write(name, content)
        self._write("src/frame.svg", svg("../lib/nut.svg", "../lib/bolt.png"))

    def command(self):
        return [self.corsync, "import", str(self.root / "src"), "--to", "P",
                "--cloud-folder", str(self.root / "cloud"), "--database", str(self.root / "data/sync.db"),
                *self.kind.arguments]

    def environment(self):
        home = str(self.root / "home")
        return {**os.environ, "HOME": home, "XDG_CONFIG_HOME": home + "/config", "XDG_DATA_HOME": home + "/data",
                "TMPDIR": home, "ASAN_OPTIONS": "detect_leaks=0"}

    def run(self, prefix=(), timeout=60):
        return subprocess.run([*prefix, *self.command()], env=self.environment(), cwd=self.root, text=True,
                              errors="replace", capture_output=True, timeout=timeout)

    def contents(self):
        """Path -> bytes of every regular file below src, lib and cloud, and of what the base store keeps."""
        found = {}
        for folder in ("src", "lib", "cloud", "data/sync.db.base"):
            for path, _, names in os.walk(self.root / folder):
                for name in names:
                    file = pathlib.Path(path, name)
                    if stat.S_ISREG(file.lstat().st_mode):
                        found[str(file.relative_to(self.root))] = file.read_bytes()
        return found

    def remove(self):
        shutil.rmtree(self.root, ignore_errors=True)

    def ledger(self):
        """Targets that the records claim."""
        database = self.root / "data/sync.db"
        if not database.exists():
            return []
        with sqlite3.connect(database) as connection:
            try:
                return [row[0] for row in connection.execute("SELECT target FROM ledger_copies")]
            except sqlite3.OperationalError:
                return []

    def database_fault(self):
        database = self.root / "data/sync.db"
        if not database.exists():
            return ""
        try:
            with sqlite3.connect(database) as connection:
                answer = connection.execute("PRAGMA integrity_check").fetchone()[0]
            return "" if answer == "ok" else answer
        except sqlite3.DatabaseError as error:
            return str(error)


def visible(contents, folder):
    """What a person sees below a folder: without what the command hides while it works."""
    return {path: data for path, data in contents.items()
            if path.startswith(folder + "/") and "/.corsync-" not in path}


class Expected:
    """What the same import does when nothing gets in its way."""

    def __init__(self, root, kind, corsync):
        world = World(root, kind, corsync)
        ended = world.run()
        if ended.returncode != 0:
            raise RuntimeError(f"{kind.name}: a run without a fault fails: {ended.stdout}{ended.stderr}")
        after = world.contents()
        self.cloud = visible(after, "cloud")
        self.src = visible(after, "src")
        world.remove()


def violations(world, expected, code):
    """What is wrong after a run that a fault met; `code` is None when the process was killed."""
    after = world.contents()
    bytes_left = {hashlib.sha256(data).digest() for data in after.values()}
    found = []
    for path, data in world.before.items():
        if hashlib.sha256(data).digest() in bytes_left:
            continue
        target = "cloud/P/" + path
        moved = path.startswith("src/") and after.get(target) == expected.cloud.get(target, b"")
        if not moved and not path.startswith("data/"):
            found.append(f"lost: {path}")
    if code == 0:
        found += differences("exit code 0", visible(after, "cloud"), expected.cloud)
        found += differences("exit code 0", visible(after, "src"), expected.src)
    for path in world.before:
        if path.startswith("lib/") and after.get(path) != world.before[path]:
            found.append(f"changed outside the selection: {path}")
    fault = world.database_fault()
    if fault:
        found.append(f"database: {fault}")
    else:
        for target in world.ledger():
            if not os.path.exists(target):
                found.append(f"recorded and not there: {os.path.relpath(target, world.root)}")
    return found


def rerun_violations(world, expected):
    """What is wrong after the same command without a fault."""
    ended = world.run()
    if ended.returncode != 0:
        last = (ended.stdout + ended.stderr).strip().splitlines()[-3:]
        return [f"again: exit code {ended.returncode}: {' / '.join(last)}"]
    after = world.contents()
    found = differences("again", visible(after, "cloud"), expected.cloud)
    found += differences("again", visible(after, "src"), expected.src)
    left = [path for path in after if "/.corsync-" in path]
    left += [name for name in os.listdir(world.root / "cloud") if name.startswith(".corsync-")]
    runs = world.root / "data/sync.db.runs"
    left += [f"data/sync.db.runs/{name}" for name in os.listdir(runs)] if runs.exists() else []
    found += [f"again: left behind: {path}" for path in left]
    fault = world.database_fault()
    if fault:
        found.append(f"again: database: {fault}")
    return found


def differences(when, got, wanted):
    found = []
    for path in sorted(got.keys() | wanted.keys()):
        if path not in got:
            found.append(f"{when}: missing: {path}")
        elif path not in wanted:
            found.append(f"{when}: unexpected: {path}")
        elif got[path] != wanted[path]:
            found.append(f"{when}: other content: {path}")
    return found
