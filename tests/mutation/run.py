#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Changes the module's sources one line at a time; every change must make a test fail.

    tests/mutation/run.py             the whole list
    tests/mutation/run.py --check     only: does every old text stand exactly once in its file?
    tests/mutation/run.py Copying     the changes whose file or reason matches the expression

See README.md beside this file.
"""

import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import time
from dataclasses import dataclass, field
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
PRESET = "mutation"

# The test programs that hold the module, and which of them most likely notices a change of a folder.
PROGRAMS = {
    "base": ["base_tests", "support_tests", "services_tests", "kit_tests"],
    "support": ["support_tests", "stages_tests", "importer_tests"],
    "fileset": ["fileset_tests", "importer_tests", "stages_tests"],
    "plugins": ["plugins_tests", "importer_tests"],
    "stages": ["stages_tests", "importer_tests"],
    "importer": ["importer_tests", "stages_tests"],
}
ALL_PROGRAMS = [
    "base_tests", "services_tests", "kit_tests", "importer_tests", "stages_tests", "fileset_tests", "plugins_tests",
    "support_tests", "scenario_tests", "cli_tests", "fault_tests",
]


@dataclass
class Mutation:
    file: str
    reason: str
    first_tests: str
    old: list = field(default_factory=list)
    new: list = field(default_factory=list)

    def name(self):
        return f"{self.file}: {self.reason}"

    def apply(self, text):
        """The changed text. Fails loudly when the old text does not stand exactly once."""
        old, new = "\n".join(self.old), "\n".join(self.new)
        count = text.count(old) if old else 0
        if count != 1:
            raise SystemExit(f"{self.name()}\n  stands {count} times, not once:\n{old}")
        if old == new:
            raise SystemExit(f"{self.name()}\n  changes nothing")
        return text.replace(old, new)

    def programs(self):
        first = PROGRAMS[Path(self.file).parent.name]
        return first + [program for program in ALL_PROGRAMS if program not in first]


def read_list(path):
    """`@ file`, `= tests asked first`, `? reason`, `- old text`, `+ new text`; a change ends where
    the next one begins."""
    mutations, file, first_tests = [], None, ""
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        mark, text = line[:1], line[2:]
        if not line.strip() or mark == "#":
            continue
        if line[1:2] not in ("", " "):
            raise SystemExit(f"{path.name}:{number}: no blank after the mark: {line}")
        if mark == "@":
            file, first_tests = text, ""
        elif mark == "=" and file:
            first_tests = text
        elif mark == "?" and file:
            mutations.append(Mutation(file, text, first_tests))
        elif mark == "-" and mutations and not mutations[-1].new:
            mutations[-1].old.append(text)
        elif mark == "+" and mutations and mutations[-1].old:
            mutations[-1].new.append(text)
        else:
            raise SystemExit(f"{path.name}:{number}: not understood: {line}")
    return mutations


def check(mutations):
    names = set()
    for mutation in mutations:
        mutation.apply((ROOT / mutation.file).read_text(encoding="utf-8"))
        if mutation.name() in names:
            raise SystemExit(f"{mutation.name()}\n  stands twice in the list")
        names.add(mutation.name())
    listed = {mutation.file for mutation in mutations}
    for name in sorted(PROGRAMS):
        folder = ROOT / name if name == "base" else ROOT / "src" / name
        for source in sorted(folder.glob("*.cpp")):
            path = source.relative_to(ROOT).as_posix()
            # The programs run on this system alone.
            if path not in listed and not path.endswith(("_windows.cpp", "WindowsApi.cpp")):
                raise SystemExit(f"{path}: no change in the list")


def synchronize(tree):
    """Makes `tree` a copy of the checkout, touching only files that differ."""
    listing = subprocess.run(["git", "-C", ROOT, "ls-files", "-z", "-co", "--exclude-standard"],
                             check=True, capture_output=True, text=True).stdout
    wanted = {name for name in listing.split("\0") if name and (ROOT / name).is_file()}
    for name in wanted:
        source, target = ROOT / name, tree / name
        if target.is_file() and target.read_bytes() == source.read_bytes():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        target.unlink(missing_ok=True)
        shutil.copy(source, target)
    for path in list(tree.rglob("*")):
        name = path.relative_to(tree)
        if path.is_file() and name.parts[0] != "build" and name.as_posix() not in wanted:
            path.unlink()


class Builder:
    def __init__(self, tree, jobs):
        self.tree = tree
        self.folder = tree / "build" / PRESET
        self.jobs = str(jobs)

    def configure(self):
        options = []
        if shutil.which("ccache"):
            options.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        subprocess.run(["cmake", "--preset", PRESET, *options], cwd=self.tree, check=True,
                       stdout=subprocess.DEVNULL)

    def build(self, *targets):
        return subprocess.run(["cmake", "--build", self.folder, "-j", self.jobs, "--target",
                               *targets],
                              capture_output=True, text=True)

    def run(self, program, timeout, only=None):
        """None when every test passes, otherwise what failed."""
        command = [self.folder / "tests" / program / program, "--gtest_fail_fast",
                   "--gtest_brief=1"]
        if only:
            command.append(f"--gtest_filter={only}")
        try:
            result = subprocess.run(command, cwd=self.folder, timeout=timeout,
                                    capture_output=True, text=True, errors="replace")
        except subprocess.TimeoutExpired:
            return "(takes too long)"
        if result.returncode == 0:
            return None
        failed = re.findall(r"^\[  FAILED  \] ([^\s,]+\.[^\s,]+)", result.stdout, re.MULTILINE)
        return failed[0] if failed else f"(ends with {result.returncode})"


class Run:
    def __init__(self, builder, killers_file, timeout):
        self.builder = builder
        self.killers_file = killers_file
        self.timeout = timeout
        self.killers = json.loads(killers_file.read_text()) if killers_file.is_file() else {}

    def judge(self, mutation):
        """'killed', 'survived' or 'not compiling', and the killer or the compiler's words."""
        path = self.builder.tree / mutation.file
        original = path.read_text(encoding="utf-8")
        path.write_text(mutation.apply(original), encoding="utf-8")
        try:
            return self.kill(mutation)
        finally:
            path.write_text(original, encoding="utf-8")

    def kill(self, mutation):
        known = self.killers.get(mutation.name())
        attempts = [(program, None) for program in mutation.programs()]
        if mutation.first_tests:
            attempts.insert(0, (attempts[0][0], mutation.first_tests))
        if known:
            attempts.insert(0, (known[0], known[1] if not known[1].startswith("(") else None))
        for program, test in attempts:
            built = self.builder.build(program)
            if built.returncode != 0:
                return "not compiling", built.stdout[-2000:]
            failed = self.builder.run(program, self.timeout, test)
            if failed:
                self.killers[mutation.name()] = [program, failed]
                self.killers_file.write_text(json.dumps(self.killers, indent=1))
                return "killed", f"{program}: {failed}"
        self.killers.pop(mutation.name(), None)
        return "survived", ""


