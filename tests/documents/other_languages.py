#!/usr/bin/env python3
"""Runs the sample in C or C#, or checks the sample in Python, of a page such as docs/windows.md.

    other_languages.py c <page> <folder> <build> <clang> <wine>...
    other_languages.py csharp <page> <folder> <build> <dotnet.exe> <wine>...
    other_languages.py python <page> <exports>

- c: runs the commands of docs/windows.md. clang with the options of Microsoft's compiler replaces `cl`, and the program
  runs under Wine. An installation of <build> in <folder> replaces C:\\vorelCore. Microsoft's headers and libraries are
  not available, so the C runtime's headers and import library are from mingw-w64, and a function replaces the start-up
  code.
- csharp: compiles with Mono's compiler, and runs with .NET for Windows under Wine. The DLLs of <build> are in the path.
- python: checks the syntax, and that the library exports the functions that the sample calls.

Exits with 77, which CTest reports as "skipped", if clang, GCC for mingw-w64, Mono's compiler or .NET is needed but
missing.
"""

import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from samples import blocks, execute, new_folder, samples

SKIPPED = 77
PACKAGE = "C:\\vorelCore\\"
GCC = "x86_64-w64-mingw32-g++-posix"

# Replaces the start-up code of the C runtime. `main` gets no arguments. Compilers for Microsoft's ABI refer to
# `_fltused` in programs with floating-point numbers.
START = """\
int _fltused = 0;
int main(void);
void exit(int);
void start(void);
void start(void) { exit(main()); }
"""


def skip(reason: str) -> None:
    print(reason)
    sys.exit(SKIPPED)


def only_sample(page: Path, language: str):
    found = [sample for sample in samples(page) if sample.language == language]
    if len(found) != 1:
        sys.exit(f"{page}: {len(found)} samples in {language}, expected 1")
    return found[0]


def run(command: list, folder: Path) -> None:
    done = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=300,
                          check=False)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\n{done.stdout}")


def commands(page: Path) -> list:
    """The words of each line in the page's block for the command prompt. Paths in the package become relative paths
    with the separators of this system."""
    found = [block.text for block in blocks(page) if block.language == "bat"]
    if len(found) != 1:
        sys.exit(f"{page}: {len(found)} blocks for the command prompt, expected 1")
    lines = [line.split() for line in found[0].splitlines()]
    return [[word.replace(PACKAGE, "vorelCore\\").replace("\\", "/") for word in words] for words in lines]


def run_c(page: Path, folder: Path, build: str, clang: str, *wine: str) -> None:
    sample = only_sample(page, "c")
    if not shutil.which(clang) or not shutil.which(GCC):
        skip(f"{clang} or {GCC} is missing")
    [compiler, *options], [copy, dlls, target], [program] = commands(page.with_name("windows.md"))
    if (compiler, copy, target) != ("cl", "copy", "."):
        sys.exit(f"{page}: windows.md must have a call of cl, a copy to the current folder, and a program")
    (folder / "hello.c").write_text(sample.text, encoding="utf-8")
    (folder / "start.c").write_text(START, encoding="utf-8")
    run(["cmake", "--install", build, "--prefix", folder / "vorelCore"], folder)
    runtime = Path(subprocess.run([GCC, "-print-file-name=libucrt.a"], stdout=subprocess.PIPE, text=True,
                                  check=True).stdout.strip()).resolve()
    run([clang, "--driver-mode=cl", "--target=x86_64-pc-windows-msvc", "-fuse-ld=lld", "/WX", "/GS-", "/D_UCRT",
         "/imsvc", runtime.parent.parent / "include", *options, "start.c", "/link", "/nodefaultlib", "/entry:start",
         "/subsystem:console", f"/libpath:{runtime.parent}", runtime.name], folder)
    for dll in folder.glob(dlls):
        shutil.copy(dll, folder)
    execute(sample, [*wine, folder / f"{program}.exe"], folder)


def run_csharp(page: Path, folder: Path, build: str, dotnet: str, *wine: str) -> None:
    sample = only_sample(page, "csharp")
    if not shutil.which("mcs"):
        skip("Mono's compiler is missing")
    if not Path(dotnet).exists():
        skip(".NET is not installed; `./dev test` installs it")
    (folder / "Hello.cs").write_text(sample.text, encoding="utf-8")
    run(["mcs", "-langversion:7", "-warnaserror", "-out:Hello.exe", "Hello.cs"], folder)
    framework = {"name": "Microsoft.NETCore.App", "version": "2.0.0"}
    (folder / "Hello.runtimeconfig.json").write_text(json.dumps({"runtimeOptions": {"framework": framework}}))
    os.environ["WINEPATH"] = f"Z:{build}/bin".replace("/", "\\")
    execute(sample, [*wine, dotnet, "Hello.exe"], folder)


def check_python(page: Path, exports: str) -> None:
    sample = only_sample(page, "python")
    compile("\n" * (sample.line - 1) + sample.text, page, "exec")
    exported = set(Path(exports).read_text(encoding="utf-8").split())
    called = set(re.findall(r"\.(vorel_\w+)", sample.text))
    if not called or called - exported:
        sys.exit(f"{page}: called, but not exported: {', '.join(sorted(called - exported)) or 'no function is called'}")


def main() -> None:
    language, page, rest = sys.argv[1], Path(sys.argv[2]), sys.argv[3:]
    if language == "python":
        check_python(page, *rest)
        return
    folder = Path(rest[0])
    new_folder(folder)
    {"c": run_c, "csharp": run_csharp}[language](page, folder, *rest[1:])


if __name__ == "__main__":
    main()
