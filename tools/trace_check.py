#!/usr/bin/env python3
"""Checks a trace written by the library against the Trace Event Format's rules.

    python3 tools/trace_check.py TRACE.json [--expect-category CAT ...]

- the file is JSON with a "traceEvents" array; every event has name, ph, pid,
  tid and (but for metadata) a numeric ts;
- complete events ('X') have a non-negative dur, and on each thread the spans
  nest: one that starts inside another ends inside it too;
- begin/end events ('B'/'E') pair up on the thread they began on;
- every flow ('s') has its end ('f') with the same id, not earlier, and the
  other way round;
- every async span ('b') has its end ('e') with the same category, name and id;
- every thread that has events is named by a "thread_name" metadata event.
Prints one line per problem and exits 1 if there is any; prints a summary
(counts by phase and category) otherwise.
"""
import argparse
import collections
import json
import sys


def check(events, expected_categories):
    problems = []
    by_thread = collections.defaultdict(list)
    named = set()
    flows_s, flows_f = {}, {}
    async_open = {}
    counts = collections.Counter()
    for index, e in enumerate(events):
        for key in ("name", "ph", "pid", "tid"):
            if key not in e:
                problems.append(f"event {index} has no {key}: {e}")
        ph = e.get("ph")
        counts[(ph, e.get("cat", ""))] += 1
        thread = (e.get("pid"), e.get("tid"))
        if ph == "M":
            if e.get("name") == "thread_name":
                named.add(thread)
            continue
        if not isinstance(e.get("ts"), (int, float)):
            problems.append(f"event {index} has no numeric ts: {e}")
            continue
        by_thread[thread].append(e)
        if ph == "X" and not (isinstance(e.get("dur"), (int, float)) and e["dur"] >= 0):
            problems.append(f"complete event {index} has no valid dur: {e}")
        if ph == "s":
            flows_s[e.get("id")] = e
        elif ph == "f":
            flows_f[e.get("id")] = e
        elif ph == "b":
            async_open[(e.get("cat"), e.get("name"), e.get("id"))] = e
        elif ph == "e":
            key = (e.get("cat"), e.get("name"), e.get("id"))
            if async_open.pop(key, None) is None:
                problems.append(f"async end without a begin: {e}")
    for key, e in async_open.items():
        problems.append(f"async begin without an end: {e}")
    for fid, s in flows_s.items():
        f = flows_f.get(fid)
        if f is None:
            problems.append(f"flow {fid} has no end: {s}")
        elif f["ts"] < s["ts"]:
            problems.append(f"flow {fid} ends before it starts")
    for fid, f in flows_f.items():
        if fid not in flows_s:
            problems.append(f"flow end {fid} has no start: {f}")
    for thread, items in by_thread.items():
        if thread not in named:
            problems.append(f"thread {thread[1]} has events but no thread_name")
        problems += check_nesting(thread, items)
    for category in expected_categories:
        if not any(cat == category for (_, cat) in counts):
            problems.append(f"no event of category {category}")
    return problems, counts


def check_nesting(thread, items):
    """Spans of one thread: X events must nest, B/E must pair (times in microseconds)."""
    problems = []
    spans = sorted((e for e in items if e["ph"] == "X"), key=lambda e: (e["ts"], -e["dur"]))
    stack = []
    for e in spans:
        begin, end = e["ts"], e["ts"] + e["dur"]
        while stack and stack[-1][1] <= begin:
            stack.pop()
        if stack and end > stack[-1][1] + 1e-3:
            problems.append(f"thread {thread[1]}: span '{e['name']}' crosses the end of '{stack[-1][2]}'")
        stack.append((begin, end, e["name"]))
    open_spans = []
    for e in sorted((e for e in items if e["ph"] in "BE"), key=lambda e: e["ts"]):
        if e["ph"] == "B":
            open_spans.append(e["name"])
        elif not open_spans:
            problems.append(f"thread {thread[1]}: 'E' without a 'B': {e}")
        else:
            open_spans.pop()
    for name in open_spans:
        problems.append(f"thread {thread[1]}: 'B' {name} never ends")
    return problems


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("trace")
    parser.add_argument("--expect-category", action="append", default=[])
    args = parser.parse_args()
    with open(args.trace, encoding="utf-8") as f:
        document = json.load(f)
    events = document.get("traceEvents") if isinstance(document, dict) else None
    if not isinstance(events, list):
        print("no traceEvents array")
        return 1
    problems, counts = check(events, args.expect_category)
    for problem in problems:
        print(problem)
    if problems:
        return 1
    summary = ", ".join(f"{ph}/{cat or '-'}: {n}" for (ph, cat), n in sorted(counts.items()))
    print(f"{args.trace}: {len(events)} events ok ({summary})")
    return 0


if __name__ == "__main__":
    sys.exit(main())
