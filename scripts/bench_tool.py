"""Compares the tool's commands with `jq .` on the same tree as JSON, for bench.py: processor time and peak memory of
whole processes.

tool_get/10M and similar rows are times. tool_memory/10M is the peak memory of the command that needs most, in
bytes for each byte of its file; for jq, for each byte of the JSON text.
"""
import json
import os
import pathlib
import statistics
import subprocess

from bench_results import Row

SIZE = "10M"
MEMORY = f"tool_memory/{SIZE}"


def entries_in(tree):
    inner = tree.values() if isinstance(tree, dict) else tree if isinstance(tree, list) else []
    return len(inner) + sum(entries_in(value) for value in inner)


def path_in(tree):
    """The last key of each object, down to a value that is not an object or is empty."""
    keys = []
    while isinstance(tree, dict) and tree:
        keys.append(next(reversed(tree)))
        tree = tree[keys[-1]]
    return keys


def commands(file, path, source):
    return {
        "get": ["get", file, path],
        "fmt": ["fmt", file],
        "set": ["set", file, path + " &= 1"],
        "merge": ["merge", file, source],
        "check": ["check", file],
        "to-json": ["to-json", file],
        "canonical": ["fmt", "--canonical", file],
    }


def run(*command):
    """The processor seconds, and the peak memory in bytes."""
    child = subprocess.Popen([str(part) for part in command], stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        raise ValueError(f"{' '.join(map(str, command))} ended with {child.returncode}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def names():
    return [*(f"tool_{name}/{SIZE}" for name in commands("", "", "")), MEMORY]


def measure(tool, folder, chosen, rounds):
    """The chosen rows."""
    file, peers_file = folder / f"{SIZE}.attr", folder / f"{SIZE}.json"
    tree = json.loads(peers_file.read_text(encoding="utf-8"))
    entries = entries_in(tree)
    source = folder / "merged.attr"
    source.write_text("{merged= 1;}\n", encoding="utf-8")
    most = 0
    for name, arguments in commands(file, "/".join(path_in(tree)), source).items():
        row = f"tool_{name}/{SIZE}"
        if row not in chosen and MEMORY not in chosen:
            continue
        ours, peers = [], []
        for _ in range(rounds if row in chosen else 1):
            ours.append(run(tool, *arguments))
            peers.append(run("jq", ".", peers_file))
        times = [statistics.median(seconds for seconds, _ in runs) * 1e9 / entries for runs in (ours, peers)]
        most = max(most, *(memory for _, memory in ours))
        peers_most = max(memory for _, memory in peers)
        if row in chosen:
            yield Row(row, entries, *times, "jq", {})
    if MEMORY in chosen:
        size = file.stat().st_size
        yield Row(MEMORY, size, most / size, peers_most / peers_file.stat().st_size, "jq", {})


def tool_beside(program):
    return pathlib.Path(program).with_name("qrv")
