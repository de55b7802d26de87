#!/usr/bin/env python3
"""Checks the regular expressions in docs/error-log.md against a log that the library has written. The first expression
is for a single line, the second expression is for a record joined with its continuation lines. Runs both expressions in
three engines: Python's `re`, PCRE (through grep) and, if node is installed, JavaScript.

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


def expressions_of(page: Path) -> list:
    """The expression for a line, and the expression for a joined record."""
    found = [block.text.strip() for block in blocks(page) if block.language == "regex"]
    if len(found) != 2:
        sys.exit(f"{page}: {len(found)} regular expressions, expected 2")
    return found


FIELDS = ["ms", "host", "pid", "tid", "kind", "cut", "message"]

# Prints for each text of a list its fields, or the text itself if the expression does not match.
JAVASCRIPT = """
const [expression, flags, texts, fields] = process.argv.slice(1);
const lines = JSON.parse(require('fs').readFileSync(texts, 'utf8'));
const read = (line) => new RegExp(expression, flags).exec(line);
console.log(JSON.stringify(lines.map((line) => {
    const match = read(line);
    return match ? fields.split(',').map((field) => match.groups[field] ?? '') : line;
})));
"""


def lines_of(log: Path) -> list:
    """The lines of the log with their carriage returns."""
    *lines, rest = log.read_bytes().decode("utf-8").split("\n")
    if rest:
        sys.exit(f"{log}: the last line is not terminated")
    for line in lines:
        if not line.endswith("\r"):
            sys.exit(f"{log}: a line does not end in CR LF: {line}")
    return lines


def joined(lines: list, is_record) -> list:
    """The records, each with the lines that continue it, as a collector joins them."""
    records = []
    for line in lines:
        if is_record(line):
            records.append(line)
        else:
            records[-1] += "\n" + line
    return records


def read_by_python(expression: str, texts: list) -> list:
    matches = [(re.fullmatch(expression, text), text) for text in texts]
    return [[match[field] or "" for field in FIELDS] if match else text for match, text in matches]


def read_by_javascript(expression: str, flags: str, texts: list, folder: Path) -> list:
    file = folder / "texts.json"
    file.write_text(json.dumps(texts), encoding="utf-8")
    done = subprocess.run(["node", "--eval", JAVASCRIPT, expression, flags, str(file), ",".join(FIELDS)],
                          stdout=subprocess.PIPE, timeout=60, check=True)
    return json.loads(done.stdout)


def count_by_pcre(expression: str, texts: list) -> int:
    grep = subprocess.run(["grep", "--perl-regexp", "--null-data", "--count", expression],
                          input="\0".join(texts).encode("utf-8"), stdout=subprocess.PIPE, check=True)
    return int(grep.stdout)


def check(expression: str, texts: list, expected: list, folder: Path) -> None:
    """Compares the results of each engine with the expected fields. For PCRE, compares only the number of matches."""
    read = read_by_python(expression, texts)
    actual = [("no record", fields.rstrip("\r")) if isinstance(fields, str) else tuple(fields) for fields in read]
    # The value of the milliseconds depends on the clock, so only their presence is compared.
    actual = [("ms" if record[0].isdigit() else record[0], *record[1:]) for record in actual]
    if not expected or actual != expected:
        sys.exit("expected\n" + "\n".join(map(str, expected)) + "\nread\n" + "\n".join(map(str, actual)))

    # JavaScript writes named groups as `(?<name>`, and PCRE accepts this form, too.
    other = expression.replace("(?P<", "(?<")
    count = sum(1 for record in expected if record[0] != "no record")
    if count_by_pcre(other, texts) != count:
        sys.exit(f"grep finds {count_by_pcre(other, texts)} records, expected {count}")
    flags = "s" if other.startswith("(?s)") else ""
    if shutil.which("node") and read_by_javascript(other.removeprefix("(?s)"), flags, texts, folder) != read:
        sys.exit("the fields read by JavaScript differ from the fields read by Python")


def main() -> None:
    page, folder = Path(sys.argv[1]), Path(sys.argv[2])
    for_line, for_record = expressions_of(page)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    done = subprocess.run(sys.argv[3:], cwd=folder, stdout=subprocess.PIPE, timeout=60, check=True)
    expected = [tuple(line.split("\t")) for line in done.stdout.decode("utf-8").splitlines()]
    lines = lines_of(folder / "expression.log")
    check(for_line, lines, expected, folder)

    records = joined(lines, lambda line: re.fullmatch(for_line, line))
    expected_records = []
    for record in expected:
        if record[0] != "no record":
            expected_records.append(record)
        else:
            *fields, message = expected_records.pop()
            expected_records.append((*fields, message + "\r\n" + record[1]))
    check(for_record, records, expected_records, folder)
    if not any("\n" in record for record in records):
        sys.exit("the log must contain a record of several lines")
    for record in records:
        if bool(re.fullmatch(for_line, record)) == ("\n" in record):
            sys.exit(f"the expression for a line must match a record if, and only if, the record is one line: {record}")


if __name__ == "__main__":
    main()
