#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""durability.py FOLDER FILES NAME=BIN[,OPTION...] ...

For each program (BIN is the folder of a build's programs and libraries) three imports of so many small files with a
cloud folder below FOLDER: the first one, one after all files changed, and one with nothing to do. Prints seconds, and
in brackets those of the processor.
"""
import hashlib
import os
import resource
import shutil
import subprocess
import sys
import tempfile
import time

where, files = sys.argv[1], int(sys.argv[2])


def once(binary, options):
    w = tempfile.mkdtemp(prefix="bench-", dir=where)
    for name in ("src", "cloud", "data", "home"):
        os.mkdir(f"{w}/{name}")

    def save(extra):
        for i in range(files):
            folder = f"{w}/src/d{i // 100}"
            os.makedirs(folder, exist_ok=True)
            with open(f"{folder}/f{i}.txt", "wb") as file:
                file.write(hashlib.sha256(str(i).encode()).digest() * 64 + extra)
        subprocess.run(["sync", "-f", w], check=True)

    env = {**os.environ, "HOME": w + "/home", "XDG_CONFIG_HOME": w + "/home/c", "XDG_DATA_HOME": w + "/home/d",
           "LD_LIBRARY_PATH": binary}
    result = []
    for step in (b"", b"x", None):
        if step is not None:
            save(step)
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        began = time.monotonic()
        subprocess.run([binary + "/corsync", "import", w + "/src", "--to", "P", "--cloud-folder", w + "/cloud",
                        "--database", w + "/data/sync.db", "-q", *options], env=env, check=True)
        wall = time.monotonic() - began
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        result.append((wall, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime))
    shutil.rmtree(w)
    return result


for spec in sys.argv[3:]:
    name, rest = spec.split("=", 1)
    binary, *options = rest.split(",")
    print(name, "  ".join(f"{wall:.2f} s ({cpu:.2f} CPU)" for wall, cpu in once(binary, options)), flush=True)
