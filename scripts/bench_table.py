#!/usr/bin/env python3
"""Turns Google Benchmark's JSON into the table of bench/RESULTS.md, on standard output.

Benchmarks are named <work>_<library>/<size>; the table has a line for each work and size, with the
median processor time of each library and how many times ours takes of the other's.
Usage: bench_table.py RESULTS.json
"""
import json
import sys

OTHERS = {"json": "nlohmann::json", "sigc": "libsigc++"}


def medians(results):
    """{(work, size): {library: nanoseconds}}, in the order of the run."""
    scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    table = {}
    for entry in results["benchmarks"]:
        if entry.get("aggregate_name") != "median":
            continue
        name, size = entry["run_name"].split("/")[:2]
        work, library = name.rsplit("_", 1)
        table.setdefault((work, int(size)), {})[library] = entry["cpu_time"] * scale[entry["time_unit"]]
    return table


def per_item(nanoseconds, size):
    return f"{nanoseconds / 1e3:,.2f} ({nanoseconds / size:,.1f})"


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        results = json.load(file)
    context = results["context"]
    print("# Benchmarks\n")
    print("Written by `./dev bench`. Machines differ: run it on yours before comparing with anything else.")
    print(f"This run: {context['num_cpus']} processors at {context['mhz_per_cpu']} MHz, {context['date'][:10]},")
    print("release build, g++. Median of three runs, processor time in microseconds, in brackets")
    print("nanoseconds for each entry or slot. What each line does is told in `bench/*.cpp`.\n")
    print("| Work | Size | qrv | other | which | qrv / other |")
    print("|---|---:|---:|---:|---|---:|")
    for (work, size), times in medians(results).items():
        other = next(library for library in times if library != "qrv")
        print(
            f"| {work} | {size:,} | {per_item(times['qrv'], size)} | {per_item(times[other], size)} "
            f"| {OTHERS[other]} | {times['qrv'] / times[other]:.1f} |"
        )


if __name__ == "__main__":
    main()
