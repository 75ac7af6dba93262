"""The limits of the benchmarks, for bench.py and bench_count.py, and bench/unmet.txt, which lists the rows that
exceed them, each with a profile:

    read/1M
    the reason, in any number of lines
       12.3 %  cAttrHash::mapitem
        9.8 %  ...

A row begins in the first column, its other lines are indented. The lines with a percentage are those of
`./dev bench --profile ROW`; together they account for at least half of the row's instructions. Lines that
begin with # are comments. The row "growth read/10M" is the growth of the instructions for each entry of `read`, up
to its largest size, 10M.
"""
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent
UNMET = ROOT / "bench/unmet.txt"

# The largest permitted ratio of our time to the peer's.
MUST = {
    "read/1M": 1.0,
    "read/10M": 1.0,
    "read/160000": 1.0,
    "read/1Mv": 1.0,
    "write/1M": 2.0,
    "write_exact/1M": 2.5,
    "copy/1M": 3.0,
    "destroy/1M": 1.0,
    "tool_get/10M": 1.0,
    "tool_fmt/10M": 2.0,
    "tool_set/10M": 2.0,
    **{f"map_{work}/{size}": 1.5 for work in ("insert", "find", "find_key", "replace") for size in (1000, 100000, 1000000)},
    **{f"vector_append/{size}": 4.0 for size in (1000, 100000, 1000000)},
    **{f"vector_index/{size}": 1.5 for size in (1000, 100000, 1000000)},
    **{f"set_append/{size}": 2.0 for size in (1000, 100000, 1000000)},
    "value_get/10000": 1.3,
    "include/value": 1.0,
    "call_own/10000": 1.5,
    "call_type/10000": 1.5,
}
# The largest permitted number of bytes: in memory for each entry that read/1M and map_ints/100000 create, and the peak
# memory of the tool's commands for each byte of the file.
MUST_BYTES = {"memory/1M": 230, "memory/map_ints": 200, "tool_memory/10M": 20}
# The largest permitted ratio of the instructions for each entry at the largest size to those at the smallest.
MUST_GROWTH = 1.4

LEAST_PERCENT = 50
PROFILE = re.compile(r"\s+(\d+\.\d+) %  \S")


def read_unmet(path=UNMET):
    """{row: the percentages of its profile}. Raises ValueError for lines of another form."""
    rows = {}
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        if not line[0].isspace():
            row = line.strip()
            if row in rows:
                raise ValueError(f"{path.name}:{number}: {row} is listed twice")
            rows[row] = []
        elif not rows:
            raise ValueError(f"{path.name}:{number}: a row comes first, in the first column")
        elif match := PROFILE.match(line):
            rows[row].append(float(match[1]))
    return rows


def complaints(judged, unmet):
    """The complaints, a line each. `judged` is {row: why it exceeds its limit, or None}, `unmet` the result of
    read_unmet() for these rows."""
    for row, why in judged.items():
        if why and row not in unmet:
            yield f"{row}: {why}, and bench/unmet.txt does not list it"
        if not why and row in unmet:
            yield f"{row} is met: remove it from bench/unmet.txt"
    for row, percentages in unmet.items():
        if row not in judged:
            yield f"bench/unmet.txt: no row with a limit has the name {row}"
        if sum(percentages) < LEAST_PERCENT:
            yield f"bench/unmet.txt: {row} needs the profile that ./dev bench --profile prints"
