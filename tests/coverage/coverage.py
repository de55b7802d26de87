"""Reports the lines and branches of the library that the tests do not reach, from the counts of the coverage build.

Run it as `./dev coverage`. For the compiler, a call that may throw is a branch with two edges: to the next statement
and to the landing pad. Tests cannot make every call throw, and counting only the first edge would make the result look
better than it is. So both edges of a call are ignored, and only the branches in the source code count.

Every line that no test reaches, and every line with a branch that no test takes, must be listed in unreached.txt with
the reason. Lines such as "});" do not count (see is_brace). If folders are given, only the tests of these folders
have run, and only the percentages of these folders are checked.
"""

import json
import os
import subprocess
import sys
from collections import Counter, defaultdict
from functools import cache
from itertools import chain
from multiprocessing.pool import ThreadPool
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build" / "coverage"
REPORT = BUILD / "report"
OWN = ("include/", "src/")
LISTED = Path(__file__).with_name("unreached.txt")
MINIMUMS = {"lines": 98.0, "branches": 90.0}
# If only some folders are tested, no test reaches the template instances that other folders use.
PART_MINIMUMS = MINIMUMS | {"branches": 88}


def read_counts(notes):
    """Reads the gcov counts of one object file: file, line number, count and branches for each line of the library."""
    read = subprocess.run(["x86_64-w64-mingw32-gcov-posix", "--json-format", "--branch-probabilities", "--stdout", notes],
                          cwd=BUILD, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    found = []
    for unit in read.stdout.decode().splitlines():
        for file in json.loads(unit)["files"] if unit else []:
            path = os.path.relpath(BUILD / file["file"], ROOT)
            if path.startswith(OWN):
                found += [(path, line["line_number"], line["count"], line["branches"]) for line in file["lines"]]
    return found


def without_calls(branches):
    """The branches of a line, without the two edges of each call. gcov lists the edge to the landing pad after the edge
    to the next statement."""
    kept = []
    for branch in branches:
        if not branch["throw"]:
            kept.append(branch)
        elif kept and kept[-1]["fallthrough"]:
            kept.pop()
    return kept


@cache
def text_of(file):
    return (ROOT / file).read_text().splitlines()


def is_brace(file, number):
    """Whether the line is empty or has only braces, parentheses, semicolons and commas. The counts of such a line
    belong to the destructors at the end of a block."""
    return not text_of(file)[number - 1].strip(" {}();,")


def measure():
    """Adds up the counts of all objects, and returns them in the format of gcovr. gcov reports a line of a template
    once for each instance. If the branches of several instances have the same kinds in the same order, the counts of
    corresponding branches are added up. Otherwise, the branches of each instance are listed separately."""
    counts, forms = Counter(), defaultdict(Counter)
    with ThreadPool() as pool:
        for line in chain.from_iterable(pool.imap_unordered(read_counts, sorted(BUILD.glob("**/*.gcda")))):
            file, number, count, branches = line
            counts[file, number] += count
            form = tuple((branch["throw"], branch["fallthrough"]) for branch in branches)
            for index, branch in enumerate(without_calls(branches)):
                forms[file, number][form, index] += branch["count"]
    files = {}
    for (file, number), count in sorted(counts.items()):
        branches = [{"count": taken, "fallthrough": False, "throw": False} for taken in forms[file, number].values()]
        if is_brace(file, number):
            continue
        files.setdefault(file, {"file": file, "functions": [], "lines": []})["lines"].append(
            {"line_number": number, "count": count, "branches": branches, "gcovr/noncode": False,
             "gcovr/excluded": False})
    return list(files.values())


def write_report(files):
    counts = REPORT / "counts.json"
    counts.write_text(json.dumps({"files": files, "gcovr/format_version": "0.3"}))
    subprocess.run(["gcovr", "--root", ROOT, "--add-tracefile", counts, "--html-details", REPORT / "index.html",
                    "--html-title", "vorelCore"], cwd=REPORT, check=True)


def read_list():
    """Reads blocks separated by empty lines. Each block has a file, lines that begin with "- ", and a reason. Lines
    that begin with "#" are comments."""
    listed = {}
    for block in LISTED.read_text().split("\n\n"):
        lines = [line for line in block.splitlines() if line.strip() and not line.startswith("#")]
        if lines:
            reason = " ".join(line.strip() for line in lines[1:] if not line.startswith("- "))
            if not reason:
                sys.exit(f"{LISTED.name}: missing reason for {lines[0]}")
            for line in lines[1:]:
                if line.startswith("- "):
                    listed[lines[0], " ".join(line[2:].split())] = reason
    return listed


def gaps_in(file):
    """The lines of a file that are not reached, or have a branch that is not taken: number, text, missing part."""
    text = text_of(file["file"])
    for line in file["lines"]:
        missed = sum(branch["count"] == 0 for branch in line["branches"])
        if line["count"] == 0 or missed:
            what = "not reached" if line["count"] == 0 else f"{missed} of {len(line['branches'])} branches not taken"
            yield line["line_number"], " ".join(text[line["line_number"] - 1].split()), what


def percent(reached, of):
    return 100.0 * reached / of if of else 100.0


def table(files):
    """Prints the coverage by folder, and returns the total."""
    rows = defaultdict(Counter)
    for file in files:
        for line in file["lines"]:
            for row in (str(Path(file["file"]).parent), "total"):
                rows[row]["lines"] += 1
                rows[row]["reached"] += line["count"] > 0
                rows[row]["branches"] += len(line["branches"])
                rows[row]["taken"] += sum(branch["count"] > 0 for branch in line["branches"])
    print(f"\n{'':28}{'lines':>8}{'reached':>9}{'%':>8}{'branches':>10}{'taken':>8}{'%':>8}")
    for name in sorted(rows, key=lambda name: (name == "total", name)):
        row = rows[name]
        print(f"{name:28}{row['lines']:8}{row['reached']:9}{percent(row['reached'], row['lines']):8.1f}"
              f"{row['branches']:10}{row['taken']:8}{percent(row['taken'], row['branches']):8.1f}")
    all_rows = rows["total"]
    return {"lines": percent(all_rows["reached"], all_rows["lines"]),
            "branches": percent(all_rows["taken"], all_rows["branches"])}


def report_gaps(files):
    """Prints the gaps that are not listed, and the listed lines that have no gap or no longer exist. Returns whether it
    printed any."""
    listed = read_list()
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
        print(f"{LISTED.name} lists a line that the tests reach, or that no longer exists: {file}: {text}")
        failed = True
    return failed


def main(folders):
    REPORT.mkdir(parents=True, exist_ok=True)
    files = [file for file in measure() if not folders or Path(file["file"]).parent.name in folders]
    write_report(files)
    reached = table(files)
    failed = not folders and report_gaps(files)
    for what, minimum in (PART_MINIMUMS if folders else MINIMUMS).items():
        if reached[what] < minimum:
            print(f"{reached[what]:.1f} % of the {what} are reached; the minimum is {minimum:.0f} %")
            failed = True
    print(f"\nReport: {REPORT / 'index.html'}")
    return int(failed)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
