# SPDX-License-Identifier: Apache-2.0
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
FOLDER = "Demo Größe"
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
    """The command of one machine: a database of its own, and a cloud folder."""

    def __init__(self, program, work, machine="sync"):
        self.program = program
        self.cloud = work / "cloud"
        self.cloud.mkdir(exist_ok=True)
        self._common = ["--cloud-folder", self.cloud, "--database", work / f"{machine}.db"]

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


def check_outcomes(label, events, wanted):
    """Each file that there is has the outcome wanted(source); the result are all of these outcomes."""
    files = [event for event in events if event["event"] == "file" and event["status"] != "missing"]
    for event in files:
        source = pathlib.Path(event["source"])
        check(event["status"] == wanted(source), f"{label}: {wanted(source)} was to be seen: {event}")
    return [event["status"] for event in files]


def replace_in(file, *changes):
    """Replaces the one occurrence of each text, bytes around it untouched."""
    data = file.read_bytes()
    for old, new in changes:
        check(data.count(old.encode()) == 1, f"{file.name}: {old!r} stands there {data.count(old.encode())} times")
        data = data.replace(old.encode(), new.encode())
    file.write_bytes(data)


def exchange(a, b):
    """Two parts that the program tells apart get each other's content."""
    content = a.read_bytes(), b.read_bytes()
    check(content[0] != content[1], f"{a.name} and {b.name} are equal")
    a.write_bytes(content[1])
    b.write_bytes(content[0])
    return [a, b]


def stand_in_the_way(files):
    """Puts somebody else's content at targets; the result is to be found there after an import."""
    contents = {}
    for number, file in enumerate(files):
        contents[file] = f"somebody else's file {number}".encode()
        file.write_bytes(contents[file])
    return contents


def check_untouched(contents):
    for file, content in contents.items():
        check(file.read_bytes() == content, f"{file} is not what somebody put there")


def compare(label, before, after, inside, missing):
    """`after` has the references of `before`, each inside the folder `inside`, but for those in `missing`.

    The result are the files that they lead to, by the names of the references.
    """
    files = {}
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
        files[name] = real
    print(f"{label}: {len(after) - len(missing)} references found, {len(missing)} missing as in the original")
    return files


def value_for(top, value):
    return value(top) if callable(value) else value


