#!/usr/bin/env python3
"""Runs every benchmark program and writes bench/REPORT.md with charts.

    python3 bench/report.py [--build build/release] [--repetitions 3] [--filter REGEX]
                            [--programs bench_tasks,bench_threading]

Each program runs with random interleaving and repetitions; the report quotes
medians. bench/peers.json pairs each of our figures with the peer measured in
the same program, states the goal as a ratio and says which direction is
better; the report shows the ratio and whether the goal is met, and draws one
PNG chart of the ratios per program (matplotlib).

A row may take its peer from another program of the same run
("peer_program": "bench_trace_nohooks", the same source built without the
trace hook points). Such programs run in turns, one repetition each, as many
turns as repetitions, so that a drift of the machine's speed meets both
alike; the report quotes the medians over the turns.
"""
import argparse
import json
import os
import re
import statistics
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))


def run_program(path, repetitions, bench_filter):
    out = path + ".json"
    args = [path, "--benchmark_enable_random_interleaving=true",
            f"--benchmark_repetitions={repetitions}", "--benchmark_report_aggregates_only=true",
            "--benchmark_format=console", f"--benchmark_out={out}", "--benchmark_out_format=json"]
    if bench_filter:
        args.append(f"--benchmark_filter={bench_filter}")
    print(f"running {os.path.basename(path)}", file=sys.stderr, flush=True)
    subprocess.run(args, check=True, stdout=subprocess.DEVNULL)
    try:
        with open(out) as f:
            text = f.read()
        os.remove(out)
    except FileNotFoundError:
        text = ""
    if not text.strip():  # the filter matched nothing in this program
        return {}
    data = json.loads(text)
    medians = {}
    for b in data.get("benchmarks", []):
        # With one repetition there are no aggregates: the run itself is the median.
        if b.get("aggregate_name") == "median" or (repetitions == 1 and b.get("run_type") == "iteration"):
            medians[b["run_name"]] = b
    return medians


def run_in_turns(paths, repetitions, bench_filter):
    """Runs the programs one repetition each, in turns; per benchmark, the median of every numeric field."""
    turns = {path: [] for path in paths}
    for _ in range(repetitions):
        for path in paths:
            turns[path].append(run_program(path, 1, bench_filter))
    medians = {}
    for path, runs in turns.items():
        merged = {}
        for name in set().union(*runs):
            entries = [run[name] for run in runs if name in run]
            entry = dict(entries[0])
            for key, value in entry.items():
                if isinstance(value, (int, float)) and not isinstance(value, bool):
                    entry[key] = statistics.median(e[key] for e in entries if key in e)
            merged[name] = entry
        medians[path] = merged
    return medians


def value_of(entry, metric):
    """The figure of one benchmark: a counter, bytes_per_second, items_per_second or real_time in ns."""
    if metric == "time":
        scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[entry.get("time_unit", "ns")]
        return entry["real_time"] * scale
    return entry.get(metric)


