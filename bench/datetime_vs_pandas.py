#!/usr/bin/env python3
"""textscan's %D and %C from Python against pandas.read_csv, in one run.

    bench/datetime_vs_pandas.py [BUILD_DIR] [--lines N] [--repeat N]

Uses BUILD_DIR (default build): bench/datetime_textscan_bench times
textscan in C++ through the library's table, as a host calls it; the Python
module checks first that its dates equal pandas'. Writes, in /tmp:
- N lines "yyyy-MM-dd HH:mm:ss.SSS" of random instants;
- N category fields, ten distinct values.
Then times, in alternating rounds and keeping each side's best:
- textscan(fid, '%{yyyy-MM-dd HH:mm:ss.SSS}D', 'Delimiter', ',') against
  pandas.read_csv(path, header=None, parse_dates=[0]); target: pandas time
  / ours >= 2. (The delimiter keeps the blank inside the date in one field;
  with the default whitespace delimiters it would split it.)
- textscan(fid, '%C') against pandas.read_csv(path, header=None,
  dtype='category'); target >= 1.
- textscan with an empty %D (the format guessed) against the same read with
  the format given; target: at most 10% slower. Also, without a target,
  the same for day-first dates "dd/MM/yyyy HH:mm:ss", whose format is not
  among the ISO forms settled on the first field.
pandas' times include its conversion to datetime64 or categories; ours the
call of the host's datetime or categorical maker.
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

DATE_TARGET = 2.0
CATEGORY_TARGET = 1.0
GUESS_OVERHEAD_TARGET = 0.10
PATTERN = "yyyy-MM-dd HH:mm:ss.SSS"


def best_of(repeat, fn):
    best = float("inf")
    for _ in range(repeat):
        start = time.perf_counter()
        fn()
        best = min(best, time.perf_counter() - start)
    return best


def main():
    here = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    parser = argparse.ArgumentParser(description="textscan %D and %C against pandas")
    parser.add_argument("build", nargs="?", default=os.path.join(here, "build"))
    parser.add_argument("--lines", type=int, default=1_000_000)
    parser.add_argument("--repeat", type=int, default=5)
    options = parser.parse_args()
    sys.path.insert(0, os.path.join(os.path.abspath(options.build), "python"))
    import twfileio

    rng = np.random.default_rng(7)
    n = options.lines
    dates = f"/tmp/tw_bench_dates_{os.getpid()}.csv"
    cats = f"/tmp/tw_bench_categories_{os.getpid()}.csv"
    day_first = f"/tmp/tw_bench_day_first_{os.getpid()}.csv"
    ms = rng.integers(0, 4_102_444_800_000, size=n).astype("datetime64[ms]")
    with open(dates, "w") as f:
        f.write("\n".join(np.datetime_as_string(ms, unit="ms").astype(object)
                          .__array__().tolist()).replace("T", " ") + "\n")
    iso = np.datetime_as_string(ms, unit="s").tolist()
    with open(day_first, "w") as f:
        f.write("\n".join(t[8:10] + "/" + t[5:7] + "/" + t[:4] + " " + t[11:] for t in iso) + "\n")
    names = np.array(["alpha", "bravo", "charlie", "delta", "echo", "foxtrot", "golf", "hotel",
                      "india", "juliet"])
    with open(cats, "w") as f:
        f.write("\n".join(names[rng.integers(0, len(names), size=n)]) + "\n")

    def ours(path, fmt, *extra):
        fid = twfileio.fopen(path)
        try:
            return twfileio.textscan(fid, fmt, *extra)
        finally:
            twfileio.fclose(fid)

    try:
        check = ours(dates, "%{" + PATTERN + "}D", "Delimiter", ",")[0]
        expected = pd.read_csv(dates, header=None, parse_dates=[0])[0].to_numpy()
        assert (np.asarray(check).reshape(-1) == expected).all(), "dates differ from pandas"
        guessed = ours(dates, "%D", "Delimiter", ",")[0]
        assert (np.asarray(guessed).reshape(-1) == expected).all(), "guessed dates differ"
        bench = os.path.join(os.path.abspath(options.build), "bench", "datetime_textscan_bench")
        library = os.path.abspath(options.build)

        def timed(path, fmt, *extra):
            out = subprocess.run([bench, library, path, fmt, "1", *extra], check=True,
                                 capture_output=True, text=True).stdout
            return float(out)

        results = []
        for _ in range(options.repeat):
            results.append((
                best_of(1, lambda: pd.read_csv(dates, header=None, parse_dates=[0])),
                timed(dates, "%{" + PATTERN + "}D", "Delimiter", ","),
                timed(dates, "%D", "Delimiter", ","),
                best_of(1, lambda: pd.read_csv(cats, header=None, dtype="category")),
                timed(cats, "%C"),
                timed(day_first, "%{dd/MM/yyyy HH:mm:ss}D", "Delimiter", ","),
                timed(day_first, "%D", "Delimiter", ","),
            ))
        (pandas_dates, our_dates, our_guess, pandas_cats, our_cats, our_day_first,
         our_day_first_guess) = (min(r[i] for r in results) for i in range(7))
    finally:
        os.remove(dates)
        os.remove(cats)
        os.remove(day_first)

    failed = False

    def report(what, ratio, target, detail, higher_is_better=True):
        nonlocal failed
        ok = ratio >= target if higher_is_better else ratio <= target
        failed |= not ok
        print(f"{what}: {detail}; ratio {ratio:.2f} (target {'>=' if higher_is_better else '<='} "
              f"{target:.2f}) {'ok' if ok else 'MISSED'}")

    report(f"{n} dates", pandas_dates / our_dates, DATE_TARGET,
           f"pandas {pandas_dates:.3f} s, textscan {our_dates:.3f} s")
    report(f"{n} categories", pandas_cats / our_cats, CATEGORY_TARGET,
           f"pandas {pandas_cats:.3f} s, textscan {our_cats:.3f} s")
    report("guessing", our_guess / our_dates - 1, GUESS_OVERHEAD_TARGET,
           f"given {our_dates:.3f} s, guessed {our_guess:.3f} s", higher_is_better=False)
    print(f"guessing day-first dates: given {our_day_first:.3f} s, guessed "
          f"{our_day_first_guess:.3f} s; overhead {our_day_first_guess / our_day_first - 1:.2f}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
