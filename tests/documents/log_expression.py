#!/usr/bin/env python3
"""Checks the regular expression in docs/error-log.md against a log that a program of the library has written, with
three engines: Python's own, PCRE (grep), and that of JavaScript where node is there.

    log_expression.py <page> <folder> <command>...

The command writes `expression.log`, and to its standard output a tab-separated line for each record: its number of
fractional digits, its kind, whether it is cut, and its message.
"""

import json
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


FIELDS = ["ms", "host", "pid", "tid", "kind", "cut", "message"]

# The fields of each line of the log as a list, or its text where the expression does not match.
JAVASCRIPT = """
const [expression, log, fields] = process.argv.slice(1);
const lines = require('fs').readFileSync(log, 'utf8').split('\\n').slice(0, -1);
const read = (line) => new RegExp(expression).exec(line);
console.log(JSON.stringify(lines.map((line) => {
    const match = read(line);
    return match ? fields.split(',').map((field) => match.groups[field] ?? '') : line;
})));
"""


def read_by_python(expression: str, log: Path) -> list:
    *lines, rest = log.read_bytes().split(b"\n")
    if rest:
        sys.exit(f"{log}: the last line has no end")
    read = []
    for line in lines:
        if not line.endswith(b"\r"):
            sys.exit(f"{log}: a line does not end in CR LF: {line}")
        match = re.fullmatch(expression.encode("utf-8"), line)
        read.append([(match[field] or b"").decode("utf-8") for field in FIELDS] if match else line.decode("utf-8"))
    return read


def read_by_javascript(expression: str, log: Path) -> list:
    done = subprocess.run(["node", "--eval", JAVASCRIPT, expression, str(log), ",".join(FIELDS)],
                          stdout=subprocess.PIPE, timeout=60, check=True)
    return json.loads(done.stdout)


def main() -> None:
    page, folder = Path(sys.argv[1]), Path(sys.argv[2])
    expression = expression_of(page)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    done = subprocess.run(sys.argv[3:], cwd=folder, stdout=subprocess.PIPE, timeout=60, check=True)
    expected = [tuple(line.split("\t")) for line in done.stdout.decode("utf-8").splitlines()]
    log = folder / "expression.log"
    read = read_by_python(expression, log)
    actual = [("no record", fields.rstrip("\r")) if isinstance(fields, str) else tuple(fields) for fields in read]
    # The milliseconds are the clock's: only whether there are any is known.
    actual = [("ms" if record[0].isdigit() else record[0], *record[1:]) for record in actual]
    if not expected or actual != expected:
        sys.exit("expected\n" + "\n".join(map(str, expected)) + "\nread\n" + "\n".join(map(str, actual)))

    # The same expression in the other syntax of named groups, by other engines.
    other = expression.replace("(?P<", "(?<")
    grep = subprocess.run(["grep", "--perl-regexp", "--text", "--count", other, str(log)], stdout=subprocess.PIPE,
                          check=True)
    count = sum(1 for record in expected if record[0] != "no record")
    if int(grep.stdout) != count:
        sys.exit(f"grep finds {int(grep.stdout)} records, and there are {count}")
    if shutil.which("node") and read_by_javascript(other, log) != read:
        sys.exit("JavaScript reads the log in another way")


if __name__ == "__main__":
    main()
