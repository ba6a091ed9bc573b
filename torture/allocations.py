"""Every allocation of a run from the entry of main, the n-th: it fails, or it and all later ones do."""

import random
import signal

from machine import LEFT_BY_SEM_OPEN, Tally, spread

# The run ends there, with nothing lost: there is no memory for its way out either.
NOT_CAUGHT = "ended by SIGABRT"


def run(tree, number, later):
    """A run in which allocation `number` fails, with its exit status and what the library reports."""
    report = tree.top / "report"
    report.unlink(missing_ok=True)
    tree.reset()
    tree.put_library()
    status = tree.run(LD_PRELOAD=str(tree.program.failing_memory), TORTURE_REPORT=str(report),
                      TORTURE_FAIL_AT=str(number), TORTURE_FAIL_LATER=str(int(later)))
    return status, report.read_text().split()


def fail_one(tree, number, later, tally):
    """One such run, counted."""
    status, report = run(tree, number, later)
    complaints = tree.complaints(status, [0, 1, -signal.SIGABRT], [tree.second_alone])
    notes = [NOT_CAUGHT] if status == -signal.SIGABRT else []
    if tree.remove_locks():
        if "sem_open" in report:
            notes.append(LEFT_BY_SEM_OPEN)
        else:
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
        most = int(run(bench.trees[0], 0, False)[1][-1])
        numbers = list(range(1, most + 1))
        random.shuffle(numbers)
        spread(bench.trees, numbers, seconds, lambda tree, number: fail_one(tree, number, later, tally))
        return tally.text(f"of {most} allocations")

    return attempt


FAULTS = [("no memory once", 4, try_allocations(False)), ("no memory from then on", 4, try_allocations(True))]
