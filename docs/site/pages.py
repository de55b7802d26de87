"""The Markdown pages of the site: titles, identifiers in Doxygen, and the conversion for Doxygen."""

import re
import sys
from pathlib import Path

FENCE = re.compile(r"^```(\w*)\s*$")
HEADING = re.compile(r"^(#{1,6}) (.+)$")
LINK = re.compile(r"\]\(([^()\s#]*)#([\w-]+)\)")
CODE = re.compile(r"(?<!`)`([^`]+)`(?!`)")
LOG_LINE = re.compile(r"\[\w{3} \w{3} [ \d]\d ")
LANGUAGES = {
    "bat": "Command prompt", "c": "C", "cmake": "CMake", "console": "Output", "cpp": "C++", "csharp": "C#",
    "js": "JavaScript", "json": "JSON", "log": "Log", "mermaid": "Mermaid", "output": "Output",
    "powershell": "PowerShell", "python": "Python", "regex": "Regular expression", "sh": "Shell", "text": "Text",
}
# Doxygen's names of the languages that it highlights.
HIGHLIGHTED = {"c": "c", "cpp": "cpp", "csharp": "cs", "python": "py"}


def lines_of(path: Path):
    """Each line of a page, and whether it belongs to a fenced block."""
    fenced = False
    for line in path.read_text(encoding="utf-8").splitlines():
        fence = FENCE.match(line)
        yield line, fenced or bool(fence)
        if fence:
            fenced = not fenced


def identifier(path: Path, root: Path) -> str:
    """The identifier of the page in Doxygen."""
    name = path.resolve().relative_to(root).with_suffix("").as_posix()
    return "index" if name == "docs/index" else "md_" + re.sub(r"\W", "_", name)


def anchor(heading: str) -> str:
    """The anchor of a heading, as code hosting sites make it."""
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def label(path: Path, root: Path, heading_anchor: str) -> str:
    """The label of a heading in Doxygen, which must be unique on the site."""
    return f"{identifier(path, root)}-{heading_anchor}"


def title(path: Path) -> str:
    return next(HEADING.match(line)[2] for line, fenced in lines_of(path) if not fenced and HEADING.match(line))


def target(page, root, link):
    if link[1].startswith("http"):
        return link[0]
    return f"](@ref {label(page.parent / link[1] if link[1] else page, root, link[2])})"


def code(text):
    """Code in backticks for Doxygen. Double backticks enclose code with an apostrophe, because Doxygen ends code in
    single backticks at an apostrophe."""
    return f"``{text}``" if "'" in text else f"`{text}`"


def shown(page: Path, root: Path) -> list:
    """Returns the lines of a page for Doxygen. Each line keeps its number. Exits if a block of code
    has no known language or does not follow an empty line."""
    result = []
    lines = list(lines_of(page))
    previous, inside = "", False
    for number, (line, fenced) in enumerate(lines):
        fence = FENCE.match(line) if fenced else None
        heading = HEADING.match(line) if not fenced else None
        if fence and not inside:
            if fence[1] not in LANGUAGES:
                sys.exit(f"{page}: the language of a block of code is missing or unknown: {line}")
            if previous.strip():
                sys.exit(f"{page}: a block of code must follow an empty line: {line}")
            language = "Log" if LOG_LINE.match(lines[number + 1][0]) else LANGUAGES[fence[1]]
            # The name of the language replaces the empty line before the block, so that no line changes its number.
            previous = f'\\htmlonly<span class="language">{language}</span>\\endhtmlonly'
            line = "```" + HIGHLIGHTED.get(fence[1], "unparsed")
        elif heading:
            # Doxygen would show backticks in a heading.
            line = line.replace("`", "")
            if page.name == "index.md" and len(heading[1]) > 1:
                # Otherwise, the navigation would list the sections of the start page before all other pages.
                line = f"<h1>{heading[2]}</h1>"
            elif len(heading[1]) > 1:
                line += f" {{#{label(page, root, anchor(heading[2]))}}}"
        elif not fenced:
            line = LINK.sub(lambda link: target(page, root, link), line)
            line = CODE.sub(lambda span: code(span[1]), line)
        inside = inside != bool(fence)
        result.append(previous)
        previous = line
    return [*result[1:], previous]  # the first element is the line before the page
