#!/usr/bin/env python3
"""Runs every measurement and prints one table.

usage: bench.py BUILD MEMORY DISK DOCS

BUILD is the folder of a build with WAKERLY_BENCH on; what is measured writes below MEMORY, which
should be in memory, or DISK. The folder DOCS gets performance.json and growth.svg, and new figures
in the tables of its performance.md. Each figure is a median of runs that took turns with those it is
compared with, and each ratio the median of the ratios of such turns.
"""

import collections
import json
import math
import os
import pathlib
import shutil
import signal
import statistics
import subprocess
import sys
import time

ROUNDS = 300
TURNS = 11
TWO_CORES = ("taskset", "--cpu-list", "0,1")
GROWTH_TURNS = 3
# What writes much to a disk slows down what comes next, so measurements there are shuffled.
ON_DISK = ("--benchmark_filter=^(read|set)/|^save/.*/(42|10000)$", f"--benchmark_repetitions={2 * TURNS}",
           "--benchmark_enable_random_interleaving=true")
VANTRE = "Library/Application Support/Vantre"
NOTIFIER = f"{VANTRE}/Welko/Tarnik/Brevo/Orlan Updates Notifier.app/Contents/MacOS/Orlan Updates Notifier"
PREFS = f"{VANTRE}/OrlanUpdater/1.0/VantreUpdaterPrefs.dat"
LOG = f"{VANTRE}/OrlanUpdater/1.0/orlanul.log"

PEERS = {"Poco", "QSettings", "libxml2", "log4cplus", "pugixml", "python", "shell", "spdlog", "tinyxml2"}

# What is compared: a title, ours, the limit, the most that the goal allows of it, and the others
# with the least that the goal asks of them in our times (0: shown, no goal).
ROWS = [
    ("logon, nothing due", "run/logon", "run/empty", 2.0,
     {"run/python": 0, "run/shell": 0}),
    ("scheduled", "run/scheduled", "run/empty", 2.0, {"run/python": 0, "run/shell": 0}),
    ("logon, on two cores", "two cores/run/logon", "two cores/run/empty", 2.0, {}),
    ("scheduled, on two cores", "two cores/run/scheduled", "two cores/run/empty", 2.0, {}),
    ("peak memory, logon", "peak/logon", "peak/empty", 1.5, {}),
    ("peak memory, scheduled", "peak/scheduled", "peak/empty", 1.5, {}),
    ("a program linked to expat", "run/empty_expat", "run/empty", 0, {}),
    ("a program linked to libplist", "run/empty_plist", "run/empty", 0, {}),
    ("a program linked to libsystemd", "run/empty_systemd", "run/empty", 0, {}),
    ("log line", "log/line/wakerly", "log/line/limit", 1.5,
     {"log/line/log4cplus": 3.0, "log/line/spdlog": 0}),
] + [
    (f"load, {size} entries", f"load/wakerly/{size}", f"load/limit/{size}", 2.0,
     {f"load/{peer}/{size}": goal for peer, goal in
      (("Poco", 1.0), ("libxml2", 1.0), ("tinyxml2", 0), ("pugixml", 0))})
    for size in (42, 10000, 100000)
] + [
    (f"save, {size} entries, {place}", f"{prefix}save/wakerly/{size}", f"{prefix}save/limit/{size}",
     0, {f"{prefix}save/{peer}/{size}": 1.0 for peer in ("Poco", "libxml2", "tinyxml2", "pugixml")})
    for place, prefix, sizes in (("on disk", "disk/", (42, 10000)),
                                 ("in memory", "", (42, 10000, 100000)))
    for size in sizes
] + [
    ("typed read, on disk", "disk/read/wakerly", "disk/read/limit", 1.3,
     {"disk/read/QSettings": 3.0}),
    ("typed set, on disk", "disk/set/wakerly", "disk/set/limit", 1.3, {"disk/set/QSettings": 1.0}),
    ("typed set, in memory", "set/wakerly", "set/limit", 0, {"set/QSettings": 1.0}),
    ("lock and unlock", "lock/wakerly", "lock/limit", 0, {}),
    ("FormatString, 1 KB", "text/FormatString", "text/limit", 0, {}),
    ("EscapeXML, nothing to do", "text/EscapeXML, nothing to escape", "text/limit", 0, {}),
    ("EscapeXML", "text/EscapeXML", "text/limit, marked", 0, {}),
    ("redaction, nothing to do", "text/redaction, no element", "text/limit", 0, {}),
    ("redaction", "text/redaction", "text/limit, marked", 0, {}),
]


