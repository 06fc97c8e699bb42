#!/usr/bin/env python3
"""Prints the Google Benchmark results of scripts/bench as one markdown table.

usage: bench-table.py [--machine TEXT] RESULT.json...

Benchmarks named BM_Peers/<workload>/<library> become one row per workload
with a column per library and the ratio of each peer's time to
rvgraphics' (above 1: rvgraphics is faster). Every other benchmark is an
rvgraphics-only row. Times are CPU time per operation; with repetitions the
median is taken. Standard library only.
"""

import argparse
import json
import sys

LIBRARIES = ["rvgraphics", "QPainterPath", "lib2geom"]
PEERS = LIBRARIES[1:]
UNITS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def seconds(entry):
    return entry["cpu_time"] * UNITS.get(entry.get("time_unit", "ns"), 1e-9)


def load(files):
    """{run name: seconds, or None for a run that reported an error}."""
    times, medians, errors = {}, {}, set()
    for name in files:
        with open(name, encoding="utf-8") as f:
            data = json.load(f)
        for entry in data.get("benchmarks", []):
            run = entry.get("run_name", entry["name"])
            if entry.get("error_occurred"):
                errors.add(run)
            elif entry.get("run_type") == "aggregate":
                if entry.get("aggregate_name") == "median":
                    medians[run] = seconds(entry)
            else:
                times.setdefault(run, []).append(seconds(entry))
    result = {run: sum(t) / len(t) for run, t in times.items()}
    result.update(medians)
    result.update({run: None for run in errors})
    return result


def significant(value, digits):
    """value with digits significant digits, trailing zeros kept, no exponent."""
    return f"{value:.0f}" if value >= 10 ** (digits - 1) else f"{value:#.{digits}g}"


def show_time(t):
    if t is None:
        return "error"
    for unit, scale in (("s", 1.0), ("ms", 1e-3), ("µs", 1e-6)):
        if t >= scale:
            return f"{significant(t / scale, 3)} {unit}"
    return f"{significant(t / 1e-9, 3)} ns"


def show_ratio(peer, own):
    if peer is None or own is None or own <= 0:
        return "n/a"
    return f"{significant(peer / own, 2)}×"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--machine", default="", help="machine line printed under the table")
    parser.add_argument("files", nargs="+")
    args = parser.parse_args()

    times = load(args.files)
    peers, others = {}, []
    for run, t in times.items():
        # Further parts are run settings, such as iterations:1.
        parts = run.split("/")
        if len(parts) >= 3 and parts[0] == "BM_Peers" and parts[2] in LIBRARIES:
            peers.setdefault(parts[1], {})[parts[2]] = t
        else:
            others.append((run, t))

    header = ["workload"] + LIBRARIES + [f"{peer} / rvgraphics" for peer in PEERS]
    rows = []
    for workload, row in peers.items():
        own = row.get("rvgraphics")
        cells = [show_time(row[lib]) if lib in row else "n/a" for lib in LIBRARIES]
        ratios = [show_ratio(row[p], own) if p in row else "n/a" for p in PEERS]
        rows.append([workload] + cells + ratios)
    for run, t in others:
        name = run[3:] if run.startswith("BM_") else run
        rows.append([name, show_time(t)] + ["—"] * (len(header) - 2))
    if not rows:
        print("bench-table: no results", file=sys.stderr)
        return 1

    widths = [max(len(r[i]) for r in rows + [header]) for i in range(len(header))]

    def line(cells):
        padded = [c.ljust(w) if i == 0 else c.rjust(w) for i, (c, w) in enumerate(zip(cells, widths))]
        return "| " + " | ".join(padded) + " |"

    print(line(header))
    print("|" + "|".join(("-" * (w + 1) + ":") if i else ("-" * (w + 2)) for i, w in enumerate(widths)) + "|")
    for r in rows:
        print(line(r))
    print()
    print("CPU time per operation (a circles-N row: N circles united one by one; a pair of")
    print("glyph strings or stars otherwise). Ratio above 1: rvgraphics is faster.")
    if args.machine:
        print(args.machine)
    return 0


if __name__ == "__main__":
    sys.exit(main())
