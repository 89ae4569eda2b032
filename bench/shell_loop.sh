#!/usr/bin/env bash
# Times loops of 100,000 iterations in tw, each calling a built-in:
#   ftell    s = s + ftell(1)               (a plain call and an addition)
#   caught   try, fclose(), catch, end      (a count error, thrown and caught)
# Usage: bench/shell_loop.sh [path/to/tw]     (default: build/tw)
set -euo pipefail
tw=${1:-"$(dirname "$0")/../build/tw"}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat > "$work/ftell.tw" <<'TW'
s = 0;
for k = 1:100000
  s = s + ftell(1);
end
TW
cat > "$work/caught.tw" <<'TW'
n = 0;
for k = 1:100000
  try
    fclose();
  catch
    n = n + 1;
  end
end
TW

for name in ftell caught; do
  start=$(date +%s.%N)
  "$tw" "$work/$name.tw"
  end=$(date +%s.%N)
  printf '%-7s 100000 iterations: %.3f s\n' "$name" "$(echo "$end - $start" | bc)"
done
