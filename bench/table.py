#!/usr/bin/env python3
"""Prints the table of benchmark results: our figure, the best peer's, their ratio, the known limit and
what of it we reach. The cases that we lose come first.

Reads JSON files of Google Benchmark. Cases are named "<case>/ours", "<case>/<peer>" and
"<case>/limit ...", with the arguments of the case behind; the figure of each is the median over the
repetitions.
"""
import json
import re
import statistics
import sys

MODIFIER = re.compile(r"(iterations|repeats|threads|min_time):.*|(manual|real|process)_time")
UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def medians(paths):
    runs = {}
    for path in paths:
        with open(path) as file:
            for run in json.load(file)["benchmarks"]:
                if run.get("run_type") == "iteration" and not run.get("error_occurred"):
                    # Processor time, but where a benchmark measures by itself.
                    clock = "real_time" if "manual_time" in run["run_name"] else "cpu_time"
                    time = run[clock] * UNITS[run["time_unit"]]
                    runs.setdefault(run["run_name"], []).append(time)
    return {name: statistics.median(times) for name, times in runs.items()}


def readable(ns):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if ns >= size:
            return f"{ns / size:.3g} {unit}"
    return f"{ns:.3g} ns"


def readable_ratio(ratio):
    return f"{ratio:{'.2f' if ratio >= 0.1 else '.2g'}}"


def main():
    cases = {}
    for name, time in medians(sys.argv[1:]).items():
        # Google Benchmark appends arguments and modifiers such as "/iterations:3" to the name.
        case, who, *arguments = (p for p in name.split("/") if not MODIFIER.fullmatch(p))
        cases.setdefault(", ".join([case, *arguments]), {})[who] = time
    rows = []
    for case, times in cases.items():
        limits = {w: t for w, t in times.items() if w.startswith("limit")}
        peers = {w: t for w, t in times.items() if w != "ours" and w not in limits}
        ours = times.get("ours")
        if ours is None:
            continue
        peer = min(peers, key=peers.get) if peers else ""
        limit = next(iter(limits), "")
        rows.append((
            peers[peer] / ours if peer else float("inf"),
            limits[limit] / ours if limit else float("inf"),
            case,
            readable(ours),
            readable(peers[peer]) if peer else "",
            peer,
            readable_ratio(peers[peer] / ours) if peer else "",
            readable(limits[limit]) if limit else "",
            limit.removeprefix("limit").strip(" ()"),
            readable_ratio(limits[limit] / ours) if limit else "",
        ))
    head = ("case", "ours", "best peer", "", "peer / ours", "limit", "", "limit / ours")
    rows = [head] + [row[2:] for row in sorted(rows)]
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    for row in rows:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


if __name__ == "__main__":
    main()
