#!/usr/bin/env python3
"""Times whole runs of Tavix programs and prints one Markdown table row per benchmark.

Usage:
  run_bench.py [--runs N] --tavix build/bin/tavix script.tvx ...
  run_bench.py [--runs N] --parse-bench build/bin/tavix_parse_bench [--lines 20000]

Each benchmark runs once untimed, then N times (default 5); the row gives the median and the
minimum wall time of the timed runs. A script runs in batch mode from its own directory. With
--parse-bench, a script of --lines lines is generated in a temporary directory first and the
parse benchmark program reads it once per run.

When a script has siblings of the same name ending in ".m" or ".R" and GNU Octave (`octave`)
or R (`Rscript`) is installed, those are timed in the same run, and their rows give the ratio
of their median to the Tavix script's median.
"""

import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_parse_script  # noqa: E402


class Benchmark:
    """One command to time, with the name it has in the table."""

    def __init__(self, name, command, cwd=None, baseline=None):
        self.name = name
        self.command = command
        self.cwd = cwd
        self.baseline = baseline  # the Tavix benchmark this one is compared with


# Other programs that run the equivalent of a script: extension, executable, arguments.
EQUIVALENTS = [
    (".m", "octave", ["--no-gui", "--quiet", "--no-window-system"]),
    (".R", "Rscript", ["--vanilla"]),
]


def equivalents(tavix_bench, path):
    """Benchmarks of the installed programs that have an equivalent of the script at path."""
    found = []
    stem = os.path.splitext(path)[0]
    for extension, program, arguments in EQUIVALENTS:
        other = stem + extension
        executable = shutil.which(program)
        if executable and os.path.isfile(other):
            found.append(Benchmark("%s %s" % (program, os.path.basename(other)),
                                   [executable] + arguments + [os.path.basename(other)],
                                   cwd=os.path.dirname(other), baseline=tavix_bench))
    return found


def run_once(bench):
    """Runs the command once; returns (seconds, exit status, last lines of output)."""
    start = time.perf_counter()
    done = subprocess.run(bench.command, cwd=bench.cwd, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    seconds = time.perf_counter() - start
    lines = done.stdout.decode("utf-8", "backslashreplace").splitlines()
    tail = [line.strip().replace("|", "/") for line in lines if line.strip()][-2:]
    return seconds, done.returncode, tail


def measure(bench, runs, warmup):
    """Times the benchmark; returns (list of seconds, None) or (None, a description of the failure)."""
    times = []
    for index in range(warmup + runs):
        seconds, status, tail = run_once(bench)
        if status != 0:
            return None, "exit status %d: %s" % (status, " / ".join(tail))
        if index >= warmup:
            times.append(seconds)
    return times, None


def format_seconds(seconds):
    """A wall time with three significant digits, in s or ms."""
    if seconds >= 1:
        return "%.3g s" % seconds
    return "%.3g ms" % (seconds * 1000)


def table_row(cells):
    """One Markdown table row."""
    return "| " + " | ".join(cells) + " |"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("scripts", nargs="*", help="scripts to run in batch mode with --tavix")
    parser.add_argument("--tavix", help="the tavix executable")
    parser.add_argument("--parse-bench", help="the lexing and parsing benchmark program")
    parser.add_argument("--lines", type=int, default=20000,
                        help="lines of the generated script for --parse-bench (default 20000)")
    parser.add_argument("--runs", type=int, default=5, help="timed runs per benchmark (default 5)")
    parser.add_argument("--warmup", type=int, default=1, help="untimed runs first (default 1)")
    args = parser.parse_args()

    if args.runs < 1 or args.warmup < 0 or args.lines < 1:
        parser.error("--runs and --lines must be at least 1, --warmup at least 0")
    if args.scripts and not args.tavix:
        parser.error("scripts need --tavix")
    if not args.scripts and not args.parse_bench:
        parser.error("nothing to run: give scripts with --tavix, or --parse-bench")

    benches = []
    for script in args.scripts:
        path = os.path.abspath(script)
        if not os.path.isfile(path):
            parser.error("no such script: %s" % script)
        tavix_bench = Benchmark("batch run of %s" % os.path.basename(path),
                                [os.path.abspath(args.tavix), os.path.basename(path)],
                                cwd=os.path.dirname(path))
        benches.append(tavix_bench)
        benches.extend(equivalents(tavix_bench, path))

    with tempfile.TemporaryDirectory(prefix="tavix-bench-") as workdir:
        if args.parse_bench:
            generated = os.path.join(workdir, "parse_input.tvx")
            with open(generated, "w", encoding="utf-8", newline="\n") as f:
                f.write(gen_parse_script.generate(args.lines, gen_parse_script.DEFAULT_SEED))
            benches.append(Benchmark(
                "lexing and parsing a generated {:,}-line script".format(args.lines),
                [os.path.abspath(args.parse_bench), generated, "1"]))

        machine = "%d cores" % (os.cpu_count() or 1)
        print(table_row(["benchmark", "median", "min", "runs", "vs Tavix", "machine"]))
        print(table_row(["---"] * 6))
        failed = False
        medians = {}
        for bench in benches:
            times, failure = measure(bench, args.runs, args.warmup)
            if failure:
                failed = bench.baseline is None  # a failing comparison program is only reported
                print(table_row([bench.name, "failed", failure, "", "", machine]))
                sys.stdout.flush()
                continue
            median = statistics.median(times)
            medians[id(bench)] = median
            ratio = ""
            if bench.baseline is not None and id(bench.baseline) in medians:
                ratio = "%.2fx" % (median / medians[id(bench.baseline)])
            print(table_row([bench.name, format_seconds(median), format_seconds(min(times)),
                             str(len(times)), ratio, machine]))
            sys.stdout.flush()
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
