#!/usr/bin/env python3
"""Compares the behaviour of the library with that of another revision, on generated operations.

  compare.py [REVISION] [--seeds A-B] [--modes read,write,copy,hash,scan] [--preset release]
  compare.py --with FOLDER [--preset release] ...

Builds the library of REVISION (default: the last commit) in a work tree below build/compare and the
program tests/reference with both libraries, runs both on the seeds, and compares the transcripts:
results, errors and messages, the written bytes, the structure and the order of values, and every call of
user code. For each mode that differs it shows one seed, with its input and the lines that differ, and
exits with 1. --with names a folder of other sources whose library is built already.

The library of this folder must have been built with the preset, as ./dev compare does.
"""
import argparse
import concurrent.futures
import difflib
import os
import re
import signal
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
MODES = ["read", "write", "copy", "hash", "scan"]
CHUNK = 1000  # seeds for one process
MOST_CRASHES = 20  # in one chunk; the rest of the chunk is then skipped
SHOWN_LINES = 60
CONTEXT = 3


def run(command, **options):
    done = subprocess.run(command, capture_output=True, text=True, **options)
    if done.returncode != 0:
        sys.exit(f"compare: {' '.join(map(str, command))} failed\n{done.stdout}{done.stderr}")
    return done.stdout


def say(text):
    print(f"compare: {text}", file=sys.stderr, flush=True)


class State:
    """Sources with a built library, and the program linked with it."""

    def __init__(self, title, sources, preset):
        self.title = title
        self.sources = sources
        self.library = sources / "build" / preset / "lib"
        self.folder = ROOT / "build" / "compare" / "programs" / f"{title}-{preset}"
        self.program = self.folder / "reference_observe"

    def build_program(self, compiler):
        if not (self.library / "libqrv.so").exists():
            sys.exit(f"compare: there is no library in {self.library}")
        self.folder.mkdir(parents=True, exist_ok=True)
        headers = [*(self.sources / "include").rglob("*.h"), *(ROOT / "tests/reference").glob("*.h")]
        newest = max(header.stat().st_mtime for header in headers)
        sources = sorted((ROOT / "tests/reference").glob("*.cpp"))
        objects = [self.folder / (source.stem + ".o") for source in sources]

        def compile_one(source, target):
            if target.exists() and target.stat().st_mtime > max(newest, source.stat().st_mtime):
                return
            run([compiler, "-std=c++20", "-O1", f"-I{self.sources / 'include'}", f"-I{ROOT}", "-c", source,
                 "-o", target])

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            list(pool.map(compile_one, sources, objects))
        run([compiler, *objects, "-o", self.program, f"-L{self.library}", "-lqrv",
             f"-Wl,-rpath,{self.library}"])

    def start(self, arguments, folder):
        # If a signal ends the process, its files stay there.
        return subprocess.Popen([self.program, *map(str, arguments)], cwd=folder, env={**os.environ, "TMPDIR": folder},
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)

    def fingerprints(self, mode, first, last):
        """{seed: fingerprint, or how the process ended in it}"""
        found = {}
        crashes = 0
        with tempfile.TemporaryDirectory() as folder:
            while first <= last and crashes < MOST_CRASHES:
                process = self.start([mode, first, last], folder)
                output, _ = process.communicate()
                for line in output.decode().splitlines():
                    seed, print_ = line.split(" ", 1)
                    found[int(seed)] = print_
                    first = int(seed) + 1
                if process.returncode == 0:
                    break
                if first > last:
                    break
                found[first] = how_it_ended(process.returncode)
                first += 1
                crashes += 1
        return found

    def transcript(self, mode, first, seed):
        """The transcript of one seed, in a process that begins with the first."""
        with tempfile.TemporaryDirectory() as folder:
            process = self.start(["--show", mode, first, seed], folder)
            output, _ = process.communicate()
        parts = output.decode(errors="replace").split(f"==== {mode} {seed}\n")
        lines = parts[1].splitlines() if len(parts) > 1 else []
        if process.returncode != 0:
            lines.append(how_it_ended(process.returncode))
        return lines


def how_it_ended(code):
    return f"ends by {signal.Signals(-code).name}" if code < 0 else f"ends with {code}"


