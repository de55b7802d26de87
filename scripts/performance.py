"""Writes the results of the benchmarks to docs/performance.md, and charts to docs/images: ./dev bench --publish.

    performance.py <folder of the CSV files> <docs> [--version <name and version>]... <family>...

Replaces the part of the page between its two markers.
"""

import argparse
import csv
import os
import re
from datetime import date
from pathlib import Path
from statistics import median

BEGIN = "<!-- results: written by ./dev bench --publish -->"
END = "<!-- end of results -->"
MAX_SPREAD = 0.2
MAX_RISE = 1.5
GROWTH = "growth"
# The summary does not include comparisons with peers whose names begin like this, because they show the limits of the
# machine.
LIMITS = ("memcpy",)

# Introductions: facts that the titles of the families do not give.
INTRODUCTIONS = {
    "core": "Strings, arrays and hash maps. Times are per operation or per element.",
    "exceptions": "Messages of exceptions and debug targets. Times are per call.",
    "loading": "A process loads the DLL and unloads it. Each time includes both.",
    "sync": "Locks, named objects and lines of the log. Times are per lock and unlock, per creation, per round "
            "of two signals, or per line.",
    "text": "Conversions between text and bytes. Times are for the whole input; the name of the case has the size of the "
            "input.",
    "values": "Numbers, lists and comparisons. Times are per number, field or text.",
    GROWTH: "The time per element, depending on the number of elements. The time falls while more elements share the "
            "fixed part of the work. It rises when the data no longer fit into a cache of the processor. Otherwise it "
            "should be constant. The grey range is beyond the largest cache. The peer does the same work in the same "
            "run, and shows the effect of the machine. A rise is the largest ratio between a time and the time for a "
            "smaller number of elements. If a case has numbers in the grey range, only these numbers are compared. "
            "Lists and maps have at most ten million elements, because more would need more than 16 GB, or many "
            "minutes. The processes that write the log share one processor.",
}


def read_rows(path: Path) -> list:
    with path.open(encoding="utf-8", newline="") as file:
        return list(csv.DictReader(file, strict=True))


def duration(nanoseconds: str) -> str:
    """A time with its unit. From 1 ns to 1000 s, the time usually has three significant digits."""
    value = float(nanoseconds)
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3), ("ns", 1)):
        if value >= size or size == 1:
            scaled = value / size
            return f"{scaled:.{2 if scaled < 10 else 1 if scaled < 100 else 0}f} {unit}"
    raise AssertionError


def name(text: str) -> str:
    """The name of a case or a peer, as code. Otherwise the site would treat parts of it as links, commands or tags."""
    return f"`{text}`"


def table(header: list, rows: list, numbers_from: int) -> list:
    """A Markdown table whose columns are right-aligned from `numbers_from` on."""
    rule = ["---" if column < numbers_from else "---:" for column in range(len(header))]
    return ["| " + " | ".join(text.replace("|", "\\|") for text in row) + " |" for row in [header, rule, *rows]]


# ---- Ratios ---------------------------------------------------------------------------------------------------------


def ratio(row: dict) -> str:
    value = float(row["ratio"])
    text = f"{value:.2f}" if value < 10 else f"{value:.0f}"
    return text if value >= 1 else f"**{text}**"


def spread(row: dict) -> str:
    value = float(row["spread"])
    return f"{value:.0%}" + (" (unsteady)" if value > MAX_SPREAD else "")


def ratio_table(rows: list) -> list:
    cells = [[name(row["case"]), name(row["peer"]), duration(row["ours_ns"]), duration(row["peer_ns"]), ratio(row), spread(row)]
             for row in rows]
    return table(["Case", "Peer", "vorelCore", "Peer's time", "Ratio", "Spread"], cells, 2)


