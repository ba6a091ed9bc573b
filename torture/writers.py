"""Eight processes that each set a key of their own in one file, beside other load on all cores."""

import os
import re
import subprocess
import sys
import time

from machine import DEADLINE, Tally, semaphore

WRITERS = 8
SETS = 25

# Ends with the process that started it, however that ends.
LOAD = "import os\nparent = os.getppid()\nwhile os.getppid() == parent:\n    sum(range(100000))"


def one_round(program, path, tally):
    """One round, counted with the updates that are missing at its end."""
    path.unlink(missing_ok=True)
    end = time.monotonic() + DEADLINE * WRITERS
    runs = [subprocess.Popen([program.writer, path, f"Key{number}", str(SETS)], stdin=subprocess.DEVNULL)
            for number in range(WRITERS)]
    complaints = []
    for run in runs:
        try:
            if run.wait(max(0, end - time.monotonic())) != 0:
                complaints.append(f"a writer ended with {run.returncode}")
        except subprocess.TimeoutExpired:
            run.kill()
            run.wait()
            complaints.append("a writer hung")
    found = dict(re.findall(r"<(Key\d)>(\d+)</", path.read_text()))
    expected = {f"Key{number}": str(SETS) for number in range(WRITERS)}
    if found != expected:
        complaints.append(f"found {found}")
    lock = semaphore(path)
    if lock.exists():
        lock.unlink()
        complaints.append("a lock left behind")
    tally.count(complaints)


def try_writers(bench, seconds):
    """As many rounds as fit."""
    end = time.monotonic() + seconds
    tally = Tally()
    load = [subprocess.Popen([sys.executable, "-c", LOAD]) for _ in range(os.cpu_count() or 1)]
    try:
        while tally.tried < 2 or time.monotonic() < end:
            one_round(bench.program, bench.scratch / "many.dat", tally)
    finally:
        for process in load:
            process.kill()
            process.wait()
    return tally.text(f"rounds of {WRITERS} writers with {SETS} updates each")


FAULTS = [("writers", 4, try_writers)]
