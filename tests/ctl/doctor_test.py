"""wakerlyctl doctor: on a machine that is in order it finds nothing; each fault it names, and mends with its remedy."""

import datetime
import json
import os
import pathlib
import shutil
import signal
import subprocess
import time
import unittest

from tree import (BUILD, PIPES, SECONDS, SOURCE, WAKERLY, WAKERLYCTL, TreeTest, check_schema, leave_lock,
                  leave_log_lock, prefs_text, side_by_side)

TODAY = datetime.date.today()
LAST_CHECK = {"LastDateCheck": f"{TODAY}T00:00:00"}
AGENTS = SOURCE / "packaging/macos"
LOGON_AGENT, SCHEDULED_AGENT = "com.vantre.Wakerly-1.0.plist", "com.vantre.VantreOrlanUpdater-1.0.plist"


def entry(attribute):
    return f'<MapPrefEntry MapPrefKey="{attribute}">text</MapPrefEntry>'


def prefs(**entries):
    """Writes the preferences with these entries, too."""
    return lambda tree: tree.write(tree.prefs, LAST_CHECK | entries)


def text(content):
    return lambda tree: tree.write(tree.prefs, content)


def replace(path, *change):
    """Changes a text in the file of that name of the tree."""
    def stage(tree):
        file = getattr(tree, path)
        file.write_text(file.read_text().replace(*change))
    return stage


def patch_processor(tree):
    with open(tree.library, "r+b") as file:
        file.seek(18)  # e_machine, elf(5)
        file.write(b"\x08\x00")  # MIPS