def revision_state(revision, preset):
    commit = run(["git", "rev-parse", "--verify", f"{revision}^{{commit}}"], cwd=ROOT).strip()
    tree = ROOT / "build" / "compare" / commit[:12]
    if not tree.exists():
        run(["git", "worktree", "prune"], cwd=ROOT)
        run(["git", "worktree", "add", "--detach", tree, commit], cwd=ROOT)
    say(f"building the library of {commit[:12]}")
    if not (tree / "build" / preset / "build.ninja").exists():
        run(["cmake", "--preset", preset, "-D", "BUILD_TESTING=OFF"], cwd=tree)
    run(["cmake", "--build", tree / "build" / preset, "--target", "qrv"], cwd=tree)
    return State(commit[:12], tree, preset)


def shortest(states, mode, seeds, first):
    """The seed with the shortest transcripts: (seed, first seed of the process, transcripts)."""
    best = None
    for seed in seeds[:40]:
        start = seed
        both = [state.transcript(mode, start, seed) for state in states]
        if both[0] == both[1]:  # the difference depends on earlier seeds
            start = first
            both = [state.transcript(mode, start, seed) for state in states]
        if best is None or len(both[0]) + len(both[1]) < sum(map(len, best[2])):
            best = (seed, start, both)
    return best


def show_difference(states, mode, seeds, first, done):
    seed, start, both = shortest(states, mode, seeds, first)
    before = "" if start == seed else f", only in a process that begins with seed {start}"
    print(f"{mode}: {len(seeds)} of {done} seeds differ; seed {seed}{before}:")
    if len(seeds) > 1:
        print(f"  all: {' '.join(map(str, seeds[:20]))}")
    for line in both[0][:1]:
        print(f"  {line}")
    if both[0] == both[1]:
        print("  the difference did not occur again")
    lines = list(difflib.unified_diff(both[0], both[1], states[0].title, states[1].title, "", "", CONTEXT, ""))
    for line in lines[:SHOWN_LINES]:
        print(f"  {line[:1000]}")
    if len(lines) > SHOWN_LINES:
        print(f"  ... and {len(lines) - SHOWN_LINES} more lines")
    for state in states:
        print(f"  again: {state.program} --show {mode} {start} {seed}")
    sys.stdout.flush()


def differs(states, mode, first, seed, ignored):
    both = [[ignored.sub("", line) for line in state.transcript(mode, first, seed)] for state in states]
    return both[0] != both[1]


def compare(states, mode, first, last, ignored):
    """False at the first chunk with a difference, which is printed."""
    for begin in range(first, last + 1, CHUNK):
        end = min(begin + CHUNK - 1, last)
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            prints = list(pool.map(lambda state: state.fingerprints(mode, begin, end), states))
        seeds = [seed for seed in range(begin, end + 1) if prints[0].get(seed) != prints[1].get(seed)]
        if ignored:
            seeds = [seed for seed in seeds if differs(states, mode, begin, seed, ignored)]
        if seeds:
            show_difference(states, mode, seeds, begin, end - first + 1)
            return False
        for seed, end_ in prints[0].items():
            if end_.startswith("ends"):
                say(f"{mode} {seed} {end_} in both states")
    say(f"{mode}: {last - first + 1} seeds are the same")
    return True


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("revision", nargs="?", default="HEAD")
    parser.add_argument("--with", dest="other", type=Path, metavar="FOLDER")
    parser.add_argument("--seeds", default="1-20000", metavar="A-B")
    parser.add_argument("--modes", default=",".join(MODES))
    parser.add_argument("--preset", default="release")
    parser.add_argument("--now", type=Path, default=ROOT, metavar="FOLDER",
                        help="sources to use instead of these, built already")
    parser.add_argument("--ignore", metavar="REGEX", help="parts of lines that may differ")
    options = parser.parse_args()
    first, _, last = options.seeds.partition("-")
    modes = options.modes.split(",")
    if not set(modes) <= set(MODES):
        parser.error(f"the modes are {', '.join(MODES)}")
    if options.other:
        before = State(options.other.resolve().name, options.other.resolve(), options.preset)
    else:
        before = revision_state(options.revision, options.preset)
    now = options.now.resolve()
    states = [before, State("now" if now == ROOT else now.name, now, options.preset)]
    compiler = os.environ.get("CXX", "g++")
    for state in states:
        state.build_program(compiler)
    ignored = re.compile(options.ignore) if options.ignore else None
    same = [compare(states, mode, int(first), int(last or first), ignored) for mode in modes]
    return 0 if all(same) else 1


if __name__ == "__main__":
    sys.exit(main())
