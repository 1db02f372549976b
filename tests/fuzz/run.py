#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the fuzz targets, and says what they did and found.

    tests/fuzz/run.py --minutes 60              every target for its part of an hour
    tests/fuzz/run.py --minutes 5 svg css       two of them
    tests/fuzz/run.py --minimise                makes the committed corpus anew, of what all runs found

A run begins with the committed corpus (tests/fuzz/corpus), with what earlier runs of this build found
(<build>/tests/fuzz/found) and with small files of the tests and the examples. What it finds that harms stands in
<build>/tests/fuzz/findings afterwards, and the exit code is 1. --record adds what was executed to
tests/fuzz/executions.tsv.
"""

import argparse
import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import tempfile
import time
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
HERE = ROOT / "tests/fuzz"
MIB = 1 << 20

# The longest input of each target, and the files that it begins with when they are no longer.
TARGETS = {
    "blender": (8192, []),
    "blender_packed": (4096, []),
    "css": (4096, ["tests/plugins/svg/corpus/**/*.css"]),
    "dxf": (16384, ["tests/plugins/dxf/corpus/**/*.dxf"]),
    "dxf_binary": (8192, ["tests/plugins/dxf/corpus/**/*binär.dxf"]),
    "exclude": (1024, []),
    "freecad": (8192, ["tests/plugins/freecad/corpus/**/*.FCStd"]),
    "freecad_xml": (8192, []),
    "glb": (4096, ["examples/**/*.glb"]),
    "gltf": (12288, ["examples/**/*.gltf"]),
    "kicad": (8192, ["tests/plugins/kicad/corpus/**/*.kicad_" + kind for kind in ("sch", "pcb", "mod")]),
    "kicad_legacy": (4096, []),
    "kicad_project": (6144, ["tests/plugins/kicad/corpus/**/*.kicad_pro"]),
    "messages": (4096, []),
    "mtl": (4096, ["tests/plugins/wavefront/corpus/**/*.mtl"]),
    "obj": (4096, ["tests/plugins/wavefront/corpus/**/*.obj"]),
    "openscad": (4096, ["tests/plugins/openscad/corpus/**/*.scad"]),
    "packed_lists": (4096, []),
    "path_rules": (512, []),
    "registration": (4096, ["plugins/**/*.syncplugin.in"]),
    "scribus": (8192, []),
    "settings": (2048, []),
    "solvespace": (8192, []),
    "spice": (4096, []),
    "step": (16384, ["tests/plugins/step/corpus/**/*.stp"]),
    "svg": (8192, ["tests/plugins/svg/corpus/**/*.svg", "tests/plugins/svg/corpus/**/*.svgz"]),
}

# Beyond what the program itself takes: its code, the sanitizers' shadow, the dictionary, the corpus.
OWN_MEMORY_MIB = 256
MEMORY_MIB = 256
SECONDS_PER_INPUT = 20


class Run:
    """One target's run."""

    def __init__(self, name, build):
        self.name = name
        self.program = build / "tests/fuzz" / f"fuzz_{name}"
        self.corpus = HERE / "corpus" / name
        self.found = build / "tests/fuzz/found" / name
        self.seeds = build / "tests/fuzz/seeds" / name
        self.findings = build / "tests/fuzz/findings" / name
        self.executions = 0
        self.new_inputs = 0
        self.seconds = 0.0
        self.coverage = 0
        self.peak = 0
        self.finding = ""

    def make_seeds(self):
        """What the owning programs wrote, as far as it is short enough to be tried often."""
        longest, patterns = TARGETS[self.name]
        shutil.rmtree(self.seeds, ignore_errors=True)
        self.seeds.mkdir(parents=True)
        files = [file for pattern in patterns for file in sorted(ROOT.glob(pattern))]
        for number, file in enumerate(files):
            if file.stat().st_size <= longest:
                shutil.copyfile(file, self.seeds / str(number))
        if self.name == "freecad_xml":
            for number, file in enumerate(sorted(ROOT.glob("tests/plugins/freecad/corpus/**/*.FCStd"))):
                (self.seeds / str(number)).write_bytes(self.xml_of(file))

    def retry_findings(self):
        """What did harm is among the first inputs of the next run, and harms again unless it was mended."""
        for file in self.findings.iterdir():
            if file.name == "output.txt":
                file.unlink()
            else:
                file.replace(self.found / file.name)

    @staticmethod
    def xml_of(file):
        with zipfile.ZipFile(file) as archive:
            names = [name for name in ("Document.xml", "GuiDocument.xml") if name in archive.namelist()]
            return b"\0".join(archive.read(name) for name in names)

    def dictionary(self):
        """What is packed has the words of what is not."""
        own = HERE / "dictionaries" / f"{self.name}.dict"
        return own if own.exists() else own.with_name(self.name.split("_")[0] + ".dict")

    def command(self, scratch, options):
        return ["nice", "-n", "15", str(self.program), f"-max_len={TARGETS[self.name][0]}",
                f"-timeout={SECONDS_PER_INPUT}", f"-rss_limit_mb={OWN_MEMORY_MIB + MEMORY_MIB}",
                f"-malloc_limit_mb={MEMORY_MIB}", f"-artifact_prefix={self.findings}/", *options], {
                    **os.environ, "CORSYNC_FUZZ_FOLDER": scratch, "HOME": scratch, "XDG_CONFIG_HOME": scratch,
                    "XDG_DATA_HOME": scratch, "OPENSCADPATH": "",
                    "ASAN_OPTIONS": "quarantine_size_mb=16:detect_stack_use_after_return=0",
                    "UBSAN_OPTIONS": "print_stacktrace=1"}

    def fuzz(self, seconds, scratch):
        for folder in (self.corpus, self.found, self.findings):
            folder.mkdir(parents=True, exist_ok=True)
        self.make_seeds()
        self.retry_findings()
        options = [f"-max_total_time={max(1, round(seconds))}", "-print_final_stats=1", "-reload=0",
                   f"-dict={self.dictionary()}",
                   str(self.found), str(self.corpus), str(self.seeds)]
        command, environment = self.command(scratch, options)
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        result = subprocess.run(command, env=environment, cwd=scratch, text=True, errors="replace",
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        self.seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
        self.read_output(result)

    def read_output(self, result):
        def number(pattern):
            found = re.findall(pattern, result.stdout)
            return int(found[-1]) if found else 0
        self.executions = number(r"number_of_executed_units: +(\d+)") or number(r"(?m)^#(\d+)\t")
        self.new_inputs = number(r"new_units_added: +(\d+)")
        self.peak = number(r"peak_rss_mb: +(\d+)")
        self.coverage = number(r"cov: (\d+)")
        if result.returncode != 0:
            (self.findings / "output.txt").write_text(result.stdout)
            reasons = re.findall(r"(?m)^(?:VIOLATION: .*|SUMMARY: .*|.*runtime error: .*)$", result.stdout)
            self.finding = reasons[0] if reasons else f"exit code {result.returncode}"

    def minimise(self, scratch):
        """Of all inputs the shortest that reach, together, all the code that all of them reach."""
        self.make_seeds()
        self.found.mkdir(parents=True, exist_ok=True)
        with tempfile.TemporaryDirectory() as new:
            options = ["-merge=1", "-use_counters=0", new, str(self.corpus), str(self.found), str(self.seeds)]
            command, environment = self.command(scratch, options)
            subprocess.run(command, env=environment, cwd=scratch, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL, check=True)
            # What once did harm stays; it has a name of its own.
            kept = {file.name for file in self.corpus.iterdir() if not re.fullmatch("[0-9a-f]{40}", file.name)}
            for file in list(self.corpus.iterdir()):
                if file.name not in kept:
                    file.unlink()
            for file in pathlib.Path(new).iterdir():
                shutil.copyfile(file, self.corpus / file.name)
        files = [file.stat().st_size for file in self.corpus.iterdir()]
        print(f"{self.name:<16}{len(files):>7} inputs {sum(files) / MIB:>8.2f} MiB", flush=True)


def record(runs):
    """The sums over all recorded runs, one line a target."""
    file = HERE / "executions.tsv"
    sums = {}
    lines = file.read_text().splitlines() if file.exists() else []
    for line in lines:
        if line and not line.startswith("#"):
            name, executions, seconds, coverage = line.split("\t")
            sums[name] = [int(executions), int(seconds), int(coverage)]
    for run in runs:
        known = sums.setdefault(run.name, [0, 0, 0])
        known[0] += run.executions
        known[1] += round(run.seconds)
        known[2] = max(known[2], run.coverage)
    head = "# SPDX-License-Identifier: Apache-2.0\n# target\texecutions\tseconds of a processor\tedges\n"
    file.write_text(head + "".join(f"{name}\t{e}\t{s}\t{c}\n" for name, (e, s, c) in sorted(sums.items())))


def report(run):
    speed = run.executions / run.seconds if run.seconds else 0
    print(f"{run.name:<16}{run.executions:>12}{speed:>10.0f}{run.coverage:>8}{run.new_inputs:>8}{run.peak:>7}  "
          f"{run.finding or '-'}", flush=True)


def parse():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("targets", nargs="*", metavar="TARGET")
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/fuzz")
    parser.add_argument("--minutes", type=float, default=10)
    parser.add_argument("--minimise", action="store_true")
    parser.add_argument("--record", action="store_true")
    arguments = parser.parse_args()
    for name in arguments.targets:
        if name not in TARGETS:
            parser.error(f"no target {name}; there are {', '.join(TARGETS)}")
    return arguments


def main():
    arguments = parse()
    runs = [Run(name, arguments.build.resolve()) for name in arguments.targets or TARGETS]
    # In memory where there is such a place: a target writes a file for each input.
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="corsync-fuzz-", dir=memory) as scratch:
        if arguments.minimise:
            for run in runs:
                run.minimise(scratch)
            return 0
        print(f"{'target':<16}{'executions':>12}{'per CPU s':>10}{'edges':>8}{'new':>8}{'MiB':>7}  finding", flush=True)
        begin = time.monotonic()
        for run in runs:
            run.fuzz(arguments.minutes * 60 / len(runs), scratch)
            report(run)
    total = sum(run.executions for run in runs)
    seconds = sum(run.seconds for run in runs)
    print(f"{total} executions in {(time.monotonic() - begin) / 60:.1f} minutes, {total / max(seconds, 1):.0f} a second "
          f"of a processor; {sum(bool(run.finding) for run in runs)} findings")
    if arguments.record:
        record(runs)
    return 1 if any(run.finding for run in runs) else 0


if __name__ == "__main__":
    sys.exit(main())
