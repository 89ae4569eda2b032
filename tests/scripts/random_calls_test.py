#!/usr/bin/env python3
"""Random calls of every built-in with odd arguments never crash tw.

Each call sits in its own try/catch, so the script must run to its end and
tw must exit 0: any value or identified error is fine, a signal or a
sanitizer report is not. The seed is fixed, so a failure can be replayed.
"""
import random
import subprocess
import sys
import tempfile
from pathlib import Path

VALUES = [
    "[]", "''", "NaN", "Inf", "-Inf", "-1", "0", "1", "2", "3", "1e300", "2.5", "-2^31", "2^40",
    "int8(5)", "uint64(18446744073709551615)", "single(NaN)", "true", "{1}", "struct('a', 1)",
    "complex(1, 2)", "sparse(1)", "[1 2; 3 4]", "zeros(1, 0)", "[Inf 2]", "[2 Inf]", "char(55296)",
    "'r'", "'a+'", "'w+'", "'abc'", "['ab'; 'cd']", "'all'", "'eof'", "'bof'", "'clear'",
    "'ieee-be'", "'UTF-16'", "'Shift_JIS'", "'ubit3'", "'bit7in5'", "'bit64'", "'bit65'",
    "'*char'", "'5*int16=>char'", "'noconvert'", "'%d %s\\n'", "'%*.*f'", "'%1$d'",
    "'%2$*1$d'", "'%-+ #012.5g'", "'%tx%bo'", "'\\x'", "'%'", "'%[abc]'", "fid", "fid2", "f",
]
NAMES = ["fopen", "fclose", "fread", "fwrite", "fscanf", "fprintf", "sscanf", "sprintf",
         "sprintfc", "fgets", "fseek", "ftell", "ferror", "feof", "textscan",
         "textscanOptionsQuery"]


def script(seed, calls):
    rng = random.Random(seed)
    lines = ["f = tempname();", "fid = fopen(f, 'w+');", "fwrite(fid, 0:255);",
             "frewind(fid);", "fid2 = fopen(f, 'r', 'b', 'Shift_JIS');"]
    for _ in range(calls):
        name = rng.choice(NAMES)
        args = ", ".join(rng.choice(VALUES) for _ in range(rng.randint(0, 5)))
        outs = rng.choice(["", "a = ", "[a, b] = ", "[a, b, c] = "])
        lines.append(f"try, {outs}{name}({args}); catch e, end")
    lines.append("fclose('all'); delete(f); disp('all calls made');")
    return "\n".join(lines) + "\n"


def main():
    tw = (Path(sys.argv[1]) / "tw").resolve()
    passed = failed = 0
    for seed in (1, 2, 3):
        with tempfile.TemporaryDirectory() as work:
            path = Path(work) / "calls.tw"
            path.write_text(script(seed, 1500))
            run = subprocess.run([str(tw), str(path)], cwd=work, capture_output=True,
                                 timeout=600)
            if run.returncode == 0 and b"all calls made" in run.stdout:
                passed += 1
            else:
                failed += 1
                print(f"seed {seed}: tw exited {run.returncode}")
                print(run.stderr.decode(errors="replace")[-2000:])
    print(f"{passed} passed, {failed} failed")
    sys.exit(1 if failed else 0)


main()
