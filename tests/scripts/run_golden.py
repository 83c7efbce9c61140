#!/usr/bin/env python3
"""Runs one golden script test: the batch output of a .tvx script must match its .out file.

Usage: run_golden.py <tavix executable> <script.tvx>

The script runs from its own directory with its bare file name as the only argument, standard
input at end of file, and a time limit. The .out file beside it holds the exact standard output,
followed by the line "[exit status N]" when the exit status is not 0. With TAVIX_UPDATE_GOLDEN=1
in the environment the .out file is (re)written instead of compared.
"""

import difflib
import os
import re
import signal
import subprocess
import sys

TIMEOUT_SECONDS = 60


def expected_path(script):
    """The .out file that belongs to a script: the same name with .out instead of .tvx."""
    base, ext = os.path.splitext(script)
    return (base if ext == ".tvx" else script) + ".out"


def run_script(tavix, script):
    """Runs the script and returns (stdout bytes, stderr bytes, return code), or None on a timeout."""
    env = dict(os.environ)
    # Messages and number formatting must not depend on the machine running the tests.
    env["LC_ALL"] = "C"
    env.pop("LANGUAGE", None)
    try:
        done = subprocess.run(
            [tavix, os.path.basename(script)],
            cwd=os.path.dirname(script),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            env=env,
            timeout=TIMEOUT_SECONDS,
        )
    except subprocess.TimeoutExpired as expired:
        return None, expired.stdout or b"", expired.stderr or b""
    return done.returncode, done.stdout, done.stderr


def signal_name(number):
    """The name of a signal number, e.g. SIGSEGV, or the number as text."""
    try:
        return signal.Signals(number).name
    except ValueError:
        return str(number)


# The one line of output that changes from run to run: a model's estimation time.
ESTIMATION_TIME = re.compile(rb"^(Estimation time: +)[0-9.]+ s$", re.MULTILINE)


def golden_text(stdout, returncode):
    """The contents of a .out file for a run: the output (estimation times masked), then the exit
    status line when not 0."""
    stdout = ESTIMATION_TIME.sub(rb"\1<time> s", stdout)
    if returncode == 0:
        return stdout
    return stdout + b"[exit status %d]\n" % returncode


def visible(line):
    """A line of output with tabs, carriage returns and other control characters made visible."""
    out = []
    for ch in line:
        if ch == "\t":
            out.append("\\t")
        elif ch == "\r":
            out.append("\\r")
        elif ord(ch) < 32 or ord(ch) == 127:
            out.append("\\x%02x" % ord(ch))
        else:
            out.append(ch)
    return "".join(out)


def unified_diff(expected, actual, expected_name, actual_name):
    """A unified diff of two outputs, readable even for whitespace and a missing final newline."""
    old = expected.decode("utf-8", "backslashreplace").splitlines(keepends=True)
    new = actual.decode("utf-8", "backslashreplace").splitlines(keepends=True)
    lines = []
    for entry in difflib.unified_diff(old, new, expected_name, actual_name, lineterm=""):
        if entry.startswith(("---", "+++", "@@")):
            lines.append(entry.rstrip("\n"))
            continue
        prefix, text = entry[:1], entry[1:]
        if text.endswith("\n"):
            lines.append(prefix + visible(text[:-1]))
        else:
            lines.append(prefix + visible(text))
            lines.append("\\ No newline at end of file")
    return "\n".join(lines) + "\n"


def show_stderr(stderr):
    """Prints what the program wrote to standard error, if anything."""
    if stderr:
        sys.stdout.write("--- standard error of the run:\n")
        sys.stdout.write(stderr.decode("utf-8", "backslashreplace"))
        if not stderr.endswith(b"\n"):
            sys.stdout.write("\n")


def main(argv):
    if len(argv) != 3:
        sys.stderr.write("usage: run_golden.py <tavix executable> <script.tvx>\n")
        return 2
    tavix = os.path.abspath(argv[1])
    script = os.path.abspath(argv[2])
    golden = expected_path(script)
    update = os.environ.get("TAVIX_UPDATE_GOLDEN") == "1"

    if not os.path.isfile(script):
        print("no such script: %s" % script)
        return 1
    if not (os.path.isfile(tavix) and os.access(tavix, os.X_OK)):
        print("not an executable program: %s" % tavix)
        return 1

    returncode, stdout, stderr = run_script(tavix, script)
    if returncode is None:
        print("FAIL: %s did not finish within %d s; output so far:" % (script, TIMEOUT_SECONDS))
        sys.stdout.write(stdout.decode("utf-8", "backslashreplace"))
        show_stderr(stderr)
        return 1
    if returncode < 0:
        print("FAIL: %s was killed by signal %s; output:" % (script, signal_name(-returncode)))
        sys.stdout.write(stdout.decode("utf-8", "backslashreplace"))
        show_stderr(stderr)
        return 1

    actual = golden_text(stdout, returncode)

    if update:
        previous = None
        if os.path.isfile(golden):
            with open(golden, "rb") as f:
                previous = f.read()
        if previous == actual:
            print("unchanged: %s" % golden)
        else:
            with open(golden, "wb") as f:
                f.write(actual)
            print("%s: %s (review the change before committing)"
                  % ("updated" if previous is not None else "created", golden))
        show_stderr(stderr)
        return 0

    if not os.path.isfile(golden):
        print("FAIL: no expected output %s" % golden)
        print("Create it by running the test with TAVIX_UPDATE_GOLDEN=1 in the environment, e.g.")
        print("  TAVIX_UPDATE_GOLDEN=1 python3 %s %s %s"
              % (os.path.abspath(__file__), tavix, script))
        print("then check the new file by hand. The output of this run was:")
        sys.stdout.write(actual.decode("utf-8", "backslashreplace"))
        show_stderr(stderr)
        return 1

    with open(golden, "rb") as f:
        expected = f.read()
    if expected == actual:
        return 0

    print("FAIL: the output of %s differs from %s" % (os.path.basename(script), golden))
    sys.stdout.write(unified_diff(expected, actual, "expected", "actual"))
    show_stderr(stderr)
    print("If the new output is right, rerun with TAVIX_UPDATE_GOLDEN=1 and review the diff.")
    return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv))
