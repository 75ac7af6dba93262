"""Writes and reads bench/RESULTS.md: the table of the newest run and a line for each run."""
import dataclasses
import pathlib

from bench_judge import MUST, MUST_BYTES

ROOT = pathlib.Path(__file__).resolve().parent.parent
RESULTS = ROOT / "bench/RESULTS.md"
FURTHER = ["rapidjson", "CPython"]
COLUMNS = ["Row", "Entries", "qrv", "peer", "which", "qrv / peer", "must", "change", *FURTHER]

PAGE = """# Benchmarks

Written by `./dev bench`. Machines differ: run it on yours before comparing with anything else.
{about}

Processor time in nanoseconds for each entry or slot, or for one inclusion; `memory` in bytes, `tool_memory` in
bytes for each byte of the file. The peer is the library in the column `which`. `must` is the limit: the highest
permitted `qrv / peer`, or a number of bytes. `change` is the change of `qrv / peer` since the run before.
`bench/README.md` describes the rows.

{newest}

## All runs

`qrv / peer`; `memory` in bytes for each entry. A commit with a `+` had changes that were not committed.

{runs}
"""


@dataclasses.dataclass
class Row:
    name: str
    entries: int
    ours: float
    peer: float
    which: str
    further: dict  # {library: its time}
    before: float | None = None  # the ratio in the previous run

    @property
    def ratio(self):
        return self.ours / self.peer

    def missed(self):
        """Why the row exceeds its limit, or None."""
        if self.name in MUST_BYTES and self.ours > MUST_BYTES[self.name]:
            each = "byte of the file" if self.name.startswith("tool_") else "entry"
            return f"{self.ours:.0f} bytes for each {each}, more than {MUST_BYTES[self.name]}"
        if self.name in MUST and self.ratio > MUST[self.name]:
            return f"{self.ratio:.2f} times what {self.which} takes, more than {MUST[self.name]:.1f}"
        return None

    def cells(self):
        must = f"{MUST_BYTES[self.name]} bytes" if self.name in MUST_BYTES else f"{MUST.get(self.name, '')}"
        change = f"{100 * (self.ratio / self.before - 1):+.0f} %" if self.before else "new"
        further = [f"{self.further[library]:,.1f}" if library in self.further else "" for library in FURTHER]
        return [self.name, f"{self.entries:,}", f"{self.ours:,.1f}", f"{self.peer:,.1f}", self.which,
                f"{self.ratio:.2f}", must, change, *further]

    def short(self):
        return f"{self.ours:.0f}" if self.name in MUST_BYTES else f"{self.ratio:.2f}"


def number(text):
    return float(text.replace(",", ""))


def row_of(cells):
    further = {library: number(cells[library]) for library in FURTHER if cells[library]}
    return Row(cells["Row"], int(number(cells["Entries"])), number(cells["qrv"]), number(cells["peer"]),
               cells["which"], further)


def table(columns, lines):
    align = ["---" if column in ("Row", "which", "Date", "Commit") else "---:" for column in columns]
    return "\n".join("| " + " | ".join(cells) + " |" for cells in [columns, align, *lines])


def tables(path):
    """The tables of a page, each a list of {column: cell}."""
    found, columns = [], None
    for line in path.read_text(encoding="utf-8").splitlines() if path.is_file() else []:
        cells = [cell.strip() for cell in line.strip("|").split("|")] if line.startswith("|") else None
        if cells and columns is None:
            columns = cells
            found.append([])
        elif cells and not set("".join(cells)) <= set("-: "):
            found[-1].append(dict(zip(columns, cells)))
        columns = columns if cells else None
    return found


def newest(path=RESULTS):
    """The rows of the newest run, as rounded in its table; empty if the page doesn't exist."""
    return [row_of(cells) for cells in next((t for t in tables(path) if t and set(COLUMNS) <= set(t[0])), [])]


def all_runs(path=RESULTS):
    return next((t for t in tables(path) if t and {"Date", "Commit"} <= set(t[0])), [])


def write(rows, about, date, commit, path=RESULTS):
    """Adds a run. It replaces the last line if that has the same commit."""
    runs = all_runs(path)
    if runs and runs[-1]["Commit"] == commit:
        runs.pop()
    runs.append({"Date": date, "Commit": commit, **{row.name: row.short() for row in rows}})
    columns = ["Date", "Commit", *(row.name for row in rows)]
    path.write_text(PAGE.format(about=about, newest=table(COLUMNS, [row.cells() for row in rows]),
                                runs=table(columns, [[run.get(column, "") for column in columns] for run in runs])),
                    encoding="utf-8")