class Tree:
    """A machine's folders, on which wakerly finds nothing due."""

    def __init__(self, build, folder):
        self.top = folder / "tree"
        for source, place in (("samples/kdupdater.dylib", f"{VANTRE}/VantreKDClient/kdupdater.dylib"),
                              ("samples/notifier", NOTIFIER)):
            target = self.top / "root" / place
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(build / source, target)
        prefs = self.top / "home" / PREFS
        prefs.parent.mkdir(parents=True)
        today = time.strftime("%Y-%m-%dT%H:%M:%S")
        prefs.write_text('<?xml version="1.0" encoding="UTF-8" ?>\n<Preferences>\n'
                         f"<LastDateCheck>{today}</LastDateCheck>\n</Preferences>")
        (self.top / "empty.sh").write_text("#!/bin/sh\n")
        (self.top / "empty.sh").chmod(0o755)
        self.environment = {"HOME": str(self.top / "home"), "WAKERLY_ROOT": str(self.top / "root"),
                            "PATH": os.environ["PATH"], "KDUPDATER_CALLBACK": "request"}
        # The first run writes what the preferences lack.
        subprocess.run([build / "wakerly"], env=self.environment, check=True)

    def remove_log_lock(self):
        """The set of the log's writers outlives them. Its key is that of ftok(3) with project id 11."""
        status = os.stat(self.top / "home" / LOG)
        key = 11 << 24 | (status.st_dev & 0xFF) << 16 | status.st_ino & 0xFFFF
        subprocess.run(["ipcrm", "-S", str(key)], stderr=subprocess.DEVNULL, check=False)


