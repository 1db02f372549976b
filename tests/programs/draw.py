# SPDX-License-Identifier: Apache-2.0
"""Runs the command language of Open CASCADE (occt-draw) without a display."""
import os
import pathlib
import subprocess
import tempfile

LIBRARIES = pathlib.Path("/usr/lib")


def command(script, place):
    """The command line and the environment for a script (Tcl); `place` is an empty folder for it.

    occt-draw loads its commands from libraries by their plain names, which only development packages bring.
    """
    names = place / "libraries"
    names.mkdir()
    for library in LIBRARIES.glob("*/libTK*.so.7"):
        (names / library.name.removesuffix(".7")).symlink_to(library)
    file = place / "script.tcl"
    file.write_text("pload MODELING XDE OCAF\n" + script)
    return ["occt-draw", "-b", "-f", file], {**os.environ, "LD_LIBRARY_PATH": str(names)}


def draw(script, timeout=120):
    """What a script prints. Nothing is near but an empty folder: files in the current one would be found."""
    with tempfile.TemporaryDirectory() as place:
        line, environment = command(script, pathlib.Path(place))
        return subprocess.run(line, env=environment, cwd=place, check=True, timeout=timeout, capture_output=True,
                              stdin=subprocess.DEVNULL).stdout.decode(errors="replace")