def summary_table(results: dict) -> list:
    cells = []
    for family, all_rows in results.items():
        rows = [row for row in all_rows if not row["peer"].startswith(LIMITS)]
        ratios = [float(row["ratio"]) for row in rows]
        smallest = min(rows, key=lambda row: float(row["ratio"]))
        cells.append([family, str(len(rows)), str(sum(value >= 1 for value in ratios)),
                      f"{median(ratios):.2f}", f"{ratio(smallest)} ({name(smallest['case'])}, {name(smallest['peer'])})",
                      f"{max(float(row['spread']) for row in rows):.0%}"])
    return table(["Family", "Results", "Ratio of 1 or more", "Median ratio", "Smallest ratio", "Largest spread"], cells, 1)


def draw_ratios(family: str, rows: list, path: Path) -> None:
    """Draws a row for each operation (the name of a case up to its first comma). The row has a dot for each measurement
    of a case of the operation against a peer."""
    from matplotlib import pyplot, ticker

    operations = list(dict.fromkeys(row["case"].split(", ")[0] for row in rows))
    peers = list(dict.fromkeys(row["peer"] for row in rows))
    figure, axes = pyplot.subplots(figsize=(10, 1.6 + 0.3 * len(operations)), layout="constrained")
    colours = pyplot.get_cmap("tab10" if len(peers) <= 10 else "tab20").colors
    for index, peer in enumerate(peers):
        shown = [row for row in rows if row["peer"] == peer]
        axes.scatter([float(row["ratio"]) for row in shown],
                     [operations.index(row["case"].split(", ")[0]) for row in shown],
                     label=peer, color=colours[index % len(colours)], marker="osD^v"[index // len(colours) % 5], s=26,
                     edgecolors="black", linewidths=0.3, zorder=3)
    axes.axvline(1, color="black", linewidth=1)
    axes.set_xscale("log")
    left, right = axes.get_xlim()
    axes.set_xlim(min(left, 0.5), max(right, 2))
    axes.xaxis.set_major_locator(ticker.LogLocator(subs=(1, 2, 5)))
    axes.xaxis.set_major_formatter(lambda value, _: f"{value:g}")
    axes.xaxis.set_minor_locator(ticker.NullLocator())
    axes.set_xlabel("ratio: time of the peer / time of vorelCore (right of the line, vorelCore is faster)")
    axes.set_yticks(range(len(operations)), operations)
    axes.set_ylim(len(operations) - 0.5, -0.5)
    axes.grid(color="0.9")
    axes.set_title(f"{family}: each dot is a case measured against a peer")
    axes.legend(loc="upper left", bbox_to_anchor=(1, 1), fontsize="small", title="peer")
    save(figure, path)


# ---- Growth ---------------------------------------------------------------------------------------------------------


def by_case(rows: list) -> dict:
    cases = {}
    for row in rows:
        cases.setdefault(row["case"], []).append(row)
    return cases


def rise(rows: list, column: str) -> str:
    """The largest ratio of a cost to the cost for a smaller number of elements, at least 1. If the case has numbers
    beyond the caches, only these numbers are compared. A rise above MAX_RISE is bold."""
    costs = [float(row[column]) for row in rows if row["beyond_caches"] == "yes"]
    costs = costs or [float(row[column]) for row in rows]
    worst = max(cost / min(costs[:index + 1]) for index, cost in enumerate(costs))
    return f"{worst:.2f}" if worst <= MAX_RISE else f"**{worst:.2f}**"


def growth_table(rows: list) -> list:
    cells = []
    for case, lines in by_case(rows).items():
        last = lines[-1]
        cells.append([name(case), name(last["peer"]), f"{int(last['elements']):,}", duration(last["ours_ns"]),
                      duration(last["peer_ns"]), rise(lines, "ours_ns"), rise(lines, "peer_ns")])
    return table(["Work", "Peer", "Largest number of elements", "vorelCore's time for it", "Peer's time for it", "Rise", "Peer's rise"], cells, 2)


def draw_growth(rows: list, path: Path) -> None:
    """Draws a panel for each case, with the times of the library and of the peer."""
    from matplotlib import pyplot

    cases = by_case(rows)
    figure, panels = pyplot.subplots((len(cases) + 2) // 3, 3, figsize=(12, 2.7 * ((len(cases) + 2) // 3)),
                                     layout="constrained", squeeze=False)
    for panel in panels.flat[len(cases):]:
        panel.set_visible(False)
    for panel, (case, lines) in zip(panels.flat, cases.items()):
        elements = [int(line["elements"]) for line in lines]
        panel.plot(elements, [float(line["ours_ns"]) for line in lines], marker=".", label="vorelCore")
        panel.plot(elements, [float(line["peer_ns"]) for line in lines], marker=".", label=lines[0]["peer"], zorder=1)
        beyond = [int(line["elements"]) for line in lines if line["beyond_caches"] == "yes"]
        if beyond:
            panel.axvspan(beyond[0], beyond[-1], color="0.92", zorder=0)
        panel.set_xscale("log")
        panel.set_yscale("log")
        panel.set_title(case, fontsize="medium")
        panel.grid(color="0.9")
        panel.legend(fontsize="small")
    figure.supxlabel("number of elements, or of processes")
    figure.supylabel("nanoseconds per element")
    save(figure, path)


# ---- The page -------------------------------------------------------------------------------------------------------


def save(figure, path: Path) -> None:
    """Saves a figure. The same results give the same file."""
    from matplotlib import pyplot, rcParams

    rcParams["svg.hashsalt"] = path.name
    path.parent.mkdir(parents=True, exist_ok=True)
    figure.savefig(path, metadata={"Date": None})
    pyplot.close(figure)


def machine() -> list:
    cpu = Path("/proc/cpuinfo").read_text(encoding="utf-8")
    model = re.search(r"^model name\s*: (.*)", cpu, re.MULTILINE)[1]
    flags = re.search(r"^flags\s*:(.*)", cpu, re.MULTILINE)[1].split()
    extensions = [title for flag, title in (("avx2", "AVX2"), ("avx512_vbmi2", "AVX-512 VBMI2")) if flag in flags]
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    return [f"{model} ({', '.join(extensions) or 'without AVX2'})", f"{os.cpu_count()} processors",
            f"{memory:.0f} GiB of memory", f"Linux {os.uname().release}"]


def section(family: str, rows: list) -> list:
    image = f"performance-{family}.svg"
    return ["", f"## {family}", "", *([INTRODUCTIONS[family], ""] if family in INTRODUCTIONS else []),
            f"![{family}](images/{image})", "", *(growth_table(rows) if family == GROWTH else ratio_table(rows))]


def results_text(results: dict, versions: list) -> str:
    ratios = {family: rows for family, rows in results.items() if family != GROWTH}
    lines = [f"Measured on {date.today():%d %B %Y}: {'; '.join([*machine(), *versions])}.", "", *summary_table(ratios)]
    for family, rows in [*ratios.items(), *((family, rows) for family, rows in results.items() if family == GROWTH)]:
        lines += section(family, rows)
    return "\n".join(lines)


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("results", type=Path)
    parser.add_argument("docs", type=Path)
    parser.add_argument("--version", action="append", default=[])
    parser.add_argument("families", nargs="+")
    arguments = parser.parse_args()
    results = {family: read_rows(arguments.results / f"{family}.csv") for family in arguments.families}

    import matplotlib
    matplotlib.use("svg")
    for family, rows in results.items():
        path = arguments.docs / "images" / f"performance-{family}.svg"
        if family == GROWTH:
            draw_growth(rows, path)
        else:
            draw_ratios(family, rows, path)
    page = arguments.docs / "performance.md"
    text = page.read_text(encoding="utf-8")
    before, rest = text.split(BEGIN)
    after = rest.split(END)[1]
    page.write_text(f"{before}{BEGIN}\n\n{results_text(results, arguments.version)}\n\n{END}{after}", encoding="utf-8")


if __name__ == "__main__":
    main()
