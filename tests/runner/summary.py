"""Prints a summary of a test run: the slowest tests, the cases that failed, and the totals.

    summary.py <registry> <JUnit file of CTest>...

<registry> is the folder that register_tests.py uses. The tests write their results into its folder `results`.

If a test of CTest runs GoogleTest cases, each case is counted. Any other test of CTest is counted as one case. If
several JUnit files contain the same test, its result in the last file is used. Prints the end of the output of each
failed test of CTest, and the first line of the output of each skipped test, which gives the reason. For skipped
GoogleTest cases, no reason is printed. The last line is "N passed, N failed, N skipped".
"""

import json
import re
import sys
import xml.etree.ElementTree as xml
from collections import Counter
from pathlib import Path

SLOWEST = 10
OUTPUT_LINES = 25


def cases_of(results):
    """Name and outcome of each case in a result file of GoogleTest."""
    for suite in json.loads(results.read_text(errors="replace"))["testsuites"]:
        for case in suite["testsuite"]:
            if case["status"] == "RUN":
                outcome = "failed" if "failures" in case else "skipped" if case["result"] == "SKIPPED" else "passed"
                yield f"{suite['name']}.{case['name']}", outcome


def main(registry, reports):
    tests = {}
    for report in reports:
        tests |= {test.get("name"): test for test in xml.parse(report).getroot().iter("testcase")}
    outcomes, failed = Counter(), []
    for name, test in tests.items():
        outcome = {"run": "passed", "fail": "failed"}.get(test.get("status"), "skipped")
        results = registry / "results" / (re.sub(r"[^\w.-]", "_", name) + ".json")
        # The result of CTest is used if the program ended before it wrote results, or failed although no case failed.
        cases = dict(cases_of(results)) if results.exists() else {}
        if not cases or (outcome == "failed" and "failed" not in cases.values()):
            cases = {name: outcome}
        outcomes.update(cases.values())
        failed += [case if case == name else f"{name}: {case}" for case, found in cases.items() if found == "failed"]

    slowest = sorted(tests.values(), key=lambda test: -float(test.get("time")))[:SLOWEST]
    print("\nThe slowest tests:")
    for test in slowest:
        print(f"{float(test.get('time')):8.1f} s  {test.get('name')}")
    for name, test in tests.items():
        if test.get("status") == "fail":
            output = (test.findtext("system-out") or "").rstrip().splitlines()
            print(f"\nOutput of {name}:", *output[-OUTPUT_LINES:], sep="\n    ")
    skipped = [f"{name}: {(test.findtext('system-out') or '').strip().partition(chr(10))[0]}"
               for name, test in tests.items() if test.find("skipped") is not None]
    if skipped:
        print("\nSkipped:", *skipped, sep="\n  ")
    if failed:
        print("\nFailed:", *failed, sep="\n  ")
    print(f"\n{outcomes['passed']} passed, {outcomes['failed']} failed, {outcomes['skipped']} skipped")


if __name__ == "__main__":
    main(Path(sys.argv[1]), sys.argv[2:])
