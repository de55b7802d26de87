"""Changes the sources in small ways, one at a time, and tells which changes no test notices.

Run it as `./dev mutate`; it expects the release build to be there. Every file in scope gives a share of the changes,
chosen by a hash of the changed line, so that the sample stays the same from run to run. A change that does not
compile, or leaves the machine code as it is, is replaced by the next one of its file. A change that behaves as the
original does is listed in equivalent.txt, with the reason; it is not tried.
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
SCOPE = ["src/kernels", "src/exceptions", "src/sync", "src/secure", "src/core/KernelHandle.cpp",
         "include/vorel/core/KernelHandle.h", "include/vorel/core/Protocol.h", "include/vorel/core/Guard.h"]
LISTED = Path(__file__).with_name("equivalent.txt")
SURVIVORS = WORK / "survivors.txt"
JOURNAL = WORK / "journal"
QUICK_COUNT = 10
AIM_PERCENT = 95


def read_list(path):
    """Blocks of `file`, `- line`, `+ line`, and a reason; between them empty lines. Returns keys as changes have."""
    entries = {}
    for block in path.read_text().split("\n\n") if path.exists() else []:
        lines = [line.strip() for line in block.splitlines() if line.strip() and not line.startswith("#")]
        if lines:
            file, before, after, *reason = lines
            if not (before.startswith("- ") and after.startswith("+")):
                sys.exit(f"{path}: not a change of {file}: {before}")
            entries[file, before[2:], after[2:]] = " ".join(reason)
    return entries


def read_journal():
    """What an interrupted run found out. What survived is tried again: there may be a test for it now."""
    lines = JOURNAL.read_text().splitlines() if JOURNAL.exists() else []
    return {tuple(key): (result, test) for key, result, test in map(json.loads, lines) if result != "survived"}


def files_of(scope):
    for place in scope:
        path = ROOT / place
        if path.is_file():
            yield place
        elif path.is_dir():
            yield from (str(file.relative_to(ROOT)) for file in sorted(path.iterdir()) if file.suffix in (".h", ".cpp"))
        else:
            sys.exit(f"no such source: {place}")


def shares(sizes, count):
    """How many changes each file gives: by the root of what it offers, so that large files do not take all."""
    weights = {file: math.sqrt(size) for file, size in sizes.items() if size}
    total = sum(weights.values())
    exact = {file: min(count * weight / total, sizes[file]) for file, weight in weights.items()}
    taken = {file: math.floor(share) for file, share in exact.items()}
    for file in sorted(exact, key=lambda file: taken[file] - exact[file])[:count - sum(taken.values())]:
        taken[file] += 1
    return {file: share for file, share in taken.items() if share}


def steps_for(change, build):
    """The order in which tests are asked: those about the file and about what uses it, then its folder, then all.

    What links the DLL comes first, because one compilation serves all of its programs."""
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
    """Returns what became of a change, and which test noticed it."""
    bench.put(change.path, change.applied((ROOT / change.path).read_text()))
    differs = False
    try:
        for program, test_filter in steps_for(change, build):
            if not bench.build(program):
                continue
            differs = True
            noticed = bench.run(program, test_filter)
            if noticed and (noticed.endswith("(hangs)") or bench.confirms(program, noticed, test_filter)):
                return "noticed", f"{program.name}.{noticed}"
    except LibraryDoesNotCompile:
        return "uncompiled", ""
    except TestDoesNotCompile as error:
        return "noticed", f"{Path(str(error)).name.removesuffix('.obj')} (does not compile)"
    return ("survived" if differs else "same code"), ""


class Sample:
    """Hands out the changes to try, and keeps the score. Several benches may ask at the same time."""

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
        """The next change, or None when there are enough."""
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
        """Returns whether the change counts; one that does not is replaced by another of its file."""
        self.results.append((change, result, test))
        return result in ("noticed", "survived")

    def settle(self, change, result, test, seconds):
        with self._lock:
            if not self._enter(change, result, test):
                self._slots.put(change.path)
            print(json.dumps([change.key, result, test]), file=self._journal, flush=True)
            tried = sum(result in ("noticed", "survived") for _, result, _ in self.results)
            if result != "uncompiled":
                where = test and f" by {test}"
                print(f"[{tried:3}/{self._count}] {result}{where} in {seconds:.0f} s: {change}", flush=True)


def work(sample, bench, build):
    while change := sample.next():
        begin = time.monotonic()
        sample.settle(change, *judge(change, bench, build), time.monotonic() - begin)


def report(results):
    """Prints the score by folder. Returns the survivors, and the percentage that was noticed."""
    columns = ["tried", "noticed", "by a hang", "survived", "same code", "listed"]
    table = defaultdict(Counter)
    for change, result, test in results:
        for row in (str(Path(change.path).parent), "in all"):
            table[row][result] += 1
            table[row]["tried"] += result in ("noticed", "survived")
            table[row]["by a hang"] += test.endswith("(hangs)")
    print(f"\n{'':24}" + "".join(f"{column:>12}" for column in columns))
    for row in sorted(table, key=lambda row: (row == "in all", row)):
        print(f"{row:24}" + "".join(f"{table[row][column]:12}" for column in columns))
    score = table["in all"]
    percent = 100 * score["noticed"] / max(score["tried"], 1)
    print(f"\n{percent:.1f} % of {score['tried']} changes are noticed;"
          f" {score['uncompiled']} more did not compile and were replaced")
    return [change for change, result, _ in results if result == "survived"], percent


def arguments():
    parser = argparse.ArgumentParser(prog="./dev mutate", description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("scope", nargs="*", default=SCOPE, help="sources or folders; default: kernels, exceptions, log, locks")
    parser.add_argument("--count", type=int, default=240, help="changes to try (default: %(default)s)")
    parser.add_argument("--seed", type=int, default=1, help="which changes the sample takes (default: %(default)s)")
    parser.add_argument("--jobs", type=int, default=2, help="how many are tried at the same time (default: %(default)s)")
    parser.add_argument("--quick", action="store_true", help=f"{QUICK_COUNT} changes of sources that compile fast")
    parser.add_argument("--again", action="store_true", help="only those that survived the last time")
    parser.add_argument("--continue", dest="go_on", action="store_true", help="go on where the last run was interrupted")
    return parser.parse_args()


def choose(options, changes):
    """The files that give a change, one for each change."""
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
        print(f"{LISTED.name} lists a change that is none any more: {key[0]}\n    - {key[1]}\n    + {key[2]}")
    if options.again:
        survivors = read_list(SURVIVORS)
        changes = {file: [change for change in found if change.key in survivors] for file, found in changes.items()}

    WORK.mkdir(parents=True, exist_ok=True)
    benches = [Bench(build, WORK / str(number)) for number in range(max(1, options.jobs))]
    try:
        if not options.quick:
            for program in build.programs.values():
                if failed := benches[0].measure(program):
                    sys.exit(f"without any change, {program.name}.{failed} fails")
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
        print(f"\nnobody notices {change}")
    return 1 if stale or survivors or percent < AIM_PERCENT else 0


if __name__ == "__main__":
    sys.exit(main())
