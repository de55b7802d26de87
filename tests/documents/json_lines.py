#!/usr/bin/env python3
"""Compares the JSON lines in docs/error-log.md with the output of vorellog for the log on that page.

    json_lines.py <page> <folder> <command>...

A block labelled `text` is the log. A block labelled `sh` is a call of vorellog, and the block labelled `json` after it
is the expected output. <command> runs vorellog.
"""

import difflib
import json
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

from samples import blocks


def main() -> None:
    page, folder = Path(sys.argv[1]), Path(sys.argv[2])
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    log = folder / "page.log"
    call, compared = None, 0
    for block in blocks(page):
        if block.language == "text":
            log.write_bytes(block.text.replace("\n", "\r\n").encode("utf-8"))
        elif block.language == "sh":
            call = shlex.split(block.text)
        elif block.language == "json":
            arguments = [*sys.argv[3:], *call[1:], log.name]
            done = subprocess.run(arguments, cwd=folder, stdout=subprocess.PIPE, timeout=60, check=True)
            actual = done.stdout.decode("utf-8")
            for line in actual.splitlines():
                json.loads(line)
            if actual != block.text:
                difference = difflib.unified_diff(block.text.splitlines(), actual.splitlines(), "page", "run", lineterm="")
                sys.exit(f"{page}:{block.line}: the output of vorellog differs\n" + "\n".join(difference))
            compared += 1
    if compared == 0:
        sys.exit(f"{page}: no JSON lines found")


if __name__ == "__main__":
    main()
