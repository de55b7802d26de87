#!/usr/bin/env python3
"""Checks the CSV files that benchmark programs write, and the arguments of these programs.

    read_back.py <folder> <command>...

<command> runs the program built from sample.cpp.
"""

import csv
import subprocess
import sys
from pathlib import Path

HEADER = ["case", "peer", "ours_ns", "peer_ns", "ratio", "spread"]
NAMES = [
    ("plain", "peer"),
    ("format double, narrow", 'printf("%.15g", x)'),
    ("format double, narrow", "two\r\nlines"),
    ('"quoted"', ","),
    ('"quoted"', '"'),
    ("μs; tab\t", " spaces "),
    ("unsteady", "steady"),
]


def expect(condition: bool, message: object) -> None:
    if not condition:
        sys.exit(f"read_back.py: {message}")


def run(command: list, *arguments: str, code: int = 0) -> subprocess.CompletedProcess:
    done = subprocess.run([*command, *arguments], capture_output=True, timeout=100, check=False)
    expect(done.returncode == code, f"{arguments}: exit code {done.returncode}, expected {code}: {done.stderr}")
    return done


def rows_of(path: Path) -> list:
    with path.open(encoding="utf-8", newline="") as file:
        header, *rows = csv.reader(file, strict=True)
    expect(header == HEADER, f"the header is {header}")
    for row in rows:
        expect(len(row) == len(HEADER), f"the row {row} does not have a value for each column")
        ours, peer, ratio, spread = map(float, row[2:])
        expect(ours > 0 and peer > 0 and spread >= 0, f"a number in the row {row} is out of range")
        # The columns are rounded to four decimals.
        expect(abs(ratio * ours - peer) <= 0.0001 * (1 + ratio + ours), f"the ratio in the row {row} is wrong")
    return rows


def main() -> None:
    folder, command = Path(sys.argv[1]), sys.argv[2:]
    folder.mkdir(parents=True, exist_ok=True)
    path = folder / "sample.csv"

    path.unlink(missing_ok=True)
    done = run(command, "--rounds", "1", "--csv", str(path))
    rows = rows_of(path)
    expect([(row[0], row[1]) for row in rows] == NAMES, f"the cases or peers are wrong: {rows}")
    expect(b"calls: 1 and 1" in done.stdout, "with --rounds 1, a pass ran more than once")
    expect(b"!" not in done.stdout and not done.stderr, "a warning is printed after one round")
    content = path.read_bytes()
    expect(content.endswith(b"\r\n") and content.count(b"\r\n") == content.count(b"\n"), "a line does not end in CR LF")

    path.unlink()
    run(command, "quoted", "--rounds", "1", "--csv", str(path))
    expect([row[0] for row in rows_of(path)] == ['"quoted"'] * 2,
           "the filter does not select exactly the rows of the case")

    done = run(command, "unsteady", "--rounds", "15", "--csv", str(path))
    spread = float(rows_of(path)[0][5])
    expect(spread > 0.2, f'the spread of the case "unsteady" is only {spread}')
    expect(b"% !" in done.stdout and b"the spread of 1 of 1 results" in done.stderr,
           f"a warning about the spread is missing: {done}")

    for arguments in (["--rounds", "some"], ["--rounds"], ["--round", "1"]):
        run(command, *arguments, code=2)
    run(command, "plain", "--rounds", "1", "--csv", str(folder / "missing" / "sample.csv"), code=1)


if __name__ == "__main__":
    main()
