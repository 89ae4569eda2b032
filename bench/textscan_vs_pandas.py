#!/usr/bin/env python3
"""textscan against numpy.loadtxt and pandas.read_csv, in one run.

    bench/textscan_vs_pandas.py [BUILD_DIR] [--rows N] [--repeat N] [--memory]

Builds a Release tree in BUILD_DIR (default build-release), writes the files
to /tmp (each is read once before timing, so that every side reads from the
page cache), and times, in alternating rounds, keeping each side's best:

- 1 million rows of 8 doubles, comma-separated (about 115 MB):
  textscan(fid, repmat('%f', 1, 8), 'Delimiter', ',') from the file, the
  same of the text held in a char array (bench/textscan_text_bench), against
  numpy.loadtxt(delimiter=',') and pandas.read_csv(header=None);
- 1 million rows of "%d %f %q %s": textscan against pandas.read_csv with the
  matching dtypes.

Prints each time, in MB/s, and the ratios peer time / textscan time against
the targets: 1.8 over numpy and 2.5 over pandas for the doubles (file and
char array), 1.5 over pandas for the mixed columns.

With --memory it also reads a file of about 1 GB in a child process and
compares its peak resident memory over the baseline with 1.3 times the
result's size plus 64 MiB.
"""

import argparse
import os
import subprocess
import sys
import time

try:
    import numpy as np
    import pandas as pd
except ImportError:
    system = "/usr/bin/python3"
    if os.path.exists(system) and os.path.realpath(sys.executable) != os.path.realpath(system):
        os.execv(system, [system] + sys.argv)
    raise

MB = 1e6
MIB = 1 << 20
TARGETS = {"numpy": 1.8, "pandas": 2.5, "mixed": 1.5}
DOUBLES = "/tmp/textscan_bench_doubles.csv"
MIXED = "/tmp/textscan_bench_mixed.csv"
BIG = "/tmp/textscan_bench_1gb.csv"
FORMAT8 = "%f" * 8


def build_tree(here, build):
    subprocess.run(["cmake", "-S", here, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                    "-DTW_BUILD_TESTS=OFF"], check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["ninja", "-C", build, "-j2", "twfileio_python", "textscan_text_bench", "twfileio"],
                   check=True, stdout=subprocess.DEVNULL)


def write_doubles(rows):
    rng = np.random.default_rng(13)
    values = rng.uniform(-1000, 1000, size=(rows, 8))
    np.savetxt(DOUBLES, values, delimiter=",", fmt="%.9f")


def write_mixed(rows):
    rng = np.random.default_rng(14)
    words = np.array(["alpha", "beta", "gamma", "delta", "x", "longer_word_here"])
    quoted = np.array(['"a, b"', '"plain"', '"say ""hi"""', '"q"', '"some longer text"'])
    ints = rng.integers(-10**6, 10**6, size=rows)
    floats = rng.uniform(-1e3, 1e3, size=rows)
    with open(MIXED, "w") as f:
        q = quoted[rng.integers(0, len(quoted), size=rows)]
        w = words[rng.integers(0, len(words), size=rows)]
        for i in range(rows):
            f.write(f"{ints[i]},{floats[i]:.6f},{q[i]},{w[i]}\n")


def best_of(repeat, sides):
    """Alternating rounds; each side's best time."""
    best = {name: float("inf") for name in sides}
    for _ in range(repeat):
        for name, fn in sides.items():
            start = time.perf_counter()
            fn()
            best[name] = min(best[name], time.perf_counter() - start)
    return best


def report(title, size, times, ours, peers):
    print(f"\n{title} ({size / MB:.0f} MB)")
    for name, t in times.items():
        print(f"  {name:28s} {t:8.3f} s  {size / MB / t:7.1f} MB/s")
    ok = True
    for ours_name in ours:
        for peer, target in peers:
            ratio = times[peer] / times[ours_name]
            good = ratio >= target
            ok &= good
            print(f"  {peer} / {ours_name}: {ratio:5.2f} (target {target}) {'ok' if good else 'BELOW'}")
    return ok