# What is staged, the identifier, its status, and whether the remedy is a command that mends it here.
FAULTS = (
    ("no preferences", lambda t: t.prefs.unlink(), "preferences.missing", "note", False),
    ("a folder as preferences", lambda t: (t.prefs.unlink(), t.prefs.mkdir()),
     "preferences.not-a-file", "problem", True),
    ("empty preferences", text(""), "preferences.empty", "note", False),
    ("malformed preferences", text("<Preferences>\n<Launch>x</Preferences>"), "preferences.malformed", "problem", True),
    ("another root", text("<Settings></Settings>"), "preferences.no-root", "problem", True),
    ("an unknown key", prefs(loglevel="3"), "preferences.unknown-key", "note", False),
    ("a doubled key", text(prefs_text(LAST_CHECK).replace("</Pref", "<Launch>1</Launch><Launch>2</Launch></Pref")),
     "preferences.doubled-key", "note", False),
    ("a bad boolean", prefs(AutoCheck="yes"), "preferences.bad-value", "problem", False),
    ("a map without a key", prefs(NotificationMessage="<MapPrefEntry>x</MapPrefEntry>"),
     "preferences.bad-value", "problem", False),
    ("a quote in a map's key", prefs(NotificationMessage=entry("a&quot;b")),
     "preferences.breaks-on-save", "problem", False),
    ("an ampersand in the root's attribute",
     text(prefs_text(LAST_CHECK).replace("<Preferences", '<Preferences a="&amp;"')),
     "preferences.breaks-on-save", "problem", False),
    ("a return in a text", prefs(Launch="a&#13;b"), "preferences.changes-on-save", "problem", False),
    ("a tab in a map's key", prefs(NotificationMessage=entry("a&#9;b")),
     "preferences.changes-on-save", "problem", False),
    ("a file in a folder's place", lambda t: (shutil.rmtree(t.home), t.write(t.home / "Library")),
     "folder.temporary", "problem", True),
    ("a file in the place of the last folder", lambda t: (shutil.rmtree(t.folder), t.write(t.folder)),
     "folder.unwritable", "problem", True),
    ("a missing home", lambda t: shutil.rmtree(t.home), "home.missing", "problem", False),
    ("a lock left behind", lambda t: leave_lock(t.prefs, 10), "lock.held", "problem", True),
    ("an administrator's malformed file", lambda t: t.write(t.admin_prefs, "<"),
     "administrator-preferences.malformed", "problem", True),
    ("an administrator's unknown key", lambda t: t.write(t.admin_prefs, {"suppressed": "1"}),
     "administrator-preferences.unknown-key", "note", False),
    ("a suppressed updater", lambda t: t.write(t.admin_prefs, {"Suppressed": "1"}),
     "updater.suppressed", "note", False),
    ("a stamp", lambda t: t.write(t.stamp, "2026"), "stamp.wipes", "problem", True),
    ("no logon agent", lambda t: t.logon_agent.unlink(), "agent.not-installed", "note", False),
    ("an agent whose program is missing", lambda t: t.program.unlink(), "agent.program-missing", "problem", False),
    ("an agent whose program has no right", lambda t: t.program.chmod(0o644),
     "agent.program-not-executable", "problem", True),
    ("an agent without a program", replace("agent", "ProgramArguments", "Arguments"),
     "agent.no-program", "problem", True),
    ("an agent that is none", replace("agent", "Label", "Name"), "agent.malformed", "problem", True),
    ("an agent of another time", replace("agent", "<integer>2<", "<integer>3<"), "agent.time-differs", "note", False),
    ("an agent of another minute", replace("agent", "<integer>0<", "<integer>5<"), "agent.time-differs", "note", False),
    ("no agent though it was added", lambda t: (t.agent.unlink(), prefs(IsScheduledTaskAdded="1")(t)),
     "agent.missing", "problem", True),
    ("no folder for it", lambda t: (shutil.rmtree(t.home / "Library/Preferences"), prefs(IsScheduledTaskAdded="1")(t)),
     "agent.missing", "problem", True),
    ("a folder as log", lambda t: t.log.mkdir(), "log.unwritable", "problem", True),
    ("a log in no folder", lambda t: prefs(StartupLogFile=t.home / "no one's/x.log")(t),
     "log.unwritable", "problem", True),
    ("level 0", prefs(LogLevel="0"), "log.off", "note", False),
    ("level loud", prefs(LogLevel="loud"), "log.level-unreadable", "problem", False),
    ("level 11", prefs(LogLevel="11"), "log.level-beyond-scale", "note", False),
    ("a log called like the preferences", lambda t: prefs(StartupLogFile=t.folder / "Vantre.log")(t),
     "log.endangers-preferences", "problem", False),
    ("a log that is the preferences", lambda t: prefs(StartupLogFile=t.prefs)(t),
     "log.endangers-preferences", "problem", False),
    ("a large log", lambda t: os.truncate(t.write(t.log), 10 * 2**20), "log.rolls-over", "note", False),
    ("a log's lock left behind", leave_log_lock, "log.lock-stuck", "problem", True),
    ("a switch", lambda t: t.write(t.home / "Library/Logs/Welko.debug"), "log.switched", "note", True),
    ("a switch beside the log", lambda t: t.write(t.folder / "orlanul.trace"),
     "log.switch-without-effect", "note", False),
    ("a file that keeps backups", lambda t: t.write(t.folder / "quib.trace", "keeplogs"),
     "log.keeps-backups", "note", True),
    ("a date ahead", prefs(LastDateCheck="2199-01-01T00:00:00"), "check.date-ahead", "problem", False),
    ("a date that is none", prefs(LastDateCheck="x"), "check.no-date", "note", False),
    ("a bad frequency", prefs(UpdaterPrefSchedCheckFreq="daily"), "check.frequency-unreadable", "problem", False),
    ("a clock in 2019", lambda t: t.set_today(datetime.date(2019, 12, 31)), "clock.behind", "problem", False),
    ("no notifier", lambda t: t.notifier.unlink(), "notifier.missing", "problem", False),
    ("a notifier without a right", lambda t: t.notifier.chmod(0o644), "notifier.not-executable", "problem", True),
    ("the suite", lambda t: t.install(t.suite), "notifier.suite-installed", "note", False),
    ("a library for another processor", patch_processor, "library.other-processor", "problem", False))
