#!/usr/bin/python3
"""Checks the output of GDB with the library's printers, for a program that runs under Wine's debug server.

    gdb_views.py <wine-run> <shown.exe> <printers.py>

Runs GDB twice: with the script in the folder of the DLL, which GDB must load automatically, and with <printers.py>,
which is loaded by `source`. The exit code is 77 if no GDB for Windows programs is installed.
"""

import os
import shutil
import socket
import subprocess
import sys

GDB = "x86_64-w64-mingw32-gdb"
SECONDS = 120

EXPECTED = (
    ("neverAllocated", '""'),
    ("neverAllocatedWide", 'L""'),
    ("narrow", '"say \\"hi\\""'),
    ("wide", 'L"Grüße"'),
    ("withZero", '"a\\000b"'),
    ("notCounted", 'L"x"'),
    ("noNumbers", "vorel::Array<int> of 0"),
    ("numbers", "vorel::Array<int> of 2 = {4, 9}"),
    ("names", 'vorel::Array<vorel::BaseString<wchar_t> > of 2 = {L"one", L"two"}'),
    ("plains", "vorel::Array<(anonymous namespace)::Plain> of 1 = {{number = 7}}"),
    ("pointers", "vorel::Array<int*> of 1 = {0x"),
    ("map", 'vorel::HashMap of 3 in 7 buckets = {[10] = "one", [120] = "twelve", [50] = "five"}'),
    ("found", '{key = 50, value = "five"}'),
    ("notFound", "end"),
    ("noEntries", "vorel::HashMap of 0 in 0 buckets"),
    (
        "exception",
        'vorel::Exception with 2 messages = {[0] = L"no entry named colour", [1] = L"reading failed", '
        '[1].location = L"Settings.cpp(12)"}',
    ),
    (
        "derived",
        "vorel::InvalidIndexException with 1 message = "
        '{[0] = L"An invalid index value (7) has been detected; legal values are between 0 and 4"}',
    ),
    (
        "byBase",
        "with 1 message = "
        '{[0] = L"An invalid index value (7) has been detected; legal values are between 0 and 4"}',
    ),
    ("own", '(anonymous namespace)::OwnException with 1 message = {[0] = L"of the program"}'),
    ("noMessage", "vorel::DiffException with 0 messages"),
)


def free_port():
    with socket.socket() as listener:
        listener.bind(("localhost", 0))
        return listener.getsockname()[1]


def printed_by_gdb(wine_run, program, before, load):
    """Runs the program once and returns the printed value of each expression, and the whole output."""
    port = free_port()
    environment = dict(os.environ, LC_ALL="C.UTF-8")
    server = subprocess.Popen(
        [wine_run, "winedbg", "--gdb", "--no-start", "--port", str(port), program],
        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=environment)
    commands = [
        "set pagination off", "set confirm off", "set tcp connect-timeout %d" % SECONDS,
        "set remotetimeout %d" % SECONDS, "set height 0", "set width 0",
        "file \"%s\"" % program, "target remote localhost:%d" % port, "break stopHere", "continue", "up",
    ] + load
    for name, _ in EXPECTED:
        commands += ["echo \\n@%s@" % name, "print %s" % name]
    commands += ["kill"]
    arguments = [GDB, "-nx", "-batch", "-iex", before]
    for command in commands:
        arguments += ["-ex", command]
    try:
        # Values are read only from stdout. Before a value, GDB warns on stderr that it does not find the symbols of the
        # DLL's tables of virtual functions.
        run = subprocess.run(arguments, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                             timeout=SECONDS, env=environment, encoding="utf-8", check=False)
        server.wait(timeout=SECONDS)
    finally:
        server.kill()
        server.wait()
    found = {}
    for line in run.stdout.splitlines():
        if line.startswith("@"):
            name, _, value = line[1:].partition("@")
            found[name] = value.partition(" = ")[2]
    return found, run.stdout + run.stderr


def check(title, wine_run, program, before, load):
    """Prints the differences and returns their number."""
    found, output = printed_by_gdb(wine_run, program, before, load)
    wrong = 0
    for name, expected in EXPECTED:
        value = found.get(name, "(nothing)")
        if name == "pointers":
            value = value[: len(expected)]  # an address follows
        elif name == "byBase":
            # The address of the reference and the class precede the value. The class depends on the debug information.
            value = "with " + value.partition(" with ")[2]
        if value != expected:
            wrong += 1
            print("%s: %s\n    expected %s\n    printed  %s" % (title, name, expected, value))
    if wrong:
        print(output)
    print("%s: %d of %d values as expected" % (title, len(EXPECTED) - wrong, len(EXPECTED)))
    return wrong


def main():
    wine_run, program, printers = sys.argv[1:]
    if not shutil.which(GDB):
        print("%s not found: install the Debian package gdb-mingw-w64" % GDB)
        return 77
    wrong = check("script next to the DLL", wine_run, program,
                  "add-auto-load-safe-path %s" % os.path.dirname(program), [])
    wrong += check("script loaded by source", wine_run, program, "set auto-load off", ["source %s" % printers])
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
