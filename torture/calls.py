"""Every system call of a run, the n-th of its kind: it fails, or the run is killed there."""

import random
import re
import signal
import subprocess

from kills import after_a_kill
from machine import LEFT_BY_SEM_OPEN, Tally, spread

ERRORS = ("EIO", "ENOSPC", "EMFILE", "EACCES", "EINTR")
SIGNALS = ("SIGKILL", "SIGTERM")

# What cannot fail in this way; glibc takes an unknown error of futex for its own end.
NEVER_FAIL = set("arch_prctl brk execve exit exit_group futex getegid geteuid getgid getpid gettid getuid"
                 " rseq rt_sigprocmask rt_sigreturn set_robust_list set_tid_address".split())
MAKES_LOCK = re.compile(r"(new)?fstat(at)?\(\d+</dev/shm/sem\.")  # when the name is there already
CALL = re.compile(r"^(?:\d+ +)?([a-z]\w*)\(", re.MULTILINE)


def strace(tree, *options):
    """The words in front of a command that trace it."""
    return ["strace", "-f", "-qq", "-o", tree.top / "trace", *options]


def why_not(tree):
    """Why no process can be traced here; nothing when one can."""
    try:
        result = subprocess.run(["strace", "-f", "-qq", "-o", "/dev/null", "true"], check=False, text=True,
                                cwd=tree.top, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    except OSError as error:
        return str(error)
    return (result.stderr.strip().splitlines() or ["strace fails"])[0] if result.returncode else None


def linked_run(tree, *options):
    """A traced run whose preferences are a link, with its exit status and its trace."""
    tree.reset()
    tree.put_link()
    tree.put_library()
    status = tree.run(strace(tree, "-y", *options))
    return status, (tree.top / "trace").read_text(errors="replace")


def places(tree):
    """A call and its number for each call of a run but those of the loader, which end with munmap."""
    count = {}
    found = []
    for call in CALL.findall(linked_run(tree)[1]):
        count[call] = count.get(call, 0) + 1
        if "munmap" in count and call not in NEVER_FAIL:
            found.append((call, count[call]))
    return found


def look(tree, complaints, injected, notes):
    """Adds what is left behind to the complaints, or to the notes where the failing call explains it."""
    if tree.remove_locks():
        if injected.startswith("unlink") and "/dev/shm/sem." in injected:
            notes.append("left the lock that could not be removed")
        elif MAKES_LOCK.match(injected):
            notes.append(LEFT_BY_SEM_OPEN)
        else:
            complaints.append("a lock left behind")
    if tree.new_files() and not (injected.startswith("unlink") and ".new-" in injected):
        complaints.append("a new file left behind")
    if not tree.prefs.is_symlink():
        complaints.append("the link is gone")


def fail_one(tree, place, error, tally):
    """One run in which one call fails."""
    call, number = place
    status, trace = linked_run(tree, "--seccomp-bpf", "-e", f"trace={call}",
                               "-e", f"inject={call}:error={error}:when={number}")
    line = next((line for line in trace.splitlines() if line.endswith("(INJECTED)")), "")
    if not line:
        return  # this run made fewer such calls
    injected = line[CALL.search(line).start(1):]
    by_arc4random = status == -signal.SIGABRT and "getrandom" in injected and ", 8, 0)" in injected
    complaints = tree.complaints(status, [0, 1, status if by_arc4random else 0])
    notes = ["ended by glibc's arc4random"] if by_arc4random else []
    look(tree, complaints, injected, notes)
    if complaints:
        complaints.append(f"call {number} of its kind: {injected}")
    tally.count(complaints, notes)


def kill_one(tree, place, name, tally):
    """One run that is killed at one call."""
    call, number = place
    status, _ = linked_run(tree, "-e", f"trace={call}", "-e", f"inject={call}:signal={name}:when={number}")
    complaints = tree.complaints(status, [0, -signal.Signals[name]])
    notes = [] if status == 0 else ["ended so"]
    if name == "SIGKILL":
        notes += ["left the lock behind"] * bool(tree.remove_locks())
        if tree.new_files():
            notes.append("left a new file, which the next run removed")
            complaints += after_a_kill(tree)
    else:
        look(tree, complaints, "", notes)
    if complaints:
        complaints.append(f"killed at {call}, number {number}")
    tally.count(complaints, notes)


def at_each_place(one, what):
    """What calls one(tree, place, what, tally) for each place."""

    def attempt(bench, seconds):
        reason = why_not(bench.trees[0])
        if reason:
            return f"not tried: {reason}"
        tally = Tally()
        jobs = places(bench.trees[0])
        random.shuffle(jobs)
        spread(bench.trees, jobs, seconds, lambda tree, place: one(tree, place, what, tally))
        return tally.text(f"of {len(jobs)} calls")

    return attempt


FAULTS = [(f"{error} from a call", 3, at_each_place(fail_one, error)) for error in ERRORS]
FAULTS += [(f"{name} at a call", 3, at_each_place(kill_one, name)) for name in SIGNALS]
