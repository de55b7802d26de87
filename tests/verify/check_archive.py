"""Unpacks the archive of the tests into a folder whose name contains a space and a non-ASCII letter, and runs
verify.cmd twice in a new Wine prefix. In the first run, no case may fail. Before the second run, the script replaces
the list of tests with tests that fail in different ways, and verify.cmd must report each failure.

    check_archive.py <archive> <work folder> [suite]...

The new prefix contains only the programs of Wine, so the archive must contain every other file that verify.cmd needs.
"""

import os
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as xml
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
LAST_LINE = re.compile(r"(\d+) passed, (\d+) failed, (\d+) skipped, on Windows 10\.0\.\d+[\d.]* \(Wine [\d.]+\), "
                       r"as an administrator")
# For each kind of failure: the line of a test that fails in this way, and the expected message in summary.html.
FAILING = [
    ("broken.missing\tno_such_program.exe\tgtest\tparallel\t60\t", "cannot be started, error 2"),
    ("broken.exit\tverify.exe\tplain\tparallel\t60\tno_such_suite", "It ended with the exit code 0x2."),
    ("broken.empty\t{program}\tgtest\tparallel\t60\t--gtest_filter=No.Such", "It ran no case."),
    ("broken.slow\t{program}\tgtest\talone\t0\t", "It exceeded its time limit and was terminated."),
]


class Archive:
    def __init__(self, archive, work):
        shutil.rmtree(work, ignore_errors=True)
        self.folder = work / "with a blank and an é"
        zipfile.ZipFile(archive).extractall(self.folder)
        self.folder = next(self.folder.iterdir())
        self.environment = {"HOME": os.environ["HOME"], "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8",
                            "VOREL_WINEPREFIX": str(work.resolve() / "wine")}

    def wine(self, *words):
        return subprocess.run([ROOT / "cmake/wine-run", *words], env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=3000, check=False)

    def verify(self, suites):
        """The exit code of verify.cmd, the numbers in its last line, and the path of summary.html."""
        script = "Z:" + str((self.folder / "verify.cmd").resolve()).replace("/", "\\")
        run = self.wine("cmd", "/c", script, *suites)
        output = run.stdout.decode(errors="replace").splitlines()
        print(*output[-20:], sep="\n", flush=True)
        pages = list(self.folder.glob("results/*/summary.html"))
        expect(len(pages) == 1, f"verify.cmd wrote {len(pages)} files summary.html, expected 1")
        lines = [line for line in output if " passed, " in line and " failed, " in line]
        match = LAST_LINE.fullmatch(lines[-1].rstrip()) if lines else None
        expect(match, "the last line of verify.cmd does not have the expected format")
        return run.returncode, tuple(map(int, match.groups())), pages[0]


def expect(condition, text):
    if not condition:
        raise SystemExit(f"check_archive.py: {text}")


def text_of(page):
    """The text of summary.html, which must be well-formed."""
    return "".join(xml.parse(page).getroot().itertext())


def count(folder):
    """The numbers of passed, failed and skipped cases in the XML files."""
    outcomes = [0, 0, 0]
    for file in folder.glob("*.xml"):
        for case in xml.parse(file).getroot().iter("testcase"):
            if case.get("status") == "run":
                outcomes[1 if case.find("failure") is not None else 2 if case.get("result") == "skipped" else 0] += 1
    return tuple(outcomes)


def check_success(archive, suites):
    code, totals, page = archive.verify(suites)
    expect(code == 0, f"verify.cmd ended with {code}, expected 0")
    expect(totals[1] == 0 and totals[0] > 0, "a case failed, or no case passed")
    passed, failed, skipped = count(page.parent)
    probes = 0 if suites and "exploration" not in suites else 1
    expect(totals == (passed + probes, failed, skipped),
           f"the XML files have the totals {passed, failed, skipped}, verify.cmd printed {totals}")
    listed = [line.split("\t")[0] for line in (archive.folder / "bin/tests.txt").read_text().splitlines()]
    listed = [name for name in listed if not suites or name.split(".")[0] in suites]
    expect(len(list(page.parent.glob("*.xml"))) == len(listed) - probes,
           "the number of XML files is not the number of listed tests of GoogleTest")
    text = text_of(page)
    expect(f"{totals[0]} passed, 0 failed" in text, "summary.html has other totals than verify.cmd")
    for suite in {name.split(".")[0] for name in listed}:
        expect(suite in text, f"summary.html does not name {suite}")
    expect(not probes or "scripts with a difference" in text, "summary.html does not have the report of platform_probe")


def check_failures(archive):
    tests = archive.folder / "bin/tests.txt"
    program = tests.read_text().split("\t")[1]
    tests.write_text("".join(line.format(program=program) + "\n" for line, _ in FAILING))
    print("\nTests that must fail:")
    code, totals, page = archive.verify([])
    expect(code == 1, f"verify.cmd ended with {code} after tests that must fail, expected 1")
    expect(totals == (0, len(FAILING), 0), "verify.cmd did not count every test that must fail as failed")
    text = text_of(page)
    for line, message in FAILING:
        expect(line.split("\t")[0] in text and message in text,
               f"summary.html does not report {line.split()[0]} with “{message}”")


def main(archive, work, suites):
    unpacked = Archive(archive, work)
    unpacked.wine("--hold")
    try:
        check_success(unpacked, suites)
        check_failures(unpacked)
    finally:
        unpacked.wine("--release")


if __name__ == "__main__":
    main(Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3:])
