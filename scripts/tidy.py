"""Runs clang-tidy over the project's sources: ./dev check.

A result without findings is stored, for all clones of this user, under the digest of everything that it depends on: the
tool, its options and checks, the source, and the headers of the project that the source includes. So a second run
checks only changed sources. Sources that the last commit or the work tree changed, and sources that include a changed
header, are checked first.
"""

import argparse
import hashlib
import json
import os
import re
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor, as_completed
from functools import cache
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = ("include", "src", "tests", "examples", "benchmarks", "tools", "fuzz")
# Separate projects, and code that must not compile, are excluded.
LEFT_OUT = ("tests/consumer/", "tests/compile_fail/")
CACHE = Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "vorelCore" / "tidy"
CACHE_DAYS = 60
SETTINGS = (".clang-tidy", "tests/.clang-tidy", "benchmarks/.clang-tidy", "fuzz/.clang-tidy",
            "cmake/ProjectOptions.cmake")
WORK = ROOT / "build" / "tidy"
GCC_ONLY = r" -Winvalid-pch| -include \S*cmake_pch\.hxx| -fno-align-(jumps|labels)| -mstringop-strategy=\S+"
PROGRESS_SECONDS = 20
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.MULTILINE)
SEARCH = ("include", "src", "tests", "tools", "benchmarks", "examples", "fuzz", ".")


@cache
def included_by(path):
    """The project's headers that a file includes directly."""
    found = set()
    for name in INCLUDE.findall((ROOT / path).read_text()):
        for folder in (str(Path(path).parent), *SEARCH):
            header = os.path.normpath(os.path.join(folder, name))
            if (ROOT / header).is_file():
                found.add(header)
                break
    return found


@cache
def headers_of(source):
    """All headers of the project that a source includes, directly or indirectly."""
    found, pending = set(), [source]
    while pending:
        new = included_by(pending.pop()) - found
        found |= new
        pending += new
    return sorted(found)


def target_headers(compiler):
    """Options for the header folders of the target's compiler. clang uses its own intrinsics and stddef.h."""
    words = subprocess.run([compiler, "-xc++", "-E", "-v", os.devnull], check=True, capture_output=True, text=True).stderr
    for folder in words.split("#include <...> search starts here:")[1].split("End of search list")[0].split():
        folder = os.path.realpath(folder)
        if "/c++" in folder:
            yield f"--extra-arg-before=-isystem{folder}"
        elif "/lib/gcc/" not in folder:
            yield f"--extra-arg-before=-idirafter{folder}"


def write_commands(build):
    """Writes the compile commands of a build, but without the precompiled headers of GCC and without the options that
    only GCC has, because clang-tidy accepts neither. Returns the folder of the written file."""
    commands = json.loads((ROOT / "build" / build / "compile_commands.json").read_text())
    for entry in commands:
        entry["command"] = re.sub(GCC_ONLY, "", entry["command"])
    folder = WORK / build
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "compile_commands.json").write_text(json.dumps(commands))
    return folder


class Check:
    """clang-tidy with the commands of one build."""

    def __init__(self, build, options):
        self._options = ["-p", str(write_commands(build)), *options]
        version = subprocess.run(["clang-tidy", "--version"], check=True, capture_output=True, text=True).stdout
        shared = hashlib.sha256(repr((version, [option.replace(str(ROOT), ".") for option in self._options])).encode())
        for name in SETTINGS:
            shared.update((ROOT / name).read_bytes())
        self._shared = shared

    def mark(self, source):
        """The file that exists if `source` is known to have no findings."""
        digest = self._shared.copy()
        for path in (source, *headers_of(source)):
            digest.update(path.encode() + b"\0" + (ROOT / path).read_bytes())
        return CACHE / digest.hexdigest()

    def run(self, source):
        """Returns the findings; empty if there are none."""
        mark = self.mark(source)  # computed before the run, because the source may change meanwhile
        done = subprocess.run(["clang-tidy", "--quiet", f"--header-filter=^{ROOT}/({'|'.join(FOLDERS)})/", *self._options,
                               source], cwd=ROOT, capture_output=True, text=True, check=False)
        if done.returncode == 0:
            mark.touch()
            return ""
        lines = (done.stdout + done.stderr).splitlines()
        return "\n".join(line for line in lines if not re.match(r"\d+ (warning|error)|Error while processing", line))


def changed_files():
    """The files that the last commit and the work tree changed, without untracked files; empty without history."""
    done = subprocess.run(["git", "diff", "--name-only", "HEAD~1"], cwd=ROOT, capture_output=True, text=True, check=False)
    return set(done.stdout.split())


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--compiler", required=True, help="the target's compiler")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments = parser.parse_args()

    CACHE.mkdir(parents=True, exist_ok=True)
    for mark in CACHE.iterdir():
        if mark.stat().st_mtime < time.time() - CACHE_DAYS * 86400:
            mark.unlink()
    target = Check("release", ["--extra-arg-before=--target=x86_64-w64-mingw32", "--extra-arg-before=-nostdinc++",
                               *target_headers(arguments.compiler), "--extra-arg-before=-Wno-unknown-warning-option",
                               "--extra-arg-before=-Wno-unused-command-line-argument"])
    native = Check("fuzz", [])

    sources = [str(path.relative_to(ROOT)) for folder in FOLDERS for path in sorted((ROOT / folder).rglob("*.cpp"))]
    checks = [(native if source.startswith("fuzz/") else target, source) for source in sources
              if not source.startswith(LEFT_OUT)]
    pending = [(check, source) for check, source in checks if not check.mark(source).exists()]
    changed = changed_files()
    pending.sort(key=lambda item: changed.isdisjoint((item[1], *headers_of(item[1]))))
    print(f"{len(checks) - len(pending)} of {len(checks)} sources are known to be clean", flush=True)

    begin = last = time.monotonic()
    failed = 0
    with ThreadPoolExecutor(arguments.jobs) as pool:
        for done, result in enumerate(as_completed(pool.submit(check.run, source) for check, source in pending), 1):
            if findings := result.result():
                failed += 1
                print(findings, flush=True)
            if time.monotonic() - last >= PROGRESS_SECONDS:
                last = time.monotonic()
                print(f"[{done}/{len(pending)}] after {last - begin:.0f} s", flush=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
