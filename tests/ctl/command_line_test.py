"""The command line, the output and its form, which all commands share."""

import contextlib
import fcntl
import itertools
import os
import pty
import re
import struct
import subprocess
import termios
import unittest

from tree import WAKERLYCTL, TreeTest

COMMANDS = ("explain", "ids", "lock", "prefs")
COLUMNS = 60
COLOUR = re.compile("\x1b\\[[0-9;]*m")


class CommandLineTest(TreeTest):
    def test_wrong_usage_is_refused_with_status_2_and_nothing_on_standard_output(self):
        tree = self.tree()
        for arguments in ([], ["bogus"], ["explain", "--bogus"], ["explain", "more"],
                          ["explain", "--at"], ["ids", "explain"]):
            with self.subTest(arguments):
                said = tree.ctl(*arguments)
                self.assertEqual((said.returncode, said.stdout), (2, ""))
                self.assertNotEqual(said.stderr, "")

    def test_refuses_what_is_no_date_in_one_line(self):
        tree = self.tree()
        for date in ("2026-02-30", "2026-13-01", "2026-1-1", "20260101", "2026-01-01T10:00:00",
                     "2026-Jan-01", " 2026-01-01", "1399-12-31", "-1", "tomorrow", "to\nmorrow", ""):
            with self.subTest(date):
                said = tree.ctl("explain", "--at", date)
                shown = date.replace("\n", "?")
                self.assertEqual(said.stderr, "wakerlyctl: --at: not a date of the form YYYY-MM-DD: "
                                              f"{shown}\n")
                self.assertEqual((said.returncode, said.stdout), (2, ""))

    def test_helps_with_the_program_and_each_command(self):
        tree = self.tree()
        for command in ([], *([name] for name in COMMANDS)):
            with self.subTest(command):
                said = tree.ctl(*command, "--help")
                self.assertEqual((said.returncode, said.stderr), (0, ""))
                self.assertIn(" ".join(["Usage: wakerlyctl", *command]), said.stdout)

    def test_ends_quietly_when_the_reader_has_gone(self):
        tree = self.tree()
        for command in COMMANDS:
            for is_ended_by_the_signal in (True, False):
                with self.subTest(command, is_ended_by_the_signal=is_ended_by_the_signal):
                    reader, writer = os.pipe()
                    os.close(reader)
                    said = tree.ctl(command, stdout=writer, restore_signals=is_ended_by_the_signal)
                    os.close(writer)
                    self.assertEqual((said.returncode, said.stderr), (0, ""))

    def test_says_that_its_output_found_no_room(self):
        tree = self.tree()
        for arguments in (["ids"], ["explain"], ["explain", "--json"], ["--help"], ["--version"]):
            with self.subTest(arguments), open("/dev/full", "w", encoding="utf-8") as full:
                said = tree.ctl(*arguments, stdout=full)
                self.assertEqual(said.returncode, 2)
                self.assertEqual(said.stderr, "wakerlyctl: the output cannot be written: "
                                              "No space left on device\n")


def read_terminal(tree, *arguments, **environment):
    """What the command prints on a terminal of COLUMNS columns."""
    ours, terminal = pty.openpty()
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("4H", 24, COLUMNS, 0, 0))
    process = subprocess.Popen([WAKERLYCTL, *arguments], stdout=terminal,
                               env=tree.environment | {"TERM": "xterm"} | environment)
    os.close(terminal)
    printed = b""
    with contextlib.suppress(OSError):  # the end, on Linux
        while part := os.read(ours, 4096):
            printed += part
    os.close(ours)
    assert process.wait() == 0, printed
    return printed.decode().replace("\r\n", "\n")


