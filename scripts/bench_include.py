"""Compares what including qrv/value.h and nlohmann/json.hpp costs, for bench.py: processor time of g++ for a source
that includes nothing else, without generating code.
"""
import pathlib
import statistics

from bench_results import Row
from bench_tool import run

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROW = "include/value"
HEADERS = "qrv/value.h", "nlohmann/json.hpp"


def measure(folder, rounds):
    times = []
    for header in HEADERS:
        source = folder / (pathlib.Path(header).stem + ".cpp")
        source.write_text(f"#include <{header}>\n", encoding="utf-8")
        command = "g++", "-std=c++20", "-fsyntax-only", "-I", ROOT / "include", source
        times.append(statistics.median(run(*command)[0] for _ in range(rounds)) * 1e9)
    yield Row(ROW, 1, *times, "nlohmann", {})
