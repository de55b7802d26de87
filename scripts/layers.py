"""Checks that no file in include/vorel and src includes a file of a higher layer.

    layers.py [root]
"""

import re
import sys
from pathlib import Path

# The folders from the lowest to the highest layer. Each folder is a layer.
LAYERS = ["algorithms", "platform", "core", "exceptions", "system", "secure", "text", "values", "sync", "flat"]
# Files outside of these folders. Every file may include the files in BOTTOM. Files in the folders must not include the
# files in TOP.
BOTTOM = {"Attributes.h", "Export.h", "ExportMacro.h", "Version.h"}
TOP = {"Formatters.h", "LibraryState.cpp", "LibraryState.h", "StandardLibrary.cpp", "Streams.h", "Trail.h", "Version.cpp",
       "vorelCore.h", "vorelCoreC.h"}
INCLUDE = re.compile(r'^\s*#\s*include\s+"(?:vorel/)?([^"]+)"', re.MULTILINE)


def level(path):
    """The layer of a file, given by its path in src or include/vorel; None for an unknown file."""
    if path.parent == Path():
        return -1 if path.name in BOTTOM else len(LAYERS) if path.name in TOP else None
    return LAYERS.index(path.parts[0]) if path.parts[0] in LAYERS else None


def violations(root):
    for folder in (root / "include" / "vorel", root / "src"):
        for file in sorted(folder.rglob("*")):
            if file.suffix not in (".h", ".cpp"):
                continue
            own = level(file.relative_to(folder))
            if own is None:
                yield file, 1, "the file belongs to no layer"
                continue
            text = file.read_text()
            for include in INCLUDE.finditer(text):
                target = Path(include[1])
                other = level(target)
                line = text.count("\n", 0, include.start(1)) + 1
                if other is None:
                    yield file, line, f'"{target}" belongs to no layer'
                elif other > own:
                    yield file, line, f'"{target}" is in a higher layer'


def main(root):
    found = list(violations(root))
    for file, line, message in found:
        print(f"{file.relative_to(root)}:{line}: {message}")
    if found:
        sys.exit(f"{len(found)} violations of the layers: {' < '.join(LAYERS)}")
    print("No file includes a file of a higher layer")


if __name__ == "__main__":
    main(Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve())
