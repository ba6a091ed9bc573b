#!/usr/bin/env python3
"""Runs every fault for a share of the time and prints one line for each.

usage: torture.py BUILD SCRATCH SECONDS [FAULT...]

BUILD is the folder of a build; what is written goes below SCRATCH, which is the caller's to remove.
FAULT is the beginning of a line to try alone. The exit status is 1 when anything was lost.
"""

import os
import pathlib
import re
import resource
import signal
import sys
import time

import allocations
import calls
import kills
import limits
import machine
import models
import power
import used_up
import writers

MODULES = (models, kills, limits, calls, allocations, used_up, power, writers)
UNNAMED = re.compile(r"sem\.\w{6}")


class Bench:
    """The trees and the program of all faults."""

    def __init__(self, build, scratch):
        self.program = machine.Program(build)
        self.scratch = scratch
        self.before = self.unnamed()
        self.trees = [machine.Tree(self.program, scratch / f"tree{number}")
                      for number in range(os.cpu_count() or 1)]

    @staticmethod
    def unnamed():
        """What glibc calls a semaphore before it gets its name."""
        return {name for name in os.listdir("/dev/shm") if UNNAMED.fullmatch(name)}

    def close(self):
        """Leaves no semaphore. One that has been without a name for a second is nobody's."""
        for tree in self.trees:
            tree.close()
        left = self.unnamed() - self.before
        time.sleep(1 if left else 0)
        for name in left:
            pathlib.Path("/dev/shm", name).unlink(missing_ok=True)


def try_all(bench, faults, end):
    """Prints the lines, and tells how many faults lost something."""
    lossy = 0
    for place, (name, weight, attempt) in enumerate(faults):
        remaining = sum(other[1] for other in faults[place:])
        seconds = max(0, end - time.monotonic()) * weight / remaining
        text = attempt(bench, seconds)
        if text is not None:
            print(f"torture: {name:<24} {text}", flush=True)
            lossy += "\n    lost: " in text
    return lossy


def leave(number, _frame):
    """Lets everything be cleared away."""
    sys.exit(128 + number)


def main():
    build, scratch, seconds, *wanted = sys.argv[1:]
    end = time.monotonic() + float(seconds)
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        signal.signal(number, leave)
    signal.signal(signal.SIGQUIT, signal.SIG_DFL)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    faults = [fault for module in MODULES for fault in module.FAULTS
              if not wanted or fault[0].startswith(tuple(wanted))]
    bench = Bench(pathlib.Path(build).resolve(), pathlib.Path(scratch).resolve())
    try:
        lossy = try_all(bench, faults, end)
    finally:
        bench.close()
    sys.exit(1 if lossy else 0)


if __name__ == "__main__":
    main()