class Proof:
    """What is done with each file of a project that is imported on its own: see prove()."""

    def __init__(self, program, work, inspect):
        self.program = program
        self.work = work
        self.source = work / "source"
        self.source.mkdir()
        self.inspect = inspect

    def corsync_in(self, name, program=None, machine="sync"):
        place = self.work / name
        place.mkdir(exist_ok=True)
        return Corsync(program or self.program, place, machine)

    def compare_copy(self, label, before, copy, corsync, lacks):
        """What the copy leads to while the source has another name."""
        away = self.source.with_name("renamed away")
        self.source.rename(away)
        try:
            return compare(label, before, self.inspect(copy), corsync.cloud, lacks)
        finally:
            away.rename(self.source)

    def look_at_original(self, top, lacks):
        before = self.inspect(self.source / top)
        check(before, f"{top}: the original has no references")
        compare(f"{top}, original", before, before, self.source, lacks)
        return before

    def import_four_times(self, top, before, lacks, codes, edit):
        """Into an empty folder; again, when files were edited; and from two more machines, which know nothing of
        that, when other files stand where the file would go, and where all would."""
        file = self.source / top
        job = f"job {pathlib.PurePath(top).name}"
        corsync = self.corsync_in(job)

        def look(label, events, references):
            return set(self.compare_copy(f"{top}, {label}", references, target_of(events, file), corsync,
                                         lacks).values())

        def bring(machine, *options):
            return machine.import_files(file, "--to", FOLDER, *options, expect=codes)

        events = bring(corsync)
        check_outcomes("copy", events, lambda source: "copied")
        look("copy", events, before)

        originals = {found: found.read_bytes() for found in self.source.rglob("*") if found.is_file()}
        edited = edit(file)
        after = self.look_at_original(top, lacks)
        check(len(after) == len(before), f"{top}: the edit changed what is linked")
        events = bring(corsync)
        outcomes = check_outcomes("updated copy", events, lambda source: "updated" if source in edited else "unchanged")
        files = look("updated copy", events, after)

        foreign = stand_in_the_way([target_of(events, file)])
        events = bring(self.corsync_in(job, machine="second"), "--collisions", "rename")
        check(event_of(events, file)["status"] == "renamed", f"renamed copy: {event_of(events, file)}")
        files |= look("renamed copy", events, after)
        check_untouched(foreign)

        foreign = stand_in_the_way([found for found in corsync.cloud.rglob("*") if found.is_file()])
        check(files <= {os.path.realpath(found) for found in foreign}, f"{files} are not all in {corsync.cloud}")
        events = bring(self.corsync_in(job, machine="third"), "--collisions", "rename")
        check_outcomes("all renamed", events, lambda source: "renamed")
        both = look("all renamed", events, after) & files
        check(not both, f"all renamed: {sorted(both)} are of an earlier import")
        check_untouched(foreign)
        print(f"{top}: {outcomes.count('updated')} of {len(outcomes)} files updated, then one renamed, then all")
        for found in edited:
            found.write_bytes(originals[found])

    def import_without_layout_plugin(self, top, before, lacks, codes):
        name = f"default layout of {pathlib.PurePath(top).name}"
        (self.work / name).mkdir()
        corsync = self.corsync_in(name, without_layout_plugin(self.program, self.work / name / "bin"))
        events = corsync.import_files(self.source / top, "--to", FOLDER, expect=codes)
        self.compare_copy(f"{top}, default layout", before, target_of(events, self.source / top), corsync, lacks)

    def import_into_one_cloud(self, originals, missing, exit_codes, folder):
        """One import after the other. What the originals share, the copies share, too."""
        corsync = self.corsync_in("together")
        copies = {}
        for top in originals:
            events = corsync.import_files(self.source / top, "--to", value_for(top, folder),
                                          expect=value_for(top, exit_codes))
            copies[top] = target_of(events, self.source / top)
        tops = {os.path.realpath(self.source / top) for top in originals}
        owners, places = {}, {}
        for top, before in originals.items():
            found = self.compare_copy(f"{top}, together", before, copies[top], corsync, set(value_for(top, missing)))
            for reference in before:
                source = reference.path and os.path.realpath(reference.path)
                # A file that is imported itself has a place of its own, besides that as a part.
                if reference.name in found and source not in tops:
                    owners.setdefault(source, set()).add(top)
                    copy = places.setdefault(source, found[reference.name])
                    check(copy == found[reference.name], f"{source} is {copy} and {found[reference.name]}")
        shared = sum(len(tops) > 1 for tops in owners.values())
        check(shared, "no file belongs to two of the imported ones")
        print(f"together: {shared} files are shared, each has one copy")


def prove(program, make_project, inspect, tops, edit, *, missing=(), exit_codes=(0,), plain_exit_codes=None,
          folder=FOLDER):
    """The whole sequence. What is marked with * may be a function of the top file.

    make_project(folder)  puts the project, as the owning program made it, into the empty folder
    inspect(file)         the References that the owning program resolves when it opens the file
    tops                  files of the project, relative to its folder, each imported on its own
    edit(top)             changes that file, or what it links, in a way that the owning program might, without
                          changing what is linked; the result are the files that changed
    missing*              names of references that the original lacks on purpose
    exit_codes*           what the imports may end with: (4,) when a linked file is missing
    plain_exit_codes*     the same without the layout plug-in, where that differs
    folder*               where to import to when all go into one cloud
    """
    work = pathlib.Path(tempfile.mkdtemp(prefix="corsync-proof-"))
    try:
        proof = Proof(program, work, inspect)
        make_project(proof.source)
        originals = {}
        for top in tops:
            lacks, codes = set(value_for(top, missing)), value_for(top, exit_codes)
            before = originals[top] = proof.look_at_original(top, lacks)
            proof.import_four_times(top, before, lacks, codes, edit)
            proof.import_without_layout_plugin(top, before, lacks, value_for(top, plain_exit_codes) or codes)
        if len(originals) > 1:
            proof.import_into_one_cloud(originals, missing, exit_codes, folder)
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
