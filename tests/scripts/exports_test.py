#!/usr/bin/env python3
"""The shared library exports its entry points and nothing of its internals."""
import subprocess
import sys

build = sys.argv[1]
out = subprocess.run(["nm", "-D", "--defined-only", "-C", f"{build}/libtwfileio.so"],
                     check=True, capture_output=True, text=True).stdout
symbols = {line.split(" ", 2)[2] for line in out.splitlines() if line.count(" ") >= 2}

required = [
    "KVInitialize_fileio", "KVTerminate_fileio", "QueryKVFcnTable_fileio",
    "libtwfileio_version", "libtwfileio_build_date",
    "builtins::util::fiSprintf(int, kxArray_tag**, int, kxArray_tag**)",
]
missing = [s for s in required if s not in symbols]
# Anything of our own namespaces showing up means a missing hidden visibility.
leaked = sorted(s for s in symbols if s.startswith("Tarnwicks::"))
if missing or leaked:
    print("missing exports:", missing)
    print("internals exported:", leaked[:20])
    print("0 passed, 1 failed")
    sys.exit(1)
print("1 passed, 0 failed")
