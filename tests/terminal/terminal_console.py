#!/usr/bin/env python3
"""The terminal console through a pseudo-terminal: Ctrl+C at the prompt drops what was typed and
keeps the session; Ctrl+D and quit ask before discarding a workspace that holds values, and save it
when asked to. Usage: terminal_console.py <tavix executable>. Exits 1 on the first failure."""

import os
import pty
import select
import sys
import tempfile
import time

TIMEOUT = 60.0  # seconds to wait for an expected text (sanitizer builds start slowly)


class Console:
    def __init__(self, tavix, folder):
        self.pid, self.fd = pty.fork()
        if self.pid == 0:
            os.chdir(folder)
            os.execv(tavix, [tavix, "--terminal"])
        self.seen = b""

    def expect(self, text):
        """Reads until `text` appears after what earlier expectations consumed."""
        end = time.time() + TIMEOUT
        while text.encode() not in self.seen:
            if time.time() > end:
                os.kill(self.pid, 9)
                fail("timed out waiting for %r; the console printed %r" % (text, self.seen))
            ready, _, _ = select.select([self.fd], [], [], 0.1)
            if ready:
                try:
                    chunk = os.read(self.fd, 4096)
                except OSError:
                    chunk = b""
                if not chunk:
                    fail("the console ended while %r was awaited; it printed %r" % (text, self.seen))
                self.seen += chunk
        self.seen = self.seen[self.seen.index(text.encode()) + len(text):]

    def send(self, keys):
        # Keys typed the instant a prompt appears can be lost while the line editor sets up the
        # terminal; a person never types that fast, so the test waits as one would.
        time.sleep(0.5)
        os.write(self.fd, keys.encode())

    def status(self):
        """The exit status once the console has ended."""
        end = time.time() + TIMEOUT
        while time.time() < end:
            pid, status = os.waitpid(self.pid, os.WNOHANG)
            if pid:
                return os.waitstatus_to_exitcode(status)
            ready, _, _ = select.select([self.fd], [], [], 0.1)
            if ready:
                try:
                    self.seen += os.read(self.fd, 4096)
                except OSError:
                    pass
        os.kill(self.pid, 9)
        fail("the console did not end; it printed %r" % self.seen)


def fail(message):
    print("FAIL: " + message)
    sys.exit(1)


def main():
    tavix = sys.argv[1]
    with tempfile.TemporaryDirectory() as folder:
        # Ctrl+C under an unfinished block and on a half-typed line: new prompts, values kept.
        console = Console(tavix, folder)
        console.expect(">> ")
        console.send("x = 41;\n")
        console.expect(">> ")
        console.send("for (i = 1 : 2)\n")
        console.expect(".. ")
        console.send("\x03")
        console.expect(">> ")
        console.send("pri\x03")
        console.expect(">> ")
        console.send("print(x + 1);\n")
        console.expect("42")
        console.expect(">> ")
        # Ctrl+D asks first; "c" goes back to the prompt, "quit" asks again, "y" saves.
        console.send("\x04")
        console.expect("Save the workspace before exiting?")
        console.send("c\n")
        console.expect(">> ")
        console.send("quit;\n")
        console.expect("Save the workspace before exiting?")
        console.send("y\n")
        console.expect("Workspace file (workspace.tvw):")
        console.send("kept.tvw\n")
        if console.status() != 0:
            fail("the console did not end with status 0 after saving")
        if not os.path.exists(os.path.join(folder, "kept.tvw")):
            fail("the workspace was not saved to kept.tvw")

        # "n" ends without saving; an empty workspace ends at once.
        console = Console(tavix, folder)
        console.expect(">> ")
        console.send("y = 1;\n")
        console.expect(">> ")
        console.send("\x04")
        console.expect("Save the workspace before exiting?")
        console.send("n\n")
        if console.status() != 0:
            fail("the console did not end with status 0 after \"n\"")
        console = Console(tavix, folder)
        console.expect(">> ")
        console.send("\x04")
        if console.status() != 0:
            fail("an empty console did not end at Ctrl+D")
    print("OK")


if __name__ == "__main__":
    main()
