"""Runs the benchmarks of a build tree and prints each figure beside its floor.

A figure NAME has its floor, the same work done with nothing but system calls or the standard library, in
"NAME/floor". Both are measured in the same run and in turns, and the smallest of their times is compared: what
disturbs a machine only ever adds.
"""

import glob
import json
import platform
import subprocess
import sys

# The most that a figure may be: a multiple of its floor, or nanoseconds where it has none.
LIMITS = {
    "led tick, 32 files, 16 actions": 1.05,
    "command line, last of 64 rows": 2000,
}
MOST_BYTES = 96 * 1024
COUNTERS = {"allocations": 0}


def measure(program):
    done = subprocess.run(
        [program, "--benchmark_format=json", "--benchmark_repetitions=15",
         "--benchmark_enable_random_interleaving=true"],
        stdout=subprocess.PIPE, check=True)
    figures = {}
    for run in json.loads(done.stdout)["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        figure = figures.setdefault(run["run_name"].split("/iterations")[0], {"ns": run["real_time"]})
        figure["ns"] = min(figure["ns"], run["real_time"])
        for counter in COUNTERS:
            if counter in run:
                figure[counter] = max(figure.get(counter, 0), run[counter])
    return figures


def size_of(library):
    """Text, data and bss together."""
    done = subprocess.run(["size", library], stdout=subprocess.PIPE, text=True, check=True)
    return int(done.stdout.splitlines()[1].split()[3])


def main(tree, arm_tree):
    figures = {}
    for program in sorted(glob.glob(tree + "/bin/*_bench")):
        figures.update(measure(program))
    rows, good = [], True
    for name, limit in LIMITS.items():
        figure, floor = figures[name], figures.get(name + "/floor")
        ratio = figure["ns"] / floor["ns"] if floor else None
        holds = (ratio if floor else figure["ns"]) <= limit
        for counter, most in COUNTERS.items():
            holds = holds and figure.get(counter, 0) <= most
        good = good and holds
        rows.append({"figure": name, "ns": figure["ns"], "floor_ns": floor["ns"] if floor else None, "ratio": ratio,
                     "at_most": limit, "holds": holds,
                     **{counter: figure[counter] for counter in COUNTERS if counter in figure}})
    size = size_of(arm_tree + "/lib/libboarddrivers.so")
    good = good and size <= MOST_BYTES
    with open(tree + "/bench.json", "w", encoding="utf-8") as file:
        json.dump({"machine": platform.processor() or platform.machine(), "figures": rows, "arm_library_bytes": size}, file, indent=2)

    print(f"{'figure':40} {'ns':>9} {'floor ns':>9} {'ratio':>6} {'at most':>8}")
    for row in rows:
        floor = f"{row['floor_ns']:9.0f} {row['ratio']:6.2f}" if row["ratio"] else f"{'':9} {'':6}"
        print(f"{row['figure']:40} {row['ns']:9.0f} {floor} {row['at_most']:8} {'' if row['holds'] else 'OVER'}"
              + "".join(f"  {counter}: {row[counter]:.0f}" for counter in COUNTERS if counter in row))
    print(f"{'libboarddrivers.so on ARM, bytes':40} {size:9} {'':16} {MOST_BYTES:8} {'' if size <= MOST_BYTES else 'OVER'}")
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
