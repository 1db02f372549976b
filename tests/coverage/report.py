# SPDX-License-Identifier: Apache-2.0
"""Line and branch coverage of src/ and base/, as ./test --coverage measures it.

    python3 tests/coverage/report.py --build build/coverage

Lines must be covered above LINES percent. Every branch that no test takes must be explained in explained.txt, one
line for each: file, the source line's text, and why, with tabs in between. File and text may be patterns (* and ?).
A number after another tab limits how many branches of one line a pattern explains, so that it cannot hide a decision
that comes to stand on such a line. A branch that is neither taken nor explained fails the check, and so does an
explanation that belongs to nothing.

Branches that exceptions take are not counted: gcov names the ways out of calls that throw, and the blocks that only
an exception reaches, which gcc makes to destroy what stands on the stack. Such a block counts when it was run.
"""
import argparse
import collections
import fnmatch
import pathlib
import re
import subprocess
import sys

LINES = 95.0
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
EXPLAINED = pathlib.Path(__file__).resolve().parent / "explained.txt"

SOURCE = re.compile(r" +-: +0:Source:(.*)")
LINE = re.compile(r" *([^ :]+): *([1-9]\d*):")
BLOCK = re.compile(r" *([^ :]+): *(\d+)-block +(\d+)")
BRANCH = re.compile(r"branch +(\d+) (?:taken (\d+)|never executed)(.*)")
ONLY_BY_EXCEPTIONS = "$$$$$"
NOT_EXECUTED = ("#####", "=====")
# What is destroyed where a scope ends belongs to no statement.
BRACES = re.compile(r"[{}(); ]*")


class File:
    def __init__(self):
        self.lines = {}
        # By line, block and number: the instances of a template are one.
        self.branches = collections.Counter()


def measure(build):
    """What gcov says of each file in src/ and base/, by name."""
    # Of every object: inline functions may have been run in any.
    data = sorted(str(path.relative_to(build)) for path in build.rglob("*.gcda"))
    if not data:
        sys.exit(f"{build} holds no measurement: run its tests first")
    command = ["gcov", "--all-blocks", "--branch-counts", "--branch-probabilities", "--stdout",
               "--relative-only", "--source-prefix", str(ROOT), *data]
    result = subprocess.run(command, cwd=build, capture_output=True, text=True)
    if result.returncode:
        sys.exit(f"gcov ended with {result.returncode}\n{result.stderr}")
    return parse(result.stdout)


def parse(text):
    files = {}
    file, number, block, counts = None, 0, -1, True
    for line in text.splitlines():
        if match := SOURCE.match(line):
            # Without the prefix, and so as seen from the root.
            path = (ROOT / match[1]).resolve()
            file = None
            if path.is_relative_to(ROOT / "src") or path.is_relative_to(ROOT / "base"):
                file = files.setdefault(str(path.relative_to(ROOT)), File())
        elif file is None:
            continue
        elif match := BLOCK.match(line):
            number, block, counts = int(match[2]), int(match[3]), match[1] != ONLY_BY_EXCEPTIONS
        elif match := BRANCH.match(line):
            if (counts or match[2]) and "(throw)" not in match[3]:
                file.branches[number, block, int(match[1])] += int(match[2] or 0)
        elif match := LINE.match(line):
            # The block that a call returns to has no line of its own.
            number, block, counts = int(match[2]), -1, True
            if match[1] != "-":
                executed = match[1] not in NOT_EXECUTED
                file.lines[number] = executed or file.lines.get(number, False)
    return files


def fits(pattern, text):
    return pattern == text or fnmatch.fnmatchcase(text, pattern.replace("[", "[[]"))


class Explanation:
    def __init__(self, line):
        self.name, self.text, self.reason, *most = line.split("\t")
        self.most = int(most[0]) if most else None
        self.used = False

    def covers(self, name, text, missed):
        return fits(self.name, name) and fits(self.text, text) and (self.most is None or missed <= self.most)


def explanations():
    lines = EXPLAINED.read_text(encoding="utf-8").splitlines()
    return [Explanation(line) for line in lines if line and not line.startswith("#")]


def explain(known, name, text, missed):
    found = [entry for entry in known if entry.covers(name, text, missed)]
    for entry in found:
        entry.used = True
    return bool(found)


def percent(counter):
    return f"{counter[True]} of {counter.total()}, {100 * counter[True] / counter.total():.1f} %"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, required=True)
    files = measure(parser.parse_args().build.resolve())
    known = explanations()
    lines, branches = collections.Counter(), collections.Counter()
    unexplained = explained = 0
    for name, file in sorted(files.items()):
        source = (ROOT / name).read_text(encoding="utf-8").splitlines()
        for number, executed in sorted(file.lines.items()):
            if not executed and BRACES.fullmatch(source[number - 1]):
                continue
            lines[executed] += 1
            if not executed:
                print(f"not executed   {name}:{number}: {source[number - 1].strip()}")
        branches.update(count > 0 for count in file.branches.values())
        missed = collections.Counter(key[0] for key, count in file.branches.items() if not count)
        for number, count in sorted(missed.items()):
            text = source[number - 1].strip()
            if explain(known, name, text, count):
                explained += count
            else:
                unexplained += count
                print(f"not taken      {name}:{number}: {text} ({count})")
    stale = [entry for entry in known if not entry.used]
    for entry in stale:
        print(f"explains nothing   {entry.name}: {entry.text}")
    print(f"lines {percent(lines)}; branches {percent(branches)}, {explained} of the others explained")
    sys.exit(1 if unexplained or stale or 100 * lines[True] / lines.total() < LINES else 0)


main()
