#!/usr/bin/env python3
"""Draws a trace written by the library as a per-thread timeline (PNG).

    python3 tools/trace_timeline.py TRACE.json OUT.png [--width 12] [--dpi 100]
                                    [--from MS] [--to MS] [--max-arrows 200]

One lane per thread (named by its thread_name), in the order the threads first
appear in time. Complete spans ('X') are bars, stacked by nesting depth and
coloured by category; async spans ('b'/'e', the data manager's lock waits and
holds) are thinner bars under their thread's spans, waits hatched; instants
('i') are ticks; arrows ('s' -> 'f') are lines from the span they leave to the
one they reach. Times are milliseconds since the trace's first event.
"""
import argparse
import collections
import json
import sys

COLOURS = {"messaging": "#4c72b0", "tasks": "#55a868", "data": "#c44e52", "workflow": "#8172b2",
           "demo": "#937860", "trace": "#999999"}
OTHER = "#64b5cd"


def colour(category):
    return COLOURS.get(category, OTHER)


def load(path):
    with open(path, encoding="utf-8") as f:
        document = json.load(f)
    events = document["traceEvents"] if isinstance(document, dict) else document
    names = {}
    timed = []
    for e in events:
        if e.get("ph") == "M":
            if e.get("name") == "thread_name":
                names[e["tid"]] = e.get("args", {}).get("name", str(e["tid"]))
            continue
        if isinstance(e.get("ts"), (int, float)):
            timed.append(e)
    return names, timed


def depths(spans):
    """Nesting depth of each complete span of one thread (spans sorted by start, longest first)."""
    result, stack = [], []
    for e in spans:
        end = e["ts"] + e.get("dur", 0)
        while stack and stack[-1] <= e["ts"]:
            stack.pop()
        result.append(len(stack))
        stack.append(end)
    return result


