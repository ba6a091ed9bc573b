"""A lock that is taken when the memory is used up but for a few small blocks."""

import itertools
import random
import subprocess

from machine import DEADLINE, Tally, semaphore, spread

SIZES = (24, 40, 56, 72, 88, 104, 120)  # one for each size of block that the allocator has
MOST = 6  # free blocks of a size
ROOMS = (0, 8192, 65536)
OUTCOMES = ("got the lock", "got none", "had no memory to try")


def one_lock(tree, tally):
    """One lock, with other blocks free each time."""
    path = tree.top / "used_up.dat"
    sizes = [size for size in SIZES for _ in range(random.randint(0, MOST))]
    words = [tree.program.build / "torture/used_up", path, random.choice(ROOMS), *sizes]
    status = subprocess.run([str(word) for word in words], check=False, timeout=DEADLINE,
                            stdin=subprocess.DEVNULL).returncode
    complaints = []
    if status not in range(len(OUTCOMES)):
        complaints.append(f"exit status {status}")
    if semaphore(path).exists():
        semaphore(path).unlink()
        complaints.append("a lock left behind")
    if complaints:
        complaints.append(f"arguments {words[2:]}")
    tally.count(complaints, [] if complaints else [OUTCOMES[status]])


def try_used_up(bench, seconds):
    """As many as fit."""
    tally = Tally()
    spread(bench.trees, itertools.count(), seconds, lambda tree, _: one_lock(tree, tally))
    return tally.text("locks")


FAULTS = [("memory used up", 2, try_used_up)]
