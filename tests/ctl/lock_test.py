"""wakerlyctl lock: tells which locks stand, and removes those alone that were left behind."""

import base64
import contextlib
import hashlib
import json
import os
import pathlib
import pty
import select
import shutil
import subprocess
import sys
import time
import unittest

from tree import LIBC, SECONDS, WAKERLY, WAKERLYCTL, TreeTest, check_schema

OLD = 10  # seconds: older than any lock of a living run
# Some program under the name of wakerly: it opens the semaphore that it is given, and waits.
RUN = "import ctypes, sys; ctypes.CDLL(None).sem_open(sys.argv[1].encode(), 0); print(flush=True); sys.stdin.read()"


class LockTest(TreeTest):
    def setUp(self):
        self.machine = self.tree()
        self.files = {"preferences": self.machine.prefs, "administrator-preferences": self.machine.admin_prefs}

    def semaphore(self, file):
        digest = hashlib.md5(str(self.files[file]).encode()).digest()
        return "/" + base64.b64encode(digest).decode().replace("/", "_")

    def shared_memory(self, file):
        return pathlib.Path("/dev/shm/sem." + self.semaphore(file)[1:])

    def leave_lock(self, file, age):
        """As by a process that made it `age` seconds ago, and was killed."""
        LIBC.sem_open(self.semaphore(file).encode(), os.O_CREAT | os.O_EXCL, 0o700, 1)
        self.addCleanup(self.shared_memory(file).unlink, missing_ok=True)
        os.utime(self.shared_memory(file), (time.time() - age,) * 2)

    @contextlib.contextmanager
    def run_that_opens(self, semaphore):
        program = self.machine.top / "wakerly"
        shutil.copy(os.path.realpath(sys.executable), program)
        with subprocess.Popen([program, "-c", RUN, semaphore], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as run:
            run.stdout.readline()
            yield run
            run.stdin.close()
        program.unlink()

    def clear(self, file, *arguments, **options):
        """Status, identifier of the outcome, and whether the lock still stands."""
        said = self.machine.ctl("lock", "--clear", *arguments, "--json", **options)
        output = json.loads(said.stdout)
        check_schema("lock", output)
        outcome = {lock["file"]: lock["id"] for lock in output["locks"]}[file]
        self.assertEqual(bool(said.stderr), said.returncode == 2, said.stderr)
        return said.returncode, outcome, self.shared_memory(file).exists()

    def test_clear_removes_what_was_left_behind_and_nothing_else(self):
        user, administrator = "preferences", "administrator-preferences"
        rows = (  # what stands, its file, its age, which semaphore a run has open, arguments, what is found
            ("no lock", user, None, None, ["--yes"], (0, "lock.free", False)),
            ("a lock left behind", user, OLD, None, ["--yes"], (0, "lock.removed", False)),
            ("the same", administrator, OLD, None, ["--yes"], (0, "lock.removed", False)),
            ("a lock whose time lies ahead", user, -OLD, None, ["--yes"], (0, "lock.removed", False)),
            ("a young lock", user, -0.5, None, ["--yes"], (2, "lock.too-young", True)),
            ("a lock that a run holds", user, OLD, user, ["--yes"], (2, "lock.in-use", True)),
            ("the same", administrator, OLD, administrator, ["--yes"], (2, "lock.in-use", True)),
            ("a lock beside a run that waits", user, OLD, administrator, ["--yes"], (0, "lock.removed", False)),
            ("a lock, and nobody to ask", user, OLD, None, [], (2, "lock.not-confirmed", True)))
        for stands, file, age, opened, arguments, expected in rows:
            with self.subTest(stands=stands, file=file), contextlib.ExitStack() as stack:
                if age is not None:
                    self.leave_lock(file, age)
                if opened is not None:
                    stack.enter_context(self.run_that_opens(self.semaphore(opened)))
                self.assertEqual(self.clear(file, *arguments), expected)
                self.shared_memory(file).unlink(missing_ok=True)

    def test_clear_says_whose_lock_the_system_keeps(self):
        if os.geteuid() != 0:
            return  # who cannot become another user has no other user's lock
        self.leave_lock("administrator-preferences", OLD)
        self.machine.become_ordinary()
        deadline, said = time.monotonic() + SECONDS, None
        # Some other test's run, of root, may live at the moment.
        while said is None or ("may be locked" in said.stderr and time.monotonic() < deadline):
            said = self.machine.ctl("lock", "--clear", "--yes")
        self.assertEqual(said.returncode, 2)
        self.assertRegex(said.stderr, "^wakerlyctl: The system refuses .*, made by root.*\n$")

    def test_clear_takes_no_answer_that_nobody_types(self):
        self.leave_lock("preferences", OLD)
        said = self.machine.ctl("lock", "--clear", input="y\n")
        self.assertEqual((said.returncode, self.shared_memory("preferences").exists()), (2, True), said)

    def answer(self, text, meanwhile=lambda: None):
        """Status of a clearing on a terminal, where `text` is typed after `meanwhile` has been done."""
        child, terminal = pty.fork()
        if child == 0:
            os.execve(WAKERLYCTL, ["wakerlyctl", "lock", "--clear"], self.machine.environment)
        said, is_asked, deadline = b"", False, time.monotonic() + SECONDS
        with contextlib.suppress(OSError):  # the end of the other side
            while time.monotonic() < deadline:
                if select.select([terminal], [], [], 1)[0]:
                    said += os.read(terminal, 65536)
                if b"[y/N]" in said and not is_asked:
                    is_asked = True
                    meanwhile()
                    os.write(terminal, text)
        os.close(terminal)
        self.assertTrue(is_asked, f"no question: {said}")
        return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])

    def test_clear_asks_on_a_terminal(self):
        def lock_again():
            self.shared_memory("preferences").unlink()
            self.leave_lock("preferences", OLD / 2)
        rows = (  # what is typed, what happens before, status, whether the lock still stands
            (b"y\n", lambda: None, 0, False),
            (b"n\n", lambda: None, 2, True),
            (b"\n", lambda: None, 2, True),
            (b"\x04", lambda: None, 2, True),
            (b"y\n", self.shared_memory("preferences").unlink, 0, False),
            (b"y\n", lock_again, 2, True))
        for number, (text, meanwhile, status, stands) in enumerate(rows):
            with self.subTest(row=number, typed=text):
                self.leave_lock("preferences", OLD)
                self.assertEqual(self.answer(text, meanwhile), status)
                self.assertEqual(self.shared_memory("preferences").exists(), stands)
                self.shared_memory("preferences").unlink(missing_ok=True)

    def test_a_look_tells_what_stands_and_changes_nothing(self):
        self.machine.install(self.machine.library)
        self.machine.write(self.machine.prefs, {"LogLevel": "2", "StartupLogFile": str(self.machine.log)})
        waiting = dict(self.machine.environment, KDUPDATER_CALLBACK="none")
        with subprocess.Popen([WAKERLY], env=waiting) as run:
            deadline = time.monotonic() + SECONDS
            while time.monotonic() < deadline and "waitForCFUCallBack" not in \
                    (self.machine.log.read_text() if self.machine.log.exists() else ""):
                time.sleep(0.01)
            self.leave_lock("preferences", OLD)

            def state():
                shared = self.shared_memory("preferences").stat()
                log_key = LIBC.ftok(bytes(self.machine.log), 11)
                log_set = LIBC.semget(log_key, 0, 0)
                values = [LIBC.semctl(log_set, number, 12) for number in (0, 1)]  # GETVAL
                return self.machine.state(), (shared.st_ino, shared.st_ctime_ns), log_set, values

            before = state()
            found = self.machine.ctl_json("lock")
            self.assertEqual(state(), before)
            run.terminate()
        since = time.strftime("%Y-%m-%dT%H:%M:%S+00:00", time.gmtime(before[1][1] // 10**9 - OLD))
        locks = {lock["file"]: lock for lock in found["locks"]}
        self.assertEqual((locks["preferences"]["id"], locks["preferences"]["semaphore"]),
                         ("lock.held", self.semaphore("preferences")))
        self.assertAlmostEqual(*(time.mktime(time.strptime(text, "%Y-%m-%dT%H:%M:%S+00:00"))
                                 for text in (locks["preferences"]["since"], since)), delta=1)
        self.assertEqual(locks["administrator-preferences"]["id"], "lock.free")
        self.assertIn(run.pid, [process["process"] for process in found["runs"]])
        self.assertEqual(found["log_lock"], {"path": str(self.machine.log), "state": "free", "attached": 1,
                                             "last_process": run.pid})


if __name__ == "__main__":
    unittest.main()
