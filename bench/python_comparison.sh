#!/usr/bin/env bash
# Python: zvtextparser.read_table into pandas against pandas.read_csv (C
# engine) on one file, whole processes, seconds and peak memory; then Dask:
# the same file in 8 partitions on a local cluster of 2 worker processes,
# zvtextparser.dask.read_table against dask.dataframe.read_csv, with a check
# that the two frames hold the same values.
#
# Usage: bench/python_comparison.sh [BUILD_DIR] FILE [ROUNDS]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
file=$2
rounds=${3-3}
py=/usr/bin/python3
export PYTHONPATH=$build/python

# Seconds and peak resident memory (MB) of one process.
measure() {
  /usr/bin/time -f "%e %M" "$py" -c "$1" "$file" 2>&1 > /dev/null | tail -1 | awk '{printf "%.3f s %.0f MB", $1, $2 / 1024}'
}
echo "file: $(stat -c %s "$file") bytes; $(nproc) cores"
for ((round = 1; round <= rounds; ++round)); do
  ours=$(measure 'import sys, zvtextparser as zv; zv.read_table(sys.argv[1])')
  theirs=$(measure 'import sys, pandas; pandas.read_csv(sys.argv[1])')
  echo "round $round: zvtextparser.read_table $ours | pandas.read_csv $theirs"
done

# The cluster's worker processes import the main module again: it must be a
# file, its work under a main guard.
dask_script=$(mktemp --suffix=.py)
trap 'rm -f "$dask_script"' EXIT
cat > "$dask_script" << 'PYTHON'
import os, sys, time
import dask.dataframe as dd
import pandas
from distributed import Client, LocalCluster
import zvtextparser.dask


def main(path):
    block = os.path.getsize(path) // 8 + 1
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True) as cluster, Client(cluster):
        for name, make in [("zvtextparser.dask.read_table", lambda: zvtextparser.dask.read_table(path, blocksize=block)),
                           ("dask.dataframe.read_csv", lambda: dd.read_csv(path, blocksize=block))]:
            start = time.perf_counter()
            frame = make()
            result = frame.compute()
            print(f"{name}: {frame.npartitions} partitions, {time.perf_counter() - start:.3f} s, {len(result)} rows")
            if name.startswith("zv"):
                ours = result.reset_index(drop=True)
            else:
                theirs = result.reset_index(drop=True)
        pandas.testing.assert_frame_equal(ours, theirs, check_dtype=False)
        print("equal: the two frames hold the same values")


if __name__ == "__main__":
    main(sys.argv[1])
PYTHON
"$py" "$dask_script" "$file"
