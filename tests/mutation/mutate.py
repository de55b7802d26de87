"""Makes small changes to the sources, one at a time, and reports the changes that no test detects.

Run it as `./dev mutate`. It needs the release build. The sample is distributed over the files in scope, with more
changes of larger files. A hash of the changed line selects the changes, so the sample is the same in every run. A
change that does not compile, or does not affect the machine code, is replaced by the next change of its file. A change
that behaves like the original is listed in equivalent.txt, with the reason, and is skipped.
"""

import argparse
import json
import math
import queue
import sys
import threading
import time
from collections import Counter, defaultdict
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from changes import changes_of
from workbench import Bench, Build, LibraryDoesNotCompile, TestDoesNotCompile

ROOT = Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutation"
SCOPE = ["src/algorithms", "src/exceptions", "src/sync", "src/secure", "src/core/KernelHandle.cpp",
         "include/vorel/core/KernelHandle.h", "include/vorel/core/Protocol.h", "include/vorel/core/Guard.h"]
LISTED = Path(__file__).with_name("equivalent.txt")
SURVIVORS = WORK / "survivors.txt"
JOURNAL = WORK / "journal"
QUICK_COUNT = 10
AIM_PERCENT = 95


def read_list(path):
    """Reads a list of changes, whose entries are separated by empty lines. The lines of an entry are the file, `- ` and
    the old line, `+ ` and the new line, and in equivalent.txt a reason. Returns a dictionary: key of the change →
    reason."""
    entries = {}
    for block in path.read_text().split("\n\n") if path.exists() else []:
        lines = [line.strip() for line in block.splitlines() if line.strip() and not line.startswith("#")]
        if lines:
            file, before, after, *reason = lines
            if not (before.startswith("- ") and after.startswith("+")):
                sys.exit(f"{path}: the lines after {file} must begin with \"- \" and \"+ \": {before}")
            entries[file, before[2:], after[2:]] = " ".join(reason)
    return entries


def read_journal():
    """The results of an interrupted run, without survivors. Survivors are tried again, because tests may have
    changed."""
    lines = JOURNAL.read_text().splitlines() if JOURNAL.exists() else []
    return {tuple(key): (result, test) for key, result, test in map(json.loads, lines) if result != "survived"}


def files_of(scope):
    for entry in scope:
        path = ROOT / entry
        if path.is_file():
            yield entry
        elif path.is_dir():
            yield from (str(file.relative_to(ROOT)) for file in sorted(path.iterdir()) if file.suffix in (".h", ".cpp"))
        else:
            sys.exit(f"no such source: {entry}")


def shares(sizes, count):
    """The number of changes to try in each file: proportional to the square root of the number of possible changes,
    to favour small files."""
    weights = {file: math.sqrt(size) for file, size in sizes.items() if size}
    total = sum(weights.values())
    exact = {file: min(count * weight / total, sizes[file]) for file, weight in weights.items()}
    taken = {file: math.floor(share) for file, share in exact.items()}
    for file in sorted(exact, key=lambda file: taken[file] - exact[file])[:count - sum(taken.values())]:
        taken[file] += 1
    return {file: share for file, share in taken.items() if share}


def steps_for(change, build):
    """Pairs of a program and a filter for its tests, in the order in which they run.

    Tests of the changed file and of the files that use it come first, then all other tests. In both groups, programs
    that link the DLL come first, because one compilation serves all of them."""
    folder = Path(change.path).parent.name
    sources = {Path(change.path).stem.removesuffix("Avx2")}
    for output in build.made_of(change.path):
        if "/vorelCoreObjects.dir/" in output:
            sources.add(Path(output).name.split(".", 1)[0])
    programs = sorted(build.programs.values(),
                      key=lambda program: (not program.uses_dll, program.name != folder, program.limit_seconds))
    about = {program: program.suites_about(change.path, sources) for program in programs}
    for program in programs:
        if about[program]:
            yield program, patterns(about[program])
    for program in programs:
        yield program, "*" + ("-" + patterns(about[program]) if about[program] else "")


def patterns(suites):
    return ":".join(f"{suite}.*:{suite}/*:*/{suite}.*:*/{suite}/*" for suite in suites)


def judge(change, bench, build):
    """Returns the result of a change, and the test that killed it."""
    bench.put(change.path, change.applied((ROOT / change.path).read_text()))
    differs = False
    try:
        for program, test_filter in steps_for(change, build):
            if not bench.build(program):
                continue
            differs = True
            failed = bench.run(program, test_filter)
            if failed and (failed.endswith("(hangs)") or bench.confirms(program, failed, test_filter)):
                return "killed", f"{program.name}.{failed}"
    except LibraryDoesNotCompile:
        return "uncompiled", ""
    except TestDoesNotCompile as error:
        return "killed", f"{Path(str(error)).name.removesuffix('.obj')} (does not compile)"
    return ("survived" if differs else "same code"), ""


