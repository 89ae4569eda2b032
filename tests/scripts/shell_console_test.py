#!/usr/bin/env python3
"""tw as a user meets it on the console: help for every function with an
example that runs, built-ins not built yet that say so and name themselves,
the short and long number formats, errors with a caret, --version, and a
script that cannot be read.

    shell_console_test.py BUILD_DIR
"""
import json
import os
import re
import subprocess
import sys
import tempfile

TIMEOUT_SECONDS = 60
NOT_BUILT = "KORVAN:FileIO:NotBuiltYet"


class Failures(list):
    def check(self, condition, what):
        if not condition:
            self.append(what)


def run(tw, args, folder, env=None):
    return subprocess.run([tw] + args, cwd=folder, capture_output=True, text=True,
                          timeout=TIMEOUT_SECONDS, stdin=subprocess.DEVNULL,
                          env={**os.environ, "COLUMNS": "80", **(env or {})})


def records(tw, code, folder):
    out = os.path.join(folder, "records.jsonl")
    if os.path.exists(out):
        os.remove(out)
    run(tw, ["--json", out, "-e", code], folder)
    with open(out) as f:
        return [json.loads(line) for line in f]


def help_names(tw, folder):
    listing = run(tw, ["-e", "help"], folder).stdout
    return re.findall(r"^  (\w+) ", listing, re.M), listing


def examples_run(tw, folder, failures):
    """Every help text has an example, and it runs: without an error for a
    built-in that is built, and with NotBuiltYet, naming the built-in, for
    one that is not."""
    names, listing = help_names(tw, folder)
    failures.check(len(names) > 16 and "fopen" in names and "fgetl" in names,
                   f"help lists too little:\n{listing}")
    for name in names:
        text = run(tw, ["-e", f"help {name}"], folder).stdout
        usage, _, example = text.partition("\nExample:\n")
        failures.check(usage.startswith(name + ": ") and example.strip(),
                       f"help {name} lacks its usage or example:\n{text}")
        listed_as_missing = re.search(rf"^  {name} .*\(not built yet\)$", listing, re.M)
        said_missing = "not built yet" in usage
        failures.check(bool(listed_as_missing) == said_missing,
                       f"help and help {name} disagree on whether it is built")
        code = "\n".join(line[2:] for line in example.splitlines())
        errors = [r["error"] for r in records(tw, code, folder) if "error" in r]
        if said_missing:
            failures.check(len(errors) == 1 and errors[0]["identifier"] == NOT_BUILT
                           and name in errors[0]["message"],
                           f"{name} is said not to be built, but its example gave {errors}")
        else:
            failures.check(not errors, f"the example of {name} fails: {errors}")


def not_built_yet_names_itself(tw, folder, failures):
    """A built-in still missing says so by name, from the user's side: its
    help says so exactly when calling it raises NotBuiltYet."""
    for name in ["fopen", "fclose", "fread", "fwrite", "fscanf", "fprintf", "sscanf",
                 "sprintf", "sprintfc", "fgets", "fseek", "ftell", "ferror", "feof",
                 "textscan", "textscanOptionsQuery"]:
        raised = [r["error"] for r in records(tw, f"{name}('a', 'b')", folder) if "error" in r]
        missing = bool(raised) and raised[0]["identifier"] == NOT_BUILT
        if missing:
            failures.check(name in raised[0]["message"], f"{name}: {raised[0]['message']}")
        said = "not built yet" in run(tw, ["-e", f"help {name}"], folder).stdout
        failures.check(missing == said, f"help {name} says not built: {said}, a call: {missing}")


CONSOLE_CASES = [
    # code, what stdout must hold exactly
    ("x = pi", "x = 3.1416\n"),
    ("format long, x = pi", "x = 3.141592653589793\n"),
    ("format long, format short, x = pi", "x = 3.1416\n"),
    ("m = [1000.5 2]", "m = 1x2 double\n    1.0e+03 *\n    1.0005   0.0020\n"),
    ("disp(1/3)", "0.3333\n"),
    ("format long, disp(1/3)", "0.3333333333333333\n"),
]


def console_forms(tw, folder, failures):
    for code, want in CONSOLE_CASES:
        got = run(tw, ["-e", code], folder).stdout
        failures.check(got == want, f"{code!r} printed {got!r}, not {want!r}")
    wide = run(tw, ["-e", "x = 1:30"], folder, {"COLUMNS": "40"}).stdout
    failures.check("Columns 1 to 7\n" in wide and max(map(len, wide.splitlines())) <= 40,
                   f"columns do not wrap at 40 characters:\n{wide}")


def errors_point_at_their_place(tw, folder, failures):
    script = os.path.join(folder, "fails.tw")
    with open(script, "w") as f:
        f.write("values = [1 2 3];\nshown = values(1) + values(7)\n")
    p = run(tw, ["fails.tw"], folder)
    want = ("fails.tw:2:21: Error: Index 7 is past the end: the array has 3 elements. "
            "[KORVAN:shell:IndexOutOfRange]\n"
            "    shown = values(1) + values(7)\n"
            "                        ^\n")
    failures.check(p.returncode == 1 and p.stderr == want,
                   f"the error of fails.tw reads\n{p.stderr}")


def command_line(tw, folder, failures):
    p = run(tw, ["--version"], folder)
    failures.check(p.returncode == 0 and
                   re.match(r"libtwfileio \d+\.\d+\.\d+\.\d+, built \w{3} \d{1,2} \d{4}\n",
                            p.stdout), f"--version printed {p.stdout!r}")
    p = run(tw, ["missing.tw"], folder)
    failures.check(p.returncode == 2 and
                   p.stderr == "tw: cannot read missing.tw: No such file or directory\n",
                   f"tw missing.tw: {p.returncode} {p.stderr!r}")


def main(build):
    tw = os.path.abspath(os.path.join(build, "tw"))
    failures = Failures()
    with tempfile.TemporaryDirectory(prefix="tw_console_") as folder:
        for test in (examples_run, not_built_yet_names_itself, console_forms,
                     errors_point_at_their_place, command_line):
            test(tw, folder, failures)
    for f in failures:
        print(f"FAIL: {f}")
    print(f"{len(failures)} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