# The same of what root would not stumble over.
FAULTS_FOR_ORDINARY_USERS = (
    ("preferences without a right", lambda t: t.prefs.chmod(0), "preferences.unreadable", "problem", True),
    ("read-only preferences", lambda t: t.prefs.chmod(0o400), "preferences.unwritable", "problem", True),
    ("a home without rights", lambda t: (shutil.rmtree(t.home), t.home.mkdir(0o500)),
     "folder.temporary", "problem", True),
    ("a folder without rights", lambda t: t.folder.chmod(0o500), "folder.unwritable", "problem", True),
    ("a read-only log", lambda t: t.write(t.log).chmod(0o400), "log.unwritable", "problem", True),
    ("an unreadable library", lambda t: t.library.chmod(0), "library.unreadable", "problem", True),
    ("a library in a closed folder", lambda t: t.library.parent.chmod(0o600), "library.missing", "problem", True),
    ("a notifier in a closed folder", lambda t: t.bundle.chmod(0), "notifier.missing", "problem", True),
    ("an administrator's file in a closed folder", lambda t: (t.write(t.admin_prefs, {"Suppressed": "1"}),
                                                              t.inventory.chmod(0o600)),
     "administrator-preferences.unreadable", "problem", True),
    ("an unreadable agent", lambda t: t.agent.chmod(0), "agent.unreadable", "problem", True),
    ("an unreadable agent of wakerly's own", lambda t: t.logon_agent.chmod(0), "agent.unreadable", "problem", True))


