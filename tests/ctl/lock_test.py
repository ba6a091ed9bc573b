"""wakerlyctl lock: tells which locks stand, and removes those alone that were left behind."""

import contextlib
import json
import os
import select
import shutil
import subprocess
import sys
import time
import unittest

from tree import (LIBC, ORDINARY, PIPES, SECONDS, WAKERLY, WAKERLYCTL, Tree, TreeTest, check_schema, leave_lock,
                  lock_file, log_key, semaphore, side_by_side)

OLD = 10  # seconds: older than any lock of a living run
USER, ADMINISTRATOR = "preferences", "administrator-preferences"
# Some program under the name of wakerly: it opens the semaphore that it is given, and waits.
RUN = "import ctypes, sys; ctypes.CDLL(None).sem_open(sys.argv[1].encode(), 0); print(flush=True); sys.stdin.read()"


class Machine(Tree):
    """A tree with the locks of its preference files."""

    def prefs_of(self, file):
        return {USER: self.prefs, ADMINISTRATOR: self.admin_prefs}[file]

    def semaphore(self, file):
        return semaphore(self.prefs_of(file))

    def shared_memory(self, file):
        return lock_file(self.prefs_of(file))

    def leave_lock(self, file, age):
        leave_lock(self.prefs_of(file), age)

    def is_locked(self, file=USER):
        return self.shared_memory(file).exists()

    @contextlib.contextmanager
    def run_that_opens(self, semaphore):
        program = self.top / "wakerly"
        shutil.copy(os.path.realpath(sys.executable), program)
        with subprocess.Popen([program, "-c", RUN, semaphore], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as run:
            run.stdout.readline()
            yield run
            run.stdin.close()

    def clear(self, file, *arguments):
        """Status, identifier of the outcome, and whether the lock still stands."""
        said = self.ctl("lock", "--clear", *arguments, "--json")
        output = json.loads(said.stdout)
        check_schema("lock", output)
        outcome = {lock["file"]: lock["id"] for lock in output["locks"]}[file]
        assert bool(said.stderr) == (said.returncode == 2), said
        return said.returncode, outcome, self.is_locked(file)

    def answer(self, text, meanwhile):
        """Status of a clearing on a terminal, where `text` is typed after `meanwhile` has been done, and whether the
        lock still stands."""
        main, terminal = os.openpty()
        said, deadline = b"", time.monotonic() + SECONDS
        with subprocess.Popen([WAKERLYCTL, "lock", "--clear"], env=self.environment, stdin=terminal, stdout=terminal,
                              stderr=subprocess.DEVNULL) as clearing:
            while b"[y/N]" not in said and clearing.poll() is None and time.monotonic() < deadline:
                if select.select([main], [], [], 0.1)[0]:
                    said += os.read(main, 65536)
            if b"[y/N]" in said:
                meanwhile(self)
                os.write(main, text)
            else:
                clearing.kill()
        os.close(main)
        os.close(terminal)
        assert b"[y/N]" in said, f"no question: {said}"
        return clearing.returncode, self.is_locked()


class LockTest(TreeTest):
    def machine(self):
        machine = Machine()
        self.addCleanup(machine.remove)
        return machine


class ClearTest(LockTest):
    def test_removes_what_was_left_behind_and_nothing_else(self):
        def clear(row):
            _, file, age, opened, arguments, _ = row
            machine = self.machine()
            if age is not None:
                machine.leave_lock(file, age)
            with machine.run_that_opens(machine.semaphore(opened)) if opened else contextlib.nullcontext():
                return machine.clear(file, *arguments)
        rows = (  # what stands, its file, its age, which semaphore a run has open, arguments, what is found
            ("a lock whose time lies ahead", USER, -OLD, None, ["--yes"], (0, "lock.removed", False)),
            ("no lock", USER, None, None, ["--yes"], (0, "lock.free", False)),
            ("a lock left behind", USER, OLD, None, ["--yes"], (0, "lock.removed", False)),
            ("the same", ADMINISTRATOR, OLD, None, ["--yes"], (0, "lock.removed", False)),
            ("a young lock", USER, -0.5, None, ["--yes"], (2, "lock.too-young", True)),
            ("a lock that a run holds", USER, OLD, USER, ["--yes"], (2, "lock.in-use", True)),
            ("the same", ADMINISTRATOR, OLD, ADMINISTRATOR, ["--yes"], (2, "lock.in-use", True)),
            ("a lock beside a run that waits", USER, OLD, ADMINISTRATOR, ["--yes"], (0, "lock.removed", False)),
            ("a lock, and nobody to ask", USER, OLD, None, [], (2, "lock.not-confirmed", True)))
        for row, result in side_by_side(clear, rows):
            with self.subTest(stands=row[0], file=row[1]):
                self.assertEqual(result(), row[-1])

    def test_says_whose_lock_the_system_keeps(self):
        # Among processes of its own: for an ordinary user, each run of root's is one that may hold the lock.
        alone = ["unshare", "--pid", "--fork", "--mount-proc", "setpriv", f"--reuid={ORDINARY}", f"--regid={ORDINARY}",
                 "--clear-groups"]
        if os.geteuid() != 0 or subprocess.run([*alone, "true"], check=False).returncode != 0:
            return  # who cannot become another user has no other user's lock
        machine = self.machine()
        machine.leave_lock(ADMINISTRATOR, OLD)
        machine.become_ordinary()
        said = subprocess.run([*alone, machine.programs[WAKERLYCTL], "lock", "--clear", "--yes"], text=True, check=False,
                              env=machine.environment, timeout=SECONDS, **PIPES)
        self.assertEqual(said.returncode, 2, said)
        self.assertRegex(said.stderr, "^wakerlyctl: The system refuses .*, made by root.*\n$")
        remedies = {check["remedy"] for check in machine.ctl_json("doctor")["checks"]
                    if check["id"] in ("lock.held", "updater.preferences-locked")}
        self.assertEqual(remedies, {"sudo -H wakerlyctl lock --clear"})


class AskTest(LockTest):
    def test_takes_no_answer_that_nobody_types(self):
        machine = self.machine()
        machine.leave_lock(USER, OLD)
        said = machine.ctl("lock", "--clear", input="y\n")
        self.assertEqual((said.returncode, machine.is_locked()), (2, True), said)

    def test_asks_on_a_terminal(self):
        def lock_again(machine):
            machine.shared_memory(USER).unlink()
            machine.leave_lock(USER, OLD / 2)

        def clear(row):
            machine = self.machine()
            machine.leave_lock(USER, OLD)
            return machine.answer(*row[:2])
        rows = (  # what is typed, what happens before, status and whether the lock still stands
            (b"y\n", lambda machine: None, (0, False)),
            (b"n\n", lambda machine: None, (2, True)),
            (b"\n", lambda machine: None, (2, True)),
            (b"\x04", lambda machine: None, (2, True)),
            (b"y\n", lambda machine: machine.shared_memory(USER).unlink(), (0, False)),
            (b"y\n", lock_again, (2, True)))
        for number, (row, result) in enumerate(side_by_side(clear, rows)):
            with self.subTest(row=number, typed=row[0]):
                self.assertEqual(result(), row[-1])


class LookTest(LockTest):
    def test_a_look_tells_what_stands_and_changes_nothing(self):
        machine = self.machine()
        machine.install(machine.library)
        machine.write(machine.prefs, {"LogLevel": "2", "StartupLogFile": str(machine.log)})
        waiting = dict(machine.environment, KDUPDATER_CALLBACK="none")
        with subprocess.Popen([WAKERLY], env=waiting, **PIPES) as run:
            self.addCleanup(run.kill)
            deadline = time.monotonic() + SECONDS
            while time.monotonic() < deadline and "waitForCFUCallBack.\n" not in \
                    (machine.log.read_text() if machine.log.exists() else ""):
                time.sleep(0.01)
            machine.leave_lock(USER, OLD)

            def state():
                shared = machine.shared_memory(USER).stat()
                log_set = LIBC.semget(log_key(machine.log), 0, 0)
                values = [LIBC.semctl(log_set, number, 12) for number in (0, 1)]  # GETVAL
                return machine.state(), (shared.st_ino, shared.st_ctime_ns), log_set, values

            before = state()
            found = machine.ctl_json("lock")
            self.assertEqual(state(), before)
            run.terminate()
        since = time.strftime("%Y-%m-%dT%H:%M:%S+00:00", time.gmtime(before[1][1] // 10**9 - OLD))
        locks = {lock["file"]: lock for lock in found["locks"]}
        self.assertEqual((locks[USER]["id"], locks[USER]["semaphore"]), ("lock.held", machine.semaphore(USER)))
        self.assertAlmostEqual(*(time.mktime(time.strptime(text, "%Y-%m-%dT%H:%M:%S+00:00"))
                                 for text in (locks[USER]["since"], since)), delta=1)
        self.assertEqual(locks[ADMINISTRATOR]["id"], "lock.free")
        self.assertIn(run.pid, [process["process"] for process in found["runs"]])
        attached = before[3][0]  # one, and more where the key is that of a set which stands already
        self.assertEqual(found["log_lock"], {"path": str(machine.log), "state": "free", "attached": attached,
                                             "last_process": run.pid})


if __name__ == "__main__":
    unittest.main()
