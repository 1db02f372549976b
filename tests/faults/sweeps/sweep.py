#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Faults at every point of an import: after each the same command runs again without one.

    sweep.py --corsync PROGRAM errors|kills|pairs|damage [--kind KIND ...] [--points N] [--seed S] [--jobs J]

errors   a system call fails once, or from then on, with an error that the system gives
kills    the process is killed at a system call
pairs    a kill, and a second fault while the same command completes the work
stops    the process stops at a system call, a second import runs, then the first goes on
damage   bytes of the database are changed, or its end is missing

Prints a line for each violation with how to repeat it, and a summary; ends with 1 when there was one.
Points are all points, or N of them by chance. Needs strace, and Linux.
"""
import argparse
import concurrent.futures
import dataclasses
import os
import pathlib
import random
import re
import signal
import subprocess
import sys
import tempfile
import time

import world as worlds

# What changes files, and what an import asks before it does.
CHANGING = ("openat", "write", "pwrite64", "copy_file_range", "sendfile", "renameat2", "renameat", "rename", "unlink",
            "unlinkat", "mkdir", "mkdirat", "rmdir", "fdatasync", "fsync", "ftruncate", "fchmod", "fchmodat",
            "utimensat", "link", "linkat", "openat2", "close", "syncfs")
ASKING = ("read", "pread64", "newfstatat", "statx", "getdents64", "flock", "fstat", "readlink", "mmap")
ERRORS = {"openat": ("EACCES", "EMFILE", "ENOSPC"), "openat2": ("EACCES", "ENOSPC"), "write": ("ENOSPC", "EIO"),
          "pwrite64": ("ENOSPC", "EIO"), "copy_file_range": ("ENOSPC", "EIO"), "sendfile": ("ENOSPC", "EIO"),
          "renameat2": ("EACCES", "EIO"), "renameat": ("EACCES", "EIO"), "rename": ("EACCES", "EIO"),
          "unlink": ("EACCES", "EIO"), "unlinkat": ("EACCES", "EIO"), "mkdir": ("ENOSPC", "EACCES"),
          "mkdirat": ("ENOSPC", "EACCES"), "rmdir": ("EACCES",), "fdatasync": ("EIO", "ENOSPC"), "fsync": ("EIO",), "syncfs": ("EIO", "ENOSPC"),
          "ftruncate": ("EIO", "ENOSPC"), "fchmod": ("EPERM",), "fchmodat": ("EPERM",), "utimensat": ("EPERM",),
          "link": ("EMLINK",), "linkat": ("EMLINK",), "close": ("EIO",), "read": ("EIO",), "pread64": ("EIO",),
          "newfstatat": ("EACCES", "EIO"), "statx": ("EACCES", "EIO"), "getdents64": ("EIO",), "flock": ("ENOLCK",),
          "fstat": ("EIO",), "readlink": ("EACCES",), "mmap": ("ENOMEM",)}


@dataclasses.dataclass(frozen=True)
class Point:
    kind: str
    # For strace's "inject", or the place of a damage.
    inject: tuple

    def __str__(self):
        return f"{self.kind} {' '.join(str(part) for part in self.inject)}"


class Sweep:
    def __init__(self, arguments):
        self.arguments = arguments
        self.scratch = pathlib.Path(tempfile.mkdtemp(prefix="corsync-sweep-", dir=arguments.scratch))
        self.expected = {}
        self.counts = {}
        for name in arguments.kind:
            kind = worlds.KINDS[name]
            self.expected[name] = worlds.Expected(self.scratch / f"expected-{name}", kind, arguments.corsync)
            self.counts[name] = self.count_calls(kind)

    def count_calls(self, kind):
        """System call -> how often a run without a fault makes it, and how many of these come before main.
        """
        world = worlds.World(self.scratch / f"count-{kind.name}", kind, self.arguments.corsync)
        trace = self.scratch / f"trace-{kind.name}"
        calls = ",".join(CHANGING + ASKING)
        world.run(("strace", "-f", "-qq", "-e", f"trace={calls}", "-o", str(trace)))
        counts = {}
        starting = {}
        is_starting = True
        for line in trace.read_text(errors="replace").splitlines():
            match = re.match(r"\d+ +(\w+)\(", line)
            if not match:
                continue
            name = match.group(1)
            counts[name] = counts.get(name, 0) + 1
            # Until the program looks at its own files, nothing of anybody's is at stake.
            if is_starting and str(world.root) in line:
                is_starting = False
            if is_starting:
                starting[name] = counts[name]
        world.remove()
        return counts, starting

    def world(self, kind, number):
        return worlds.World(self.scratch / f"w{number}", worlds.KINDS[kind], self.arguments.corsync)

    def calls(self, kind, names):
        counts, starting = self.counts[kind]
        for name in names:
            for when in range(starting.get(name, 0) + 1, counts.get(name, 0) + 1):
                yield name, when

    # -- the points of each sweep

    def error_points(self):
        for kind in self.arguments.kind:
            for name, when in self.calls(kind, CHANGING + ASKING):
                for error in ERRORS[name]:
                    for lasting in ("", "+"):
                        yield Point(kind, (f"{name}:error={error}:when={when}{lasting}",))

    def kill_points(self):
        for kind in self.arguments.kind:
            for name, when in self.calls(kind, CHANGING + ASKING):
                yield Point(kind, (f"{name}:signal=SIGKILL:when={when}",))

    def stop_points(self):
        for kind in self.arguments.kind:
            for name, when in self.calls(kind, CHANGING + ASKING):
                yield Point(kind, (f"{name}:signal=SIGSTOP:when={when}",))

    def pair_points(self):
        kills = list(self.kill_points())
        seconds = list(self.error_points()) + kills
        by_kind = {kind: [p for p in seconds if p.kind == kind] for kind in self.arguments.kind}
        chance = random.Random(self.arguments.seed)
        while True:
            first = chance.choice(kills)
            yield Point(first.kind, first.inject + chance.choice(by_kind[first.kind]).inject)

    def damage_points(self):
        chance = random.Random(self.arguments.seed)
        while True:
            kind = chance.choice([k for k in self.arguments.kind if worlds.KINDS[k].earlier] or ["update"])
            yield Point(kind, (chance.choice(("zero", "flip", "cut", "header")), chance.random(), chance.randrange(1 << 30)))

    # -- what one point finds

    def try_point(self, number, point):
        world = self.world(point.kind, number)
        try:
            found = getattr(self, "try_" + self.arguments.sweep)(world, point)
        except subprocess.TimeoutExpired:
            found = ["hangs"]
        finally:
            if not self.arguments.keep:
                world.remove()
        return point, found

    def inject(self, world, injection):
        ended = world.run(("strace", "-f", "-qq", "-o", "/dev/null", "-e", "signal=none", "-e", f"inject={injection}"))
        # strace ends as what it traced did; it kills itself by the same signal.
        return None if ended.returncode in (-signal.SIGKILL, 128 + signal.SIGKILL) else ended.returncode

    def try_errors(self, world, point):
        expected = self.expected[point.kind]
        code = self.inject(world, point.inject[0])
        found = worlds.violations(world, expected, code)
        if code is not None and code < 0:
            found.append(f"ended by signal {-code}")
        return found + worlds.rerun_violations(world, expected)

    try_kills = try_errors

    def try_pairs(self, world, point):
        expected = self.expected[point.kind]
        found = []
        for injection in point.inject:
            found += worlds.violations(world, expected, self.inject(world, injection))
        return found + worlds.rerun_violations(world, expected)

    def try_stops(self, world, point):
        expected = self.expected[point.kind]
        first = subprocess.Popen(["strace", "-f", "-qq", "-o", "/dev/null", "-e", "signal=none", "-e",
                                  f"inject={point.inject[0]}", *world.command()], env=world.environment(),
                                 cwd=world.root, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                 start_new_session=True)
        try:
            self.wait_for_stop(first)
            try:
                second = world.run(timeout=20).returncode
            except subprocess.TimeoutExpired:
                second = None
            code = self.go_on(first)
        finally:
            if first.poll() is None:
                os.killpg(first.pid, signal.SIGKILL)
                first.wait()
        both = 0 if code == 0 and second == 0 else None
        return worlds.violations(world, expected, both) + worlds.rerun_violations(world, expected)

    @staticmethod
    def go_on(process):
        """Lets a stopped process end. What is traced may stop again after it was told to go on."""
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline:
            os.killpg(process.pid, signal.SIGCONT)
            try:
                return process.wait(0.2)
            except subprocess.TimeoutExpired:
                continue
        raise subprocess.TimeoutExpired("the first import", 60)

    @staticmethod
    def wait_for_stop(process):
        """A traced process is stopped for a moment at every call: only one that stays so has stopped."""
        deadline = time.monotonic() + 20
        times_seen = 0
        while process.poll() is None and times_seen < 4 and time.monotonic() < deadline:
            states = subprocess.run(["ps", "-o", "stat=,comm=", "-g", str(process.pid)], capture_output=True,
                                    text=True).stdout
            traced = [line.split() for line in states.splitlines() if "strace" not in line and line.split()]
            times_seen = times_seen + 1 if any(state[0] in "Tt" for state, *_ in traced) else 0
            time.sleep(0.02)

    def try_damage(self, world, point):
        how, where, seed = point.inject
        database = world.root / "data/sync.db"
        data = bytearray(database.read_bytes())
        at = int(where * len(data))
        chance = random.Random(seed)
        if how == "zero":
            data[at:at + 512] = bytes(len(data[at:at + 512]))
        elif how == "flip":
            for _ in range(16):
                data[min(at + chance.randrange(64), len(data) - 1)] ^= 1 << chance.randrange(8)
        elif how == "cut":
            del data[at:]
        else:
            data[chance.randrange(100)] ^= 0xFF
        database.write_bytes(data)
        ended = world.run()
        after = world.contents()
        expected = self.expected[point.kind]
        found = [entry for entry in worlds.violations(world, expected, ended.returncode)
                 if not entry.startswith(("database:", "recorded"))]
        if ended.returncode < 0:
            found.append(f"ended by signal {-ended.returncode}")
        if ended.returncode == 0 and world.database_fault():
            found.append(f"exit code 0 with a damaged database: {world.database_fault()}")
        if ended.returncode != 0 and str(database) not in ended.stdout + ended.stderr and "database" not in (
                ended.stdout + ended.stderr):
            found.append(f"exit code {ended.returncode} without a word about the database")
        del after
        return found

    def run(self):
        points = {"errors": self.error_points, "kills": self.kill_points, "pairs": self.pair_points,
                  "stops": self.stop_points, "damage": self.damage_points}[self.arguments.sweep]()
        chosen = self.choose(points)
        began = time.monotonic()
        bad = 0
        with concurrent.futures.ThreadPoolExecutor(self.arguments.jobs) as pool:
            for point, found in pool.map(lambda pair: self.try_point(*pair), enumerate(chosen)):
                if found:
                    bad += 1
                    print(f"{point}: {'; '.join(found[:4])}", flush=True)
        print(f"{self.arguments.sweep}: {len(chosen)} points in {time.monotonic() - began:.0f} s, {bad} with violations")
        return 1 if bad else 0

    def choose(self, points):
        if self.arguments.only:
            return [Point(self.arguments.kind[0], tuple(self.arguments.only))]
        wanted = self.arguments.points
        if self.arguments.sweep in ("pairs", "damage"):
            return [next(points) for _ in range(wanted or 100)]
        every = list(points)
        if not wanted or wanted >= len(every):
            return every
        return random.Random(self.arguments.seed).sample(every, wanted)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("sweep", choices=("errors", "kills", "pairs", "stops", "damage"))
    parser.add_argument("--corsync", required=True)
    parser.add_argument("--kind", nargs="+", default=list(worlds.KINDS), choices=list(worlds.KINDS))
    parser.add_argument("--points", type=int, default=0)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--scratch", default=None, help="a folder for the worlds; memory is quickest")
    parser.add_argument("--keep", action="store_true", help="leave the worlds there")
    parser.add_argument("--only", nargs="+", help="one point, as a line of a violation has it after the kind")
    arguments = parser.parse_args()
    arguments.corsync = os.path.abspath(arguments.corsync)
    sweep = Sweep(arguments)
    try:
        return sweep.run()
    finally:
        if not arguments.keep:
            subprocess.run(["rm", "-rf", str(sweep.scratch)], check=False)


if __name__ == "__main__":
    sys.exit(main())
