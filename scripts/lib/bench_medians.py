#!/usr/bin/env python3
"""Reads the JSON of a Google Benchmark program on standard input and prints one line for each
median, "name value": times in microseconds under the benchmark's name, counters under
name/counter."""

import json
import sys

MICROSECONDS = {"ns": 1e-3, "us": 1, "ms": 1e3, "s": 1e6}
# What stands in every entry; all other numbers are counters.
FIXED = {"family_index", "per_family_instance_index", "repetitions", "repetition_index", "threads",
         "iterations", "real_time", "cpu_time"}

for entry in json.load(sys.stdin)["benchmarks"]:
    if entry.get("aggregate_name") != "median":
        continue
    name = entry["run_name"].split("/iterations:")[0]
    print(name, entry["real_time"] * MICROSECONDS[entry["time_unit"]])
    for key, value in entry.items():
        if isinstance(value, (int, float)) and key not in FIXED:
            print(f"{name}/{key}", value)
