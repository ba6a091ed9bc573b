"""wakerlyctl log: the lines of the last runs, told apart, each with what came of it."""

import datetime
import os
import re
import select
import subprocess
import time
import unittest

from tree import SECONDS, WAKERLY, WAKERLYCTL, TreeTest

BANNER = ">>> Vantre Updater Log Begin >>>"
END = "VantreUpdaterKodoLauncher : unloaded kodo library"
RULE = "*" * 78


def row(thread, message, sub_component="WAKERLY", second=0):
    return f"11/21/26 17:19:{second:02}:001 | [INFO] |  | UPDATER | {sub_component} |  |  |  | {thread} | {message}\n"


def run_of(thread, *messages):
    return [row(thread, message) for message in (BANNER, *messages, END)]


class LogTest(TreeTest):
    def setUp(self):
        self.machine = self.tree()

    def runs(self, *arguments):
        before = self.machine.state()
        runs = self.machine.ctl_json("log", *arguments)["runs"]
        self.assertEqual(self.machine.state(), before)
        return runs

    def write_log(self, *rows):
        self.machine.write(self.machine.log, "".join(rows))

    def messages(self, *arguments):
        """Of each run, thread and messages."""
        return [(run["thread"], [line.split(" | ", 9)[9] for line in run["lines"]]) for run in self.runs(*arguments)]

    def test_the_outcome_of_a_real_run_is_told(self):
        yesterday = (datetime.date.today() - datetime.timedelta(days=40)).isoformat()
        due = {"LogLevel": "2", "LastDateCheck": yesterday}
        machine = self.machine
        rows = (  # what is staged, preferences, arguments, environment, what is told
            ("a library", due, [], {}, dict(mode="logon", enabled=True, due=True, notifier_called=True, library="done",
                                            failure=None, complete=True)),
            ("never run", {"LogLevel": "2"}, [], {}, dict(due=False, notifier_called=False, complete=True)),
            ("scheduled", due, ["-mode=scheduled"], {}, dict(mode="scheduled", due=None, notifier_called=True)),
            ("a refusal", due, [], {"KDUPDATER_LATEST_RESULT": "7"},
             dict(library="failed", failure="VantreKD_GetLatestKDApplication returned error code  = 7", complete=True)),
            ("a bad callback", due, [], {"KDUPDATER_CALLBACK_CODE": "9"},
             dict(library="failed", failure="VantreKD_CFUCallbackFn returned error code  = 9", complete=True)),
            ("a bad invocation", due, [], {"KDUPDATER_INVOKE_RESULT": "3"},
             dict(library="done", failure="VantreKD_InvokeApplication returned error code  = 3", complete=True)),
            ("an exception", due, [], {"KDUPDATER_THROWS": "latest:exception"}, dict(library="failed", complete=True)),
            ("LogLevel 1", {"LogLevel": "1"}, [], {}, dict(mode=None, enabled=None, complete=None)))
        machine.install(machine.library)
        common = dict(machine.environment)
        for name, prefs, arguments, environment, expected in rows:
            with self.subTest(name):
                machine.write(machine.prefs, prefs)
                machine.environment = common | environment
                begun = int(time.time())
                machine.run(*arguments)
                machine.environment = common
                [run] = self.runs()
                self.assertEqual({key: run[key] for key in expected}, expected)
                self.assertEqual(run["lines"], machine.log.read_text().splitlines()[-len(run["lines"]):])
                told = datetime.datetime.fromisoformat(run["time"]).timestamp()
                self.assertTrue(begun <= told <= time.time(), run["time"])
        machine.write(machine.prefs, due)
        machine.write(machine.admin_prefs, {"Suppressed": "1"})
        machine.library.unlink()
        machine.run()
        [run] = self.runs()
        self.assertEqual((run["enabled"], run["library"], run["complete"]), (False, "failed", True))
        self.assertRegex(run["failure"], "^Unable to load kodo library")

    def test_mixed_runs_are_told_apart(self):
        block = [RULE, "Bit: 64", "OS Locale: en_US", RULE]
        first, second, third = run_of(1, "a"), run_of(2, "b | c"), run_of(1, "d")
        rows = (  # the rows of the log, how many runs are asked for, thread and messages of each
            ("one after the other", first + second, 2, [("1", [BANNER, "a", END]), ("2", [BANNER, "b | c", END])]),
            ("the last alone", first + second, 1, [("2", [BANNER, "b | c", END])]),
            ("fewer than asked for", first, 5, [("1", [BANNER, "a", END])]),
            ("in turns", [first[0], second[0], first[1], second[1], second[2], first[2]], 2,
             [("1", [BANNER, "a", END]), ("2", [BANNER, "b | c", END])]),
            ("a thread id that comes again", first + second + third, 1, [("1", [BANNER, "d", END])]),
            ("a header", [row(2, text) for text in block[:2]] + first[:1] + [row(2, text) for text in block[2:]] +
             second + first[1:], 2, [("1", [BANNER, "a", END]), ("2", block + [BANNER, "b | c", END])]),
            ("other programs", first[:1] + [row(1, "x", "NOTIFIER"), "half a li\n"] + first[1:], 1,
             [("1", [BANNER, "a", END])]),
            ("without its begin", first[1:], 1, [("1", ["a", END])]))
        for name, lines, count, expected in rows:
            with self.subTest(name):
                self.write_log(*lines)
                self.assertEqual(self.messages("--runs", str(count)), expected)

    def test_backups_are_read_when_the_log_has_too_few_runs(self):
        for day, thread in (("2026-11-19", 1), ("2026-11-20", 2)):
            self.machine.write(self.machine.folder / f"orlanul {day} 10-00-00.log", "".join(run_of(thread)))
        self.machine.write(self.machine.folder / "orlanul 2026-11-21.log", "".join(run_of(9)))
        self.machine.write(self.machine.folder / "orlanul 2026-11-22 10-00-00.log", row(4, BANNER))
        self.write_log(*[row(4, text) for text in (RULE, "Bit: 64", RULE, "goes on", END)], *run_of(3))
        for count, threads in ((1, "3"), (2, "43"), (3, "243"), (9, "1243")):
            with self.subTest(runs=count):
                self.assertEqual("".join(thread for thread, _ in self.messages("--runs", str(count))), threads)
        self.assertEqual(self.messages("--runs", "2")[0][1], [BANNER, RULE, "Bit: 64", RULE, "goes on", END])
        self.machine.log.unlink()
        self.assertEqual("".join(thread for thread, _ in self.messages("--runs", "9")), "124")

    def test_of_a_large_log_the_end_alone_is_read(self):
        self.write_log(*run_of(1, "x" * 1000) * 50_000, *run_of(2, "y" * 400_000))
        size = self.machine.log.stat().st_size
        # The leak sanitizer does not let itself be traced.
        environment = dict(self.machine.environment, ASAN_OPTIONS="detect_leaks=0")
        traced = subprocess.run(["strace", "-f", "-e", "trace=pread64", "-o", self.machine.top / "trace", WAKERLYCTL,
                                 "log"], env=environment, capture_output=True, check=False)
        self.assertEqual(traced.returncode, 0, traced.stderr)
        read = sum(int(count) for count in re.findall(r"= (\d+)\n", (self.machine.top / "trace").read_text()))
        self.assertIn(b"y" * 400_000, traced.stdout)
        self.assertLess(read, size // 20)

    def test_says_why_there_is_no_log(self):
        rows = (  # the preferences, what is said
            ({"LogLevel": "0"}, "No such file.*LogLevel = 0 .* wants no log"),
            ({"StartupLogFile": "/nowhere/x.log"}, "/nowhere/x.log: No such file.*cannot be written"),
            ({"StartupLogFile": str(self.machine.top / "fifo")}, "fifo: it is not a file"),
            ({"StartupLogFile": str(self.machine.top)}, "Is a directory"))
        os.mkfifo(self.machine.top / "fifo")
        for prefs, said in rows:
            with self.subTest(prefs):
                self.machine.write(self.machine.prefs, prefs)
                found = self.machine.ctl("log")
                self.assertEqual((found.returncode, found.stdout), (1, ""))
                self.assertRegex(found.stderr, f"^wakerlyctl: .*{said}.*\n$")

    def test_follows_what_comes_and_the_log_that_rolls_over(self):
        self.write_log(*run_of(1))
        follower = subprocess.Popen([WAKERLYCTL, "log", "--follow"], env=self.machine.environment,
                                    stdout=subprocess.PIPE)
        self.addCleanup(follower.kill)
        printed = ""

        def expect(text):
            nonlocal printed
            deadline = time.monotonic() + SECONDS
            while text not in printed and time.monotonic() < deadline:
                if select.select([follower.stdout], [], [], 1)[0]:
                    printed += os.read(follower.stdout.fileno(), 65536).decode()
            self.assertIn(text, printed)
            printed = printed[printed.index(text) + len(text):]

        def add(*rows):
            with self.machine.log.open("a") as log:
                log.write("".join(rows))

        expect(END + "\n")
        add(row(2, BANNER), row(3, BANNER)[:40])
        expect(f"Run of thread 2, begun 2026-11-21T17:19:00+00:00:\n{row(2, BANNER)}")
        add(row(3, BANNER)[40:], row(2, "more"))
        expect(f"Run of thread 3, begun 2026-11-21T17:19:00+00:00:\n{row(3, BANNER)}")
        expect(f"Run of thread 2, begun 2026-11-21T17:19:00+00:00:\n{row(2, 'more')}")
        with self.subTest("rolls over with a line that nobody has read"):
            backup = self.machine.folder / "orlanul 2026-11-22 10-00-00.log"
            backup.write_text(self.machine.log.read_text() + row(2, "unread"))
            self.machine.log.write_text(row(2, "after"))
            expect(row(2, "unread") + row(2, "after"))
        with self.subTest("is removed, and made again"):
            self.machine.log.unlink()
            self.machine.write(self.machine.log.with_suffix(".new"), row(2, END))
            self.machine.log.with_suffix(".new").rename(self.machine.log)
            expect(row(2, END) + "\n2026-11-21T17:19:00+00:00  ")
        follower.stdout.close()
        self.assertEqual(follower.wait(SECONDS), 0, "once its reader has gone")


if __name__ == "__main__":
    unittest.main()
