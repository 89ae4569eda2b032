"""Under the sanitizer build python is not instrumented: a script that loads
the library through the Python module must start with the sanitizer runtime
(and libstdc++, where it finds the C++ throw) already loaded."""

import os
import subprocess
import sys


def preload_sanitizer(build):
    """Under the sanitizers python is not instrumented: the runtime (with
    libstdc++, where it finds the C++ throw) must be loaded first, so the
    script starts itself again with it preloaded."""
    try:
        with open(os.path.join(build, "CMakeCache.txt")) as f:
            cache = dict(line.strip().split("=", 1) for line in f if "=" in line and ":" in line.split("=")[0])
    except OSError:
        return
    if cache.get("TW_SANITIZE:BOOL", "OFF").upper() not in ("ON", "1", "TRUE") or "LD_PRELOAD" in os.environ:
        return
    compiler = cache.get("CMAKE_CXX_COMPILER:FILEPATH", "g++")
    libs = [subprocess.run([compiler, f"-print-file-name={lib}"], capture_output=True, text=True).stdout.strip()
            for lib in ("libasan.so", "libstdc++.so.6")]
    env = dict(os.environ, LD_PRELOAD=":".join(libs), ASAN_OPTIONS="detect_leaks=0")
    os.execve(sys.executable, [sys.executable] + sys.argv, env)
