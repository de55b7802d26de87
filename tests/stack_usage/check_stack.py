"""Checks the stack usage of the diagnostic channels: the functions warn, debug and log of the class Exception, and
their variants.

Compiles the sources that handle a line of the log, reads the compiler's call graph with the size of each frame, and
finds, for each channel, the chain of calls that uses the most stack. Functions in other sources are not included: the
runtime and the system, the functions that throw, and the check whether a debug target is on.

    check_stack.py <source folder> <work folder> <compiler> <flag>...
"""

import pathlib
import re
import subprocess
import sys

SOURCES = [
    "LibraryState.cpp",
    "core/BaseString.cpp",
    "core/Format.cpp",
    "platform/IgnoreInvalidParameters.cpp",
    "exceptions/ExceptionLog.cpp",
    "exceptions/ErrorLog.cpp",
    "exceptions/LocaleText.cpp",
    "exceptions/LogFile.cpp",
    "exceptions/LogLine.cpp",
    "exceptions/LogPath.cpp",
    "exceptions/ThreadLogging.cpp",
    "algorithms/Utf8EncodeAvx2.cpp",
    "core/CriticalSections.cpp",
    "platform/ComputerName.cpp",
    "platform/SystemClock.cpp",
]

# In bytes. A thread with the smallest stack, 64 KB, may already have used half of it.
LIMITS = {"wide": 20 * 1024, "narrow": 28 * 1024}

CHANNELS = re.compile(r"_ZN5vorel9Exception\d+(warn|swigwarn|warnClass|debug|vDebug|debugClass|log|logClass)E(\w+)")
NUMBER_OF_CHANNELS = 13

RETURN_ADDRESS = 8
NODE = re.compile(r'^node: \{ title: "([^"]*)" label: "([^"]*)"')
EDGE = re.compile(r'^edge: \{ sourcename: "([^"]*)" targetname: "([^"]*)"')
FRAME = re.compile(r"\\n(\d+) bytes \(([^)]*)\)")


class CallGraph:
    def __init__(self):
        self.frames = {}  # size in bytes, with the return address, by linker name
        self.calls = {}

    def read(self, path):
        for line in path.read_text().splitlines():
            if node := NODE.match(line):
                title, label = node.groups()
                if frame := FRAME.search(label):
                    if "dynamic" in frame[2]:
                        sys.exit(f"{title}: the size of its frame is not constant")
                    self.frames[title] = int(frame[1]) + RETURN_ADDRESS
            elif edge := EDGE.match(line):
                self.calls.setdefault(edge[1], set()).add(edge[2])

    def deepest(self, title, active=()):
        """The chain of calls from `title` that uses the most stack: its size in bytes, and its functions. A function
        that is not in the sources, and a recursive call, have the size 0."""
        if title not in self.frames or title in active:
            return 0, []
        chains = [self.deepest(called, (*active, title)) for called in self.calls.get(title, ())]
        size, chain = max(chains, default=(0, []))
        return size + self.frames[title], [title, *chain]


def main():
    sources, work, compiler, *flags = sys.argv[1:]
    work = pathlib.Path(work)
    work.mkdir(parents=True, exist_ok=True)
    graph = CallGraph()
    for source in SOURCES:
        target = work / source.replace("/", "-").replace(".cpp", ".o")
        own = ["-mavx2"] if source.endswith("Avx2.cpp") else []
        subprocess.run(
            [compiler, *flags, *own, "-fcallgraph-info=su", "-c", f"{sources}/{source}", "-o", str(target)], check=True
        )
        graph.read(target.with_suffix(".ci"))
    channels = list(filter(None, map(CHANNELS.fullmatch, sorted(graph.frames))))
    if len(channels) != NUMBER_OF_CHANNELS:
        sys.exit(f"{len(channels)} channels found, expected {NUMBER_OF_CHANNELS}")
    failed = False
    for channel in channels:
        width = "wide" if "w" in channel[2] else "narrow"
        size, chain = graph.deepest(channel[0])
        print(f"{channel[1]:10} {width:6} {size:6} of {LIMITS[width]} bytes")
        if size > LIMITS[width]:
            failed = True
            for function in chain:
                print(f"    {graph.frames[function]:6} {function}")
    sys.exit(failed)


main()