def memory_check(build):
    if not os.path.exists(BIG):
        with open(DOUBLES, "rb") as f:
            chunk = f.read()
        with open(BIG, "wb") as f:
            for _ in range(max(1, (1 << 30) // len(chunk))):
                f.write(chunk)
    # ru_maxrss survives exec (it would be the driver's); the memory map's
    # own high-water mark, VmHWM, starts afresh in the child.
    child = f"""
import sys
sys.path.insert(0, {os.path.join(os.path.abspath(build), 'python')!r})
import numpy, twfileio
def status(key):
    for line in open('/proc/self/status'):
        if line.startswith(key):
            return int(line.split()[1]) * 1024
base = status('VmRSS')
fid = twfileio.fopen({BIG!r}, 'r')
r = twfileio.textscan(fid, {FORMAT8!r}, 'Delimiter', ',')
twfileio.fclose(fid)
print(base, status('VmHWM'), sum(numpy.asarray(c).nbytes for c in r))
"""
    out = subprocess.run([sys.executable, "-c", child], check=True, capture_output=True, text=True).stdout
    base, peak, result = (int(v) for v in out.split())
    limit = 1.3 * result + 64 * MIB
    used = peak - base
    print(f"\nmemory, {os.path.getsize(BIG) / MB:.0f} MB file: result {result / MIB:.0f} MiB, "
          f"peak over baseline {used / MIB:.0f} MiB, limit {limit / MIB:.0f} MiB "
          f"({used / result:.2f} x result) {'ok' if used <= limit else 'ABOVE'}")
    return used <= limit


def main():
    here = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    parser = argparse.ArgumentParser(description="textscan against numpy and pandas")
    parser.add_argument("build", nargs="?", default=os.path.join(here, "build-release"))
    parser.add_argument("--rows", type=int, default=1_000_000)
    parser.add_argument("--repeat", type=int, default=3, help="rounds; each side keeps its best")
    parser.add_argument("--memory", action="store_true", help="also measure peak memory on 1 GB")
    options = parser.parse_args()
    build = os.path.abspath(options.build)
    build_tree(here, build)
    sys.path.insert(0, os.path.join(build, "python"))
    import twfileio

    if not os.path.exists(DOUBLES):
        write_doubles(options.rows)
    if not os.path.exists(MIXED):
        write_mixed(options.rows)

    def textscan_file(path, fmt):
        fid = twfileio.fopen(path, "r")
        try:
            return twfileio.textscan(fid, fmt, "Delimiter", ",")
        finally:
            twfileio.fclose(fid)

    text_seconds = []

    def textscan_text():
        out = subprocess.run([os.path.join(build, "bench", "textscan_text_bench"), build, DOUBLES,
                              FORMAT8, ",", "1"], check=True, capture_output=True, text=True)
        text_seconds.append(float(out.stdout))

    # Same values on every side, once, before timing.
    ours = np.hstack([np.asarray(c) for c in textscan_file(DOUBLES, FORMAT8)])
    peer = pd.read_csv(DOUBLES, header=None, float_precision="round_trip").to_numpy()
    assert np.array_equal(ours.view(np.uint64), peer.view(np.uint64)), "the values differ from pandas"

    times = best_of(options.repeat, {
        "textscan, file": lambda: textscan_file(DOUBLES, FORMAT8),
        "textscan, char array": textscan_text,
        "numpy.loadtxt": lambda: np.loadtxt(DOUBLES, delimiter=","),
        "pandas.read_csv": lambda: pd.read_csv(DOUBLES, header=None),
    })
    times["textscan, char array"] = min(text_seconds)  # the call alone, not the process
    ok = report("8 doubles a row", os.path.getsize(DOUBLES), times,
                ["textscan, file", "textscan, char array"],
                [("numpy.loadtxt", TARGETS["numpy"]), ("pandas.read_csv", TARGETS["pandas"])])

    dtypes = {0: np.int32, 1: np.float64, 2: str, 3: str}
    times = best_of(options.repeat, {
        "textscan, file": lambda: textscan_file(MIXED, "%d %f %q %s"),
        "pandas.read_csv": lambda: pd.read_csv(MIXED, header=None, dtype=dtypes),
    })
    ok &= report("%d %f %q %s", os.path.getsize(MIXED), times, ["textscan, file"],
                 [("pandas.read_csv", TARGETS["mixed"])])

    if options.memory:
        ok &= memory_check(build)
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
