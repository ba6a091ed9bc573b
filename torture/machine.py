"""What every fault needs: trees to run the program in, a look at what a run left, and a count."""

import base64
import collections
import ctypes
import dataclasses
import hashlib
import os
import pathlib
import queue
import signal
import subprocess
import threading
import time

DEADLINE = 30  # seconds for one run; the lock alone is waited for a second at a time
LEAST = 8      # runs of each fault, however short the time
SHOWN = 5      # of what is lost, how much is told

# glibc's sem_open makes the name and may fail afterwards.
LEFT_BY_SEM_OPEN = "left the lock behind in a sem_open that failed"

UPDATER = "Library/Application Support/Vantre/OrlanUpdater/1.0"
INVENTORY = "Library/Application Support/Vantre/OrlanUpdaterInventory/1.0"
LIBRARY = "Library/Application Support/Vantre/VantreKDClient/kdupdater.dylib"


class Tally:
    """The runs of one fault, counted by all threads."""

    def __init__(self):
        self.lock = threading.Lock()
        self.tried = 0
        self.lost = []
        self.notes = collections.Counter()

    def count(self, complaints, notes=()):
        """Counts one run, which is lost when there are complaints."""
        with self.lock:
            self.tried += 1
            if complaints:
                self.lost.append("; ".join(complaints))
            self.notes.update(notes)

    def text(self, unit="runs"):
        """The line, and one more for each of the first that were lost."""
        lost = len(self.lost)
        notes = [f"{number} {note}" for note, number in sorted(self.notes.items()) if number]
        line = f"{self.tried} {unit}, {self.tried - lost} survived, {lost} lost"
        line += f" ({', '.join(notes)})" if notes else ""
        return "\n".join([line] + [f"    lost: {complaint}" for complaint in self.lost[:SHOWN]])


@dataclasses.dataclass(frozen=True)
class Program:
    """What is run."""

    build: pathlib.Path

    @property
    def wakerly(self):
        return self.build / "wakerly"

    @property
    def library(self):
        return self.build / "samples/kdupdater.dylib"

    @property
    def writer(self):
        return self.build / "torture/writer"

    @property
    def failing_memory(self):
        return self.build / "torture/libfail_allocation.so"


def preferences(*entries):
    """A preference file as the program writes it."""
    lines = "".join(f"<{key}>{value}</{key}>\n" for key, value in entries)
    head = '<?xml version="1.0" encoding="UTF-8" ?>\n'
    return f"{head}<Preferences>\n{lines}</Preferences>\n".encode()


def semaphore(path):
    """The file of the named semaphore that locks the preference file `path`."""
    digest = hashlib.md5(str(path).encode()).digest()
    name = base64.b64encode(digest).decode().replace("/", "_")
    return pathlib.Path("/dev/shm") / f"sem.{name}"