class OutputTest(TreeTest):
    def setUp(self):
        self.staged = self.tree()
        self.staged.install(self.staged.notifier)

    def test_has_colour_on_a_terminal_alone(self):
        for name, printed, expected in (
                ("terminal", read_terminal(self.staged, "explain"), True),
                ("NO_COLOR", read_terminal(self.staged, "explain", NO_COLOR="1"), False),
                ("NO_COLOR empty", read_terminal(self.staged, "explain", NO_COLOR=""), True),
                ("TERM=dumb", read_terminal(self.staged, "explain", TERM="dumb"), False),
                ("JSON on a terminal", read_terminal(self.staged, "explain", "--json"), False),
                ("pipe", self.staged.ctl("explain").stdout, False)):
            with self.subTest(name):
                self.assertEqual(COLOUR.search(printed) is not None, expected, printed)
                self.assertNotIn("\x1b", COLOUR.sub("", printed))

    def test_wraps_and_aligns_on_a_terminal_what_it_prints_on_lines_elsewhere(self):
        for command in ("explain", "ids"):  # lock tells of whatever runs at the time
            printed = COLOUR.sub("", read_terminal(self.staged, command))
            for line in printed.splitlines():
                with self.subTest(command, line=line):
                    text = re.split(" {2,}", line.strip())[-1]  # without its label
                    self.assertTrue(len(line) <= COLUMNS or " " not in text, f"{len(line)} columns")
            unwrapped = self.staged.ctl(command).stdout
            self.assertEqual(printed.split(), unwrapped.split(), "the words")
        rows = COLOUR.sub("", read_terminal(self.staged, "explain")).splitlines()[2:]
        column = len("preferences  ")
        for row in rows:
            with self.subTest("aligned", row=row):
                self.assertRegex(row, f"^[a-z ]{{{column - 2}}}  [^ ]")

    def test_lets_no_text_act_on_a_terminal(self):
        tree = self.staged
        tree.write(tree.prefs, {"StartupLogFile": "/no/\u009b31m\u202e\u2028/x.log"})
        for arguments in (["explain"], ["doctor"], ["prefs"], ["log"], ["no\u009b31m"], ["explain", "no\u009b31m"],
                          ["explain", "--json"], ["doctor", "--json"]):
            with self.subTest(arguments):
                said = tree.ctl(*arguments)
                acting = "[\x80-\x9f]" if "--json" in arguments else "[\x80-\x9f\u202e\u2028]"
                self.assertNotRegex(said.stdout + said.stderr, acting)
                self.assertNotIn("mkdir", said.stdout, "a command with another path")

    def test_masks_what_the_log_masks(self):
        secrets = {"a token": "/no/eyJhbGciOiJIUzI1NiJ9.eyJzdWIiOiIxIn0.log",
                   "a password": "/no/&lt;password&gt;secret&lt;/password&gt;/x.log"}
        keys = ("StartupLogFile", "LogLevel", "LastDateCheck", "UpdaterPrefSchedCheckFreq",
                "IsScheduledTaskNeeded", "uninstallts", "Suppressed")
        tree = self.staged
        for command, path in itertools.product(("log", "lock", "prefs"), secrets.values()):
            with self.subTest(command, path=path):
                tree.write(tree.prefs, {"StartupLogFile": path})
                for arguments in ([command], [command, "--json"]):
                    said = tree.ctl(*arguments)
                    self.assertIn("****", said.stdout + said.stderr)
                    self.assertNotRegex(said.stdout + said.stderr, "eyJ|secret")
                tree.prefs.unlink()
        for (name, value), key in itertools.product(secrets.items(), keys):
            with self.subTest(name, key=key):
                tree.write(tree.admin_prefs if key == "Suppressed" else tree.prefs, {key: value})
                tree.write(tree.stamp, "new" if key == "uninstallts" else "")
                as_json = tree.ctl("explain", "--json").stdout
                self.assertIn("****", as_json)
                self.assertNotRegex(as_json + tree.ctl("explain").stdout, "eyJ|secret")
                tree.prefs.unlink(missing_ok=True)
                tree.admin_prefs.unlink(missing_ok=True)


if __name__ == "__main__":
    unittest.main()
