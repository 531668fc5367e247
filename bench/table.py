#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Pavor Authors
# SPDX-License-Identifier: Apache-2.0

"""Prints one table of ratios within one run, beside the goals.

usage: table.py STRIPPED_LIBRARY RESULTS.json...
"""
import json
import os
import sys

results = {}
for path in sys.argv[2:]:
    with open(path, encoding="utf-8") as file:
        for row in json.load(file)["benchmarks"]:
            if row.get("aggregate_name") == "median":
                results[row["run_name"].replace("/real_time", "")] = row


def time(name):
    row = results[name]
    return row["real_time"] * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[row["time_unit"]]


def ratio(name, floor):
    return time(name) / time(floor)


# What it is, its value, the goal and the better goal.
rows = [
    ("getProfile / bare hand-off, one CPU", ratio("GetProfile/1", "BareHandOff/1"), 0.95, 0.87),
    ("getProfile / bare hand-off, two CPUs", ratio("GetProfile/2", "BareHandOff/2"), 1.40, 1.25),
    ("context switches per getProfile, one CPU", results["GetProfile/1"]["switches"], 2.1, 2.03),
    ("allocations per getProfile", results["GetProfile/1"]["allocations"], 15, 12),
    ("kept line / plain line", ratio("KeptLine", "PlainLine"), 0.15, 0.12),
    ("line without a reader, ns", time("UnkeptLine"), 10, 4),
    ("filter, 16 profiles / bare map walk", ratio("Filter/16", "WalkMap/16"), None, None),
    ("filter, 255 profiles / bare map walk", ratio("Filter/255", "WalkMap/255"), 1.25, 1.05),
    ("key / key with a std::bind callable", ratio("Key", "BoundKey"), 0.85, 0.75),
    ("dispatch of 1 ready / bare epoll", ratio("Dispatch/1", "BareEpoll/1"), 1.15, 1.05),
    ("dispatch of 4 ready / bare epoll", ratio("Dispatch/4", "BareEpoll/4"), 1.15, 1.05),
    ("refresh per profile / bare request", ratio("Refresh", "BareRequests"), 1.10, 1.05),
    ("init, one call, destroy / bare loop life", ratio("Life", "BareLife"), 1.5, 1.25),
    ("stripped library, KB", os.path.getsize(sys.argv[1]) / 1000, 150, 128),
]

print(f"{'measure':<44}{'value':>9}{'goal':>8}{'stretch':>9}")
for name, value, goal, stretch in rows:
    if goal is None:
        verdict = ""
    elif value <= stretch:
        verdict = "stretch"
    elif value <= goal:
        verdict = "goal"
    else:
        verdict = "missed"
    shown = [f"{x:.2f}" if x is not None else "-" for x in (value, goal, stretch)]
    print(f"{name:<44}{shown[0]:>9}{shown[1]:>8}{shown[2]:>9}  {verdict}")
