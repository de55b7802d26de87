#!/usr/bin/env python3
"""Extracts the samples from the Markdown documents, and runs the compiled samples.

A fenced block labelled `cpp` is a sample. A sample with a `main` is a program. The other samples of a page become
functions of one program, whose log is `sample.log`. A block labelled `output` after a sample is its expected standard
output. A block labelled `log` is its expected log; times, computer names and ids may differ.

Samples in other languages have the same blocks; other_languages.py runs or checks them.
"""

import argparse
import difflib
import re
import shutil
import subprocess
import sys
from dataclasses import dataclass, field
from pathlib import Path

OTHER_LANGUAGES = ("c", "csharp", "python")
FENCE = re.compile(r"^```(\w*)\s*$")
PROGRAM = re.compile(r"^int main\(", re.MULTILINE)
LOG_LINE = re.compile(r"\[[^]]*\](\.\d{3})? [^ ]*\.\d+\.\d+: (.*)")

PROLOGUE = """\
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>
#include <vorel/vorelCore.h>

namespace {
"""


@dataclass
class Block:
    language: str
    line: int  # number of the line after the opening fence, from 1
    text: str


@dataclass
class Sample:
    page: Path
    language: str
    line: int
    text: str
    expected: dict = field(default_factory=dict)  # "output" and "log", if the page contains them

    def is_program(self) -> bool:
        return PROGRAM.search(self.text) is not None


def blocks(page: Path):
    """The fenced blocks of a page."""
    opened = None
    lines = []
    for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), start=1):
        fence = FENCE.match(line)
        if fence and opened is None:
            opened, lines = Block(fence[1], number + 1, ""), []
        elif fence and not fence[1]:
            opened.text = "".join(part + "\n" for part in lines)
            yield opened
            opened = None
        else:
            lines.append(line)
    if opened is not None:
        sys.exit(f"{page}:{opened.line - 1}: this block is not closed")


def samples(page: Path) -> list:
    found = []
    for block in blocks(page):
        if block.language in ("cpp", *OTHER_LANGUAGES):
            found.append(Sample(page, block.language, block.line, block.text))
        elif block.language in ("output", "log"):
            if not found or block.language in found[-1].expected:
                sys.exit(f"{page}:{block.line}: no sample precedes this block, or "
                         f"the sample already has a block labelled {block.language}")
            found[-1].expected[block.language] = block.text
    return found


def write_if_changed(path: Path, text: str) -> None:
    if not path.exists() or path.read_text(encoding="utf-8") != text:
        path.write_text(text, encoding="utf-8")


def cut(pages: list, folder: Path) -> None:
    """Writes the source of each program, and prints "page number program" for each C++ sample. The number counts the
    samples of the page in all languages, from 1."""
    folder.mkdir(parents=True, exist_ok=True)
    for page in pages:
        functions, cases = [], []
        for number, sample in enumerate(samples(page), start=1):
            if sample.language != "cpp":
                continue
            located = f'#line {sample.line} "{page.as_posix()}"\n{sample.text}'
            if sample.is_program():
                program = f"doc_{page.stem}_{number}"
                write_if_changed(folder / f"{program}.cpp", located)
            else:
                program = f"doc_{page.stem}"
                functions.append(f"void sample{number}() {{\n{located}}}\n")
                cases.append(f"        case {number}: sample{number}(); return 0;\n")
            print(page.stem, number, program)
        if cases:
            write_if_changed(
                folder / f"doc_{page.stem}.cpp",
                PROLOGUE + "\n".join(functions) + "}  // namespace\n\nint main(int count, char** arguments) {\n"
                '    vorel::Exception::SetErrorLogLocation("sample.log", vorel::Exception::DefaultLogSize);\n'
                "    switch (count > 1 ? std::atoi(arguments[1]) : 0) {\n" + "".join(cases) +
                "        default: return 2;\n    }\n}\n")


def records(log: str) -> str:
    """The lines of a log without the fields that differ from run to run. Ends the program if a line has another
    format."""
    lines = []
    for line in log.splitlines():
        match = LOG_LINE.fullmatch(line)
        if not match:
            sys.exit(f"this line does not have the format of the log: {line}")
        lines.append(match[2] + "\n")
    return "".join(lines)


def new_folder(folder: Path) -> None:
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)


def execute(sample: Sample, command: list, folder: Path) -> None:
    """Runs one sample in a folder. The exit code must be 0. If the page has blocks for the output or the log of the
    sample, the output or the log must match."""
    done = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, timeout=60, check=False)
    where = f"{sample.page}:{sample.line}"
    if done.returncode != 0:
        sys.exit(f"{where}: the sample exits with code {done.returncode}")
    actual = {"output": done.stdout.decode("utf-8").replace("\r\n", "\n")}
    if "log" in sample.expected:
        logs = list(folder.glob("*.log"))
        actual["log"] = records("".join(log.read_text(encoding="utf-8") for log in logs))
        sample.expected["log"] = records(sample.expected["log"])
    for kind, expected in sample.expected.items():
        if actual[kind] != expected:
            difference = difflib.unified_diff(expected.splitlines(), actual[kind].splitlines(), "page", "run", lineterm="")
            sys.exit(f"{where}: the {kind} differs from the page\n" + "\n".join(difference))


def main() -> None:
    parser = argparse.ArgumentParser()
    commands = parser.add_subparsers(dest="command", required=True)
    cutting = commands.add_parser("cut")
    cutting.add_argument("folder", type=Path)
    cutting.add_argument("pages", type=Path, nargs="+")
    running = commands.add_parser("run")
    running.add_argument("page", type=Path)
    running.add_argument("number", type=int)
    running.add_argument("folder", type=Path)
    running.add_argument("program", nargs="+")
    arguments = parser.parse_args()
    if arguments.command == "cut":
        cut(arguments.pages, arguments.folder)
    else:
        sample = samples(arguments.page)[arguments.number - 1]
        new_folder(arguments.folder)
        execute(sample, [*arguments.program, str(arguments.number)], arguments.folder)


if __name__ == "__main__":
    main()
