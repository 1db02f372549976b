"""Line and branch coverage of src/, as ./test --coverage measures it.

    python3 tests/coverage/report.py --build build/coverage

Lines must be covered above LINES percent. Every branch that no test takes must be explained in explained.txt, one
per line: file, the source line's text, and why, with a tab in between. A branch that is neither taken nor explained
fails the check, and so does an explanation that no longer belongs to anything. Branches into the unwinding of
exceptions are not counted: gcc makes one for every call.
"""
import argparse
import collections
import json
import pathlib
import subprocess
import sys

LINES = 95.0
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
EXPLAINED = pathlib.Path(__file__).resolve().parent / "explained.txt"


def measure(build):
    command = ["gcovr", "--root", str(ROOT), "--filter", "src/", "--exclude-throw-branches", "--exclude-unreachable-branches",
               "--json", "--gcov-ignore-parse-errors", str(build)]
    result = subprocess.run(command, cwd=ROOT, capture_output=True, text=True)
    if result.returncode:
        sys.exit(f"gcovr ended with {result.returncode}\n{result.stderr}")
    return json.loads(result.stdout)["files"]


def explanations():
    known = {}
    for line in EXPLAINED.read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            name, text, reason = line.split("\t")
            known[name, text] = reason
    return known


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, required=True)
    files = measure(parser.parse_args().build.resolve())
    lines = collections.Counter()
    branches = collections.Counter()
    missed_lines, missed_branches = [], collections.Counter()
    for file in sorted(files, key=lambda entry: entry["file"]):
        source = (ROOT / file["file"]).read_text(encoding="utf-8").splitlines()
        for line in file["lines"]:
            if line.get("gcovr/noncode"):
                continue
            number, text = line["line_number"], source[line["line_number"] - 1].strip()
            lines[line["count"] > 0] += 1
            if not line["count"]:
                missed_lines.append(f"{file['file']}:{number}: {text}")
                continue
            taken = [branch["count"] > 0 for branch in line["branches"] if not branch.get("throw")]
            branches.update(taken)
            if not all(taken):
                missed_branches[file["file"], text] += taken.count(False)
    known = explanations()
    for line in missed_lines:
        print(f"not executed   {line}")
    unexplained = [key for key in missed_branches if key not in known]
    for name, text in unexplained:
        print(f"not taken      {name}: {text}")
    stale = [key for key in known if key not in missed_branches]
    for name, text in stale:
        print(f"explained, yet taken or gone   {name}: {text}")
    percent = 100 * lines[True] / sum(lines.values())
    print(f"lines {lines[True]} of {sum(lines.values())}, {percent:.1f} %; branches {branches[True]} of "
          f"{sum(branches.values())}, {100 * branches[True] / sum(branches.values()):.1f} %, "
          f"{sum(missed_branches[key] for key in known if key in missed_branches)} of the others explained")
    sys.exit(1 if unexplained or stale or percent < LINES else 0)


main()