def async_spans(events):
    """(thread, begin, end, name, category) of every async span with both ends."""
    open_spans, spans = {}, []
    for e in sorted(events, key=lambda e: e["ts"]):
        key = (e.get("cat"), e.get("name"), e.get("id"))
        if e["ph"] == "b":
            open_spans[key] = e
        elif e["ph"] == "e" and key in open_spans:
            b = open_spans.pop(key)
            spans.append((b["tid"], b["ts"], e["ts"], b["name"], b.get("cat", "")))
    return spans


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("trace")
    parser.add_argument("png")
    parser.add_argument("--width", type=float, default=12.0, help="inches")
    parser.add_argument("--dpi", type=int, default=100)
    parser.add_argument("--from", dest="start", type=float, default=None, help="ms since the first event")
    parser.add_argument("--to", dest="stop", type=float, default=None, help="ms since the first event")
    parser.add_argument("--max-arrows", type=int, default=200)
    args = parser.parse_args()

    try:
        import matplotlib
        matplotlib.use("Agg")
        import matplotlib.pyplot as plt
        from matplotlib.patches import Patch
    except ImportError:
        print("matplotlib is missing (apt-get install python3-matplotlib)", file=sys.stderr)
        return 1

    names, events = load(args.trace)
    if not events:
        print(f"{args.trace}: no timed events", file=sys.stderr)
        return 1
    origin = min(e["ts"] for e in events)
    ms = lambda us: (us - origin) / 1000.0
    start = args.start if args.start is not None else 0.0
    stop = args.stop if args.stop is not None else max(ms(e["ts"] + e.get("dur", 0)) for e in events)
    visible = lambda a, b: b >= start and a <= stop

    first_seen = {}
    for e in sorted(events, key=lambda e: e["ts"]):
        first_seen.setdefault(e["tid"], e["ts"])
    threads = sorted(first_seen, key=first_seen.get)

    spans_by_thread = collections.defaultdict(list)
    for e in events:
        if e["ph"] == "X":
            spans_by_thread[e["tid"]].append(e)
    asyncs = async_spans([e for e in events if e["ph"] in "be"])
    asyncs_by_thread = collections.defaultdict(list)
    for span in asyncs:
        asyncs_by_thread[span[0]].append(span)

    # Lane heights: one row per nesting level, one more for async spans when the thread has any.
    row = 0.8
    layout, y = {}, 0.0
    span_depths = {}
    for tid in threads:
        spans = sorted(spans_by_thread[tid], key=lambda e: (e["ts"], -e.get("dur", 0)))
        span_depths[tid] = list(zip(spans, depths(spans)))
        levels = max([d for _, d in span_depths[tid]], default=-1) + 1
        rows = max(levels, 1) + (1 if asyncs_by_thread[tid] else 0)
        layout[tid] = (y, rows)
        y += rows + 0.6
    height = max(2.5, 0.28 * y + 1.2)
    fig, ax = plt.subplots(figsize=(args.width, height))

    categories = set()
    for tid in threads:
        top, rows = layout[tid]
        for e, depth in span_depths[tid]:
            a, b = ms(e["ts"]), ms(e["ts"] + e.get("dur", 0))
            if not visible(a, b):
                continue
            categories.add(e.get("cat", ""))
            wide = b - a > (stop - start) / 200.0  # neighbours told apart by a white edge
            ax.broken_barh([(a, max(b - a, (stop - start) / 2000.0))], (top + depth, row),
                           facecolors=colour(e.get("cat", "")), edgecolor="white" if wide else "none",
                           linewidth=0.6)
            if b - a > (stop - start) / 25.0:  # wide enough for its name
                ax.text(max(a, start) + (stop - start) / 400.0, top + depth + row / 2, e["name"],
                        fontsize=6.5, color="white", va="center", ha="left", clip_on=True)
        async_row = top + rows - 1
        for _, b_ts, e_ts, name, cat in asyncs_by_thread[tid]:
            a, b = ms(b_ts), ms(e_ts)
            if not visible(a, b):
                continue
            categories.add(cat)
            waiting = name.startswith("wait ")
            ax.broken_barh([(a, max(b - a, (stop - start) / 2000.0))],
                           (async_row + (0.05 if waiting else 0.45), 0.35),
                           facecolors="white" if waiting else colour(cat), edgecolor=colour(cat),
                           hatch="////" if waiting else None, linewidth=0.3)
    for e in events:
        if e["ph"] == "i" and visible(ms(e["ts"]), ms(e["ts"])):
            top, _ = layout[e["tid"]]
            categories.add(e.get("cat", ""))
            ax.plot([ms(e["ts"])] * 2, [top - 0.25, top + row + 0.25], color=colour(e.get("cat", "")),
                    linewidth=0.8)

    # Arrows, each from its start to its end, at the middle of the lanes' first rows.
    starts = {e["id"]: e for e in events if e["ph"] == "s"}
    arrows = [(starts[e["id"]], e) for e in events if e["ph"] == "f" and e.get("id") in starts]
    arrows = [(s, f) for s, f in arrows if visible(ms(s["ts"]), ms(f["ts"])) and s["tid"] != f["tid"]]
    step = max(1, len(arrows) // max(1, args.max_arrows))
    for s, f in arrows[::step]:
        ax.annotate("", xy=(ms(f["ts"]), layout[f["tid"]][0] + row / 2),
                    xytext=(ms(s["ts"]), layout[s["tid"]][0] + row / 2),
                    arrowprops=dict(arrowstyle="-|>", color="#444444", linewidth=0.4, alpha=0.5,
                                    mutation_scale=5))

    ax.set_yticks([layout[tid][0] + row / 2 for tid in threads])
    ax.set_yticklabels([names.get(tid, str(tid)) for tid in threads], fontsize=8)
    ax.set_ylim(y, -0.6)
    ax.set_xlim(start, stop)
    ax.set_xlabel("ms since the first event")
    ax.grid(axis="x", color="#dddddd", linewidth=0.5)
    ax.set_axisbelow(True)
    handles = [Patch(facecolor=colour(c), label=c or "-") for c in sorted(categories)]
    handles.append(Patch(facecolor="white", edgecolor=colour("data"), hatch="////", label="lock wait"))
    ax.legend(handles=handles, fontsize=7, loc="upper right", ncol=len(handles), frameon=False,
              bbox_to_anchor=(1.0, 1.06))
    ax.set_title(args.trace.rsplit("/", 1)[-1], fontsize=9, loc="left")
    fig.tight_layout()
    fig.savefig(args.png, dpi=args.dpi)
    print(f"{args.png}: {len(threads)} threads, {sum(len(v) for v in spans_by_thread.values())} spans, "
          f"{len(asyncs)} async spans, {len(arrows)} arrows")
    return 0


if __name__ == "__main__":
    sys.exit(main())
