#!/usr/bin/env python3
"""Draws bench/chart.svg from the newest run in bench/RESULTS.md and puts its numbers into README.md.

Usage: bench_chart.py [--check]; with --check it writes nothing, and exits with 1 if the three files don't agree.
"""
import html
import pathlib
import sys

import bench_results
from bench_judge import MUST, MUST_BYTES

CHART = bench_results.ROOT / "bench/chart.svg"
README = bench_results.ROOT / "README.md"
BEGIN, END = "<!-- numbers of bench/RESULTS.md -->\n", "<!-- end of the numbers -->\n"

NAMES = {
    "read/1M": "Read 1 MB",
    "read/10M": "Read 10 MB",
    "read/160000": "Read a flat map",
    "read/1Mv": "Read, 400 words as keys",
    "write/1M": "Write",
    "write_exact/1M": "Write exact text",
    "copy/1M": "Deep copy",
    "destroy/1M": "Destroy",
    "memory/1M": "Memory",
}
PEERS = {"nlohmann": "nlohmann::json", "rapidjson": "rapidjson", "CPython": "CPython's json"}

LEFT, SCALE, RIGHT, TOP = 190, 470, 100, 64
OURS, PEER, GAP = 14, 7, 16  # heights of bars, and the distance between two rows

STYLE = """
text { font: 12px system-ui, sans-serif; fill: #1f2328 }
.title { font-size: 15px; font-weight: 600 }
.small { font-size: 10px; fill: #59636e }
.qrv { fill: #0969da } .nlohmann { fill: #6e7781 } .rapidjson { fill: #98a2ad } .CPython { fill: #bec6ce }
.axis { stroke: #8c959f }
@media (prefers-color-scheme: dark) {
  text { fill: #f0f6fc } .small { fill: #9198a1 }
  .qrv { fill: #4493f8 } .nlohmann { fill: #a8b0b9 } .rapidjson { fill: #7d8590 } .CPython { fill: #565e69 }
  .axis { stroke: #656c76 }
}
"""


def shown(rows):
    """The rows with limits, in the order of NAMES."""
    found = {row.name: row for row in rows}
    return [found[name] for name in NAMES if name in found]


def times(row):
    return {"qrv": row.ours, row.which: row.peer, **row.further}


def bar(library, y, height, width, value):
    size = "" if library == "qrv" else ' class="small"'
    return (f'<rect class="{library}" x="{LEFT}" y="{y}" width="{width:.1f}" height="{height}" rx="1"/>'
            f'<text{size} x="{LEFT + width + 5:.1f}" y="{y + height - (2 if height == OURS else -1)}">{value:,.0f}</text>')


def legend():
    x, parts = LEFT, []
    for library, name in {"qrv": "qrv", **PEERS}.items():
        parts.append(f'<rect class="{library}" x="{x}" y="38" width="10" height="10" rx="1"/>'
                     f'<text x="{x + 15}" y="47">{html.escape(name)}</text>')
        x += 30 + 7 * len(name)
    return parts


def chart(rows):
    """The picture as SVG: a group of bars for each row, ours on top, in nanoseconds for each entry."""
    rows = [row for row in shown(rows) if row.name in MUST]
    unit = SCALE / max(max(times(row).values()) for row in rows)
    parts, y = [], TOP
    for row in rows:
        begin = y
        for library, time in times(row).items():
            height = OURS if library == "qrv" else PEER
            parts.append(bar(library, y, height, time * unit, time))
            y += height + 2
        middle = (begin + y) / 2 + 3
        parts.append(f'<text x="{LEFT - 10}" y="{middle:.0f}" text-anchor="end">{html.escape(NAMES[row.name])}</text>')
        y += GAP
    head = [f'<text class="title" x="{LEFT}" y="22">Nanoseconds for each entry; shorter is faster</text>', *legend(),
            f'<line class="axis" x1="{LEFT - .5}" x2="{LEFT - .5}" y1="{TOP - 6}" y2="{y - GAP + 6}"/>']
    width = LEFT + SCALE + RIGHT
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{y}" viewBox="0 0 {width} {y}" role="img" '
            f'aria-label="Times of qrv and its peers">\n<style>{STYLE}</style>\n' + "\n".join([*head, *parts]) + "\n</svg>\n")


def numbers(rows):
    """The same as a table for the README."""
    lines = []
    for row in shown(rows):
        unit = "bytes" if row.name in MUST_BYTES else "ns"
        lines.append([NAMES[row.name], f"{row.ours:,.0f} {unit}", f"{row.peer:,.0f} {unit}", f"{row.ratio:.2f}"])
    return bench_results.table(["For each entry", "qrv", PEERS["nlohmann"], "qrv / nlohmann"], lines) + "\n"


def readme(rows):
    text = README.read_text(encoding="utf-8")
    before, begin, rest = text.partition(BEGIN)
    _, end, after = rest.partition(END)
    if not end:
        raise ValueError(f"{README.name} has not the lines {BEGIN.strip()} and {END.strip()}")
    return before + begin + numbers(rows) + end + after


def write():
    rows = bench_results.newest()
    CHART.write_text(chart(rows), encoding="utf-8")
    README.write_text(readme(rows), encoding="utf-8")


def check():
    rows = bench_results.newest()
    missing = [name for name in NAMES if name not in {row.name for row in rows}]
    wrong = [f"bench/RESULTS.md: the newest run has no row {name}" for name in missing]
    if not wrong and (not CHART.is_file() or CHART.read_text(encoding="utf-8") != chart(rows)):
        wrong.append("bench/chart.svg does not show the newest run of bench/RESULTS.md")
    if not wrong and README.read_text(encoding="utf-8") != readme(rows):
        wrong.append("README.md does not have the numbers of the newest run of bench/RESULTS.md")
    return wrong


def main():
    try:
        wrong = check() if sys.argv[1:] == ["--check"] else write()
    except (OSError, ValueError) as error:
        wrong = [str(error)]
    for line in wrong or []:
        print(line + "; scripts/bench_chart.py writes it anew" * line.startswith(("bench/chart", "README")))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
