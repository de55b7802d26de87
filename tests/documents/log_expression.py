#!/usr/bin/env python3
"""Checks the regular expression in docs/error-log.md with a log that the library has written. Runs it in three engines:
Python's `re`, PCRE (through grep) and, if node is installed, JavaScript.

    log_expression.py <page> <folder> <command>...

<command> writes `expression.log`. It prints the expected fields of each record, separated by tabs, in the order of
FIELDS. The first field is "ms" if the time has milliseconds. A line that is not a record has the fields "no record" and
its text.
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
        sys.exit(f"{page}: {len(found)} regular expressions, expected 1")
    return found[0]


FIELDS = ["ms", "host", "pid", "tid", "kind", "cut", "message"]

# Prints a list of fields for each line of the log, or the line if the expression does not match.
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
        sys.exit(f"{log}: the last line is not terminated")
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
    # The value of the milliseconds depends on the clock, so only their presence is compared.
    actual = [("ms" if record[0].isdigit() else record[0], *record[1:]) for record in actual]
    if not expected or actual != expected:
        sys.exit("expected\n" + "\n".join(map(str, expected)) + "\nread\n" + "\n".join(map(str, actual)))

    # JavaScript writes named groups as `(?<name>`, and PCRE accepts that too.
    other = expression.replace("(?P<", "(?<")
    grep = subprocess.run(["grep", "--perl-regexp", "--text", "--count", other, str(log)], stdout=subprocess.PIPE,
                          check=True)
    count = sum(1 for record in expected if record[0] != "no record")
    if int(grep.stdout) != count:
        sys.exit(f"grep finds {int(grep.stdout)} records, expected {count}")
    if shutil.which("node") and read_by_javascript(other, log) != read:
        sys.exit("the fields in JavaScript differ from those in Python")


if __name__ == "__main__":
    main()
