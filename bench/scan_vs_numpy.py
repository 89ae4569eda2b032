#!/usr/bin/env python3
"""sscanf and fscanf against numpy.loadtxt, the same text in one run.

    bench/scan_vs_numpy.py [BUILD_DIR] [--values N] [--repeat N]

Builds scan_bench and the library in BUILD_DIR (default build), writes N
(default 10 million) random doubles as text to /tmp, ten to a line, single
spaces between them (about 190 MB for 10 million), and times, best of
--repeat in alternating rounds:

  sscanf(text, '%f') on a char array      vs numpy.loadtxt(StringIO(text))  >= 2.0
  fscanf(fid, '%f') on the file           vs numpy.loadtxt(file)            >= 1.5

It prints each ratio numpy time / library time (above 1: the library is
faster), and the peak memory of one call of each, above what the process
held before the call, against the targets:

  sscanf: peak <= 1.3 x result + the input text (the char array)
  fscanf: peak <= 1.3 x result + 64 MiB

The file is deleted at the end.
"""

import io
import os
import subprocess
import sys
import time

try:
    import numpy as np
except ImportError:
    # numpy comes from Debian's python3-numpy.
    system = "/usr/bin/python3"
    if os.path.exists(system) and os.path.realpath(sys.executable) != os.path.realpath(system):
        os.execv(system, [system] + sys.argv)
    raise

MIB = 1 << 20
VALUES_PER_LINE = 10


def write_text(path, count):
    rng = np.random.default_rng(11)
    values = rng.standard_normal(count)
    with open(path, "w") as f:
        for start in range(0, count, 1_000_000):
            chunk = values[start:start + 1_000_000]
            lines = []
            for i in range(0, len(chunk), VALUES_PER_LINE):
                lines.append(" ".join(repr(float(v)) for v in chunk[i:i + VALUES_PER_LINE]))
            f.write("\n".join(lines) + "\n")
    return values


def main():
    args = sys.argv[1:]
    build, count, repeat = "build", 10_000_000, 3
    i = 0
    while i < len(args):
        if args[i] == "--values":
            count = int(args[i + 1])
            i += 2
        elif args[i] == "--repeat":
            repeat = int(args[i + 1])
            i += 2
        else:
            build = args[i]
            i += 1
    subprocess.run(["ninja", "-C", build, "-j2", "bench/scan_bench", "twfileio"], check=True,
                   stdout=subprocess.DEVNULL)
    bench = os.path.join(build, "bench", "scan_bench")
    path = f"/tmp/tw_scan_bench_{os.getpid()}.txt"

    def library(mode, extra=()):
        out = subprocess.run([bench, "--lib", build, "--file", path, "--mode", mode,
                              "--repeat", "1", *extra], check=True, capture_output=True,
                             text=True).stdout.split()
        return out

    try:
        values = write_text(path, count)
        size = os.path.getsize(path)
        with open(path) as f:
            text = f.read()
        print(f"{count} values, {size / MIB:.1f} MiB of text")

        # Every value is read.
        out = library("sscanf")
        assert int(out[3]) == count, out

        def numpy_memory():
            start = time.perf_counter()
            np.loadtxt(io.StringIO(text))
            return time.perf_counter() - start

        def numpy_file():
            start = time.perf_counter()
            np.loadtxt(path)
            return time.perf_counter() - start

        best = {"sscanf": 1e300, "fscanf": 1e300, "np_memory": 1e300, "np_file": 1e300}
        for _ in range(repeat):
            best["sscanf"] = min(best["sscanf"], float(library("sscanf")[1]))
            best["np_memory"] = min(best["np_memory"], numpy_memory())
            best["fscanf"] = min(best["fscanf"], float(library("fscanf")[1]))
            best["np_file"] = min(best["np_file"], numpy_file())

        ok = True
        for ours, peer, target, label in (
                ("sscanf", "np_memory", 2.0, "sscanf(text, '%f') vs numpy.loadtxt(StringIO)"),
                ("fscanf", "np_file", 1.5, "fscanf(fid, '%f')   vs numpy.loadtxt(file)    ")):
            ratio = best[peer] / best[ours]
            ok &= ratio >= target
            print(f"{label}  library {best[ours]:.3f} s  numpy {best[peer]:.3f} s  "
                  f"ratio {ratio:.2f} (target >= {target})")

        for mode in ("sscanf", "fscanf"):
            out = library(mode, ["--peak"])
            peak, result, given = int(out[1]), int(out[3]), int(out[5])
            allowance = 1.3 * result + (given if mode == "sscanf" else 64 * MIB)
            ok &= peak <= allowance
            what = "the char array" if mode == "sscanf" else "64 MiB"
            print(f"{mode} peak {peak / MIB:.1f} MiB above the start, result {result / MIB:.1f} MiB;"
                  f" allowed 1.3 x result + {what} = {allowance / MIB:.1f} MiB;"
                  f" {peak / result:.2f} x result")
        del values
        return 0 if ok else 1
    finally:
        if os.path.exists(path):
            os.remove(path)


if __name__ == "__main__":
    sys.exit(main())
