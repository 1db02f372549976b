# SPDX-License-Identifier: Apache-2.0
"""Makes anlage/ beside this script: assemblies of parts in files of their own, as Open CASCADE writes them.

    python3 make-corpus.py [FOLDER]

The output is committed; tests read it and need no Open CASCADE.
"""
import pathlib
import re
import shutil
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent.parent.parent / "programs"))
from draw import draw  # noqa: E402

# File, prefix of its parts' files, and the parts: a name and the size of a box.
ASSEMBLIES = [
    ("Anlage 木.stp", "Teil_", [("Welle 1", "1 2 30"), ("Größe", "5 5 5"), ("Platz", "1 1 1"), ("Rest", "3 3 3")]),
    ("Motor.stp", "Motor_", [("Welle 1", "1 2 30"), ("Rotor's Blech", "2 7 1")]),
]


def script(out, file, prefix, parts):
    lines = ["NewDocument D BinXCAF"]
    for number, (_, size) in enumerate(parts):
        lines += [f"box b{number} {size}", f"ttranslate b{number} {number * 40} 0 0"]
    boxes = " ".join(f"b{number}" for number in range(len(parts)))
    lines += [f"compound {boxes} all", "XAddShape D all 1", f'SetName D 0:1:1:1 "{file[:-4]}"']
    lines += [f'SetName D 0:1:1:{number} "{name}"' for number, (name, _) in enumerate(parts, 2)]
    lines.append(f'WriteStep D "{out / file}" a "{prefix}"')
    return "\n".join(lines) + "\n"


def main():
    out = pathlib.Path(sys.argv[1]).resolve() if len(sys.argv) > 1 else HERE / "anlage"
    shutil.rmtree(out, ignore_errors=True)
    out.mkdir(parents=True)
    for file, prefix, parts in ASSEMBLIES:
        draw(script(out, file, prefix, parts))
    for file in out.iterdir():
        text = file.read_text()
        file.write_text(re.sub(r"'20\d\d-\d\d-\d\dT[\d:]+'", "'2020-01-01T00:00:00'", text))


main()
