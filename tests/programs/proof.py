"""What the proofs of all formats share: see README.md."""
import argparse
import dataclasses
import hashlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

TIMEOUT = 300
TESTS = pathlib.Path(__file__).resolve().parent.parent


class ProofError(Exception):
    """The first thing that was not as it must be."""


@dataclasses.dataclass(frozen=True)
class Reference:
    """One reference as the owning program resolved it.

    name     which reference it is: the same in the original and in the copy
    path     the absolute path of the file it led to; None when the program did not find it
    content  what the program found there (a volume, a picture's pixels, a hash): tells swapped files apart
    """
    name: str
    path: str | None
    content: str | None


def check(condition, text):
    if not condition:
        raise ProofError(text)


def digest(path):
    return hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()[:16]


def run(command, *, expect=(0,), timeout=TIMEOUT, **options):
    """Runs a program with a time-out and no standard input; its output is part of the failure."""
    result = subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, timeout=timeout,
                            capture_output=True, text=True, errors="replace", **options)
    check(result.returncode in expect,
          f"{command[0]} ended with {result.returncode}\n{result.stdout[-4000:]}\n{result.stderr[-4000:]}")
    return result


def run_blender(*arguments):
    """Blender in the background, with its own settings. Debian's Python comes first: Blender takes the first
    one that it meets for its own, and another one lacks what Blender's add-ons need."""
    environment = {**os.environ, "PATH": os.pathsep.join(("/usr/bin", os.environ.get("PATH", "")))}
    return run(["blender", "-b", "--factory-startup", "--python-exit-code", "1", *arguments], env=environment)


class Corsync:
    """The command with a cloud folder, a database and settings of its own."""

    def __init__(self, program, work):
        self.program = program
        self.cloud = work / "cloud"
        self.cloud.mkdir()
        self._common = ["--cloud-folder", self.cloud, "--database", work / "sync.db",
                        "--settings", work / "settings.ini"]

    def import_files(self, *arguments, expect=(0,)):
        """The events of `corsync import --json`."""
        result = run([self.program, "import", *arguments, *self._common, "--json"], expect=expect)
        return [json.loads(line) for line in result.stdout.splitlines()]


def without_layout_plugin(program, folder):
    """A copy of the program, its libraries and its plug-ins but the one that lays out linked files."""
    folder.mkdir()
    for file in (program, *program.parent.glob("*.so*")):
        shutil.copy2(file, folder)
    for name in ("SyncPluginRegFiles", "SyncPlugins"):
        shutil.copytree(program.parent / name, folder / name)
    (folder / "SyncPluginRegFiles" / "layout.syncplugin").unlink()
    plugins = run([folder / program.name, "plugins", "--json"]).stdout
    check("File Link Resolver" in plugins and "File Layout" not in plugins, f"not what should be left: {plugins}")
    return folder / program.name


def event_of(events, source):
    """What the import says of the file."""
    for event in events:
        if event["event"] == "file" and event["source"] == str(source):
            return event
    raise ProofError(f"the import says nothing of {source}")


def target_of(events, source):
    """Where the import put the file, as its event says."""
    return pathlib.Path(event_of(events, source)["target"])


def age(files, seconds):
    """Gives files another time: the next import takes them for changed."""
    for file in files:
        state = file.stat()
        os.utime(file, (state.st_atime, state.st_mtime - seconds))


def compare(label, before, after, inside, missing):
    """`after` has the references of `before`, each inside the folder `inside`, but for those in `missing`.

    The result is the files that they lead to.
    """
    files = set()
    old = {reference.name: reference for reference in before}
    new = {reference.name: reference for reference in after}
    check(len(old) == len(before) and len(new) == len(after), f"{label}: references with equal names")
    check(old.keys() == new.keys(), f"{label}: {sorted(old.keys() ^ new.keys())} on one side only")
    for name, reference in new.items():
        if name in missing:
            check(reference.path is None, f"{label}: {name} was found at {reference.path}")
            continue
        check(reference.path is not None, f"{label}: {name} was not found")
        real = os.path.realpath(reference.path)
        check(real.startswith(os.path.realpath(inside) + os.sep), f"{label}: {name} leads outside, to {real}")
        check(reference.content == old[name].content,
              f"{label}: {name} holds {reference.content}, not {old[name].content}")
        files.add(real)
    print(f"{label}: {len(after) - len(missing)} references found, {len(missing)} missing as in the original")
    return files


def compare_copy(label, before, inspect, copy, corsync, source, missing):
    """What the copy leads to while the source has another name."""
    away = source.with_name("renamed away")
    source.rename(away)
    try:
        return compare(label, before, inspect(copy), corsync.cloud, missing)
    finally:
        away.rename(source)


def prove(program, make_project, inspect, tops, *, missing=(), exit_codes=(0,), plain_exit_codes=None):
    """The whole sequence.

    make_project(folder)  puts the project, as the owning program made it, into the empty folder
    inspect(file)         the References that the owning program resolves when it opens the file
    tops                  files of the project, relative to its folder, each imported on its own
    missing               names of references that the original lacks on purpose (or a function of the top)
    exit_codes            what the imports may end with: (4,) when a linked file is missing
    plain_exit_codes      the same without the layout plug-in, where that differs (or a function of the top)
    """
    work = pathlib.Path(tempfile.mkdtemp(prefix="corsync-proof-"))
    try:
        source = work / "source"
        source.mkdir()
        make_project(source)
        for number, name in enumerate(tops):
            lacks = set(missing(name) if callable(missing) else missing)
            top = source / name
            place = work / f"job {number}"
            place.mkdir()
            corsync = Corsync(program, place)
            before = inspect(top)
            check(before, f"{name}: the original has no references")
            compare(f"{name}, original", before, before, source, lacks)
            earlier = set()
            everything = [file for file in source.rglob("*") if file.is_file()]
            for label, changed in (("copy", []), ("renamed copy", [top]), ("all renamed", everything)):
                age(changed, 10)
                options = ("--collisions", "rename") if changed else ()
                events = corsync.import_files(top, "--to", "Demo Größe", *options, expect=exit_codes)
                check(event_of(events, top)["status"] == ("renamed" if changed else "copied"),
                      f"{label}: {event_of(events, top)}")
                files = compare_copy(f"{name}, {label}", before, inspect, target_of(events, top), corsync, source,
                                     lacks)
                if changed == everything:
                    check(not files & earlier, f"{label}: {sorted(files & earlier)} are of an earlier import")
                earlier |= files
            plain = work / f"plain job {number}"
            plain.mkdir()
            corsync = Corsync(without_layout_plugin(program, plain / "bin"), plain)
            codes = plain_exit_codes(name) if callable(plain_exit_codes) else plain_exit_codes
            events = corsync.import_files(top, "--to", "Demo Größe", expect=codes or exit_codes)
            compare_copy(f"{name}, default layout", before, inspect, target_of(events, top), corsync, source, lacks)
    finally:
        shutil.rmtree(work, ignore_errors=True)


def main(proof):
    """Runs proof(corsync program) with the arguments of the command line."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--corsync", type=pathlib.Path, required=True, help="the corsync program")
    try:
        proof(parser.parse_args().corsync.resolve())
    except (ProofError, subprocess.TimeoutExpired) as error:
        print(f"FAILED: {error}")
        sys.exit(1)