def prepare(builder):
    synchronize(builder.tree)
    builder.configure()
    built = builder.build(*ALL_PROGRAMS)
    if built.returncode != 0:
        raise SystemExit(built.stdout[-4000:])
    for program in ALL_PROGRAMS:
        failed = builder.run(program, 900)
        if failed:
            raise SystemExit(f"without any change, {program} fails: {failed}")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("expression", nargs="?", default="")
    parser.add_argument("--check", action="store_true", help="only check the list")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="compilers at once")
    parser.add_argument("--timeout", type=int, default=300,
                        help="seconds for one test program; what takes longer counts as failed")
    arguments = parser.parse_args()

    mutations = [m for path in sorted(HERE.glob("*.txt")) for m in read_list(path)]
    check(mutations)
    if arguments.check:
        print(f"{len(mutations)} changes, each old text stands once in its file")
        return 0
    if os.geteuid() == 0:
        # A changed program moves and deletes where the true one refuses to.
        print("Run this as a user without rights over the system's files.", file=sys.stderr)
        return 2

    tree = ROOT / "build" / PRESET / "tree"
    tree.mkdir(parents=True, exist_ok=True)
    builder = Builder(tree, arguments.jobs)
    start = time.monotonic()
    prepare(builder)
    print(f"prepared in {time.monotonic() - start:.0f} s", flush=True)

    run = Run(builder, tree.parent / "killers.json", arguments.timeout)
    counts = {"killed": 0, "survived": 0, "not compiling": 0}
    chosen = [m for m in mutations if re.search(arguments.expression, m.name())]
    for number, mutation in enumerate(chosen, 1):
        verdict, detail = run.judge(mutation)
        counts[verdict] += 1
        print(f"[{number}/{len(chosen)}] {verdict}: {mutation.name()}\n    {detail}", flush=True)
    summary = ", ".join(f"{verdict} {count}" for verdict, count in counts.items())
    print(f"{summary}, total {len(chosen)}, {(time.monotonic() - start) / 60:.0f} minutes")
    return 0 if counts["killed"] == len(chosen) else 1


if __name__ == "__main__":
    sys.exit(main())