def run_programs(build, tree, start=()):
    """Wall time in nanoseconds and peak memory in KiB of whole programs, a list for each.

    They are started by the command `start`, if there is one.
    """
    commands = {
        "empty": [build / "bench/empty"],
        "logon": [build / "wakerly"],
        "scheduled": [build / "wakerly", "-mode=scheduled"],
        "empty_expat": [build / "bench/empty_expat"],
        "empty_plist": [build / "bench/empty_plist"],
        "empty_systemd": [build / "bench/empty_systemd"],
        "python": ["/usr/bin/python3", "-c", ""],
        "shell": [tree.top / "empty.sh"],
    }
    arguments = [*start, build / "bench/runner", str(ROUNDS)]
    for name, command in commands.items():
        arguments += ["--", name, *command]
    output = subprocess.run(arguments, env=tree.environment, check=True, text=True,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    samples = collections.defaultdict(list)
    for line in output.splitlines():
        name, nanoseconds, peak = line.split("\t")
        samples[f"run/{name}"].append(float(nanoseconds))
        samples[f"peak/{name}"].append(float(peak))
    return samples


def run_benchmarks(build, program, turns, folder, options=()):
    """Nanoseconds of each of a program's measurements, a list for each, and bytes for each item.

    The whole program runs once for each turn, with `options`. Its files lie below `folder`.
    """
    samples = collections.defaultdict(list)
    sizes = {}
    out = folder / "turn.json"
    for _ in range(turns):
        subprocess.run([build / f"bench/{program}_bench", "--benchmark_min_time=0.05",
                        *options,
                        "--benchmark_out_format=json", f"--benchmark_out={out}"],
                       env=os.environ | {"TMPDIR": str(folder)}, check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for run in json.loads(out.read_text())["benchmarks"]:
            if run.get("error_occurred"):
                sys.exit(f"bench: {run['name']}: {run['error_message']}")
            if run["run_type"] == "aggregate":
                continue
            samples[run["name"]].append(run["real_time"])
            sizes[run["name"]] = run.get("bytes_per_item")
    return samples, sizes


def count_system_calls(command, tree):
    """The system calls of one run by their kind; those of what it starts are not counted."""
    out = tree.top / "strace"
    subprocess.run(["strace", "-qq", "-o", out, *command], env=tree.environment, check=True,
                   stderr=subprocess.DEVNULL)
    return collections.Counter(line.split("(")[0] for line in out.read_text().splitlines()
                               if "(" in line)


def ratio(samples, ours, other):
    return statistics.median(a / b for a, b in zip(samples[ours], samples[other]))


def human(name, value):
    if name.startswith("peak/"):
        return f"{value / 1024:.1f} MiB"
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if value >= size:
            return f"{value / size:.3g} {unit}"
    return f"{value:.3g} ns"


def table(samples):
    rows = []
    for title, ours, limit, most, others in ROWS:
        times = ratio(samples, ours, limit)
        row = {"title": title, "name": ours, "ours": statistics.median(samples[ours]),
               "limit": statistics.median(samples[limit]), "ratio": times,
               "goal": most or None, "met": times <= most if most else None, "peers": {}}
        for peer, least in others.items():
            against = ratio(samples, peer, ours)
            row["peers"][next(part for part in peer.split("/") if part in PEERS)] = {
                "figure": statistics.median(samples[peer]), "ratio": against, "goal": least or None,
                "met": against >= least if least else None}
        rows.append(row)
    return rows


def print_table(rows):
    def goal(sign, bound, met):
        return "" if bound is None else f" ({sign}{bound:g}{', met' if met else ', NOT met'})"

    print(f"{'':33} {'ours':>10} {'limit':>10}  ours/limit (goal)    peer/ours (goal)")
    for row in rows:
        peers = [f"{name} {peer['ratio']:.2f}" + goal("≥", peer["goal"], peer["met"])
                 for name, peer in row["peers"].items()]
        print(f"{row['title']:33} {human(row['name'], row['ours']):>10} "
              f"{human(row['name'], row['limit']):>10}  "
              f"{row['ratio']:.2f}{goal('≤', row['goal'], row['met']):16} {', '.join(peers)}")


def document_row(row):
    """A row of a table in performance.md."""
    def peer_text(name, peer):
        missed = f" (**not {peer['goal']:g}**)" if peer["met"] is False else ""
        return f"{name} {peer['ratio']:.2f}{missed}"

    goal = f"{row['goal']:g}, {'met' if row['met'] else '**not met**'}" if row["goal"] else ""
    peers = ", ".join(peer_text(*peer) for peer in row["peers"].items())
    return (f"| {row['title']} | {human(row['name'], row['ours'])} | {human(row['name'], row['limit'])} "
            f"| {row['ratio']:.2f} | {goal} | {peers} |")


def fill_document(path, rows, load):
    """Puts new figures into the tables, whose rows are known by their titles."""
    new = {f"| {row['title']} ": document_row(row) for row in rows}
    run = (f"Last run: {time.strftime('%Y-%m-%d %H:%M')}, {os.cpu_count()} cores, "
           f"load {load[0]:.1f} at its beginning and {load[1]:.1f} at its end.")
    lines = [run if line.startswith("Last run: ") else
             next((row for title, row in new.items() if line.startswith(title + "|")), line)
             for line in path.read_text().splitlines()]
    path.write_text("\n".join(lines) + "\n")


def growth_series(samples, sizes):
    """By series, the number of items and the nanoseconds, and bytes, for each of them."""
    series = collections.defaultdict(list)
    for name, times in samples.items():
        _, title, count = name.split("/")
        items = int(count)
        point = {"items": items, "nanoseconds": statistics.median(times) / items}
        if sizes[name] is not None:
            point["bytes"] = sizes[name]
        series[title].append(point)
    return series


def print_growth(series):
    print("\nfor each item, at 1, 10, 100... of them")
    for title, points in series.items():
        figures = ", ".join(f"{human('', p['nanoseconds'])}"
                            + (f" and {p['bytes']:.0f} bytes" if "bytes" in p else "")
                            for p in points)
        print(f"  {title}, from {points[0]['items']} on: {figures}")


def print_system_calls(calls):
    empty = calls["empty"]
    print("\nsystem calls of one run, less those of an empty program")
    for name in ("logon", "scheduled"):
        more = calls[name] - empty
        print(f"  {name}: {more.total()}: " + ", ".join(f"{kind} {n}" for kind, n in more.most_common()))


def chart(series):
    """Time and memory for each item over the number of items, all axes in powers of ten."""
    width, height, left, right, top, bottom = 720, 330, 100, 180, 16, 46
    lines = [(f"{title}, time", colour, "", [(p["items"], p["nanoseconds"]) for p in points])
             for colour, (title, points) in zip(("#1b6ca8", "#c8553d", "#3a7d44", "#7d4e9e"),
                                                series.items())]
    lines += [(f"{title}, memory", "#555", "4 3", [(p["items"], p["bytes"]) for p in points])
              for title, points in series.items() if "bytes" in points[0]]

    def place(items, amount):
        return (left + math.log10(items) / 6 * (width - left - right),
                height - bottom - math.log10(max(amount, 100) / 100) / 3 * (height - bottom - top))

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
             'font-family="sans-serif" font-size="12">',
             f'<rect width="{width}" height="{height}" fill="white"/>']
    for power in range(7):
        x, _ = place(10 ** power, 100)
        parts.append(f'<path d="M{x:.0f} {top}V{height - bottom}" stroke="#ddd"/>'
                     f'<text x="{x:.0f}" y="{height - 30}" text-anchor="middle">{10 ** power:,}</text>')
    for power, label in enumerate(("100 ns, 100 B", "1 µs, 1 kB", "10 µs, 10 kB", "100 µs")):
        _, y = place(1, 10 ** (power + 2))
        parts.append(f'<path d="M{left} {y:.0f}H{width - right}" stroke="#ddd"/>'
                     f'<text x="{left - 6}" y="{y + 4:.0f}" text-anchor="end">{label}</text>')
    for row, (title, colour, dashes, points) in enumerate(lines):
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in (place(*point) for point in points))
        y = top + 12 + 20 * row
        parts.append(f'<g fill="none" stroke="{colour}" stroke-width="2" stroke-dasharray="{dashes}">'
                     f'<polyline points="{path}"/><path d="M{width - right + 16} {y}h24"/></g>'
                     f'<text x="{width - right + 46}" y="{y + 4}">{title}</text>')
    parts.append(f'<text x="{left}" y="{height - 8}">for each item, by the number of items</text></svg>\n')
    return "\n".join(parts)


