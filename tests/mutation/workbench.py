"""Builds and runs the tests with one changed source file, based on a finished build that it does not modify.

The commands of the build come from Ninja. The changed file is in an overlay folder. The file itself, if it is a source,
and all sources that include it are compiled again, with the overlay folder before the other include paths. The new
objects are linked with the other objects of the build. So nothing has to be restored afterwards.
"""

import json
import os
import re
import shlex
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

_SUITE = re.compile(r"^\s*(?:TYPED_)?TEST(?:_[FP])?\(\s*(\w+)\s*,", re.MULTILINE)
# The programs "stress" and "exports" are not run. "stress" depends on the clock and needs the whole machine. "exports"
# checks the tables of the DLL file, which the changes do not affect.
_NOT_RUN = {"stress", "exports"}


class LibraryDoesNotCompile(Exception):
    pass


class TestDoesNotCompile(Exception):
    """A source of a test does not compile with the change, for example because a static assertion of the test fails."""


def _output_of(command):
    return command[command.index("-o") + 1]


def _without_output(command):
    """The words of a compile command without `-c` and the options for the output and the dependency file."""
    words = iter(command)
    for word in words:
        if word in ("-o", "-MT", "-MF"):
            next(words)
        elif word not in ("-c", "-MD"):
            yield word


def _without_precompiled_header(command):
    words = iter(command)
    return [word for word in words if word != "-include" or not next(words)]


def _code_of(object_file):
    """The bytes of an object without its debug information, because the debug information contains the folder of
    the source."""
    with tempfile.NamedTemporaryFile(suffix=".obj") as stripped:
        subprocess.run(["x86_64-w64-mingw32-objcopy", "--strip-debug", object_file, stripped.name], check=True)
        return Path(stripped.name).read_bytes()


class Program:
    """A test program: its link command, its objects, and the suites in its files."""

    def __init__(self, name, link, objects, uses_dll, folder):
        self.name, self.link, self.objects, self.uses_dll = name, link, objects, uses_dll
        self.limit_seconds = 60.0
        self.suites = {}  # file → its text and the names of its suites
        for path in sorted(folder.glob("*Test.cpp")):
            text = path.read_text()
            self.suites[path] = (text, sorted(set(_SUITE.findall(text))))

    def suites_about(self, path, stems):
        """The suites in files whose names start with one of `stems` and, if `path` is in src/, in files that include
        `path`."""
        include = f'#include "{path.removeprefix("src/")}"'
        return sorted({suite for file, (text, suites) in self.suites.items() for suite in suites
                       if include in text or any(file.name.startswith(stem) for stem in stems)})


class Build:
    """A finished build: the command and the dependencies of each object, and the test programs."""

    def __init__(self, root, folder):
        self.root, self.folder = root, folder
        self.compiling, archives, links = {}, {}, {}
        for entry in json.loads(self._ninja("compdb", "-x")):
            words = shlex.split(entry["command"])
            if words[:2] == [":", "&&"]:
                words = words[2:words.index("&&", 2)] if "qc" not in words else words
            if entry["output"].endswith(".obj"):
                self.compiling[entry["output"]] = words
            elif "qc" in words:
                archive = words[words.index("qc") + 1]
                archives[archive] = [word for word in words if word.endswith(".obj")]
            elif "-o" in words:
                links[_output_of(words)] = words
        self._dependencies = self._read_dependencies()
        self._included = {}
        self.dll = links["bin/vorelCore.dll"]
        self.dll_objects = [word for word in self.dll if word.endswith(".obj")]
        self.programs = {}
        for output, words in links.items():
            name = re.fullmatch(r"bin/vorel_(\w+)_tests\.exe", output)
            if name and name[1] not in _NOT_RUN:
                objects = [word for word in words if word.endswith(".obj")]
                for archive in words:
                    objects += archives.get(archive, [])
                self.programs[name[1]] = Program(name[1], words, objects, "lib/libvorelCore.dll.a" in words,
                                                 root / "tests" / name[1])

    def _ninja(self, *tool):
        return subprocess.run(["ninja", "-C", self.folder, "--quiet", "-t", *tool], check=True, stdout=subprocess.PIPE,
                              text=True).stdout

    def _read_dependencies(self):
        dependencies, output = {}, None
        for line in self._ninja("deps").splitlines():
            if line.startswith("    "):
                path = os.path.normpath(self.folder / line.strip())
                dependencies.setdefault(path, set()).add(output)
            elif line:
                output = line.split(":", 1)[0]
        return dependencies

    def made_of(self, path):
        """The objects that depend on `path`, a source or a header relative to the root. Objects that include the file
        only through a precompiled header are missing, but `includes` detects them."""
        return self._dependencies.get(str(self.root / path), set())

    def includes(self, output, path):
        """Whether the object `output` depends on `path`, with or without a precompiled header."""
        if output not in self._included:
            command = _without_precompiled_header(_without_output(self.compiling[output]))
            rule = subprocess.run([*command, "-M"], cwd=self.folder, check=True, stdout=subprocess.PIPE, text=True)
            self._included[output] = {os.path.normpath(self.folder / word)
                                      for word in shlex.split(rule.stdout.replace("\\\n", " "))}
        return str(self.root / path) in self._included[output]


