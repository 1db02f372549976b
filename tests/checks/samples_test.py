#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Plants what samples.py is there to find, one fault at a time, and looks whether it is found."""
import pathlib
import tempfile
import unittest

import samples


class Known(samples.Help):
    def __init__(self):
        self.options = {"": {"-h", "--help"}, "import": {"--to", "-n", "--dry-run", "-v"}, "links": {"--json"}}


class PlantedFaults(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.file = pathlib.Path(folder.name) / "page.md"

    def found(self, text):
        self.file.write_text(text, encoding="utf-8")
        page = samples.Page(self.file)
        return [(line, problem.split("\n")[0])
                for problems in (samples.code_problems(page), samples.command_problems(page, Known()),
                                 samples.path_problems(page)) for line, problem in problems]

    def test_a_page_without_faults_has_none(self):
        self.assertEqual(self.found("""# Title
`corsync import a --to B` and `--dry-run`, `-vvv`; `cli/main.cpp`, `plugins/<format>/`, [page](page.md#x)

```
./corsync import [--to FOLDER] SOURCE...     what --it does
corsync links --json | grep --count x
corsync COMMAND --help
./test --windows -R copying
cmake --preset release
```

```cpp
#include "filelink/FileLinkManager.h"

int main() { Halvern::FileLink::FileLinkManager::Initialize(); }
```

```xml
<a b="c"/>
```

```text
int main( { settings.
```
"""), [])

    def test_code_that_does_not_compile(self):
        self.assertEqual(self.found("\n```cpp\nint main() { return settings; }\n```\n"),
                         [(2, "the block does not compile:")])

    def test_code_that_compiles_with_warnings(self):
        self.assertEqual(self.found("```cpp\nint main(int count, char**) { int unused; }\n```\n"),
                         [(1, "the block does not compile:")])

    def test_xml_that_is_none(self):
        self.assertEqual(self.found("```xml\n<a>\n```\n"), [
            (1, "the block is no XML: no element found: line 2, column 0")])

    def test_a_language_that_nobody_checks(self):
        self.assertEqual(self.found("```c++\nint\n```\n"),
                         [(1, "a block of an unknown language: c++")])

    def test_a_subcommand_that_is_gone(self):
        self.assertEqual(self.found("text\n`corsync fetch a`\n"), [(2, "corsync has no subcommand fetch")])

    def test_an_option_of_another_subcommand(self):
        self.assertEqual(self.found("```\ncorsync links --to A\n```\n"), [(2, "corsync links has no option --to")])

    def test_an_option_on_the_second_line_of_a_command(self):
        self.assertEqual(self.found("```\ncorsync import \\\n  --gone\n```\n"),
                         [(2, "corsync import has no option --gone")])

    def test_an_option_by_itself(self):
        self.assertEqual(self.found("`--gone rename`\n"), [(1, "no subcommand of corsync has the option --gone")])

    def test_programs_of_ours(self):
        self.assertEqual(self.found("```\n./test --gone\nwindows/gone.sh\n```\n"), [
            (2, "test has no option --gone"), (3, "there is no windows/gone.sh")])

    def test_paths_and_links(self):
        self.assertEqual(self.found("[a](gone.md)\n`src/gone/`\n"),
                         [(1, "the link leads nowhere: gone.md"), (2, "there is no src/gone/")])


if __name__ == "__main__":
    unittest.main()
