#!/usr/bin/env python3
"""tw at a terminal, driven through a pseudo-terminal: Ctrl-C stops a running
loop and keeps the workspace, Ctrl-C at the prompt drops the line, Ctrl-D
leaves, and history survives from one run to the next.

    shell_terminal_test.py BUILD_DIR
"""
import os
import pty
import re
import select
import sys
import tempfile
import termios
import time

TIMEOUT_SECONDS = 30
CTRL_C, CTRL_D, UP = b"\x03", b"\x04", b"\x1b[A"
PROMPT = ">> "


class Terminal:
    """tw on a pseudo-terminal, with expect-like reading."""

    def __init__(self, tw, folder):
        self.pid, self.fd = pty.fork()
        if self.pid == 0:
            try:
                os.chdir(folder)
                os.environ["HOME"] = folder
                os.execv(tw, [tw])
            finally:
                os._exit(127)
        self.seen = ""  # everything read so far
        self.mark = 0  # where the next expect starts looking

    def send(self, data):
        os.write(self.fd, data)

    def type(self, data):
        """Keys for the line editor. They wait until it has the terminal in
        its own mode: keys that come before are read, echoed and perhaps
        lost by the terminal's line discipline. (Termios calls on the master
        side of a pseudo-terminal act on its slave side, tw's terminal.)"""
        deadline = time.time() + TIMEOUT_SECONDS
        while termios.tcgetattr(self.fd)[3] & termios.ICANON:
            if time.time() > deadline:
                raise AssertionError(f"the line editor never took the terminal:\n{self.seen}")
            time.sleep(0.01)
        self.send(data)

    def expect(self, pattern):
        """Waits for `pattern` after the last match; returns the text before it."""
        regex = re.compile(pattern)
        deadline = time.time() + TIMEOUT_SECONDS
        while True:
            m = regex.search(self.seen, self.mark)
            if m:
                before = self.seen[self.mark:m.start()]
                self.mark = m.end()
                return before
            left = deadline - time.time()
            if left <= 0:
                raise AssertionError(f"waited for {pattern!r}; tw wrote:\n{self.seen}")
            ready, _, _ = select.select([self.fd], [], [], left)
            if ready:
                try:
                    chunk = os.read(self.fd, 4096)
                except OSError:
                    chunk = b""
                if not chunk:
                    raise AssertionError(f"tw ended while waiting for {pattern!r}:\n{self.seen}")
                self.seen += chunk.decode("utf-8", "replace").replace("\r\n", "\n")

    def run(self, line):
        """Types a line and returns what tw wrote before the next prompt."""
        self.type(line.encode() + b"\r")
        self.expect(re.escape(line) + "\n")
        return self.expect(re.escape(PROMPT))

    def finish(self):
        """Ctrl-D at the prompt; the exit status."""
        self.type(CTRL_D)
        deadline = time.time() + TIMEOUT_SECONDS
        while time.time() < deadline:
            pid, status = os.waitpid(self.pid, os.WNOHANG)
            if pid:
                os.close(self.fd)
                return os.waitstatus_to_exitcode(status)
            try:
                ready, _, _ = select.select([self.fd], [], [], 0.1)
                if ready:
                    self.seen += os.read(self.fd, 4096).decode("utf-8", "replace")
            except OSError:
                pass
        raise AssertionError(f"tw did not leave on Ctrl-D; it wrote:\n{self.seen}")


def wait_until_written(path):
    """Waits until the file has grown: the loop has run a good many turns."""
    deadline = time.time() + TIMEOUT_SECONDS
    while os.path.getsize(path) == 0:
        if time.time() > deadline:
            raise AssertionError(f"nothing was written to {path}")
        time.sleep(0.05)


def check(condition, what, text):
    if not condition:
        raise AssertionError(f"{what}; tw wrote:\n{text}")


def interrupted_loop_keeps_the_workspace(tw, folder):
    t = Terminal(tw, folder)
    t.expect(re.escape(PROMPT))
    t.run("x = 7;")
    t.run("fid = fopen('loop.txt', 'w');")
    # A loop that spends its time inside a built-in, stopped by Ctrl-C.
    t.type(b"n = 0; while true, fprintf(fid, '%d\\n', n); n = n + 1; end\r")
    wait_until_written(os.path.join(folder, "loop.txt"))
    t.send(CTRL_C)
    report = t.expect(re.escape(PROMPT))
    check("KORVAN:shell:Interrupted" in report, "Ctrl-C was not reported", t.seen)
    after = t.run("x, fclose(fid), isempty(fopen('all')), disp(n)")
    check(re.search(r"x = 7\n", after), "x was lost", after)
    check(re.search(r"ans = 0\nans = 1 \(logical\)\n", after),
          "the file could not be closed, or the file table was left broken", after)
    n = int(after.strip().split("\n")[-1])
    # Every line the loop wrote is whole and in order, and n counts them: the
    # loop stopped between two statements, before or after n = n + 1.
    with open(os.path.join(folder, "loop.txt")) as f:
        text = f.read()
    lines = text.split("\n")
    check(lines[-1] == "" and lines[:-1] == [str(k) for k in range(len(lines) - 1)],
          "loop.txt holds a broken line", text[-200:])
    check(n > 0 and len(lines) - 1 in (n, n + 1), f"n is {n} for {len(lines) - 1} lines", after)
    # Ctrl-C at the prompt drops what was typed; the next line runs alone.
    t.type(b"half typed(")
    t.expect("half typed\\(")
    t.send(CTRL_C)
    t.expect(re.escape(PROMPT))
    after = t.run("y = 3")
    check(after.strip() == "y = 3", "the dropped line came back", after)
    status = t.finish()
    check(status == 0, f"tw ended with status {status}", t.seen)


def history_survives_a_restart(tw, folder):
    history = os.path.join(folder, ".tw_history")
    check(os.path.exists(history), "no history file in the home folder", "")
    t = Terminal(tw, folder)
    t.expect(re.escape(PROMPT))
    t.type(UP + b"\r")
    # The recalled line is echoed after the prompt, and its value shown on a
    # line of its own.
    t.expect("\ny = 3\n")
    t.expect(re.escape(PROMPT))
    status = t.finish()
    check(status == 0, f"tw ended with status {status}", t.seen)


def main(build):
    tw = os.path.abspath(os.path.join(build, "tw"))
    with tempfile.TemporaryDirectory(prefix="tw_terminal_") as folder:
        interrupted_loop_keeps_the_workspace(tw, folder)
        history_survives_a_restart(tw, folder)
    print("passed")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