def format_value(value, metric, unit=""):
    if value is None:
        return "n/a"
    if unit:
        return f"{value:.4g} {unit}"
    if metric == "time":
        for unit, scale in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
            if value >= scale:
                return f"{value / scale:.3g} {unit}"
        return f"{value:.3g} ns"
    if metric == "bytes_per_second":
        return f"{value / 2**20:.4g} MiB/s"
    if metric == "items_per_second":
        return f"{value / 1e6:.4g} M/s"
    return f"{value:.4g}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", default=os.path.join(HERE, "..", "build", "release"))
    parser.add_argument("--repetitions", type=int, default=3)
    parser.add_argument("--filter", default="")
    parser.add_argument("--programs", default="",
                        help="comma-separated program names (bench_tasks,...); all when empty")
    args = parser.parse_args()

    with open(os.path.join(HERE, "peers.json")) as f:
        peers = json.load(f)
    bench_dir = os.path.join(args.build, "bench")
    programs = sorted(p for p in os.listdir(bench_dir) if p.startswith("bench_") and
                      os.access(os.path.join(bench_dir, p), os.X_OK) and not p.endswith(".json"))
    if args.programs:
        chosen = set(args.programs.split(","))
        programs = [p for p in programs if p in chosen]
    # Programs paired with a peer program run in turns with it; the others on their own.
    paired = {row["peer_program"] for rows in peers.values() for row in rows if row.get("peer_program")}
    paired |= {p for p, rows in peers.items() if any(row.get("peer_program") for row in rows)}
    paired &= set(programs)
    results = {p: run_program(os.path.join(bench_dir, p), args.repetitions, args.filter)
               for p in programs if p not in paired}
    if paired:
        turns = run_in_turns([os.path.join(bench_dir, p) for p in sorted(paired)], args.repetitions, args.filter)
        results.update({os.path.basename(path): medians for path, medians in turns.items()})

    lines = ["# Benchmark report", "", f"Measured {machine_line()}.", ""]
    lines += ["Medians of %d repetitions with random interleaving. Each of our figures stands "
                         "beside its peer, measured in the same program. The ratio compares them as the "
                         "goal does (see the goal column); \"met\" tells whether the goal holds in this run."
                         % args.repetitions, ""]
    charts = []
    for old in os.listdir(HERE):  # charts of an earlier run that this one may not draw again
        if old.startswith("report_") and old.endswith(".png"):
            os.remove(os.path.join(HERE, old))
    for program, rows in peers.items():
        measured = results.get(program)
        if measured is None:
            continue
        lines += [f"## {program}", "", "| figure | ours | peer | ratio | goal | met |", "|---|---|---|---|---|---|"]
        labels, ratios, goals = [], [], []
        for row in rows:
            metric = row.get("metric", "time")
            ours = measured.get(row["ours"])
            peer_results = results.get(row.get("peer_program", program)) or {}
            peer = peer_results.get(row["peer"]) if row.get("peer") else None
            # A counter may need a scale to its unit (seconds per node shown in ns).
            scale = row.get("scale", 1)
            ours_value = value_of(ours, metric) * scale if ours and value_of(ours, metric) is not None else None
            peer_value = value_of(peer, metric) * scale if peer and value_of(peer, metric) is not None else None
            ratio = None
            if ours_value and peer_value:
                ratio = ours_value / peer_value
            goal = row.get("goal")
            better = row.get("better", "lower")
            # An absolute row has no peer: its goal is in the figure's own unit.
            absolute = row.get("absolute", False)
            judged = ours_value if absolute else ratio
            met = ""
            if judged is not None and goal is not None:
                met = "yes" if (judged <= goal if better == "lower" else judged >= goal) else "no"
            sign = "<=" if better == "lower" else ">="
            if goal is None:
                goal_text = ""
            elif absolute:
                goal_text = f"{sign} {format_value(goal, metric, row.get('unit', ''))}"
            else:
                goal_text = f"{sign} {goal:g}x"
            unit = row.get("unit", "")
            lines.append(f"| {row['label']} | {format_value(ours_value, metric, unit)} | "
                         f"{format_value(peer_value, metric, unit) if row.get('peer') else ''} | "
                         f"{'' if ratio is None else '%.2fx' % ratio} | {goal_text} | {met} |")
            if ratio is not None:
                labels.append(row["label"])
                ratios.append(ratio)
                goals.append(goal)
        lines.append("")
        if ratios:
            chart = draw_chart(program, labels, ratios, goals)
            if chart:
                lines += [f"![{program}]({os.path.basename(chart)})", ""]
                charts.append(chart)
    with open(os.path.join(HERE, "REPORT.md"), "w") as f:
        f.write("\n".join(lines) + "\n")
    print(f"wrote {os.path.join(HERE, 'REPORT.md')} and {len(charts)} charts", file=sys.stderr)


def machine_line():
    """When and on what the figures were taken: date, CPU model and core count."""
    import datetime
    model = "unknown CPU"
    try:
        with open("/proc/cpuinfo") as f:
            for line in f:
                if line.startswith("model name"):
                    model = line.split(":", 1)[1].strip()
                    break
    except OSError:
        pass
    return f"on {datetime.date.today().isoformat()}, {model}, {os.cpu_count()} cores"


def draw_chart(program, labels, ratios, goals):
    try:
        import matplotlib
        matplotlib.use("Agg")
        import matplotlib.pyplot as plt
    except ImportError:
        print("matplotlib is missing: no charts (apt-get install python3-matplotlib)", file=sys.stderr)
        return None
    height = 0.45 * len(labels) + 1.2
    fig, ax = plt.subplots(figsize=(8, height))
    y = range(len(labels))
    ax.barh(list(y), ratios, color="#4c72b0")
    for k, goal in enumerate(goals):
        if goal is not None:
            ax.plot([goal, goal], [k - 0.4, k + 0.4], color="#c44e52", linewidth=2)
    ax.axvline(1.0, color="grey", linestyle=":")
    ax.set_yticks(list(y))
    ax.set_yticklabels(labels, fontsize=8)
    ax.invert_yaxis()
    ax.set_xlabel("ratio to the peer (red: goal)")
    ax.set_title(program)
    fig.tight_layout()
    path = os.path.join(HERE, f"report_{program}.png")
    fig.savefig(path, dpi=100)
    plt.close(fig)
    return path


if __name__ == "__main__":
    main()
