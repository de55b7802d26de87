#!/usr/bin/env python3
"""Checks the page and the charts that performance.py creates from CSV files.

    publish.py <performance.py> <folder>

The script deletes the folder and creates it again. It exits with code 77 if Matplotlib is missing.
"""

import importlib.util
import shutil
import subprocess
import sys
import xml.etree.ElementTree as xml
from pathlib import Path

RATIOS = """\
case,peer,ours_ns,peer_ns,ratio,spread\r
"parse a|b, narrow",fast_float,5.8910,11.7820,2.0000,0.0140\r
"parse a|b, wide",std::x,1500.0000,750.0000,0.5000,0.3100\r
copy,memcpy of the bytes,2500000.0000,1000000.0000,0.4000,0.0000\r
"join, wide",std::x,2000000000.0000,30000000000.0000,15.0000,0.1000\r
"""

# Each row of a case has more elements than the row before. The columns "Rise" and "Peer's rise" of a case show the
# largest ratio between the time of a row and the smallest time up to this row. For "append", only the rows beyond the
# caches are compared: the library's time rises from 3 to 6 ns, and the peer's time never rises. "log line" has no rows
# beyond the caches, so all its rows are compared: the library's time rises from 1,000 to 1,400 ns, and the peer's time
# from 1,000 to 2,500 ns.
GROWTH = """\
case,elements,beyond_caches,ours_ns,peer,peer_ns\r
append,1,no,100.0000,std::string,1.0000\r
append,1000,no,1.0000,std::string,1.0000\r
append,10000,yes,4.0000,std::string,3.0000\r
append,100000,yes,3.0000,std::string,2.0000\r
append,1000000,yes,6.0000,std::string,2.0000\r
log line,1,no,1000.0000,bare,1000.0000\r
log line,16,no,1400.0000,bare,2500.0000\r
"""

LINES = [
    "| values | 3 | 2 | 2.00 | **0.50** (`parse a\\|b, wide`, `std::x`) | 31% |",
    "| `parse a\\|b, narrow` | `fast_float` | 5.89 ns | 11.8 ns | 2.00 | 1% |",
    "| `parse a\\|b, wide` | `std::x` | 1.50 µs | 750 ns | **0.50** | 31% (unsteady) |",
    "| `copy` | `memcpy of the bytes` | 2.50 ms | 1.00 ms | **0.40** | 0% |",
    "| `join, wide` | `std::x` | 2.00 s | 30.0 s | 15 | 10% |",
    "| `append` | `std::string` | 1,000,000 | 6.00 ns | 2.00 ns | **2.00** | 1.00 |",
    "| `log line` | `bare` | 16 | 1.40 µs | 2.50 µs | 1.40 | **2.50** |",
    "![values](images/performance-values.svg)",
    "![growth](images/performance-growth.svg)",
]

BEGIN = "# Title\n\nBefore | it.\n\n<!-- results: written by ./dev bench --publish -->"
END = "<!-- end of results -->\n\nAfter it.\n"


def expect(condition: bool, message: object) -> None:
    if not condition:
        sys.exit(f"publish.py: {message}")


def publish(script: str, folder: Path) -> dict:
    """Runs the script, and returns the texts of the files in the folder of documents, by file name."""
    subprocess.run([sys.executable, "-B", script, str(folder / "csv"), str(folder / "docs"), "--version", "Wine 8",
                    "--version", "{fmt} 9.1", "growth", "values"], check=True, timeout=100)
    return {path.name: path.read_text(encoding="utf-8") for path in (folder / "docs").rglob("*.*")}


def main() -> None:
    if importlib.util.find_spec("matplotlib") is None:
        sys.exit(77)
    script, folder = sys.argv[1], Path(sys.argv[2])
    shutil.rmtree(folder, ignore_errors=True)
    for path, text in (("csv/values.csv", RATIOS), ("csv/growth.csv", GROWTH), ("docs/performance.md", BEGIN + END)):
        (folder / path).parent.mkdir(parents=True, exist_ok=True)
        (folder / path).write_bytes(text.encode("utf-8"))

    files = publish(script, folder)
    page = files["performance.md"]
    expect(page.startswith(BEGIN) and page.endswith(END), "the text around the results has changed")
    missing = [line for line in LINES if line not in page.splitlines()]
    expect(not missing, f"the page does not contain the lines {missing}:\n{page}")
    expect("Wine 8; {fmt} 9.1." in page, "the page does not contain the versions")
    for name in ("performance-values.svg", "performance-growth.svg"):
        expect(xml.fromstring(files[name]).tag == "{http://www.w3.org/2000/svg}svg", f"{name} is not an SVG image")

    expect(publish(script, folder) == files, "a second run of performance.py changes the page or a chart")


if __name__ == "__main__":
    main()
