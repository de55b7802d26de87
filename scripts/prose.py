"""Searches for phrases that the style guide rejects.

    prose.py <path>...      files, or folders with files: C++, C, Python, shell, CMake, JavaScript, TypeScript,
                            Markdown, text, templates (.in), and files without an extension. Other files are ignored.

In C++, C, JavaScript, TypeScript and templates, the script searches comments and literals. It searches all other files
completely.

rejected-phrases.txt has the phrases and their replacements. A line with the comment "prose: <reason>" is skipped,
because it contains a name, or a text that the interface fixes.
"""

import re
import sys
from pathlib import Path

PHRASES = Path(__file__).resolve().with_name("rejected-phrases.txt")
# The parts of a source that contain prose: comments and literals. A literal is matched as a whole, so two slashes in a
# literal do not begin a comment.
C_PROSE = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'', re.DOTALL)
PARTS = {suffix: C_PROSE for suffix in (".cpp", ".c", ".h", ".js", ".ts", ".in")}
WHOLE = (".md", ".txt", ".py", ".cmake", ".sh", "")
EXEMPT = re.compile(r"prose: \w+")


def read_phrases():
    for line in PHRASES.read_text().splitlines():
        if line and not line.startswith("#"):
            phrase, replacement = line.split("\t")
            # A phrase may extend over two lines of a comment.
            gap = r"(?:\s|\n\s*(?://+|#|\*)\s*)+"
            yield re.compile(rf"\b(?:{phrase.replace(' ', gap)})\b", re.IGNORECASE), replacement


def prose_of(path, text):
    """The parts of a file that contain prose, each with its position."""
    pattern = PARTS.get(path.suffix)
    if not pattern:
        yield 0, text
        return
    position, comment, start = 0, "", 0
    for part in pattern.finditer(text):
        is_comment = part[0].startswith("//")
        # Adjacent comment lines are one text.
        if comment and is_comment and not text[position:part.start()].strip():
            comment += text[position:part.start()] + part[0]
        else:
            if comment:
                yield start, comment
            comment, start = (part[0], part.start()) if is_comment else ("", 0)
            if not is_comment:
                yield part.start(), part[0]
        position = part.end()
    if comment:
        yield start, comment


def files_of(paths):
    for path in map(Path, paths):
        for file in sorted(path.rglob("*")) if path.is_dir() else [path]:
            if file.is_file() and file.suffix in (*PARTS, *WHOLE) and file.resolve() != PHRASES:
                yield file


def main(paths):
    phrases = list(read_phrases())
    found = 0
    for path in files_of(paths):
        text = path.read_text(errors="replace")
        lines = text.splitlines()
        for start, part in prose_of(path, text):
            for pattern, replacement in phrases:
                for match in pattern.finditer(part):
                    number = text.count("\n", 0, start + match.start()) + 1
                    if not EXEMPT.search(lines[number - 1]):
                        found += 1
                        print(f'{path}:{number}: "{" ".join(match[0].split())}": write {replacement}')
    print(f"{found} rejected phrases" if found else "No rejected phrase")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
