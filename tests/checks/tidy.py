#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""clang-tidy over the folders in which something changed: first the changed files, then their neighbours.

  tidy.py --build FOLDER [--base REVISION] [--minutes N] [FILE...]

Without FILEs, what changed since REVISION is asked of git (work tree included). Without a REVISION that is
where this branch left main, or on main itself the revision before. Begins no file when the minutes are over (0:
they never are), and says what it has not looked at. Fails at any finding.
"""
import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = ("base", "include", "src", "services", "isolation", "jobs", "kit", "plugins", "cli")
# What git calls a tree without files: against it everything has changed.
EMPTY_TREE = "4b825dc642cb6eb9a060e54bf8d69288fbee4904"
FOLDER_OF_HEADERS = {"include/filelink": "src", "include/syncplugin": "plugins", "include/pluginkit": "kit",
                     "include/syncservices": "services", "include/corsync": "jobs"}


def git(*arguments):
    return subprocess.run(["git", "-C", str(ROOT), "-c", "core.quotePath=off", *arguments], text=True,
                          capture_output=True)


def default_base():
    head = git("rev-parse", "HEAD").stdout
    for main in ("origin/main", "main"):
        base = git("merge-base", "HEAD", main)
        if base.returncode == 0 and base.stdout != head:
            return base.stdout.strip()
    return "HEAD~1" if git("rev-parse", "--verify", "HEAD~1").returncode == 0 else EMPTY_TREE


def is_ours(path):
    return path.suffix in (".h", ".cpp") and path.parts[0] in FOLDERS and (ROOT / path).is_file()


def is_for_windows(header):
    """What includes headers of Windows has nothing to be compiled with here."""
    return header.stem.endswith("_windows") or header.name == "WindowsApi.h"


def changed_files(base):
    result = git("diff", "--name-only", "--diff-filter=d", base)
    if result.returncode:
        sys.exit(f"tidy.py: no such revision: {base}")
    new = git("ls-files", "--others", "--exclude-standard").stdout
    return sorted({pathlib.Path(name) for name in (result.stdout + new).splitlines()})


class Commands:
    """How the compiler is called for each source, without what only GCC understands."""

    def __init__(self, build, folder):
        self.folder = folder
        self.sources = {}
        for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
            path = pathlib.Path(entry["file"])
            if path.is_relative_to(ROOT):
                self.sources.setdefault(path.relative_to(ROOT), entry)

    def has(self, path):
        return path in self.sources or (path.suffix == ".h" and not is_for_windows(path))

    def write(self, paths):
        """The compilation database of these files: a header is compiled as a source of its folder is."""
        entries = [self.entry(path) for path in paths]
        (self.folder / "compile_commands.json").write_text(json.dumps(entries), encoding="utf-8")

    def entry(self, path):
        like = self.sources.get(path) or self.relative_of(path)
        words = shlex.split(like["command"])
        words = words[:words.index("-o")] if "-o" in words else words
        kept, skip = [words[0]], False
        for word, following in zip(words[1:], words[2:] + [""]):
            if skip or word == "-fpch-preprocess" or word == "-Winvalid-pch":
                skip = False
            elif word == "-include" and "cmake_pch" in following:
                skip = True
            else:
                kept.append(word)
        language = [] if path.suffix == ".cpp" else ["-xc++", "-Wno-pragma-once-outside-header"]
        return {"directory": like["directory"], "file": str(ROOT / path),
                "arguments": kept + language + ["-c", str(ROOT / path)]}

    def relative_of(self, header):
        """The first source beside the header, or else of the folder that the header belongs to, or any."""
        folder = FOLDER_OF_HEADERS.get(header.parent.as_posix(), header.parts[0])
        near = [path for path in sorted(self.sources) if path.parent == header.parent]
        same = [path for path in sorted(self.sources) if path.parts[0] == folder]
        return self.sources[(near or same or sorted(self.sources))[0]]


def look_at(commands, path):
    """What clang-tidy says of one file; each header is looked at by itself, not with who includes it."""
    result = subprocess.run(["clang-tidy", "--quiet", "-p", str(commands.folder), "--warnings-as-errors=*",
                             "--header-filter=^$", str(ROOT / path)], capture_output=True, text=True)
    if result.returncode == 0:
        return ""
    errors = re.sub(r"^\d+ warnings?.*\n", "", result.stderr, flags=re.MULTILINE)
    return result.stdout or errors or f"{path}: clang-tidy failed\n"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--base", default=os.environ.get("CORSYNC_TIDY_BASE"))
    parser.add_argument("--minutes", type=float, default=10)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("files", nargs="*", type=pathlib.Path)
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as folder:
        return check(arguments, Commands(arguments.build.resolve(), pathlib.Path(folder)))


def check(arguments, commands):
    first = arguments.files or [path for path in changed_files(arguments.base or default_base()) if is_ours(path)]
    folders = {path.parent for path in first}
    all_ours = sorted(path.relative_to(ROOT) for folder in FOLDERS for path in (ROOT / folder).rglob("*.*"))
    others = [] if arguments.files else [path for path in all_ours
                                         if is_ours(path) and path.parent in folders and path not in first]
    # What is built for another system only has no command here.
    paths = [path for path in [*first, *others] if commands.has(path)]
    commands.write(paths)

    end = time.monotonic() + arguments.minutes * 60 if arguments.minutes else float("inf")
    looked, findings = [], 0

    def work(path):
        return None if time.monotonic() > end else look_at(commands, path)

    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for path, said in zip(paths, pool.map(work, paths)):
            if said is None:
                continue
            looked.append(path)
            if said:
                findings += 1
                print(said, end="" if said.endswith("\n") else "\n", flush=True)
    left = [path for path in paths if path not in looked]
    print(f"clang-tidy: {len(looked)} of {len(paths)} files, {findings} with findings")
    if left:
        print(f"No time was left for these, {sum(path in first for path in left)} of them changed:", *left)
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