class Bench:
    """A folder in which tests are built and run, with a separate Wine prefix."""

    def __init__(self, build, folder):
        self._build, self._folder = build, folder
        self._overlay, self._objects, self._bin = folder / "overlay", folder / "objects", folder / "bin"
        self._environment = os.environ | {"VOREL_WINEPREFIX": str(folder / "wine")}
        self._runner = build.root / "cmake" / "wine-run"
        for part in (self._overlay, self._objects, self._bin):
            shutil.rmtree(part, ignore_errors=True)
        self._bin.mkdir(parents=True)
        for pattern in ("*.exe", "*.dll"):
            for file in (build.folder / "bin").glob(pattern):
                os.link(file, self._bin / file.name)
        self._wine("--hold")
        self.put(None, None)

    def close(self):
        self._wine("--release")

    def _wine(self, verb):
        subprocess.run([self._runner, verb], env=self._environment, check=True)

    # ---- Building ----

    def put(self, path, text):
        """Puts the file `path` with the contents `text` into the overlay folder. All other files are unchanged. If
        `path` is None, no file is changed."""
        shutil.rmtree(self._overlay, ignore_errors=True)
        shutil.rmtree(self._objects, ignore_errors=True)
        self._objects.mkdir(parents=True)
        self._path, self._made = path, {}
        self._restore("vorelCore.dll")
        self._affected = self._build.made_of(path) if path else set()
        # A precompiled header that includes the file contains the original text of the file. So in this case, the
        # affected sources are compiled without the precompiled header.
        self._is_precompiled = any(output.endswith(".gch") for output in self._affected)
        if path:
            (self._overlay / path).parent.mkdir(parents=True)
            (self._overlay / path).write_text(text)

    def _restore(self, name):
        (self._bin / name).unlink(missing_ok=True)
        os.link(self._build.folder / "bin" / name, self._bin / name)

    def _compile(self, output):
        """Compiles the build's object `output` again. Returns the new object, or None if its code is the same."""
        if output in self._made:
            return self._made[output]
        made = self._objects / f"{len(self._made)}.obj"
        source = self._overlay / self._path
        command = [str(source) if word == str(self._build.root / self._path) else word
                   for word in _without_output(self._build.compiling[output])]
        if self._is_precompiled:
            command = _without_precompiled_header(command)
        command += ["-c", "-o", str(made)]
        first = next(index for index, word in enumerate(command) if word.startswith("-I"))
        command[first:first] = [f"-I{self._overlay / 'include'}", f"-I{self._overlay / 'src'}"]
        done = subprocess.run([*command, "-w"], cwd=self._build.folder, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, check=False)
        if done.returncode != 0:
            raise LibraryDoesNotCompile if "/vorelCore" in output else TestDoesNotCompile(output)
        same = _code_of(made) == _code_of(self._build.folder / output)
        self._made[output] = None if same else made
        return self._made[output]

    def _is_affected(self, output):
        return output in self._affected or (self._is_precompiled and "-include" in self._build.compiling[output] and
                                            self._build.includes(output, self._path))

    def _compiled(self, outputs):
        made = {output: self._compile(output) for output in outputs if self._is_affected(output)}
        return {output: str(new) for output, new in made.items() if new}

    def _link(self, command, name, changed):
        """Links with the changed objects. They replace the old objects, or precede the archives that contain the old
        objects."""
        target, changed = self._bin / name, dict(changed)
        target.unlink(missing_ok=True)
        words = [changed.pop(word, word) for word in command]
        words = [re.sub(r"(?<=--out-implib,).*", str(self._objects / "import.a"), word) for word in words]
        words[words.index("-o") + 1] = str(target)
        words[words.index("-o"):words.index("-o")] = changed.values()
        subprocess.run(words, cwd=self._build.folder, check=True)

    def build(self, program):
        """Builds a program with the change. Returns whether the code of the program, or of the DLL that it uses, has
        changed."""
        try:
            own = self._compiled(program.objects)
        except TestDoesNotCompile:
            if self._compiled_library():
                raise
            raise LibraryDoesNotCompile from None
        library = self._compiled(self._build.dll_objects) if program.uses_dll else {}
        name = Path(_output_of(program.link)).name
        if own:
            self._link(program.link, name, own)
        else:
            self._restore(name)
        if library:
            self._link(self._build.dll, "vorelCore.dll", library)
        return bool(own or library)

    def _compiled_library(self):
        return self._compiled(self._build.dll_objects)

    # ---- Running ----

    def run(self, program, test_filter):
        """Runs tests until one fails. Returns None if all pass, or the name of the failed test. " (hangs)" or
        " (crashes)" follows the name if the test has no result. The name is "?" if no test has started. If a test hangs
        because the time limit is too low for a busy machine, the limit is raised and the tests are run again."""
        failed = self._run(self._bin, program, test_filter)
        while failed and failed.endswith("(hangs)") and self._is_slow(program, test_filter):
            failed = self._run(self._bin, program, test_filter)
        return failed

    def confirms(self, program, failed, test_filter):
        """Whether the test fails because of the change: it passes without the change, and fails again with the
        change, alone or together with other tests."""
        test = failed.split(" ")[0]
        return not self._run(self._build.folder / "bin", program, test) and bool(
            self._run(self._bin, program, test) or self._run(self._bin, program, test_filter))

    def output(self):
        """The output of the last program that ran."""
        return (self._folder / "output.txt").read_text(errors="replace")

    def _is_slow(self, program, test_filter):
        """Runs tests with the unchanged library. Returns whether the machine is so busy that the limit was raised."""
        limit = program.limit_seconds
        self.measure(program, test_filter)
        return program.limit_seconds > limit

    def measure(self, program, test_filter="*"):
        """Runs tests with the unchanged library. Raises the time limit if it is below 20 seconds plus five times the
        time of this run. Returns a failed test, or None."""
        begin, limit = time.monotonic(), program.limit_seconds
        program.limit_seconds = 3600
        failed = self._run(self._build.folder / "bin", program, test_filter)
        program.limit_seconds = max(limit, 20 + 5 * (time.monotonic() - begin))
        return failed

    def _run(self, folder, program, test_filter):
        output = self._folder / "output.txt"
        command = [self._runner, folder / Path(_output_of(program.link)).name, "--gtest_fail_fast",
                   f"--gtest_filter={test_filter}"]
        with output.open("wb") as sink:
            process = subprocess.Popen(command, cwd=self._folder, env=self._environment, stdin=subprocess.DEVNULL,
                                       stdout=sink, stderr=subprocess.STDOUT, start_new_session=True)
            try:
                result = process.wait(program.limit_seconds)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
                result = "hangs"
        text = self.output()
        failed = re.search(r"^\[  FAILED  \] (\S+?)(?:,|\s|$)", text, re.MULTILINE)
        if result == 0:
            return None
        if result != "hangs" and failed:
            return failed[1]
        self._wine("--release")  # ends all remaining processes
        self._wine("--hold")
        running = re.findall(r"^\[ RUN      \] (\S+)", text, re.MULTILINE)
        return f"{running[-1] if running else '?'} ({'hangs' if result == 'hangs' else 'crashes'})"
