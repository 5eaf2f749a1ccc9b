"""Runs the benchmarks of a build tree and prints each figure beside its floor.

The floor of a benchmark NAME is the benchmark "NAME/floor": the same work done with bare system
calls or the standard library. Both are measured alternately in the same run. Their smallest times
are compared, because disturbances only add time.
"""

import datetime
import glob
import json
import platform
import subprocess
import sys

import growth
import host
import start
import web

# The limit of a figure: a multiple of its floor, or nanoseconds if it has no floor.
LIMITS = {
    "getTemperature": 1.05,
    "getActualFanSpeed": 1.05,
    "getLedStatus": 1.05,
    "setFanSpeed": 1.05,
    "led tick, 32 files, 16 actions": 1.05,
    "command line, last of 64 rows": 2000,
    "load 512 bytes, 40 tags": 1.5,
    "load 64 KiB, 1000 tags": 1.5,
    "load 64 KiB, 10000 tags": 1.5,
    "store 64 KiB, 1000 tags": 1.5,
    "store 64 KiB, 10000 tags": 1.5,
    "getTagUInt of the last of 40 tags": 1.5,
    "formatted report of 40 tags": 2,
    "bring-up": 2,
    "boardctl bd dump": 3,
}
# Limit for the calls of `operator new` in all iterations together. Drivers and LEDs need none after
# their first operation.
MOST_ALLOCATIONS = 0
# The time of a load per tag must not grow with the number of tags.
PER_TAG = [("load 64 KiB, 1000 tags", 1000), ("load 64 KiB, 10000 tags", 10000)]
# The instructions per item must not grow with the number of items.
MOST_GROWTH = 1.2
MOST_START = 2.2  # times the instructions of an empty program
MOST_CALLS = 110
MOST_BYTES = 96 * 1024
MOST_MEMORY = 2
MOST_WAKES = 11  # per second; the LED sequencer alone needs ten, one per tick
MOST_WAKES_OF_WATCH = 2  # each time that the host looks at all devices
MOST_CORE = 0.2  # percent
# A board has 64 MB. boardweb may use 1.6 % of that at rest. Each client may add 16 KiB for its request.
MOST_WEB_MEMORY = 1024  # kB
MOST_WEB_MEMORY_WITH_CLIENTS = MOST_WEB_MEMORY + web.MOST_CLIENTS * 16
MOST_MEMORY_FOR_WEB = 64  # kB; the buffers of the three connections that boardweb makes
# Ten pages together get a hundred messages a second, and each message may take 60 us. On a board, whose core may be
# twenty times slower, that is an eighth of the core. The host may take twice what is allowed without pages.
MOST_WEB_CORE = 0.6  # percent
MOST_CORE_WITH_PAGES = 2 * MOST_CORE


def measure(program):
    done = subprocess.run(
        [program, "--benchmark_format=json", "--benchmark_repetitions=15", "--benchmark_min_time=0.1",
         "--benchmark_enable_random_interleaving=true"],
        stdout=subprocess.PIPE, check=True)
    figures = {}
    for run in json.loads(done.stdout)["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        name = run["run_name"].removesuffix("/real_time").split("/iterations")[0]
        figure = figures.setdefault(name, {"ns": run["real_time"]})
        figure["ns"] = min(figure["ns"], run["real_time"])
        if "allocations" in run:
            figure["allocations"] = max(figure.get("allocations", 0), run["allocations"])
    return figures


def row(figure, value, floor, at_most, unit="ns", **more):
    ratio = value / floor if floor else None
    holds = (ratio or value) <= at_most and more.get("allocations", 0) <= MOST_ALLOCATIONS
    return {"figure": figure, "unit": unit, "value": value, "floor": floor, "ratio": ratio, "at_most": at_most,
            "holds": holds, **more}


def size_of(library):
    """Returns the size of text, data and bss together."""
    done = subprocess.run(["size", library], stdout=subprocess.PIPE, text=True, check=True)
    return int(done.stdout.splitlines()[1].split()[3])


def all_rows(tree, arm_tree):
    figures = {}
    for program in sorted(glob.glob(tree + "/bin/*_bench")):
        figures.update(measure(program))
    for name, at_most in LIMITS.items():
        floor = figures.get(name + "/floor")
        yield row(name, figures[name]["ns"], floor["ns"] if floor else None, at_most,
                  **{key: value for key, value in figures[name].items() if key != "ns"})
    few, many = (figures[name]["ns"] / tags for name, tags in PER_TAG)
    yield row("load per tag, 10000 vs. 1000 tags", many, few, 1)
    for name, many, few in growth.figures(tree):
        yield row(name, many, few, MOST_GROWTH, "instr")
    yield row("leds preview, 10^6 vs. 1000 ticks", *growth.preview_memory(tree), MOST_GROWTH, "bytes")
    (instructions, floor), (calls, _) = start.figures(tree)
    yield row("boardctl temp", instructions, floor, MOST_START, "instr")
    yield row("boardctl temp, system calls", calls, None, MOST_CALLS, "")
    memory, floor = host.peak_memory(tree)
    yield row("boardctl run, peak memory", memory, floor, MOST_MEMORY, "kB")
    wakes, share = host.at_rest(tree)
    yield row("boardctl run idle, wakeups per second", wakes, None, MOST_WAKES, "")
    yield row("boardctl run, wakeups per look", host.wakes_of_watch(tree), None, MOST_WAKES_OF_WATCH, "")
    yield row("boardctl run idle, share of a core", share, None, MOST_CORE, "%")
    at_rest, with_clients, added, web_share, share = web.figures(tree)
    yield row("boardweb at rest, private memory", at_rest, None, MOST_WEB_MEMORY, "kB")
    yield row("boardweb, 100 clients, private memory", with_clients, None, MOST_WEB_MEMORY_WITH_CLIENTS, "kB")
    yield row("boardctl run, memory for boardweb", added, None, MOST_MEMORY_FOR_WEB, "kB")
    yield row("boardweb with ten pages, share of a core", web_share, None, MOST_WEB_CORE, "%")
    yield row("boardctl run with ten pages, share of a core", share, None, MOST_CORE_WITH_PAGES, "%")
    yield row("libboarddrivers.so on ARM", size_of(arm_tree + "/lib/libboarddrivers.so"), None, MOST_BYTES, "bytes")


def main(tree, arm_tree):
    rows = list(all_rows(tree, arm_tree))
    machine = f"{platform.machine()}, {host.processor()}"
    day = datetime.date.today().isoformat()
    with open(tree + "/bench.json", "w", encoding="utf-8") as file:
        json.dump({"date": day, "machine": machine, "figures": rows}, file, indent=2)

    print(f"{day}, {machine}")
    print(f"{'figure':44} {'value':>9} {'floor':>9} {'':5} {'ratio':>6} {'at most':>8}")
    for shown in rows:
        floor = f"{shown['floor']:9.0f}" if shown["floor"] else " " * 9
        ratio = f"{shown['ratio']:6.2f}" if shown["ratio"] else " " * 6
        more = f"  allocations: {shown['allocations']:.0f}" if "allocations" in shown else ""
        value = f"{shown['value']:9.0f}" if shown["value"] >= 10 else f"{shown['value']:9.2g}"
        print(f"{shown['figure']:44} {value} {floor} {shown['unit']:5} {ratio} {shown['at_most']:8} "
              f"{'' if shown['holds'] else 'OVER'}{more}".rstrip())
    return 0 if all(shown["holds"] for shown in rows) else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
