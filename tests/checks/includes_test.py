#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Plants what includes.py is there to find, one fault at a time, and looks whether it is found."""
import pathlib
import tempfile
import unittest

import includes


class PlantedFaults(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        for header in ("base/Paths.h", "include/filelink/FileSet.h", "include/filelink/Export.h",
                       "include/syncservices/SyncItem.h", "include/syncplugin/FileLinkInfo.h",
                       "include/pluginkit/Utf.h", "include/corsync/Job.h", "src/support/Logging.h",
                       "src/fileset/LinkGraph.h", "src/stages/Copying.h", "kit/ZipSource.h",
                       "plugins/gltf/UriFinder.h", "plugins/svg/CssLinks.h", "services/Paths.h"):
            self.plant(header, "#pragma once\n")

    def plant(self, path, text):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def found(self, path, text):
        """What is said about a file with that text, when all others are as they should be."""
        self.plant(path, text)
        return includes.problems(self.root)

    def test_a_tree_without_faults_has_none(self):
        self.plant("base/Api.h", "#include <unistd.h>\n#ifdef _WIN32\n#endif\n")
        self.plant("services/Platform_posix.cpp", "#include <sys/stat.h>\n")
        self.plant("include/syncservices/Version.h.in", "")
        self.plant("include/filelink/Version.h", '#include "syncservices/Version.h"\n')
        self.plant("plugins/Shared.h", '#include "pluginkit/Utf.h"\n')
        self.plant("plugins/svg/Svg.cpp", '#include "Shared.h"\n')
        self.plant("include/syncplugin/FileLinkInfo.h", "#ifdef _WIN32\n#endif\n")
        self.plant("kit/Zip.cpp", '#include "ZipSource.h"\n#include "base/Paths.h"\n#include <zlib.h>\n')
        self.plant("plugins/gltf/Uri.cpp", '#include "UriFinder.h"\n#include <rapidjson/reader.h>\n')
        self.plant("tests/cli/Tests.cpp", '#include "services/Paths.h"\n#include <sqlite3.h>\n')
        self.plant("build/release/generated.cpp", '#include "nothing.h"\n')
        self.assertEqual(self.found("src/stages/Copying.cpp",
                                    '#include "stages/Copying.h"\n#include "fileset/LinkGraph.h"\n'
                                    "#include <QtCore/QDir>\n#include <algorithm>\n"), [])

    def test_a_room_that_is_not_to_be_known(self):
        for path, text, message in (
                ("base/A.cpp", '#include "support/Logging.h"', 'base/ may not include src/support/ '
                 '("support/Logging.h")'),
                ("services/A.cpp", '#include "support/Logging.h"', 'services/ may not include src/support/ '
                 '("support/Logging.h")'),
                ("src/fileset/A.cpp", '#include "stages/Copying.h"', 'src/fileset/ may not include src/stages/ '
                 '("stages/Copying.h")'),
                ("cli/A.cpp", '# include "filelink/FileSet.h"', 'cli/ may not include include/filelink/ '
                 '("filelink/FileSet.h")'),
                ("jobs/A.cpp", '#include "../src/stages/Copying.h"', 'jobs/ may not include src/stages/ '
                 '("../src/stages/Copying.h")'),
                ("plugins/svg/A.cpp", '#include "../gltf/UriFinder.h"', 'plugins/svg/ may not include '
                 'plugins/gltf/ ("../gltf/UriFinder.h")'),
                ("plugins/svg/A.cpp", '#include "kit/ZipSource.h"', 'plugins/svg/ may not include kit/ '
                 '("kit/ZipSource.h")'),
                ("plugins/A.h", '#include "gltf/UriFinder.h"', 'plugins/ may not include plugins/gltf/ '
                 '("gltf/UriFinder.h")'),
                ("include/corsync/A.h", '#include "base/Paths.h"', 'include/corsync/ may not include base/ '
                 '("base/Paths.h")')):
            with self.subTest(path=path, text=text):
                self.assertEqual(self.found(path, "#pragma once\n" + text + "\n"), [f"{path}:2: {message}"])
                (self.root / path).unlink()

    def test_a_library_of_other_rooms(self):
        for path, header, library in (
                ("base/A.cpp", "QtCore/QString", "Qt Core"), ("kit/A.h", "QtCore/QString", "Qt Core"),
                ("plugins/gltf/A.cpp", "QtCore/QString", "Qt Core"), ("jobs/A.cpp", "zlib.h", "zlib"),
                ("src/stages/A.cpp", "sqlite3.h", "SQLite"),
                ("cli/A.cpp", "SQLiteCpp/SQLiteCpp.h", "SQLite"),
                ("services/A.cpp", "log4cplus/logger.h", "log4cplus"), ("src/stages/A.cpp", "CLI/CLI.hpp", "CLI11"),
                ("src/stages/A.cpp", "QtXml/QDomDocument", "Qt Xml"),
                ("plugins/svg/A.cpp", "rapidjson/reader.h", "RapidJSON")):
            with self.subTest(path=path, header=header):
                self.assertEqual(self.found(path, f"#include <{header}>\n"), [
                    f"{path}:1: {library_folder(path)}/ may not use {library} (<{header}>)"])
                (self.root / path).unlink()

    def test_a_library_that_nobody_knows(self):
        self.assertEqual(self.found("base/A.cpp", "#include <boost/any.hpp>\n"),
                         ["base/A.cpp:1: <boost/any.hpp> is of no library that is known here"])

    def test_a_header_that_is_not_there(self):
        self.assertEqual(self.found("kit/A.cpp", '\n#include "kit/Gone.h"\n'),
                         ['kit/A.cpp:2: "kit/Gone.h" leads nowhere'])

    def test_an_include_by_macro(self):
        self.assertEqual(self.found("kit/A.cpp", "#include HEADER\n"),
                         ["kit/A.cpp:1: an include that only a macro can tell: HEADER"])

    def test_a_header_of_the_system_in_a_file_for_all_systems(self):
        self.assertEqual(self.found("kit/Paths.cpp", "#include <windows.h>\n"), [
            "kit/Paths.cpp:1: <windows.h> belongs into a file that ends in _posix or _windows"])

    def test_a_question_for_system_or_compiler(self):
        for path, text, name in (
                ("services/A.cpp", "#ifdef _WIN32", "_WIN32"), ("kit/A.h", "#if defined(__linux__)", "__linux__"),
                ("src/support/A.h", "  #  ifndef _MSC_VER", "_MSC_VER"),
                ("cli/A.cpp", "#if 1 && \\\n  defined(Q_OS_WIN)", "Q_OS_WIN"),
                ("plugins/svg/A.cpp", "#if A\n#elif __GNUC__ > 9", "__GNUC__"),
                ("include/filelink/FileSet.h", "#ifdef _WIN32", "_WIN32")):
            with self.subTest(path=path, text=text):
                said = self.found(path, text + "\n#endif\n")
                self.assertEqual([line.split(": ", 1)[1] for line in said],
                                 [f"a condition on system or compiler ({name})"])
                (self.root / path).unlink()

    def test_a_folder_that_no_room_covers(self):
        for path in ("attic/A.cpp", "src/A.cpp", "src/attic/A.h", "plugins/attic/A.cpp", "include/A.h",
                     "plugins/svg/attic/A.cpp", "A.cpp"):
            with self.subTest(path=path):
                self.assertEqual(self.found(path, ""), [f"{path}:1: no room covers this folder"])
                (self.root / path).unlink()


def library_folder(path):
    return includes.room_of(path).folder


if __name__ == "__main__":
    unittest.main()
