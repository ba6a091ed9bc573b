"""A limit on the size of files, from nothing to the size of the new preferences."""

import random
import signal

from machine import Tally, spread

SEMAPHORE = 32  # the size of a semaphore's file


def limit_one(tree, size, ignored, tally):
    """One run that may write files up to `size`, with SIGXFSZ ignored or not."""
    tree.reset()
    before = ["prlimit", f"--fsize={size}"]
    if ignored:
        before += ["env", "--ignore-signal=XFSZ"]
    complaints = tree.complaints(tree.run(before), [0] if ignored else [0, -signal.SIGXFSZ])
    state = tree.state()
    notes = [] if state is None else [("kept the file", "saved once", "saved twice")[state]]
    if tree.remove_locks():
        complaints.append("a lock left behind")
    if tree.new_files():
        complaints.append("a new file left behind")
    if complaints:
        complaints.append(f"limit of {size} bytes")
    tally.count(complaints, notes)


def try_limits(ignored):
    """What tries every size."""

    def attempt(bench, seconds):
        tally = Tally()
        # Without room for the semaphore, a run waits some seconds for its lock in vain.
        sizes = [0, SEMAPHORE // 2, *range(SEMAPHORE - 1, len(bench.trees[0].states[2]) + 1)]
        random.shuffle(sizes)
        spread(bench.trees, sizes, seconds, lambda tree, size: limit_one(tree, size, ignored, tally))
        return tally.text(f"of {len(sizes)} sizes")

    return attempt


FAULTS = [("file size", 1, try_limits(False)), ("file size, no signal", 2, try_limits(True))]
