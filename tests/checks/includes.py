#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Who may include whom.

ROOMS below is the one list of it; docs/architecture.md shows the same as a table, and this script fails
when it does not (--table prints it). It fails as well at

- an include that the room may not have, or that leads nowhere,
- a header of the system in a file that is not for one system only,
- a condition on system or compiler where it is not allowed,
- a source in a folder that no room covers.

  includes.py [FOLDER]     checks the tree (this one)
  includes.py --table      prints the table of docs/architecture.md
"""
import dataclasses
import pathlib
import re
import sys

SUFFIXES = (".h", ".hpp", ".c", ".cc", ".cpp", ".inl")
# Folders that are no part of the sources.
SKIPPED = ("build", "dist", ".git", ".cache")


@dataclasses.dataclass(frozen=True)
class Room:
    # Without what is below it, unless it says so.
    folder: str
    holds: str
    # Folders of this repository, besides its own, whose headers it may include; "*" are all.
    knows: tuple = ()
    libraries: tuple = ()
    # Those of its files that may ask which system or compiler they are built for.
    asks_for_the_system: tuple = ()
    # What the table calls it, when it has one row for several.
    row: str = ""
    with_folders_below: bool = False
    # Whether all of its files may include headers of the system.
    knows_the_system: bool = False


MODULE = ("include/filelink", "include/syncplugin", "include/syncservices", "base")
PLUGIN = ("include/syncplugin", "include/pluginkit", "base")
PLUGINS = {"blender": (), "dxf": (), "freecad": (), "gltf": ("RapidJSON",), "kicad": ("RapidJSON",), "layout": (),
           "meshes": (), "openscad": (), "scenes": (), "scribus": (), "solvespace": (), "step": (), "svg": (),
           "wavefront": ()}
ALL = {"knows": ("*",), "libraries": ("*",), "asks_for_the_system": ("*",), "with_folders_below": True,
       "knows_the_system": True}

ROOMS = [
    Room("base", "rules on paths, names and letter case; what differs per system", (),
         ("utf8proc", "utfcpp", "xxHash"), ("*",), knows_the_system=True),
    Room("include/filelink", "exported classes of the module", ("include/syncservices",), ("Qt Core",),
         ("Export.h",)),
    Room("include/syncplugin", "the contract with plug-ins", asks_for_the_system=("*",)),
    Room("include/pluginkit", "the kit for authors of plug-ins", ("include/syncplugin",)),
    Room("include/syncservices", "the platform library's interface", (), ("Qt Core",), ("Export.h",)),
    Room("include/corsync", "the job library's interface: what a host uses",
         ("include/filelink", "include/syncservices"), ("Qt Core",), ("Export.h",)),
    Room("src/support", "logging, and paths and files as the module's texts have them", MODULE,
         ("Qt Core", "log4cplus")),
    Room("src/fileset", "the files of one import, the trees of links over them, the copy history",
         (*MODULE, "src/support"), ("Qt Core", "log4cplus")),
    Room("src/plugins", "registration files; loading, choosing and calling plug-ins",
         (*MODULE, "src/support", "src/fileset"), ("Qt Core", "Qt Xml", "log4cplus", "LeakSanitizer")),
    Room("src/stages", "one stage, one file, over a context",
         (*MODULE, "src/support", "src/fileset", "src/plugins"), ("Qt Core", "log4cplus")),
    Room("src/importer", "the classes that hosts call, as thin fronts",
         (*MODULE, "src/support", "src/fileset", "src/plugins", "src/stages"), ("Qt Core", "log4cplus")),
    Room("services", "the embedded platform library", ("include/syncservices", "base"),
         ("Qt Core", "SQLite")),
    Room("kit", "what the kit's headers declare", PLUGIN, ("zlib", "zstd", "expat")),
    Room("plugins", "one format each, and the layout", PLUGIN, row="plugins/<format>"),
    *(Room(f"plugins/{name}", "one format each, and the layout", (*PLUGIN, "plugins"), libraries,
           row="plugins/<format>") for name, libraries in PLUGINS.items()),
    Room("isolation", "plug-ins in a process of their own: the library that stands for one, the program that "
         "runs it", ("include/syncplugin",), ("Qt Core",)),
    Room("jobs", "plan, decide, execute, check, record, look back",
         ("include/filelink", "include/syncplugin", "include/syncservices", "include/corsync", "base",
          "isolation"), ("Qt Core", "SQLite", "log4cplus")),
    Room("cli", "the command: options, console, printing, exit codes", ("include/corsync",),
         ("Qt Core", "CLI11", "log4cplus")),
    Room("examples/host", "a host to begin from",
         ("include/corsync", "include/filelink", "include/syncservices"), ("Qt Core",)),
    Room("examples/plugin-template", "a plug-in to begin from", ("include/syncplugin", "include/pluginkit")),
    Room("tests", "the tests, which look into every room", **ALL),
    Room("bench", "benchmarks", **ALL),
]

LIBRARIES = {
    "Qt Core": r"QtCore/\w+",
    "Qt Xml": r"QtXml/\w+",
    "log4cplus": r"log4cplus/.*",
    "SQLite": r"sqlite3\.h|SQLiteCpp/.*",
    "CLI11": r"CLI/.*",
    "RapidJSON": r"rapidjson/.*",
    "utf8proc": r"utf8proc\.h",
    "utfcpp": r"utf8\.h|utf8/.*|utf8cpp/.*",
    "xxHash": r"xxhash\.h",
    "zlib": r"zlib\.h",
    "zstd": r"zstd\.h|zstd_errors\.h",
    "expat": r"expat\.h",
    "LeakSanitizer": r"sanitizer/.*",
}
# C++ has no header with a suffix; those of C are included by their C++ names.
STANDARD = re.compile(r"[a-z_0-9]+")
SYSTEM = re.compile(r"(sys|linux|netinet|arpa|net)/\w+\.h|(unistd|fcntl|poll|signal|pwd|dirent|utime|dlfcn|"
                    r"langinfo|iconv|pthread|termios|spawn|windows|shlobj|shlwapi|shellapi|winioctl|io|conio|direct|"
                    r"fileapi|process|share|wchar|winternl)\.h")
ONE_SYSTEM = re.compile(r".*_(posix|windows)\.(cpp|h)")

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(?:<([^>\n]*)>|"([^"\n]*)"|(\S+))', re.MULTILINE)
CONDITION = re.compile(r"^[ \t]*#[ \t]*(?:if|ifdef|ifndef|elif)\b((?:\\\n|[^\n])*)", re.MULTILINE)
PLATFORM = re.compile(r"\b(?:_?WIN(?:32|64)|_MSC_VER|Q_(?:OS|CC)_\w+|_POSIX_\w+|__(?:linux|unix|APPLE|CYGWIN|"
                      r"MINGW32|MINGW64|MSVCRT|GNUC|clang|GLIBC|GLIBCXX)(?:__)?)\b")


def room_of(path):
    """The room that holds the path (relative, with slashes), or None."""
    folder = path.rpartition("/")[0]
    for room in ROOMS:
        if folder == room.folder or (room.with_folders_below and folder.startswith(room.folder + "/")):
            return room
    return None


def sources(root):
    for path in sorted(root.rglob("*")):
        relative = path.relative_to(root)
        if path.suffix in SUFFIXES and path.is_file() and relative.parts[0] not in SKIPPED:
            yield relative.as_posix()


def included_file(root, path, name):
    """Where a name between quotation marks leads, as a path relative to the root; None is nowhere."""
    beside = pathlib.PurePosixPath(path).parent
    for folder in (beside, "include", "src", ".", beside.parent):
        target = (root / folder / name).resolve()
        # The build makes some headers of a template.
        if target.is_relative_to(root) and (target.is_file() or target.with_name(target.name + ".in").is_file()):
            return target.relative_to(root).as_posix()
    return None


def library_problem(room, path, name):
    if STANDARD.fullmatch(name):
        return None
    if SYSTEM.fullmatch(name):
        if room.knows_the_system or ONE_SYSTEM.fullmatch(path):
            return None
        return f"<{name}> belongs into a file that ends in _posix or _windows"
    for library, pattern in LIBRARIES.items():
        if re.fullmatch(pattern, name):
            if "*" in room.libraries or library in room.libraries:
                return None
            return f"{room.folder}/ may not use {library} (<{name}>)"
    return None if "*" in room.libraries else f"<{name}> is of no library that is known here"


def own_header_problem(root, room, path, name):
    target = included_file(root, path, name)
    if target is None:
        return None if "*" in room.knows else f'"{name}" leads nowhere'
    other = room_of(target)
    if other is None:
        return f'"{name}" is in no room'
    if other is room or "*" in room.knows or other.folder in room.knows:
        return None
    return f'{room.folder}/ may not include {other.folder}/ ("{name}")'


def file_problems(root, path):
    room = room_of(path)
    if room is None:
        yield 1, "no room covers this folder"
        return
    text = (root / path).read_text(encoding="utf-8")
    line = lambda match: text.count("\n", 0, match.start()) + 1
    for match in INCLUDE.finditer(text):
        library, own, macro = match.groups()
        if macro:
            problem = f"an include that only a macro can tell: {macro}"
        elif library:
            problem = library_problem(room, path, library)
        else:
            problem = own_header_problem(root, room, path, own)
        if problem:
            yield line(match), problem
    name = path[len(room.folder) + 1:]
    if "*" in room.asks_for_the_system or name in room.asks_for_the_system:
        return
    for match in CONDITION.finditer(text):
        found = PLATFORM.search(match.group(1))
        if found:
            yield line(match), f"a condition on system or compiler ({found.group(0)})"


def problems(root):
    """What is wrong in the tree, as lines of text."""
    root = root.resolve()
    return [f"{path}:{line}: {text}" for path in sources(root) for line, text in file_problems(root, path)]


def table():
    rows = {}
    for room in ROOMS:
        row = rows.setdefault(room.row or room.folder, [room.holds, room.knows, []])
        row[2] += [library for library in room.libraries if library not in row[2]]
    lines = ["| room | what it holds | may include | libraries |", "|---|---|---|---|"]
    for folder, (holds, knows, libraries) in rows.items():
        known = ["everything" if name == "*" else f"`{name}/`" for name in knows]
        used = ["everything" if name == "*" else name for name in libraries]
        lines.append(f"| `{folder}/` | {holds} | {', '.join(known) or 'nothing'} | {', '.join(used) or 'none'} |")
    return "\n".join(lines) + "\n"


def main():
    if sys.argv[1:] == ["--table"]:
        print(table(), end="")
        return 0
    root = pathlib.Path(sys.argv[1] if sys.argv[1:] else pathlib.Path(__file__).parents[2])
    found = problems(root)
    if table() not in (root / "docs/architecture.md").read_text(encoding="utf-8"):
        found.append("docs/architecture.md: its table of rooms is not what includes.py --table prints")
    count = len(list(sources(root.resolve())))
    if count == 0:
        found.append(f"no sources in {root}")
    print("\n".join(found + [f"{count} sources, {len(found)} problems"]))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
