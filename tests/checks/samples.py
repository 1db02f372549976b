#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds the documentation against what it speaks of.

- Every ```cpp block compiles as it is printed, against the public headers; every ```xml block is XML.
  ```text is for fragments and pictures.
- Every subcommand and option of corsync that is named is one that --help lists; an option of another
  program of ours stands in its source.
- Every link between pages leads somewhere, and so does every path of the sources that is named.

  samples.py --corsync PROGRAM [FILE...]     checks README.md, CONTRIBUTING.md, docs/*.md and examples/*.md
"""
import argparse
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = ("README.md", "CONTRIBUTING.md", "docs/*.md", "examples/*.md")
LANGUAGES = ("", "cpp", "xml", "text", "sh", "cmake", "ini", "json")
COMPILER = ("g++", "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Werror", "-fPIC")
FENCE = re.compile(r"^```([^\n]*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
CODE = re.compile(r"`([^`\n]+(?:\n[^`\n]+)?)`")
LINK = re.compile(r"\[[^\]]*\]\(([^)#\s]+)(?:#[^)]*)?\)")
OPTION = re.compile(r"(?<![\w-])--?[A-Za-z][\w-]*")
# Paths of the sources as pages name them; "<format>" and "*" stand for any name.
SOURCE_PATH = re.compile(r"(?:base|bench|cli|cmake|docs|examples|include|jobs|kit|plugins|services|src|tests|"
                         r"windows)/[\w./*<>-]*")
OUR_PROGRAMS = re.compile(r"(?:\./)?(test(?= |$)|(?:windows|tests|examples|bench)/[\w/-]+\.(?:sh|py))")


class Page:
    def __init__(self, path):
        self.name = path.relative_to(ROOT).as_posix() if path.is_relative_to(ROOT) else str(path)
        self.folder = path.parent
        self.text = path.read_text(encoding="utf-8")
        self.blocks = [(self.line(m.start()), m.group(1), m.group(2)) for m in FENCE.finditer(self.text)]
        # What is left keeps its lines, so that they can be counted.
        self.prose = FENCE.sub(lambda m: "\n" * m.group(0).count("\n"), self.text)

    def line(self, position):
        return self.text.count("\n", 0, position) + 1

    def spans(self):
        """Inline code with its line."""
        for match in CODE.finditer(self.prose):
            yield self.prose.count("\n", 0, match.start()) + 1, " ".join(match.group(1).split())

    def commands(self):
        """Lines of blocks for the shell, and inline code: whatever may be a command."""
        for line, language, text in self.blocks:
            if language in ("", "sh"):
                for match in re.finditer(r"(?:.*\\\n)*.+", text):
                    first = line + 1 + text.count("\n", 0, match.start())
                    yield first, re.sub(r"\s*\\\n\s*", " ", match.group(0)).strip()
        yield from self.spans()


def flags(*libraries):
    # Headers that the build makes of templates.
    made = [f"-I{folder}" for folder in ROOT.glob("build/release/generated/include")]
    return made + shlex.split(subprocess.run(["pkg-config", "--cflags", *libraries], check=True, text=True,
                                      capture_output=True).stdout)


def code_problems(page):
    for line, language, text in page.blocks:
        if language not in LANGUAGES:
            yield line, f"a block of an unknown language: {language}"
        elif language == "xml":
            try:
                xml.etree.ElementTree.fromstring(text)
            except xml.etree.ElementTree.ParseError as error:
                yield line, f"the block is no XML: {error}"
        elif language == "cpp":
            with tempfile.TemporaryDirectory() as folder:
                source = pathlib.Path(folder) / "sample.cpp"
                source.write_text(text, encoding="utf-8")
                result = subprocess.run([*COMPILER, "-I", str(ROOT / "include"), *flags("Qt6Core", "log4cplus"),
                                         str(source)], capture_output=True, text=True)
                if result.returncode:
                    yield line, "the block does not compile:\n" + result.stderr.replace(str(source), "sample.cpp")


class Help:
    """The options of each subcommand, and of the command itself under ""."""

    def __init__(self, program):
        self.program = program
        text = self.run()
        names = re.search(r"^Subcommands:\n((?:  .*\n)+)", text, re.MULTILINE)
        if not names:
            sys.exit(f"{program} --help lists no subcommands")
        self.options = {"": self.read(text)}
        for name in re.findall(r"^  (\w+)", names.group(1), re.MULTILINE):
            self.options[name] = self.read(self.run(name))

    def run(self, *subcommand):
        return subprocess.run([self.program, *subcommand, "--help"], check=True, text=True,
                              capture_output=True).stdout

    @staticmethod
    def read(text):
        found = set()
        for line in re.findall(r"^  (-.*)", text, re.MULTILINE):
            found.update(re.findall(r"(?<![\w-])--?[\w-]+", line.split("  ")[0]))
        return found

    def knows(self, option, subcommand=None):
        groups = [self.options[subcommand]] if subcommand is not None else self.options.values()
        # -vvv is -v three times.
        return any(option in group or (re.fullmatch(r"-(\w)\1+", option) and option[:2] in group)
                   for group in groups)


def corsync_problems(words, known):
    subcommand = next((word for word in words if not word.startswith("-")), "")
    if re.fullmatch(r"[A-Z]+", subcommand):
        subcommand = None  # "corsync COMMAND --help"
    elif subcommand and subcommand not in known.options:
        yield f"corsync has no subcommand {subcommand}"
        return
    for option in OPTION.findall(" ".join(words)):
        if not known.knows(option, subcommand):
            yield f"corsync {subcommand or ''} has no option {option}"


def command_problems(page, known):
    for line, command in page.commands():
        command = re.sub(r"^(?:\w+=\S+ )*(?:\$ )?", "", command)
        corsync = re.match(r"(?:\./|bin\\)?corsync(?:\.exe)?(?: +(.*?))?(?:   .*| [|>].*)?$", command)
        ours = OUR_PROGRAMS.match(command)
        if corsync:
            words = re.sub(r"[\[\]]", " ", corsync.group(1) or "").split()
            yield from ((line, problem) for problem in corsync_problems(words, known))
        elif ours:
            program = ROOT / ours.group(1)
            if not program.is_file():
                yield line, f"there is no {ours.group(1)}"
                continue
            source = program.read_text(encoding="utf-8")
            for option in OPTION.findall(re.split("   ", command)[0]):
                # ctest gets what ./test does not know.
                if option not in source and not (ours.group(1) == "test" and option in ("-R", "-E", "--repeat")):
                    yield line, f"{ours.group(1)} has no option {option}"
        elif re.match(r"--?[a-z]", command) and not known.knows(command.split()[0].split("=")[0]):
            option = command.split()[0]
            # Compilers' and others' options are told by their single dash.
            if option.startswith("--") and option not in options_beside(page):
                yield line, f"no subcommand of corsync has the option {option}"


def options_beside(page):
    """Options of other programs that the page names in a command."""
    return {option for _, command in page.commands() if " " in command and not command.startswith(("-", "corsync"))
            for option in OPTION.findall(command)}


def path_problems(page):
    for match in LINK.finditer(page.prose):
        target = match.group(1)
        if not re.match(r"[a-z]+:", target) and not (page.folder / target).exists():
            yield page.prose.count("\n", 0, match.start()) + 1, f"the link leads nowhere: {target}"
    for line, span in page.spans():
        if SOURCE_PATH.fullmatch(span):
            pattern = re.sub(r"<\w+>", "*", span).rstrip("/")
            if not any(ROOT.glob(pattern)):
                yield line, f"there is no {span}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--corsync", required=True)
    parser.add_argument("pages", nargs="*", type=pathlib.Path)
    arguments = parser.parse_args()
    known = Help(arguments.corsync)
    paths = arguments.pages or sorted(path for pattern in PAGES for path in ROOT.glob(pattern))
    found = blocks = 0
    for path in paths:
        page = Page(path.resolve())
        blocks += sum(language in ("cpp", "xml") for _, language, _ in page.blocks)
        for problems in (code_problems(page), command_problems(page, known), path_problems(page)):
            for line, text in problems:
                print(f"{page.name}:{line}: {text}")
                found += 1
    print(f"{len(paths)} pages, {blocks} samples of code, {found} problems")
    if not paths or not blocks:
        print("nothing was checked")
    return 1 if found or not paths or (not blocks and not arguments.pages) else 0


if __name__ == "__main__":
    sys.exit(main())
