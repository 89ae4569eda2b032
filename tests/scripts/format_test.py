#!/usr/bin/env python3
"""Every C++ file of the project follows .clang-format.

The files are found by walking the source tree, so the check works the same
in a git checkout and in a plain copy of the tree. Hidden folders and build
folders (any folder holding a CMakeCache.txt) are not part of the source.
"""
import os
import shutil
import subprocess
import sys
from pathlib import Path

root = Path(__file__).resolve().parents[2]
tool = shutil.which("clang-format") or shutil.which("clang-format-14")
if tool is None:
    print("clang-format is not installed; nothing checked")
    sys.exit(0)


def source_files(top):
    for folder, subfolders, names in os.walk(top):
        subfolders[:] = sorted(
            d for d in subfolders
            if not d.startswith(".") and not (Path(folder, d) / "CMakeCache.txt").exists())
        for name in sorted(names):
            if name.endswith((".cc", ".h")):
                yield Path(folder, name).relative_to(top).as_posix()


files = list(source_files(root))
if not files:
    print(f"no C++ files found under {root}")
    sys.exit(1)
bad = [f for f in files
       if subprocess.run([tool, "--dry-run", "-Werror", f], cwd=root,
                         capture_output=True).returncode != 0]
for f in bad:
    print(f"not formatted: {f}")
print(f"{len(files) - len(bad)} passed, {len(bad)} failed")
sys.exit(1 if bad else 0)
