"""Kills at random instants of a run that writes both defaults into the preferences."""

import itertools
import random
import signal
import time

from machine import Tally, spread

SIGNALS = ("SIGKILL SIGTERM SIGINT SIGHUP SIGQUIT SIGXCPU SIGXFSZ SIGALRM SIGVTALRM SIGPROF SIGUSR1"
           " SIGUSR2").split()
MEASURED_EACH = 20  # every so many runs, one goes to its end
STATES = ("ended before the first save", "between the saves", "after both")


class Length:
    """How long a run takes on this machine now."""

    def __init__(self):
        self.recent = []

    def measure(self, tree):
        tree.reset()
        start = time.monotonic()
        tree.run()
        self.recent = self.recent[-20:] + [time.monotonic() - start]

    def instant(self):
        """A moment of a run that takes as long as one of those."""
        return random.uniform(0, random.choice(self.recent))


def after_a_kill(tree):
    """The run after one that left a new file: it saves, and clears that away."""
    found = tree.complaints(tree.run(), [0])
    if tree.state() != 2:
        found.append("the next run did not save")
    if tree.new_files():
        found.append("the next run left the file of the killed one")
    if tree.remove_locks():
        found.append("the next run left a lock")
    return found


def kill_one(tree, number, length, tally):
    """Ends one run by the signal `number`, and counts what is left."""
    if not length.recent or random.randrange(MEASURED_EACH) == 0:
        length.measure(tree)
    tree.reset()
    run = tree.start()
    instant = length.instant()
    time.sleep(instant)
    run.send_signal(number)
    complaints = tree.complaints(tree.wait(run), [0, -number])
    state = tree.state()
    notes = [] if state is None else [STATES[state]]
    locks = tree.remove_locks()
    if locks and number == signal.SIGKILL:
        notes.append("left the lock behind")
    elif locks:
        complaints.append("a lock left behind")
    if tree.new_files() and number == signal.SIGKILL:
        notes.append("left a new file, which the next run removed")
        complaints += after_a_kill(tree)
    elif tree.new_files():
        complaints.append("a new file left behind")
    if complaints:
        complaints.append(f"killed after {instant * 1000:.2f} ms")
    tally.count(complaints, notes)


def try_signal(name):
    """What tries the signal of that name."""

    def attempt(bench, seconds):
        tally = Tally()
        length = Length()
        number = signal.Signals[name]
        spread(bench.trees, itertools.count(), seconds,
               lambda tree, _: kill_one(tree, number, length, tally))
        return tally.text()

    return attempt


FAULTS = [(name, 4 if name == "SIGKILL" else 1, try_signal(name)) for name in SIGNALS]
