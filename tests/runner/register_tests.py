"""Writes the CTest script that registers the cases of all GoogleTest programs. CTest runs the script when it starts.

    register_tests.py <folder>
    register_tests.py <folder> --list [label]...

The second form prints the tests, or only the tests with the given labels, for a machine that has neither CTest nor
Python. Each test is a line of fields that are separated by tabs: the name of the test; the file name of its program;
the word "gtest"; the word "alone" if no other test may run at the same time, otherwise "parallel"; the time limit in
seconds; the arguments of the program.

<folder> has a description of each program (<name>.program.json): its path and label, the arguments and properties of
its tests. The script is <folder>/tests.cmake. A test of CTest is a test file, or a part of a large file; its cases
share a process. The following cases run in separate processes:

  - the cases of a file with the comment `// test-runner: one process per case`, because they need a fresh process;
  - the cases of a program whose description says so;
  - all cases if VOREL_TEST_UNIT is "case", so that each can be selected by its name.

In the script, a program that is not built has one test, which fails. With --list, such a program ends the run with an
error.
"""

import json
import math
import os
import re
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

TESTS = Path(__file__).resolve().parents[1]
MAX_CASES = 150
MARK = re.compile(r"^// test-runner: one process per case$", re.MULTILINE)


def bracket(text):
    """`text` as an argument that a CMake command takes literally."""
    return f"[==[{text}]==]"


class Program:
    def __init__(self, description):
        values = json.loads(description.read_text())
        self.folder = description.parent
        self.label, self.path = values["label"], Path(values["program"])
        self.emulator = [word for word in values["emulator"].split(";") if word]
        self.arguments = [word for word in values["arguments"].split(";") if word]
        self.properties = values["properties"].split(";")
        self.one_per_case = values["unit"] == "case" or os.environ.get("VOREL_TEST_UNIT") == "case"
        self._listing = self.folder / f"{self.label}.cases.json"

    def cases(self):
        """The cases of each test file: path → (suite, case) pairs. Disabled cases are omitted."""
        if not self._listing.exists() or self._listing.stat().st_mtime < self.path.stat().st_mtime:
            # The path of the output is relative, because an absolute path would have to be translated for Wine.
            subprocess.run([*self.emulator, self.path, "--gtest_list_tests", f"--gtest_output=json:{self._listing.name}"],
                           cwd=self.folder, check=True, stdout=subprocess.DEVNULL, timeout=120)
        files = defaultdict(list)
        for suite in json.loads(self._listing.read_text())["testsuites"]:
            for case in suite["testsuite"]:
                if not case["name"].startswith("DISABLED_"):
                    # The compiler cache may return an object that was compiled in another clone, so only the end of
                    # the path is used.
                    path = case["file"].replace("\\", "/").rpartition("/tests/")[2]
                    files[TESTS / path].append((suite["name"], case["name"]))
        return files

    def tests(self):
        """The tests of CTest: name → filter of GoogleTest."""
        files = self.cases()
        homes = defaultdict(set)
        for file, cases in files.items():
            for suite, _ in cases:
                homes[suite].add(file)
        tests = {}
        for file, cases in files.items():
            parts = math.ceil(len(cases) / MAX_CASES)
            # A program that was not built again may have cases of a file that no longer exists.
            if self.one_per_case or (file.exists() and MARK.search(file.read_text())):
                tests |= {f"{self.label}.{suite}.{case}": f"{suite}.{case}" for suite, case in cases}
            elif parts > 1:
                tests |= {f"{self.label}.{file.stem}.{part + 1}": ":".join(map(".".join, cases[part::parts]))
                          for part in range(parts)}
            else:
                patterns = {f"{suite}.*" if len(homes[suite]) == 1 else f"{suite}.{case}": None for suite, case in cases}
                tests[f"{self.label}.{file.stem}"] = ":".join(patterns) + "-*.DISABLED_*"
        return tests

    def listing(self):
        limit = self.properties[self.properties.index("TIMEOUT") + 1]
        mode = "alone" if "RUN_SERIAL" in self.properties else "parallel"
        for name, test_filter in self.tests().items():
            arguments = " ".join([f"--gtest_filter={test_filter}", *self.arguments])
            yield "\t".join([re.sub(r"[^\w.-]", "_", name), self.path.name, "gtest", mode, limit, arguments])

    def script(self):
        if not self.path.exists():
            name = bracket(f"{self.label}.NOT_BUILT")
            command = [sys.executable, "-c", f"raise SystemExit('{self.path} is not built')"]
            return [f"add_test({name} {' '.join(map(bracket, command))})",
                    f"set_tests_properties({name} PROPERTIES LABELS {self.label})"]
        lines = []
        for name, test_filter in self.tests().items():
            result = re.sub(r"[^\w.-]", "_", name)
            words = [*self.emulator, self.path, f"--gtest_filter={test_filter}", *self.arguments,
                     f"--gtest_output=json:results/{result}.json"]
            lines.append(f"add_test({bracket(name)} {' '.join(map(bracket, words))})")
            lines.append(f"set_tests_properties({bracket(name)} PROPERTIES LABELS {self.label}"
                         f" WORKING_DIRECTORY {bracket(self.folder)} {' '.join(self.properties)})")
        return lines


def programs(folder):
    return map(Program, sorted(folder.glob("*.program.json")))


def write_script(folder):
    lines = [line for program in programs(folder) for line in program.script()]
    (folder / "tests.cmake").write_text("\n".join(lines) + "\n")


def print_list(folder, labels):
    for program in programs(folder):
        if not labels or program.label in labels:
            print(*program.listing(), sep="\n")


if __name__ == "__main__":
    if sys.argv[2:3] == ["--list"]:
        print_list(Path(sys.argv[1]), sys.argv[3:])
    else:
        write_script(Path(sys.argv[1]))