class Sample:
    """Selects the changes to try, and stores the results. Several benches may use it at the same time."""

    def __init__(self, changes, slots, listed, judged):
        self._changes = {file: iter(found) for file, found in changes.items()}
        self._slots = queue.SimpleQueue()
        for file in slots:
            self._slots.put(file)
        self._listed, self._lock, self._count = listed, threading.Lock(), len(slots)
        self._judged = judged
        self._journal = JOURNAL.open("a" if judged else "w")
        self.results = []

    def next(self):
        """The next change, or None if the sample is complete."""
        with self._lock:
            while True:
                try:
                    file = self._slots.get_nowait()
                except queue.Empty:
                    return None
                for change in self._changes[file]:
                    if change.key in self._listed:
                        self.results.append((change, "listed", ""))
                    elif change.key not in self._judged:
                        return change
                    elif self._enter(change, *self._judged[change.key]):
                        break

    def _enter(self, change, result, test):
        """Returns whether the change counts. If it does not, another change of its file replaces it."""
        self.results.append((change, result, test))
        return result in ("killed", "survived")

    def settle(self, change, result, test, seconds):
        with self._lock:
            if not self._enter(change, result, test):
                self._slots.put(change.path)
            print(json.dumps([change.key, result, test]), file=self._journal, flush=True)
            tried = sum(result in ("killed", "survived") for _, result, _ in self.results)
            if result != "uncompiled":
                where = test and f" by {test}"
                print(f"[{tried:3}/{self._count}] {result}{where} in {seconds:.0f} s: {change}", flush=True)


def work(sample, bench, build):
    while change := sample.next():
        begin = time.monotonic()
        sample.settle(change, *judge(change, bench, build), time.monotonic() - begin)


def report(results):
    """Prints the score by folder. Returns the survivors, and the percentage that was killed."""
    columns = ["tried", "killed", "by timeout", "survived", "same code", "listed"]
    table = defaultdict(Counter)
    for change, result, test in results:
        for row in (str(Path(change.path).parent), "total"):
            table[row][result] += 1
            table[row]["tried"] += result in ("killed", "survived")
            table[row]["by timeout"] += test.endswith("(hangs)")
    print(f"\n{'':24}" + "".join(f"{column:>12}" for column in columns))
    for row in sorted(table, key=lambda row: (row == "total", row)):
        print(f"{row:24}" + "".join(f"{table[row][column]:12}" for column in columns))
    score = table["total"]
    percent = 100 * score["killed"] / max(score["tried"], 1)
    print(f"\n{percent:.1f} % of {score['tried']} changes were killed;"
          f" {score['uncompiled']} other changes did not compile and were replaced")
    return [change for change, result, _ in results if result == "survived"], percent


def arguments():
    parser = argparse.ArgumentParser(prog="./dev mutate", description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("scope", nargs="*", default=SCOPE, help="sources or folders; default: SCOPE in this script")
    parser.add_argument("--count", type=int, default=240, help="number of changes to try (default: %(default)s)")
    parser.add_argument("--seed", type=int, default=1, help="seed of the sample (default: %(default)s)")
    parser.add_argument("--jobs", type=int, default=2, help="changes tried at the same time (default: %(default)s)")
    parser.add_argument("--quick", action="store_true", help=f"try {QUICK_COUNT} changes in different .cpp files")
    parser.add_argument("--again", action="store_true", help="try only the survivors of the last run")
    parser.add_argument("--continue", dest="go_on", action="store_true", help="continue an interrupted run")
    return parser.parse_args()


def choose(options, changes):
    """The files whose changes are tried; a file occurs once per change."""
    sizes = {file: len(found) for file, found in changes.items()}
    if options.again:
        return [file for file, size in sizes.items() for _ in range(size)]
    if options.quick:
        first = {file: found[0].rank for file, found in changes.items() if found and file.endswith(".cpp")}
        return sorted(first, key=first.get)[:QUICK_COUNT]
    slots = shares(sizes, options.count)
    return [file for file, share in slots.items() for _ in range(share)]


def main():
    options = arguments()
    listed = read_list(LISTED)
    build = Build(ROOT, ROOT / "build" / "release")
    files = list(files_of(SCOPE if options.again else options.scope))
    changes = {file: changes_of(file, (ROOT / file).read_text(), options.seed) for file in files}
    known = {change.key for found in changes.values() for change in found}
    stale = [key for key in listed if key[0] in changes and key not in known]
    for key in stale:
        print(f"{LISTED.name} lists a change that no longer exists: {key[0]}\n    - {key[1]}\n    + {key[2]}")
    if options.again:
        survivors = read_list(SURVIVORS)
        changes = {file: [change for change in found if change.key in survivors] for file, found in changes.items()}

    WORK.mkdir(parents=True, exist_ok=True)
    benches = []
    try:
        for number in range(max(1, options.jobs)):
            benches.append(Bench(build, WORK / str(number)))
        if not options.quick:
            for program in build.programs.values():
                if failed := benches[0].measure(program):
                    sys.exit(f"{program.name}.{failed} fails with the unchanged library")
        sample = Sample(changes, choose(options, changes), listed, read_journal() if options.go_on else {})
        with ThreadPoolExecutor() as pool:
            for done in [pool.submit(work, sample, bench, build) for bench in benches]:
                done.result()
    finally:
        for bench in benches:
            bench.close()

    survivors, percent = report(sample.results)
    SURVIVORS.write_text("\n".join(f"{change.path}\n- {change.before}\n+ {change.after}\n" for change in survivors))
    for change in survivors:
        print(f"\nsurvived: {change}")
    return 1 if stale or survivors or percent < AIM_PERCENT else 0


if __name__ == "__main__":
    sys.exit(main())
