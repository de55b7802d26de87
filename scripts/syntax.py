"""Checks that the sources compile in environments for which this project is not built. ./dev check runs this script.

    syntax.py [--jobs <count>]

Each environment is clang with a target, a C++ library and the Windows headers of mingw-w64:

  - libc++: another standard library;
  - aarch64: another processor; the sources for AVX2 are excluded there, as in the build;
  - msvc: Microsoft's ABI, and the macros of its compiler. Microsoft's headers are not available, so a prelude first
    includes all system headers with the macros of GCC, and then defines the macros of Microsoft's compiler instead.
    Each public header is also checked separately.

If the compiler has no messages for a source, the script stores an empty file in the user's cache, as tidy.py does. So it
does not compile the same source again, in any of the user's clones of the repository. The name of the file is a digest
of the compiler's version and options, the prelude, the source, and the headers of the project that the source includes.
The digest does not include the content of the system headers.
"""

import argparse
import hashlib
import os
import re
import subprocess
import sys
import threading
from concurrent.futures import ThreadPoolExecutor

from tidy import CACHE, ROOT, headers_of

GCC = "x86_64-w64-mingw32-g++-posix"
WORK = ROOT / "build" / "syntax"
SYSTEM_INCLUDE = re.compile(r"^\s*#\s*include\s*<([^>]+)>", re.MULTILINE)
COMMON = ["-fsyntax-only", "-std=c++20", "-Wall", "-Wextra", "-Werror", "-D_UCRT", "-D__MSVCRT_VERSION__=0xE00",
          "-D_WIN32_WINNT=0x0A00", "-DUNICODE", "-D_UNICODE", "-DNOMINMAX", "-DWIN32_LEAN_AND_MEAN",
          "-DVOREL_BUILDING_DLL", "-I" + str(ROOT / "include"), "-I" + str(ROOT / "src")]
# Disables warnings that Microsoft's compiler does not have, and warnings that the system headers of mingw-w64 cause.
MSVC_WARNINGS = ["-Wno-ignored-attributes", "-Wno-unused-private-field", "-Wno-#warnings"]


def find_compiler():
    for name in ("clang++-19", "clang++-20", "clang++-21", "clang++-22"):
        try:
            version = subprocess.run([name, "--version"], check=True, capture_output=True, text=True).stdout
            return name, version
        except FileNotFoundError:
            continue
    sys.exit("syntax.py: clang is not installed; `./dev setup` installs it")


def searched_folders(compiler):
    """The folders in which a compiler searches for C++ headers."""
    words = subprocess.run([compiler, "-xc++", "-E", "-v", os.devnull], check=True, capture_output=True, text=True).stderr
    listed = words.split("#include <...> search starts here:")[1].split("End of search list")[0].split()
    return [os.path.realpath(folder) for folder in listed]


def resource_folder(clang):
    return subprocess.run([clang, "-print-resource-dir"], check=True, capture_output=True, text=True).stdout.strip()


def write_prelude():
    """Writes the prelude: it includes the system headers before it defines the macros of Microsoft's compiler.

    GCC's cpuid.h is omitted, because intrin.h declares the same names as functions."""
    names = set()
    for folder in ("include", "src"):
        for path in (ROOT / folder).rglob("*"):
            if path.suffix in (".h", ".cpp"):
                names.update(SYSTEM_INCLUDE.findall(path.read_text()))
    lines = ["#undef _MSC_VER", "#undef _MSC_FULL_VER", "#define __MINGW32__ 1", "#define __MINGW64__ 1",
             *(f"#if __has_include(<{name}>)\n#include <{name}>\n#endif"
               for name in sorted((names | {"intrin.h", "immintrin.h"}) - {"cpuid.h"})),
             "#undef __MINGW32__", "#undef __MINGW64__", "#undef __GNUC__", "#undef __GNUC_MINOR__",
             "#define __INTRIN_H", "#define _MSC_VER 1939", "#define _MSC_FULL_VER 193933523"]
    prelude = WORK / "system_headers.h"
    prelude.with_suffix(".pch").unlink(missing_ok=True)
    prelude.write_text("\n".join(lines) + "\n")
    return prelude


