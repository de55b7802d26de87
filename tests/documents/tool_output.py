#!/usr/bin/env python3
"""Runs the calls of tools that a page such as docs/vorellog.md shows, and compares their output with the page.

    tool_output.py <page> <folder> <folder of the tools> <command that runs a program>...

The calls run in <folder>, which is emptied first. A block labelled `sh` has one or more calls of vorellog or vorelconv.
A block with a call of another program is ignored. The next block labelled `console` or `json` is the expected output of
these calls; each line of a `json` block must be valid JSON.

A block labelled `text` is the content of a file. The first call of each following block labelled `sh`, up to the next
block labelled `text`, may name this file; the name is the first argument that ends in ".log" or ".txt". If the name
ends in ".log", the lines of the file end in CR LF.
"""

import difflib
import json
import re
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

from samples import blocks

TOOLS = ("vorellog", "vorelconv")
FILE = re.compile(r"[\w-]+\.(?:log|txt)")


def output(call: list, folder: Path, tools: Path, emulator: list) -> str:
    """Runs one call of a tool. Returns its standard output, in which every line ends in a line feed."""
    done = subprocess.run([*emulator, tools / f"{call[0]}.exe", *call[1:]], cwd=folder, stdout=subprocess.PIPE, timeout=60,
                          check=True)
    text = done.stdout.decode("utf-8").replace("\r\n", "\n")
    return text if not text or text.endswith("\n") else text + "\n"


def write_input(text: str, call: list, folder: Path) -> None:
    names = [word for word in call if FILE.fullmatch(word)]
    if names:
        (folder / names[0]).write_text(text, encoding="utf-8", newline="\r\n" if names[0].endswith(".log") else "\n")


def main() -> None:
    page, folder, tools, emulator = Path(sys.argv[1]), Path(sys.argv[2]), Path(sys.argv[3]), sys.argv[4:]
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    text, calls, compared = None, [], 0
    for block in blocks(page):
        if block.language == "text":
            text = block.text
        elif block.language == "sh":
            calls = [shlex.split(line) for line in block.text.splitlines()]
            if any(call[0] not in TOOLS for call in calls):
                calls = []
        elif block.language in ("console", "json"):
            if not calls:
                sys.exit(f"{page}:{block.line}: no call of a tool precedes this output")
            if text is not None:
                write_input(text, calls[0], folder)
            actual = "".join(output(call, folder, tools, emulator) for call in calls)
            if block.language == "json":
                for line in actual.splitlines():
                    json.loads(line)
            if actual != block.text:
                difference = difflib.unified_diff(block.text.splitlines(), actual.splitlines(), "page", "run", lineterm="")
                sys.exit(f"{page}:{block.line}: the output differs from the page\n" + "\n".join(difference))
            compared += 1
    if compared == 0:
        sys.exit(f"{page}: the page contains no output to compare")


if __name__ == "__main__":
    main()
