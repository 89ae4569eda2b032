#!/usr/bin/env python3
"""fread and fwrite against numpy, the same work in one run.

    bench/transfer_vs_numpy.py [BUILD_DIR] [--mb N] [--repeat N]

Builds fread_bench, fwrite_bench and the library in BUILD_DIR (default
build), makes the files in /tmp (read once, so that both sides read from the
page cache), times each workload with the library and with numpy (best of
--repeat, in alternating rounds), prints the ratio numpy time / library time
for each target (above 1 means the library is faster), and deletes the files.
The machine's memory sets these numbers: both sides fill fresh huge pages,
which the kernel zeroes first. On a busy machine rerun with more rounds.

Targets:
  fread Inf "double"             vs np.fromfile(f8)                     >= 1.0
  fread "double", 0, "b"         vs np.fromfile(>f8).astype(=f8)        >= 1.8
  fread "int16=>double"          vs np.fromfile(i2).astype(f8)          >= 1.0
  fread "*uint8"                 vs np.fromfile(u1).astype(u1)          >= 1.0
  fread "ubit12=>double"         vs uint8 view, reshape(-1, 3), shifts  >= 2.0
  fwrite of a double array       vs ndarray.tofile                      >= 0.9
  peak memory of a read to the end, as a multiple of the result       <= 1.2
"""

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


def ubit12_numpy(path):
    """Little-endian bit order, as "ubit12" reads on this machine: each three
    bytes hold two fields, the first in the low 12 bits."""
    b = np.fromfile(path, dtype=np.uint8).reshape(-1, 3).astype(np.uint16)
    out = np.empty(2 * b.shape[0], dtype=np.float64)
    out[0::2] = b[:, 0] | ((b[:, 1] & 0xF) << 8)
    out[1::2] = (b[:, 1] >> 4) | (b[:, 2] << 4)
    return out


def main():
    args = sys.argv[1:]
    build = "build"
    mb, repeat = 512, 5
    i = 0
    while i < len(args):
        if args[i] == "--mb":
            mb = int(args[i + 1])
            i += 2
        elif args[i] == "--repeat":
            repeat = int(args[i + 1])
            i += 2
        else:
            build = args[i]
            i += 1
    subprocess.run(["ninja", "-C", build, "-j2", "bench/fread_bench", "bench/fwrite_bench",
                    "twfileio"], check=True, stdout=subprocess.DEVNULL)
    fread_bench = os.path.join(build, "bench", "fread_bench")
    fwrite_bench = os.path.join(build, "bench", "fwrite_bench")

    def library_read(precision, path, fmt="n"):
        def run():
            out = subprocess.run([fread_bench, "--lib", build, "--file", path, "--precision",
                                  precision, "--format", fmt, "--repeat", "1"],
                                 check=True, capture_output=True, text=True).stdout.split()
            return float(out[1])
        return run

    def fresh(path):
        # A write makes its file anew: truncating a large file, or the
        # writeback still running from the last write, would cost either
        # side more than the write itself.
        if os.path.exists(path):
            os.remove(path)
        os.sync()

    def library_write(path):
        def run():
            # fwrite_bench makes its file anew itself, just before it writes.
            out = subprocess.run([fwrite_bench, "--lib", build, "--file", path, "--mb", str(mb),
                                  "--repeat", "1"], check=True, capture_output=True,
                                 text=True).stdout.split()
            return float(out[1])
        return run

    def timed(work, output=None):
        def run():
            if output:
                fresh(output)
            start = time.perf_counter()
            result = work()
            seconds = time.perf_counter() - start
            del result
            return seconds
        return run

    rng = np.random.default_rng(5)
    files = {
        "f8": f"/tmp/tw_bench_f8_{os.getpid()}.bin",
        "i2": f"/tmp/tw_bench_i2_{os.getpid()}.bin",
        "u12": f"/tmp/tw_bench_u12_{os.getpid()}.bin",
        "out": f"/tmp/tw_bench_out_{os.getpid()}.bin",
    }
    rows = []
    try:
        rng.standard_normal(mb * MIB // 8).tofile(files["f8"])
        rng.integers(-30000, 30000, mb * MIB // 8, dtype=np.int16).tofile(files["i2"])
        # As many 12-bit fields as doubles in the first file.
        rng.integers(0, 256, mb * MIB // 8 * 3 // 2, dtype=np.uint8).tofile(files["u12"])
        for name in ("f8", "i2", "u12"):
            with open(files[name], "rb") as f:
                while f.read(64 * MIB):
                    pass
        data = np.sin(np.arange(mb * MIB // 8, dtype=np.float64))

        # (what, target, numpy run, library run): each run gives its seconds.
        workloads = [
            ('fread(fid, Inf, "double")', 1.0,
             timed(lambda: np.fromfile(files["f8"], dtype="<f8")),
             library_read("double", files["f8"])),
            ('fread(fid, Inf, "double", 0, "b")', 1.8,
             timed(lambda: np.fromfile(files["f8"], dtype=">f8").astype("=f8")),
             library_read("double", files["f8"], "b")),
            ('fread(fid, Inf, "int16=>double")', 1.0,
             timed(lambda: np.fromfile(files["i2"], dtype="<i2").astype("f8")),
             library_read("int16=>double", files["i2"])),
            ('fread(fid, Inf, "*uint8")', 1.0,
             timed(lambda: np.fromfile(files["f8"], dtype="u1").astype("u1")),
             library_read("*uint8", files["f8"])),
            ('fread(fid, Inf, "ubit12=>double")', 2.0,
             timed(lambda: ubit12_numpy(files["u12"])),
             library_read("ubit12=>double", files["u12"])),
            ("fwrite(fid, doubles)", 0.9,
             timed(lambda: data.tofile(files["out"]), output=files["out"]),
             library_write(files["out"])),
        ]
        # Rounds alternate the two sides, so that whatever else the machine
        # does falls on both alike; each side keeps its best.
        best = [[float("inf"), float("inf")] for _ in workloads]
        for _ in range(repeat):
            for k, (_, _, numpy_run, library_run) in enumerate(workloads):
                best[k][0] = min(best[k][0], numpy_run())
                best[k][1] = min(best[k][1], library_run())
        for (what, goal, _, _), (numpy_seconds, library_seconds) in zip(workloads, best):
            ratio = numpy_seconds / library_seconds
            rows.append((what, ratio, goal, ratio >= goal, numpy_seconds, library_seconds))
        del data

        peak = subprocess.run([fread_bench, "--lib", build, "--file", files["f8"], "--precision",
                               "double", "--peak"], check=True, capture_output=True,
                              text=True).stdout.split()
        peak_ratio = int(peak[1]) / int(peak[3])
    finally:
        for path in files.values():
            if os.path.exists(path):
                os.remove(path)

    print(f"{'workload':40} {'numpy s':>9} {'tw s':>9} {'ratio':>7} {'target':>7}")
    for what, ratio, goal, ok, ns, ls in rows:
        print(f"{what:40} {ns:9.3f} {ls:9.3f} {ratio:7.2f} {'>= ' + str(goal):>7} "
              f"{'ok' if ok else 'MISSED'}")
    ok = peak_ratio <= 1.2
    print(f"{'peak memory / result, read to the end':40} {'':9} {'':9} {peak_ratio:7.2f} "
          f"{'<= 1.2':>7} {'ok' if ok else 'MISSED'}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