class Environment:
    """The command of a compiler, and the files that it compiles. `prelude` is a header that every file includes
    first."""

    def __init__(self, name, command, version, sources, prelude=None):
        self.name, self._command, self.sources = name, command, sources
        self._prelude, self._precompiling = prelude, threading.Lock()
        self._shared = hashlib.sha256(repr((version, [word.replace(str(ROOT), ".") for word in command])).encode())

    def _options(self, source):
        avx2 = ["-mavx2"] if source.endswith("Avx2.cpp") else []
        if not self._prelude:
            return avx2
        if avx2:  # the precompiled header was compiled with other options
            return [*avx2, "-include", str(self._prelude)]
        return ["-include-pch", self._precompiled()]

    def _precompiled(self):
        with self._precompiling:
            # Not "<name>.h.pch", because clang would use such a file for "-include <name>.h", even in sources for AVX2.
            header = str(self._prelude.with_suffix(".pch"))
            if not os.path.exists(header):
                command = [word for word in self._command if word != "-fsyntax-only"]
                subprocess.run([*command, "-xc++-header", str(self._prelude), "-o", header], check=True)
            return header

    def check(self, source):
        """Returns the messages of the compiler; empty if it has none."""
        digest = self._shared.copy()
        for path in (source, *headers_of(source)):
            digest.update(path.encode() + b"\0" + (ROOT / path).read_bytes())
        mark = CACHE / digest.hexdigest()
        if mark.exists():
            return ""
        options = self._options(source)
        # A header is checked by including it in an empty source.
        file = ["-xc++", "-include", str(ROOT / source), os.devnull] if source.endswith(".h") else [str(ROOT / source)]
        done = subprocess.run([*self._command, *options, *file], capture_output=True, text=True, check=False)
        if done.returncode == 0:
            mark.touch()
            return ""
        return f"{self.name}: {source}\n{done.stderr}"


def environments():
    clang, version = find_compiler()
    resources = resource_folder(clang)
    folders = searched_folders(GCC)
    windows = next(folder for folder in folders if os.path.exists(folder + "/windows.h"))
    libstdcxx = [f"-isystem{folder}" for folder in folders if "/c++" in folder]
    libcxx = os.path.normpath(f"{resources}/../../../include/c++/v1")
    if not os.path.exists(libcxx):
        sys.exit(f"syntax.py: the headers of libc++ are not in {libcxx}; `./dev setup` installs them")
    sources = sorted(str(path.relative_to(ROOT)) for path in (ROOT / "src").rglob("*.cpp"))
    headers = sorted(str(path.relative_to(ROOT)) for path in (ROOT / "include").rglob("*.h"))
    prelude = write_prelude()

    def command(target, *options):
        return [clang, f"--target={target}", "-nostdinc++", *options, f"-isystem{windows}", *COMMON]

    yield Environment("libc++", command("x86_64-w64-mingw32", f"-isystem{libcxx}"), version, sources)
    yield Environment("aarch64", command("aarch64-w64-mingw32", *libstdcxx), version,
                      [source for source in sources if not source.endswith("Avx2.cpp")])
    yield Environment(
        "msvc",
        [*command("x86_64-pc-windows-msvc", "-fms-compatibility", "-fms-extensions", "-fgnuc-version=4.2.1",
                  "-fcxx-exceptions", "-D__STRICT_ANSI__", *libstdcxx, f"-isystem{resources}/include"),
         *MSVC_WARNINGS],
        version + prelude.read_text(), [*headers, *sources], prelude)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    CACHE.mkdir(parents=True, exist_ok=True)
    WORK.mkdir(parents=True, exist_ok=True)
    found = 0
    with ThreadPoolExecutor(arguments.jobs) as pool:
        for environment in environments():
            messages = [text for text in pool.map(environment.check, environment.sources) if text]
            print(*messages, f"{environment.name}: {len(environment.sources)} files, {len(messages)} with errors", sep="\n",
                  flush=True)
            found += len(messages)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
