#!/usr/bin/env python3
"""Times whole runs of Tavix programs and prints one Markdown table row per benchmark.

Usage:
  run_bench.py [--runs N] --tavix build/bin/tavix script.tvx ...
  run_bench.py [--runs N] --parse-bench build/bin/tavix_parse_bench [--lines 20000]

Each benchmark runs once untimed, then N times (default 5); the row gives the median and the
minimum wall time of the timed runs. A script runs in batch mode from its own directory. With
--parse-bench, a script of --lines lines is generated in a temporary directory first and the
parse benchmark program reads it once per run.
"""

import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_parse_script  # noqa: E402


class Benchmark:
    """One command to time, with the name it has in the table."""

    def __init__(self, name, command, cwd=None):
        self.name = name
        self.command = command
        self.cwd = cwd


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
        benches.append(Benchmark("batch run of %s" % os.path.basename(path),
                                 [os.path.abspath(args.tavix), os.path.basename(path)],
                                 cwd=os.path.dirname(path)))

    with tempfile.TemporaryDirectory(prefix="tavix-bench-") as workdir:
        if args.parse_bench:
            generated = os.path.join(workdir, "parse_input.tvx")
            with open(generated, "w", encoding="utf-8", newline="\n") as f:
                f.write(gen_parse_script.generate(args.lines, gen_parse_script.DEFAULT_SEED))
            benches.append(Benchmark(
                "lexing and parsing a generated {:,}-line script".format(args.lines),
                [os.path.abspath(args.parse_bench), generated, "1"]))

        machine = "%d cores" % (os.cpu_count() or 1)
        print(table_row(["benchmark", "median", "min", "runs", "machine"]))
        print(table_row(["---"] * 5))
        failed = False
        for bench in benches:
            times, failure = measure(bench, args.runs, args.warmup)
            if failure:
                failed = True
                print(table_row([bench.name, "failed", failure, "", machine]))
            else:
                print(table_row([bench.name, format_seconds(statistics.median(times)),
                                 format_seconds(min(times)), str(len(times)), machine]))
            sys.stdout.flush()
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