class DoctorTest(TreeTest):
    def healthy_tree(self):
        tree = self.tree()
        tree.install(tree.notifier, tree.library)
        tree.write(tree.prefs, LAST_CHECK)
        product = tree.support / "Vantre/OrlanUpdater/1.0"
        tree.program, tree.logon_agent = product / "wakerly", tree.root / "Library/LaunchAgents" / LOGON_AGENT
        (tree.home / "Library/Preferences").mkdir()
        for agent in (tree.logon_agent, tree.agent, product / SCHEDULED_AGENT):
            tree.write(agent, (AGENTS / agent.name).read_bytes())
        shutil.copy(WAKERLY, tree.program)
        del tree.environment["KDUPDATER_TRACE"]
        return tree

    def look(self, tree, *arguments):
        """The checks by identifier, each the worst of that name, once it was seen that the tree is as before."""
        before = tree.state()
        said = tree.ctl("doctor", "--json", *arguments)
        self.assertEqual(tree.state(), before, "doctor changed the tree")
        self.await_processes(tree, 0)
        output = json.loads(said.stdout)
        check_schema("doctor", output)
        worst = sorted(output["checks"], key=lambda check: ["ok", "note", "problem"].index(check["status"]))
        status = worst[-1]["status"]
        self.assertEqual((output["status"], said.returncode, said.stderr), (status, int(status == "problem"), ""))
        return {check["id"]: check for check in worst}

    def test_a_machine_in_order_has_nothing_to_tell(self):
        tree = self.healthy_tree()
        prefs(ChannelsEnabled='<MapPrefEntry MapPrefKey="a">1</MapPrefEntry>', Launch=" 'a' &amp; &gt;\n\tb ")(tree)
        checks = self.look(tree, "--load-library")
        self.assertEqual([check for check in checks.values() if check["status"] != "ok"], [])
        self.assertIn("library.loads", checks)
        tree.write(tree.folder / "quib.trace", "keeplogs")
        notes = [name for name, check in self.look(tree).items() if check["status"] != "ok"]
        self.assertEqual(notes, ["log.keeps-backups"], "what has an effect is no switch without one")

    def mend(self, tree, remedy):
        """Pastes the remedy into a terminal, and says yes."""
        folders = {pathlib.Path(tree.programs.get(program, program)).parent for program in (WAKERLY, WAKERLYCTL)}
        path = ":".join([*map(str, folders), tree.environment["PATH"]])
        main, terminal = os.openpty()
        os.write(main, b"y\n")
        done = subprocess.run(["sh", "-c", remedy], env=tree.environment | {"PATH": path}, cwd=tree.top, check=False,
                              timeout=SECONDS, text=True, stdin=terminal, stdout=terminal, stderr=subprocess.PIPE,
                              **tree.options)
        os.close(main)
        os.close(terminal)
        self.assertEqual((done.returncode, done.stderr), (0, ""), remedy)

    def test_a_fault_is_named_and_mended(self):
        def check(row):
            _, stage, identifier, status, is_mended = row
            tree = self.healthy_tree()
            stage(tree)
            if row in FAULTS_FOR_ORDINARY_USERS:
                tree.become_ordinary()
            checks = self.look(tree)
            found = checks.get(identifier, {"status": "nothing", "remedy": None})
            self.assertEqual(found["status"], status, checks)
            if is_mended:
                self.assertIsNotNone(found["remedy"], checks)
            # Who is not root may have no sudo.
            if is_mended and not found["remedy"].startswith("sudo "):
                self.mend(tree, found["remedy"])
                self.assertNotIn(identifier, self.look(tree), found["remedy"])
        for row, result in side_by_side(check, FAULTS + FAULTS_FOR_ORDINARY_USERS):
            with self.subTest(staged=row[0], identifier=row[2]):
                result()

    def test_no_command_changes_what_a_preference_an_agent_or_a_link_names_elsewhere(self):
        def link(path, target):
            def stage(tree):
                shutil.rmtree(tree.home / path) if (tree.home / path).is_dir() else (tree.home / path).unlink()
                (tree.home / path).symlink_to(target)
            return stage
        folder = "Library/Application Support/Vantre/OrlanUpdater/1.0"
        agent = "Library/LaunchAgents/" + SCHEDULED_AGENT
        rows = (  # what is staged, the identifier
            (prefs(StartupLogFile="/etc/shadow"), "log.unwritable"),
            (prefs(StartupLogFile="/etc"), "log.unwritable"),
            (lambda t: prefs(StartupLogFile=t.home)(t), "log.unwritable"),
            (lambda t: prefs(StartupLogFile=t.home / "none/../../../../../../etc/none/x.log")(t), "log.unwritable"),
            (link(folder + "/VantreUpdaterPrefs.dat", "/etc/shadow"), "preferences.unreadable"),
            (link(folder, "/etc"), "folder.unwritable"),
            (link(agent, "/etc/passwd"), "agent.malformed"),
            (link(agent, "/etc/shadow"), "agent.unreadable"),
            (link(agent, "none"), "agent.missing"))
        for stage, identifier in rows:
            with self.subTest(identifier=identifier):
                tree = self.healthy_tree()
                prefs(IsScheduledTaskAdded="1")(tree)
                stage(tree)
                tree.become_ordinary()
                self.assertIsNone(self.look(tree)[identifier]["remedy"])
        tree = self.healthy_tree()
        replace("agent", "/Library/Application Support/Vantre/OrlanUpdater/1.0/wakerly", "/other")(tree)
        tree.write(tree.root / "other")
        self.assertIn("cp ", self.look(tree)["agent.program-not-executable"]["remedy"], "no rights for what it names")

    def test_a_command_that_would_not_be_whole_is_none(self):
        tree = self.healthy_tree()
        home = os.fsdecode(bytes(tree.top) + b"/\xff")
        shutil.move(tree.home, home)
        shutil.rmtree(home + "/Library/Application Support")
        pathlib.Path(home, "Library/Application Support").write_text("in the way")
        tree.environment["HOME"] = home
        self.assertIsNone(self.look(tree)["folder.temporary"]["remedy"])

    def test_a_finding_tells_where_the_fault_is_and_what_mends_it_by_hand(self):
        rows = (  # the preferences, the identifier, what the finding tells
            ("<Preferences>\n<Launch>x</Preferences>", "preferences.malformed", "line 2, column 12: mismatched tag"),
            ({"loglevel": "3", "Some": "4"}, "preferences.unknown-key", ": loglevel (LogLevel is one), Some."),
            ({"Launch": "a&#13;b"}, "preferences.changes-on-save", " of: Launch."),
            ({"ChannelsEnabled": entry("&lt;")}, "preferences.breaks-on-save", " of: ChannelsEnabled."),
            ({"AutoCheckFreq": "0x1"}, "preferences.bad-value", 'AutoCheckFreq is "0x1", and has to be a whole number'),
            ({"LogLevel": "loud"}, "log.level-unreadable", "LogLevel = 2 is the usual one."),
            (LAST_CHECK, "check.not-due", f" It has on {TODAY + datetime.timedelta(days=1)}."),
            (LAST_CHECK | {"UpdaterPrefSchedCheckFreq": "3"}, "check.never", " Choose another period "),
            ({"StartupLogFile": "/no/x.log"}, "log.unwritable", " Name another file in StartupLogFile"))
        tree = self.healthy_tree()
        for content, identifier, told in rows:
            with self.subTest(content=content, identifier=identifier):
                tree.write(tree.prefs, content)
                self.assertIn(told, self.look(tree)[identifier]["finding"])

    def test_a_library_is_loaded_for_a_trial(self):
        sample = (BUILD / "samples/kdupdater.dylib").read_bytes()
        unbound = (BUILD / "samples/libunbound.so").read_bytes()
        lacking = sample.replace(b"Vantre_KD_ReleaseRef", b"Vantre_KD_ReleaseAll")
        rows = (  # what it is, its bytes, what it does when it is loaded, the identifier, what the finding tells
            ("no library", b"garbage", "", "library.no-library", "is no library"),
            ("calls a missing function", unbound, "", "library.does-not-load", "FunctionThatExistsNowhere"),
            ("lacks an entry point", lacking, "", "library.entry-point-missing", "lacks Vantre_KD_ReleaseRef."),
            ("a library that", sample, "crashes", "library.crashes", "Aborted"),
            ("a library that", sample, "exits", "library.crashes", "status 7"),
            ("a library that", sample, "waits", "library.hangs", "10 seconds"))
        for library, content, loading, identifier, told in rows:
            with self.subTest(library=library, loading=loading, identifier=identifier):
                tree = self.healthy_tree()
                tree.library.write_bytes(content)
                tree.environment["KDUPDATER_LOADING"] = loading
                checks = self.look(tree, "--load-library")
                self.assertIn(identifier, checks)
                self.assertIn(told, checks[identifier]["finding"])

    def test_an_interrupted_trial_leaves_no_process(self):
        tree = self.healthy_tree()
        tree.environment["KDUPDATER_LOADING"] = "waits"
        with subprocess.Popen([WAKERLYCTL, "doctor", "--load-library"],
                              env=tree.environment, cwd=tree.top, **PIPES) as doctor:
            self.await_processes(tree, 3)
            doctor.terminate()
            doctor.communicate(timeout=SECONDS / 10)  # sooner than the library is given up
        self.assertEqual(doctor.returncode, -signal.SIGTERM)
        self.await_processes(tree, 0)

    def await_processes(self, tree, count):
        deadline = time.monotonic() + SECONDS / 10
        while len(tree.processes()) != count and time.monotonic() < deadline:
            time.sleep(0.01)
        self.assertEqual(len(tree.processes()), count, "processes that doctor started")

    def test_what_the_log_masks_is_not_told(self):
        tree = self.healthy_tree()
        prefs(StartupLogFile=tree.home / "eyJsecret.eyJsecret/x.log", AutoCheck="<b>eyJsecret.eyJsecret</b>")(tree)
        said = tree.ctl("doctor", "--json").stdout + tree.ctl("doctor").stdout
        self.assertIn("log.unwritable", said)
        self.assertNotIn("secret", said)

    def test_people_get_each_finding_with_its_remedy_alone_on_a_line(self):
        tree = self.healthy_tree()
        tree.notifier.chmod(0o644)
        said = tree.ctl("doctor").stdout
        self.assertIn(f"\nchmod a+x '{tree.notifier}'\n", said)
        self.assertRegex(said, r"\n\n\d+ checks: \d+ ok, 0 notes, 1 problem\n$")
        if os.geteuid() == 0:
            tree.give_away()
            self.assertRegex(tree.ctl("doctor").stdout, "1 problem\nCommands without sudo are for [a-z]+, not for root.\n$")


if __name__ == "__main__":
    unittest.main()