class Tree:
    """A folder tree to run the program in. One thread uses it."""

    def __init__(self, program, top):
        self.program = program
        self.top = top
        self.folder = top / "home" / UPDATER
        self.prefs = self.folder / "VantreUpdaterPrefs.dat"
        self.linked = top / "linked.dat"
        self.log = self.folder / "orlanul.log"
        # The last is where a run goes that does not find the user's folder.
        self.locks = [semaphore(path) for path in (
            self.prefs, top / "root" / INVENTORY / "VantreUpdaterAdminPrefs.dat",
            top / "Vantre/OrlanUpdater/1.0" / self.prefs.name)]
        self.folder.mkdir(parents=True)
        self.library = top / "root" / LIBRARY
        self.library.parent.mkdir(parents=True)
        # Before a run, and after each of its two writes.
        entries = [("SomebodyElses", "1"), ("StartupLogFile", self.log), ("LogLevel", "2")]
        self.states = [preferences(*entries[:count]) for count in (1, 2, 3)]
        # Where there was no memory for the first write, and there was for the second.
        self.second_alone = preferences(entries[0], entries[2])
        self.environment = {
            "HOME": str(top / "home"), "WAKERLY_ROOT": str(top / "root"), "TMPDIR": str(top),
            "PATH": os.environ["PATH"], "KDUPDATER_CALLBACK": "request"}
        self.log.touch()
        remove_log_lock(self.log)  # of an earlier file with the same number
        self.reset()

    def reset(self):
        """Makes the preferences a file as it is before a run, without a library, and clears the rest away."""
        self.remove_locks()
        self.remove_new_files()
        self.log.write_bytes(b"")
        self.library.unlink(missing_ok=True)
        self.prefs.unlink(missing_ok=True)
        self.prefs.write_bytes(self.states[0])

    def put_library(self):
        """Lets runs find the client library from now until reset."""
        self.library.symlink_to(self.program.library)

    def put_link(self):
        """Lets the preferences be a symbolic link to a file elsewhere from now until reset."""
        self.prefs.rename(self.linked)
        self.prefs.symlink_to(self.linked)

    def start(self, before=(), **environment):
        """Starts a run, with the words of `before` in front of its command."""
        return subprocess.Popen(
            [*map(str, before), str(self.program.wakerly)], cwd=self.top, close_fds=False,
            env={**self.environment, **environment}, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def wait(self, run):
        """The exit status of a run, negative for a signal; None when it had to be killed."""
        try:
            return run.wait(DEADLINE)
        except subprocess.TimeoutExpired:
            kill_all(run)
            return None

    def run(self, before=(), **environment):
        """A whole run, and its exit status."""
        return self.wait(self.start(before, **environment))

    def state(self):
        """How many of the writes the preference file has seen; None for anything else."""
        try:
            return self.states.index(self.prefs.read_bytes())
        except (OSError, ValueError):
            return None

    def new_files(self):
        """What saves have left that did not come to their end."""
        path = self.prefs.resolve()
        return list(path.parent.glob(f".{path.name}.new-*"))

    def remove_new_files(self):
        """Removes what new_files gives."""
        for path in self.new_files():
            path.unlink()

    def remove_locks(self):
        """Removes the locks of preference files, and tells how many there were."""
        left = [lock for lock in self.locks if lock.exists()]
        for lock in left:
            lock.unlink()
        return len(left)

    def complaints(self, status, allowed, further_texts=()):
        """What is wrong after a run that may end with one of the exit statuses `allowed`.

        The preferences may be one of `further_texts`, too.
        """
        found = []
        if status is None:
            found.append(f"the run hung for {DEADLINE} seconds")
        elif status not in allowed:
            found.append(f"exit status {status}")
        text = self.prefs.read_bytes() if self.prefs.exists() else "no file"
        if text not in [*self.states, *further_texts]:
            found.append(f"a third state: {text}")
        return found

    def close(self):
        """Removes what outlives the processes; the folder is its owner's to remove."""
        self.remove_locks()
        for log in self.top.rglob("*.log"):
            remove_log_lock(log)


def remove_log_lock(log):
    """Removes the semaphore set of a log, whose key is that of ftok(3) with 11."""
    status = log.stat()
    key = 11 << 24 | (status.st_dev & 0xff) << 16 | status.st_ino & 0xffff
    libc = ctypes.CDLL(None)
    number = libc.semget(key, 0, 0)
    if number != -1:
        libc.semctl(number, 0, 0)  # IPC_RMID


def kill_all(run):
    """Kills a process and its children."""
    children = pathlib.Path(f"/proc/{run.pid}/task/{run.pid}/children")
    for child in children.read_text().split():
        os.kill(int(child), signal.SIGKILL)
    run.kill()
    run.wait()


def spread(trees, jobs, seconds, one):
    """Calls one(tree, job) for the jobs, one thread for each tree, until they or the seconds are used up.

    LEAST of them are done in any case. What one of the calls raises reaches the caller.
    """
    end = time.monotonic() + seconds
    numbered = enumerate(jobs)
    lock = threading.Lock()
    errors = queue.SimpleQueue()

    def work(tree):
        try:
            while errors.empty():
                with lock:
                    number, job = next(numbered, (None, None))
                if number is None or (number >= LEAST and time.monotonic() > end):
                    return
                one(tree, job)
        except BaseException as error:
            errors.put(error)

    threads = [threading.Thread(target=work, args=(tree,)) for tree in trees]
    for thread in threads:
        thread.start()
    try:
        for thread in threads:
            thread.join()
    except BaseException as error:  # such as the end of the program
        errors.put(error)
        for thread in threads:
            thread.join()
        raise
    if not errors.empty():
        raise errors.get()
