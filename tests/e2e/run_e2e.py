#!/usr/bin/env python3
"""Runs one end-to-end script under `tw --json` and checks its records.

    run_e2e.py TW SCRIPT.tw            check SCRIPT.tw against SCRIPT.expected
    run_e2e.py TW SCRIPT.tw --update   write SCRIPT.expected from this run

The script runs in a fresh temporary folder (so files it makes vanish), as
`TW --json OUT SCRIPT.tw`. Every line of OUT is a JSON record; line k must be
JSON-equal to line k of SCRIPT.expected (key order and spacing do not matter;
blank lines in the .expected file are skipped). Error and warning records name
the script in "file"; that path is cut to the script's file name, so that the
.expected files do not depend on where the tree stands.

The exit status of tw must be 0, unless the script's first line is a comment
`% exit: N`.

To add a test: write tests/e2e/NAME.tw and tests/e2e/NAME.expected; ctest
picks it up as e2e.NAME. Writing the .expected with --update and then reading
it through is the quick way; check every record before committing it.
"""

import json
import os
import re
import subprocess
import sys
import tempfile

TIMEOUT_SECONDS = 120


def expected_exit(script_text):
    first = script_text.splitlines()[0] if script_text else ""
    m = re.match(r"\s*%\s*exit:\s*(\d+)\s*$", first)
    return int(m.group(1)) if m else 0


def parse_lines(text, origin):
    records = []
    for number, line in enumerate(text.splitlines(), 1):
        if not line.strip():
            continue
        try:
            records.append((line, json.loads(line)))
        except json.JSONDecodeError as e:
            records.append((line, ("not JSON", f"{origin} line {number}: {e}")))
    return records


def with_file_names(text, script):
    """The records with the script's path in "file" cut to its name."""
    lines = []
    for line in text.splitlines():
        try:
            record = json.loads(line)
        except json.JSONDecodeError:
            lines.append(line)
            continue
        for kind in ("error", "warning"):
            body = record.get(kind) if isinstance(record, dict) else None
            if isinstance(body, dict) and body.get("file") == script:
                body["file"] = os.path.basename(script)
                line = json.dumps(record)
        lines.append(line)
    return "".join(line + "\n" for line in lines)


def show(title, text):
    text = text.rstrip("\n")
    if text:
        print(f"--- {title} ---")
        print(text)


def main(argv):
    if len(argv) not in (3, 4) or (len(argv) == 4 and argv[3] != "--update"):
        print(__doc__)
        return 2
    tw = os.path.abspath(argv[1])
    script = os.path.abspath(argv[2])
    update = len(argv) == 4
    expected_path = os.path.splitext(script)[0] + ".expected"
    with open(script, encoding="utf-8") as f:
        want_exit = expected_exit(f.read())

    with tempfile.TemporaryDirectory(prefix="tw_e2e_") as work:
        out_path = os.path.join(work, ".records.jsonl")
        try:
            proc = subprocess.run([tw, "--json", out_path, script], cwd=work,
                                  capture_output=True, text=True, errors="replace",
                                  timeout=TIMEOUT_SECONDS, stdin=subprocess.DEVNULL)
        except subprocess.TimeoutExpired:
            print(f"FAIL: {os.path.basename(script)} ran longer than {TIMEOUT_SECONDS} s")
            return 1
        actual_text = ""
        if os.path.exists(out_path):
            with open(out_path, encoding="utf-8") as f:
                actual_text = with_file_names(f.read(), script)

    if update:
        with open(expected_path, "w", encoding="utf-8") as f:
            f.write(actual_text)
        print(f"wrote {expected_path} ({len(actual_text.splitlines())} records, "
              f"exit {proc.returncode})")
        return 0

    problems = []
    if proc.returncode != want_exit:
        problems.append(f"exit status {proc.returncode}, expected {want_exit}")

    if not os.path.exists(expected_path):
        problems.append(f"missing {os.path.basename(expected_path)}")
        expected = []
    else:
        with open(expected_path, encoding="utf-8") as f:
            expected = parse_lines(f.read(), "expected")
    actual = parse_lines(actual_text, "actual")

    for i in range(max(len(expected), len(actual))):
        want = expected[i] if i < len(expected) else None
        got = actual[i] if i < len(actual) else None
        if want is not None and got is not None and want[1] == got[1]:
            continue
        problems.append(f"record {i + 1} differs:\n"
                        f"  expected: {want[0] if want else '(none)'}\n"
                        f"  actual:   {got[0] if got else '(none)'}")

    if not problems:
        return 0
    print(f"FAIL: {os.path.basename(script)}")
    for p in problems:
        print(p)
    show("stdout", proc.stdout)
    show("stderr", proc.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv))
