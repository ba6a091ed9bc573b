"""Every allocation of a run from the entry of main, the n-th: it fails, or it and all later ones do."""

import random
import signal

from machine import Tally, spread

# The run ends there, with nothing lost: there is no memory for its way out either.
NOT_CAUGHT = "ended by SIGABRT"


def run(tree, number, later):
    """A run in which allocation `number` fails, with its exit status; or 0 for none, and their number."""
    report = tree.top / "report"
    report.unlink(missing_ok=True)
    tree.reset()
    tree.put_library()
    status = tree.run(LD_PRELOAD=str(tree.program.failing_memory), TORTURE_REPORT=str(report),
                      TORTURE_FAIL_AT=str(number), TORTURE_FAIL_LATER=str(int(later)))
    text = report.read_text()  # nothing where the run was ended
    return status, int(text) if text else None


def fail_one(tree, number, later, tally):
    """One such run, counted."""
    status, _ = run(tree, number, later)
    complaints = tree.complaints(status, [0, 1, -signal.SIGABRT], [tree.second_alone])
    notes = [NOT_CAUGHT] if status == -signal.SIGABRT else []
    if tree.remove_locks():
        complaints.append("a lock left behind")
    if tree.new_files():
        complaints.append("a new file left behind")
    if complaints:
        complaints.append(f"allocation {number} failed")
    tally.count(complaints, notes)


def try_allocations(later):
    """What tries every number."""

    def attempt(bench, seconds):
        tally = Tally()
        most = run(bench.trees[0], 0, False)[1]
        numbers = list(range(1, most + 1))
        random.shuffle(numbers)
        spread(bench.trees, numbers, seconds, lambda tree, number: fail_one(tree, number, later, tally))
        return tally.text(f"of {most} allocations")

    return attempt


FAULTS = [("no memory once", 4, try_allocations(False)), ("no memory from then on", 4, try_allocations(True))]