def main():
    build, memory, disk, docs = (pathlib.Path(path).resolve() for path in sys.argv[1:])
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    load = [os.getloadavg()[0]]
    # Where files lie in memory, a disk has no say in the figures.
    tree = Tree(build, memory)
    try:
        samples = run_programs(build, tree)
        on_two_cores = run_programs(build, tree, TWO_CORES)
        samples |= {f"two cores/{name}": values for name, values in on_two_cores.items()}
        calls = {name: count_system_calls(command, tree) for name, command in (
            ("empty", [build / "bench/empty"]), ("logon", [build / "wakerly"]),
            ("scheduled", [build / "wakerly", "-mode=scheduled"]))}
    finally:
        tree.remove_log_lock()
    for program in ("log", "document", "prefs", "text"):
        samples |= run_benchmarks(build, program, TURNS, memory)[0]
    for program in ("prefs", "document"):
        on_disk, _ = run_benchmarks(build, program, 1, disk, ON_DISK)
        samples |= {f"disk/{name}": times for name, times in on_disk.items()}
    series = growth_series(*run_benchmarks(build, "growth", GROWTH_TURNS, memory))
    rows = table(samples)
    print_table(rows)
    print_growth(series)
    print_system_calls(calls)
    load.append(os.getloadavg()[0])
    (docs / "performance.json").write_text(json.dumps(
        {"load": load, "rows": rows, "growth": series, "system_calls": calls}, indent=1))
    (docs / "growth.svg").write_text(chart(series))
    fill_document(docs / "performance.md", rows, load)


if __name__ == "__main__":
    main()
