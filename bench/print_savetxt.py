"""Times numpy.savetxt on the work of print_bench: ten million doubles as
"%.6f\\n", as "%g\\n", and whole ones as "%d,". Prints the three processor
times in seconds, comma-separated, for print_bench --savetxt."""
import sys
import tempfile
import time

import numpy as np

n = int(sys.argv[1]) if len(sys.argv) > 1 else 10_000_000
rng = np.random.default_rng(42)
reals = rng.normal(0.0, 1000.0, n)
wholes = np.round(reals * 1000.0)

times = []
with tempfile.NamedTemporaryFile(suffix=".txt") as f:
    for values, fmt, newline in ((reals, "%.6f", "\n"), (reals, "%g", "\n"), (wholes, "%d", ",")):
        start = time.process_time()
        np.savetxt(f.name, values, fmt=fmt, newline=newline)
        times.append(time.process_time() - start)
print(",".join(f"{t:.4f}" for t in times))
