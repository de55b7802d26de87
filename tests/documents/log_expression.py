#!/usr/bin/env python3
"""Checks the regular expression in docs/error-log.md against a log that a program of the library has written.

    log_expression.py <page> <folder> <command>...

The command writes `expression.log`, and to its standard output a tab-separated line for each record: its number of
fractional digits, its kind, whether it is cut, and its message.
"""

import re
import shutil
import subprocess
import sys
from pathlib import Path

from samples import blocks


def expression_of(page: Path) -> str:
    found = [block.text.strip() for block in blocks(page) if block.language == "regex"]
    if len(found) != 1:
        sys.exit(f"{page}: {len(found)} regular expressions")
    return found[0]


def main() -> None:
    page, folder = Path(sys.argv[1]), Path(sys.argv[2])
    expression = expression_of(page)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    done = subprocess.run(sys.argv[3:], cwd=folder, stdout=subprocess.PIPE, timeout=60, check=True)
    expected = [tuple(line.split("\t")) for line in done.stdout.decode("utf-8").splitlines()]
    log = folder / "expression.log"
    lines = log.read_text(encoding="utf-8").splitlines()

    actual = []
    for line in lines:
        match = re.fullmatch(expression, line)
        if match:
            actual.append((match["ms"] or "", match["host"], match["pid"], match["tid"], match["kind"] or "",
                           match["cut"] or "", match["message"]))
        else:
            actual.append(("no record", line))
    # The milliseconds are the clock's: only whether there are any is known.
    actual = [("ms" if record[0].isdigit() else record[0], *record[1:]) for record in actual]
    if not expected or actual != expected:
        sys.exit("expected\n" + "\n".join(map(str, expected)) + "\nread\n" + "\n".join(map(str, actual)))

    # The same expression in the other syntax of named groups, by another engine, finds the same lines.
    other = expression.replace("(?P<", "(?<")
    grep = subprocess.run(["grep", "--perl-regexp", "--text", "--count", other, str(log)], stdout=subprocess.PIPE,
                          check=True)
    count = sum(1 for record in expected if record[0] != "no record")
    if int(grep.stdout) != count:
        sys.exit(f"grep finds {int(grep.stdout)} records, and there are {count}")


if __name__ == "__main__":
    main()
