#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Ctrl-C as a person presses it: corsync.exe runs in a terminal, which gets the character for it while files
are copied. Ends with exit code 1 at the first thing that is not as it must be."""
import argparse
import os
import pathlib
import pty
import re
import select
import shutil
import subprocess
import sys
import tempfile
import time

FILES = 2000
ENOUGH = 20
PATIENCE = 200
CANCELLED = 20
# What Windows says of a program that Ctrl-C ended, as much of it as an exit code has room for here.
ENDED = 0xC000013A & 0xFF
HEARD = "Cancelling after the current step"
REGISTRATION = ('<SyncPlugins><Plugin Module="libTestTalkerPlugin.dll" Name="For tests">'
                '<FileLinkResolver FileTypes="talk"/></Plugin></SyncPlugins>\n')


def check(condition, text):
    if not condition:
        sys.exit(f"FAILED: {text}")


def copies(cloud):
    """Those that are finished: of the others none is counted on."""
    found = cloud.rglob("*.scad") if cloud.exists() else []
    return sorted(file for file in found if not file.relative_to(cloud).parts[0].startswith(".corsync-"))


def run_in_terminal(command, is_time, is_time_again=lambda shown: False):
    """Presses Ctrl-C when it is time, and once more; gives the exit code and what the terminal showed."""
    process, terminal = pty.fork()
    if process == 0:
        os.execv(command[0], command)
    shown = b""
    pressed = 0
    begin = time.monotonic()
    while True:
        if select.select([terminal], [], [], 0.05)[0]:
            try:
                shown += os.read(terminal, 65536)
            except OSError:  # nobody has it open any more
                pass
        ended, status = os.waitpid(process, os.WNOHANG)
        if ended:
            os.close(terminal)
            return os.waitstatus_to_exitcode(status), shown.decode(errors="replace")
        if pressed == 0 and is_time() or pressed == 1 and is_time_again(shown):
            os.write(terminal, b"\x03")
            pressed += 1
        check(time.monotonic() - begin < PATIENCE, f"corsync.exe did not end within {PATIENCE} s\n{shown[-2000:]}")


def heard_for_a_while():
    """What comes within half a second counts as the same press."""
    heard = []

    def is_time(shown):
        if not heard and HEARD.encode() in shown:
            heard.append(time.monotonic())
        return heard and time.monotonic() - heard[0] > 2

    return is_time


def check_second_press(work, runner, bin_folder, talker):
    """A plug-in that hangs in the same process looks at no cancel."""
    plugins, hanging = work / "plugins", work / "hanging"
    for folder in (plugins, hanging, work / "nothing"):
        folder.mkdir()
    (plugins / "talker.syncplugin").write_text(REGISTRATION.replace("libTestTalkerPlugin.dll", talker.name))
    (hanging / "a.talk").write_text("loop\n")
    begin = time.monotonic()
    code, shown = run_in_terminal(
        [runner, "--terminal", f"{bin_folder}/corsync.exe", "import", f"Z:{hanging}", "--cloud-folder",
         f"Z:{work}/nothing", "--database", f"Z:{work}/other.db", "--plugin-path", f"Z:{plugins}",
         "--plugin-path", f"Z:{talker.parent}", "--isolate", "never"],
        lambda: time.monotonic() - begin > 10, heard_for_a_while())
    check(HEARD in shown, f"the first one is not answered\n{shown[-2000:]}")
    check(code == ENDED, f"exit code {code}, not {ENDED}, after the second one\n{shown[-2000:]}")


def check_links(files):
    for file in files:
        for link in re.findall(r"use <(.*)>", file.read_text()):
            check((file.parent / link).is_file(), f"{file} links {link}, which is not there")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--runner", required=True, help="run-wine.sh")
    parser.add_argument("--talker", type=pathlib.Path, required=True, help="TestTalkerPlugin")
    parser.add_argument("--bin", required=True, help="the folder of corsync.exe and its libraries")
    arguments = parser.parse_args()
    work = pathlib.Path(tempfile.mkdtemp(prefix="corsync-ctrl-c-"))
    try:
        models, cloud = work / "models", work / "cloud"
        for folder in (models, work / "lib", cloud):
            folder.mkdir()
        (work / "lib" / "part.scad").write_text("cube(1);\n")
        for number in range(FILES):
            (models / f"{number:04}.scad").write_text("use <../lib/part.scad>\n")
        program = [f"{arguments.bin}/corsync.exe", "import", f"Z:{models}", "--cloud-folder", f"Z:{cloud}",
                   "--database", f"Z:{work}/sync.db", "--quiet"]
        code, shown = run_in_terminal([arguments.runner, "--terminal", *program],
                                      lambda: len(copies(cloud)) >= ENOUGH)
        done = len(copies(cloud))
        check(HEARD in shown, f"nothing says that it was heard\n{shown[-2000:]}")
        check(code == CANCELLED, f"exit code {code}, not {CANCELLED}\n{shown[-2000:]}")
        check(ENOUGH <= done < FILES, f"{done} files were copied")
        check(not list(cloud.rglob("*.tmp")), "a parked file is left")

        again = subprocess.run([arguments.runner, *program], stdin=subprocess.DEVNULL, capture_output=True,
                               text=True, timeout=PATIENCE, check=False)
        check(again.returncode == 0, f"the next import: exit code {again.returncode}\n{again.stderr[-2000:]}")
        files = copies(cloud)
        check(len(files) == FILES + 1, f"{len(files)} files after the next import")
        check_links(files)
        check_second_press(work, arguments.runner, arguments.bin, arguments.talker)
        print(f"Ctrl-C ended the import after {done} of {FILES} files; the next one copied the rest. A second "
              "one ended it at once.")
    finally:
        shutil.rmtree(work, ignore_errors=True)


main()
