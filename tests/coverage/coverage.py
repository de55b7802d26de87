"""Tells which lines and branches of the library the tests did not reach, from the counts of the coverage build.

Run it as `./dev coverage`. A call that may throw is a branch to the compiler, with an edge to what follows and one to
the landing pad. No test can take the second on purpose wherever the first is taken, and counting the first would only
flatter: both edges of a call are left out. What remains are the branches that the source spells.

Every line that no test reaches, and every line with a branch that no test takes, has to be listed in unreached.txt
with the reason.
"""

import json
import subprocess
import sys
from collections import Counter, defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build" / "coverage"
REPORT = BUILD / "report"
LISTED = Path(__file__).with_name("unreached.txt")
AIMS = {"lines": 98.0, "branches": 90.0}


def gcovr(*arguments):
    subprocess.run(["gcovr", "--root", ROOT, "--filter", "include/", "--filter", "src/", "--exclude-unreachable-branches",
                    *arguments], cwd=ROOT, check=True)


def without_calls(branches):
    """The branches of a line without the edges of its calls: each that throws, and the one that goes on beside it."""
    kept = []
    for branch in branches:
        if not branch["throw"]:
            kept.append(branch)
        elif kept and kept[-1]["fallthrough"]:
            kept.pop()
    return kept


def measure():
    """Reads the counts, and returns them as gcovr writes them, the edges of calls left out."""
    raw = REPORT / "with-calls.json"
    gcovr("--gcov-executable", "x86_64-w64-mingw32-gcov-posix", "-j", "2", "--json", raw, BUILD / "CMakeFiles",
          BUILD / "tests" / "CMakeFiles")
    counts = json.loads(raw.read_text())
    for file in counts["files"]:
        file["lines"] = [line for line in file["lines"] if not line["gcovr/noncode"]]
        for line in file["lines"]:
            line["branches"] = without_calls(line["branches"])
    (REPORT / "counts.json").write_text(json.dumps(counts))
    gcovr("--add-tracefile", REPORT / "counts.json", "--html-details", REPORT / "index.html", "--html-title", "vorelCore")
    return counts["files"]


def read_list():
    """Blocks of `file`, lines that begin with "- ", and a reason; between them empty lines."""
    listed = {}
    for block in LISTED.read_text().split("\n\n"):
        lines = [line for line in block.splitlines() if line.strip() and not line.startswith("#")]
        if lines:
            reason = " ".join(line.strip() for line in lines[1:] if not line.startswith("- "))
            if not reason:
                sys.exit(f"{LISTED.name}: no reason given for {lines[0]}")
            for line in lines[1:]:
                if line.startswith("- "):
                    listed[lines[0], " ".join(line[2:].split())] = reason
    return listed


def gaps_in(file):
    """The lines of a file that are not reached, or have a branch that is not: number, text, what is missing."""
    text = (ROOT / file["file"]).read_text().splitlines()
    for line in file["lines"]:
        missed = sum(branch["count"] == 0 for branch in line["branches"])
        if line["count"] == 0 or missed:
            what = "never reached" if line["count"] == 0 else f"{missed} of {len(line['branches'])} branches never taken"
            yield line["line_number"], " ".join(text[line["line_number"] - 1].split()), what


def percent(reached, of):
    return 100.0 * reached / of if of else 100.0


def table(files):
    """Prints the coverage by folder, and returns that of all."""
    rows = defaultdict(Counter)
    for file in files:
        for line in file["lines"]:
            for row in (str(Path(file["file"]).parent), "in all"):
                rows[row]["lines"] += 1
                rows[row]["reached"] += line["count"] > 0
                rows[row]["branches"] += len(line["branches"])
                rows[row]["taken"] += sum(branch["count"] > 0 for branch in line["branches"])
    print(f"\n{'':28}{'lines':>8}{'reached':>9}{'%':>8}{'branches':>10}{'taken':>8}{'%':>8}")
    for name in sorted(rows, key=lambda name: (name == "in all", name)):
        row = rows[name]
        print(f"{name:28}{row['lines']:8}{row['reached']:9}{percent(row['reached'], row['lines']):8.1f}"
              f"{row['branches']:10}{row['taken']:8}{percent(row['taken'], row['branches']):8.1f}")
    all_rows = rows["in all"]
    return {"lines": percent(all_rows["reached"], all_rows["lines"]),
            "branches": percent(all_rows["taken"], all_rows["branches"])}


def main():
    REPORT.mkdir(parents=True, exist_ok=True)
    files = measure()
    listed = read_list()
    reached = table(files)
    failed = False
    used = set()
    for file in files:
        for number, text, what in gaps_in(file):
            if (file["file"], text) in listed:
                used.add((file["file"], text))
            else:
                print(f"{file['file']}:{number}: {what}: {text}")
                failed = True
    for file, text in listed.keys() - used:
        print(f"{LISTED.name} lists what the tests reach, or what is no line any more: {file}: {text}")
        failed = True
    for what, aim in AIMS.items():
        if reached[what] < aim:
            print(f"{reached[what]:.1f} % of the {what} are reached; the aim is {aim:.0f} %")
            failed = True
    print(f"\nThe report: {REPORT / 'index.html'}")
    return int(failed)


if __name__ == "__main__":
    sys.exit(main())
