#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Times `corsync import` against cp and rsync on the same files, in one run.

    bench/import-benchmark.py [--files 1000,10000,50000] [--work /dev/shm] [--corsync PATH]

A project of N files is N/100 glTF scenes, each of which links 99 resources of 4 KiB, a third of
them shared with the next scene, in three folders. The scenes are selected; corsync has to find the
rest, rewrite each scene and record every file. cp and rsync are given the whole folder and do none
of that, so that their time is what the bytes alone cost. The work folder should be a tmpfs or a
fresh loop image: the figures are meant as ratios within one run.
"""

import argparse
import json
import os
import resource
import shutil
import subprocess
import tempfile
import time

LINKS = 99


def make_project(folder, files):
    os.makedirs(folder)
    scenes = []
    count = 0
    block = os.urandom(4096)
    for name in ("scenes", "parts", "shared"):
        os.makedirs(f"{folder}/{name}")
    for scene in range(max(1, files // (LINKS - LINKS // 3 + 1))):
        uris = []
        for link in range(LINKS):
            if link < LINKS // 3:
                name = f"shared/s{scene // 2}-{link}.bin"
            else:
                name = f"parts/p{scene}-{link}.bin"
            path = f"{folder}/{name}"
            if not os.path.exists(path):
                with open(path, "wb") as out:
                    out.write(count.to_bytes(8, "little") + block[8:])
                count += 1
            uris.append(f"../{name}")
        document = {
            "asset": {"version": "2.0"},
            "buffers": [{"uri": uri, "byteLength": 4096} for uri in uris],
        }
        path = f"{folder}/scenes/scene{scene}.gltf"
        with open(path, "w", encoding="utf-8") as out:
            json.dump(document, out, indent=1)
        scenes.append(path)
        count += 1
    return scenes, count


def run(command, **options):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.monotonic()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, **options)
    elapsed = time.monotonic() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    cpu = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return elapsed, cpu


def measure(corsync, work, files, repeat):
    folder = tempfile.mkdtemp(prefix="corsync-bench-", dir=work)
    try:
        scenes, count = make_project(f"{folder}/project", files)
        best = {}
        for _ in range(repeat):
            base = [corsync, "import", "--to", "Bench", "--cloud-folder", f"{folder}/cloud",
                    "--database", f"{folder}/sync.db", "--quiet"]
            commands = {
                "cp": ["cp", "-r", f"{folder}/project", f"{folder}/cp"],
                "rsync": ["rsync", "-a", f"{folder}/project/", f"{folder}/rsync/"],
                "import": base + scenes,
                "again": base + scenes,
            }
            for name, command in commands.items():
                figures = run(command)
                if name not in best or figures < best[name]:
                    best[name] = figures
            for name in ("cp", "rsync", "cloud"):
                shutil.rmtree(f"{folder}/{name}")
            for name in os.listdir(folder):
                if name.startswith("sync.db") and os.path.isfile(f"{folder}/{name}"):
                    os.remove(f"{folder}/{name}")
        return count, best
    finally:
        shutil.rmtree(folder)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--files", default="1000,10000,50000")
    parser.add_argument("--work", default="/dev/shm")
    parser.add_argument("--repeat", type=int, default=3, help="the best of so many runs counts")
    parser.add_argument("--corsync", default=f"{here}/../build/release/bin/corsync")
    options = parser.parse_args()

    print(f"{'files':>7} {'cp':>8} {'rsync':>8} {'import':>8} {'again':>8}"
          f" {'import/cp':>10} {'ms/file':>8} {'again ms/file':>14}")
    for files in (int(text) for text in options.files.split(",")):
        count, best = measure(options.corsync, options.work, files, options.repeat)
        cp, rsync, first, again = (best[name][0] for name in ("cp", "rsync", "import", "again"))
        print(f"{count:>7} {cp:>7.2f}s {rsync:>7.2f}s {first:>7.2f}s {again:>7.2f}s"
              f" {first / cp:>10.1f} {1000 * first / count:>8.3f} {1000 * again / count:>14.3f}",
              flush=True)


if __name__ == "__main__":
    main()
