"""explain foretells: what it says of a run, beside what wakerly then does on the same tree."""

import dataclasses
import datetime
import itertools
import json
import os
import pathlib
import pwd
import random
import shutil
import subprocess
import unittest
import xml.etree.ElementTree
from typing import Callable

from tree import (IPC_CREAT, IPC_EXCL, LIBC, WAKERLY, WAKERLYCTL, Tree, TreeTest, leave_lock,
                  leave_log_lock, lock_file, log_key, prefs_text, side_by_side)

IS_ROOT = os.geteuid() == 0
BANNER = b">>> Vantre Updater Log Begin >>>"
KEEPSAKE = b"keepsake"  # in every preference file: gone when a run removed the file
ABSENT = object()
ENTRIES = {"LastDateCheck": "2024-03-30T10:00:00", "Keepsake": KEEPSAKE.decode()}
DEFAULTS = {"LogLevel": 2, "LastDateCheck": "", "UpdaterPrefSchedCheckFreq": 0, "uninstallts": "",
            "IsScheduledTaskNeeded": True, "IsScheduledTaskAdded": False, "Suppressed": False}
# What a run that has no log says of it on standard error: the first of these that is found.
REASONS = {"log.disk-full": "not a line was taken", "log.lock-denied": "not a line was taken",
           "log.unwritable": " cannot be written: ", "log.no-folder": "there is no folder for",
           "log.level-unreadable": "LogLevel is no number",
           "log.preferences-locked": "the preferences are locked by another process"}


@dataclasses.dataclass
class Row:
    """A tree: one on which a run does all there is to do, but for what is told here."""
    name: str
    ids: str = ""  # that explain gives, where they are not those of FULL
    prefs: object = dataclasses.field(default_factory=dict)  # changes to ENTRIES, or the whole file
    admin: object = ABSENT
    stage: Callable = lambda tree: None
    today: str = "2024-03-31"
    scheduled: bool = False
    ordinary: bool = False  # an ordinary user runs it


FULL = "log.written updater.enabled check.due notifier.starts library.usable"


def ids_of(row):
    """All that explain is to give."""
    told = {name.split(".")[0]: name for name in (FULL + " " + row.ids).split()}
    return list(told.values())


# --- the rows

def decision_rows():
    for scheduled, has_path, due, suite in itertools.product((True, False), repeat=4):
        check = ("not-reached" if not has_path else "not-asked" if scheduled else
                 "due" if due else "not-due")
        notifier = ("no-path" if not has_path else "not-due" if check == "not-due" else
                    "suite-installed" if suite else "starts")
        ids = f"check.{check} notifier.{notifier}"
        if not has_path:
            ids += " updater.no-folder library.missing"

        def stage(tree, has_path=has_path, suite=suite):
            if suite:
                (tree.suite / "Contents").mkdir(parents=True)
            if not has_path:
                shutil.rmtree(tree.support)
        last = {"LastDateCheck": f"2024-03-{30 if due else 31}T10:00:00"}
        yield Row(f"scheduled {scheduled}, notifier's path {has_path}, due {due}, suite {suite}",
                  ids, last, stage=stage, scheduled=scheduled)


def due_rows():
    for today, last, frequency, found in (
            ("2024-03-31", "2024-03-30T23:59:59", 0, "due"),
            ("2024-03-31", "2024-03-31T00:00:00", 0, "not-due"),
            ("2024-03-31", "2024-03-31T00:00:00", None, "not-due"),  # daily where none is set
            ("2024-03-31", "2024-03-30T10:00:00", "", "due"),
            ("2024-03-31", "2024-03-24T10:00:00", 1, "due"),
            ("2024-03-31", "2024-03-25T10:00:00", 1, "not-due"),
            ("2024-03-31", "2024-02-29T10:00:00", 2, "due"),
            ("2024-03-28", "2024-02-29T10:00:00", 2, "not-due"),
            ("2021-04-30", "2021-03-31T10:00:00", 2, "due"),
            ("2021-05-31", "2021-05-01T10:00:00", 2, "not-due"),
            ("2024-03-31", "2024-02-29T10:00:00", -7, "due"),
            ("2024-03-31", "2024-03-01T10:00:00", 99, "not-due"),
            ("2024-03-31", "2001-01-01T10:00:00", 3, "never"),
            ("2024-03-31", "2030-01-01T10:00:00", 3, "never"),
            ("2024-03-31", "2001-01-01T10:00:00", "often", "frequency-unreadable"),
            ("2024-03-31", None, 0, "never-run"),
            ("2024-03-31", "", 0, "never-run"),
            ("2024-03-31", "2024-03-20", 0, "no-date"),
            ("2024-03-31", "T10:00:00", 0, "no-date"),
            ("2024-03-31", "2024-03-31T10:00", 0, "invalid-time"),
            ("2024-03-31", "2024-03-31T", 0, "invalid-time"),
            ("2024-03-31", "2024-02-30T10:00:00", 0, "invalid-date"),
            ("2024-03-31", "yesterdayT10:00:00", 0, "invalid-date"),
            ("2024-03-31", "2024-04-01T10:00:00", 0, "date-ahead"),
            ("2024-03-31", "2024-04-01T10:00:00", 1, "date-ahead")):
        starts = found == "due" or found.startswith("invalid") or found == "no-date"
        ids = f"check.{found}" + ("" if starts else " notifier.not-due")
        yield Row(f"today {today}, last check {last}, frequency {frequency}", ids,
                  {"LastDateCheck": last, "UpdaterPrefSchedCheckFreq": frequency}, today=today)


def admin_rows():
    for name, admin, found in (("suppressed", {"Suppressed": 1}, "suppressed"),
                               ("not suppressed", {"Suppressed": 0}, "enabled"),
                               ("Suppressed unreadable", {"Suppressed": "yes"}, "unreadable"),
                               ("Suppressed empty", {"Suppressed": ""}, "enabled"),
                               ("malformed", "<Preferences><Suppressed>1</Suppressed>", "enabled"),
                               ("of another root", "<Other><Suppressed>1</Suppressed></Other>",
                                "enabled")):
        yield Row(f"administrator's file: {name}", f"updater.{found}", admin=admin)
    yield Row("administrator's file locked", "updater.preferences-locked",
              stage=lambda tree: leave_lock(tree.admin_prefs))


def make_denied(tree):
    """Root has the semaphore set of the log's lock, whose key may be another set's."""
    for number in range(100):
        made = LIBC.semget(log_key(tree.write(tree.log)), 2, IPC_CREAT | IPC_EXCL | 0o600)
        if made != -1:
            return
        tree.log.rename(tree.top / str(number))
    raise AssertionError("no key is free")


def can_mount():
    return subprocess.run(["unshare", "--mount", "mount", "-t", "tmpfs", "none", "/mnt"],
                          check=False).returncode == 0


def put_on_full_disk(tree):
    """Gives the log a disk of its own where nothing fits any more; no other program sees it."""
    folder = tree.top / "full"
    folder.mkdir()
    script = (f"mount -t tmpfs -o size=64k none {folder}\n"
              f"cat /dev/zero > {folder}/filler 2> /dev/null || true\n" 'exec "$0" "$@"')
    for program in (WAKERLY, WAKERLYCTL):
        start = f"#! /bin/sh\nexec unshare --mount --ipc sh -ec '{script}' {program} \"$@\"\n"
        tree.programs[program] = tree.write(tree.top / program.name, start)
        tree.programs[program].chmod(0o755)
    change(tree, StartupLogFile=folder / "x.log")


def change(tree, **entries):
    tree.write(tree.prefs, ENTRIES | entries)


def deny_writing(path):
    path.chmod(0o500 if path.is_dir() else 0o400)


def link(path, target="gone/further"):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.symlink_to(target)


def log_rows():
    off = "log.off"
    for level, ids in ((0, off), (-1, ""), (-2, off), ("loud", "log.level-unreadable"), (1, ""),
                       (3, ""), (10, ""), ("", "")):
        yield Row(f"level {level}", ids, {"LogLevel": level})
    bad = "log.unwritable"
    for name, path, ids, stage in (
            ("named", "logs/my.log", "", lambda tree: (tree.top / "logs").mkdir()),
            ("in a missing folder", "logs/my.log", bad, lambda tree: None),
            ("a folder", "logs", bad, lambda tree: (tree.top / "logs").mkdir()),
            ("a link to what is missing", "link", "", lambda tree: link(tree.top / "link", "my.log")),
            ("a link to a missing folder", "link", bad, lambda tree: link(tree.top / "link")),
            ("a link to itself", "link", bad, lambda tree: link(tree.top / "link", "link")),
            ("of too long a name", "n" * 256, bad, lambda tree: None),
            ("a pipe", "pipe", bad, lambda tree: os.mkfifo(tree.top / "pipe")),
            ("there before", "my.log", "",
             lambda tree: tree.write(tree.top / "my.log", "before\n"))):
        def put(tree, path=path, stage=stage):
            stage(tree)
            change(tree, StartupLogFile=tree.top / path)
        yield Row(f"log {name}", ids, stage=put)
    yield Row("log without a folder", "", {"StartupLogFile": "my.log"})
    for name, ids, stage in (
            ("is a file", bad, lambda tree: tree.write(tree.home / "Library/Logs")),
            ("cannot be made", "log.no-folder", lambda tree: deny_writing(tree.home / "Library"))):
        yield Row(f"log without a folder, where that of the logs {name}", ids,
                  {"StartupLogFile": "my.log"}, stage=stage, ordinary=True)
    yield Row("log in a folder in whose place a link to nothing stands", bad,
              stage=lambda tree: (link(tree.home / "Library/Logs"),
                                  change(tree, StartupLogFile=tree.home / "Library/Logs/x.log")))
    yield Row("log in a folder that a run makes, of another spelling",
              stage=lambda tree: change(tree, StartupLogFile=f"{tree.home}//Library/./Logs/x.log"))
    yield Row("log whose folder is a file", bad + " check.never-run notifier.not-due", ABSENT,
              stage=lambda tree: tree.write(tree.folder))
    yield Row("log whose folder cannot be written to", bad, ordinary=True,
              stage=lambda tree: deny_writing(tree.folder))
    yield Row("log that cannot be written", bad, ordinary=True,
              stage=lambda tree: deny_writing(tree.write(tree.log)))
    locked = "log.preferences-locked check.preferences-locked notifier.not-due"
    yield Row("preferences locked", locked, {"LogLevel": 3},
              stage=lambda tree: leave_lock(tree.prefs))
    yield Row("preferences locked, scheduled", "log.preferences-locked check.not-asked",
              stage=lambda tree: leave_lock(tree.prefs), scheduled=True)
    if IS_ROOT:
        yield Row("log's lock denied", "log.lock-denied", ordinary=True, stage=make_denied)
    if IS_ROOT and can_mount():
        yield Row("log on a full disk", "log.disk-full", stage=put_on_full_disk)


def for_another_processor(path):
    """Exchanges the machine in the header of an ELF file (elf(5))."""
    content = bytearray(path.read_bytes())
    content[18] ^= 0xff
    path.write_bytes(content)


SCRIPT = '#! /bin/sh -e\necho "started" >> "$NOTIFIER_TRACE"\n'


def make_folder(path):
    path.unlink()
    path.mkdir()


def program_rows():
    for name, found, stage in (
            ("missing", "missing", lambda path: path.unlink()),
            ("a link to nothing", "missing", lambda path: (path.unlink(), path.symlink_to("gone"))),
            ("a folder", "not-a-file", make_folder),
            ("garbage", "no-program", lambda path: path.write_text("no program")),
            ("empty", "no-program", lambda path: path.write_text("")),
            ("for another processor", "no-program", for_another_processor),
            ("a script", "starts", lambda path: path.write_text(SCRIPT)),
            ("a script without interpreter", "no-program",
             lambda path: path.write_text(SCRIPT.replace("/bin/sh", "/no/such"))),
            ("not executable", "not-executable", lambda path: path.chmod(0o644)),
            ("in a closed folder", "missing", lambda path: path.parent.chmod(0))):
        yield Row(f"notifier {name}", f"notifier.{found}", ordinary="closed" in name,
                  stage=lambda tree, stage=stage: stage(tree.notifier))
    for name, found, stage in (
            ("missing", "missing", lambda path: path.unlink()),
            ("a folder", "not-a-file", make_folder),
            ("garbage", "no-library", lambda path: path.write_text("no library")),
            ("empty", "no-library", lambda path: path.write_text("")),
            ("for another processor", "other-processor", for_another_processor),
            ("not executable", "usable", lambda path: path.chmod(0o444)),
            ("unreadable", "unreadable", lambda path: path.chmod(0o333))):
        yield Row(f"library {name}", f"library.{found}", ordinary=name == "unreadable",
                  stage=lambda tree, stage=stage: stage(tree.library))
    yield Row("suite is a file", "notifier.suite-installed",
              stage=lambda tree: tree.install(tree.suite))
    yield Row("suite is a link to nothing",
              stage=lambda tree: (tree.install(tree.suite), tree.suite.unlink(),
                                  tree.suite.symlink_to("gone")))


def file_rows():
    """The user's preference file, the stamp of an uninstallation, and the launch agent."""
    never_run = "check.never-run notifier.not-due"
    whole = prefs_text(ENTRIES | {"LogLevel": 3})
    for name, content in (("malformed", whole.replace("</Preferences>", "")), ("empty", ""),
                          ("of another root", whole.replace("Preferences>", "Other>")),
                          ("absent", ABSENT)):
        yield Row(f"file {name}", never_run, content)
    yield Row("file unreadable", never_run, ordinary=True, stage=lambda tree: tree.prefs.chmod(0))
    yield Row("file is a folder", never_run, ABSENT,
              stage=lambda tree: tree.prefs.mkdir(parents=True))
    yield Row("file with a key twice", "", prefs_text(ENTRIES | {"LogLevel": 4}).replace(
        "</Preferences>", "<LogLevel>loud</LogLevel></Preferences>"))

    def stamp(text, then=lambda tree: None):
        return lambda tree: (tree.write(tree.stamp, text), then(tree))
    known = {"uninstallts": "old", "LogLevel": 3}
    for name, entries, text, ids in (("new", known, "new", never_run),
                                     ("known", known, " old\n", ""), ("blank", known, " \n", ""),
                                     ("first", {}, "new", never_run)):
        yield Row(f"stamp {name}", ids, entries, stage=stamp(text))
    yield Row("stamp without preferences", never_run, ABSENT, stage=stamp("new"))
    yield Row("stamp new, file malformed", never_run, whole + "<", stage=stamp("new"))
    yield Row("stamp new, file locked",
              "log.preferences-locked check.preferences-locked notifier.not-due", known,
              stage=stamp("new", lambda tree: leave_lock(tree.prefs)))
    yield Row("stamp new, file read-only", "", known, ordinary=True,
              stage=stamp("new", lambda tree: deny_writing(tree.prefs)))
    yield Row("stamp new, folder read-only", "log.unwritable", known, ordinary=True,
              stage=stamp("new", lambda tree: deny_writing(tree.folder)))
    yield Row("stamp new, date ahead and agent missing", never_run,
              known | {"LastDateCheck": "2030-01-01T::", "IsScheduledTaskNeeded": 0,
                       "IsScheduledTaskAdded": 1},
              stage=stamp("new", lambda tree: tree.agent.unlink()))

    def without_agent(tree):
        tree.agent.unlink()
    obsolete = {"IsScheduledTaskNeeded": 0, "IsScheduledTaskAdded": 1}
    never = "check.never notifier.not-due"
    for name, needed, added, ids in (("obsolete", 0, 1, never), ("needed", 1, 1, ""),
                                     ("needed by default", None, 1, ""), ("not added", 0, 0, ""),
                                     ("not added by default", 0, None, ""),
                                     ("need unreadable", "so", 1, ""),
                                     ("added unreadable", 0, "so", "")):
        entries = {"IsScheduledTaskNeeded": needed, "IsScheduledTaskAdded": added}
        yield Row(f"agent missing, record {name}", ids, entries, stage=without_agent)
    yield Row("agent empty, record obsolete", never, obsolete,
              stage=lambda tree: tree.agent.write_text(""))
    yield Row("agent there, record obsolete", "", obsolete)
    yield Row("agent there, but no folder beside it, record obsolete", never, obsolete,
              stage=lambda tree: (tree.home / "Library/Preferences").rmdir())


def home_rows():
    never_run = "check.never-run notifier.not-due"

    def move(path, then=lambda tree: None):
        def stage(tree):
            tree.environment["HOME"] = str(tree.top / path)
            then(tree)
        return stage
    yield Row("home missing", never_run, ABSENT, stage=move("new/home"))
    no_folder = "log.no-folder check.no-folder notifier.not-due"
    for name, ids, stage, ordinary in (
            ("a file", never_run, lambda tree: tree.write(tree.top / "new"), False),
            ("with a file in its library's place", never_run,
             lambda tree: tree.write(tree.top / "new/Library"), False),
            ("a link to nothing", never_run,
             lambda tree: (tree.top / "new").symlink_to("gone/further"), False),
            ("with a link to nothing in the place of the updater's folder", never_run,
             lambda tree: link(tree.top / "new/Library/Application Support/Vantre"), False),
            ("read-only", never_run,
             lambda tree: ((tree.top / "new").mkdir(), deny_writing(tree.top / "new")), True),
            ("a file, as is the temporary folder", no_folder,
             lambda tree: (tree.write(tree.top / "new"), tree.write(tree.root / "tmp")), False),
            ("a file, and our temporary folder open to all", no_folder,
             lambda tree: (tree.write(tree.top / "new"),
                           (tree.root / "tmp/Vantre").mkdir(parents=True),
                           (tree.root / "tmp/Vantre").chmod(0o777)), False)):
        yield Row(f"home {name}", ids, ABSENT, stage=move("new", stage), ordinary=ordinary)
    if IS_ROOT:
        yield Row("root with another user's home", stage=Tree.give_away)


# --- what is said, and what is done

def entries_of(path):
    """The first of each key in a preference file that its owner may read, as text."""
    try:
        root = xml.etree.ElementTree.parse(path).getroot()
        entries = list(root) if root.tag == "Preferences" and path.stat().st_mode & 0o400 else []
    except (OSError, xml.etree.ElementTree.ParseError):
        return {}
    return {entry.tag: entry.text for entry in reversed(entries) if entry.text}


def holds_keepsake(path):
    return os.access(path, os.R_OK) and path.is_file() and KEEPSAKE in path.read_bytes()


def logs_of(tree):
    """The files that have a log's first line, with their number of them."""
    files = [path for path in tree.top.rglob("*") if path.is_file() and path.suffix == ".log"]
    return {path: path.read_bytes().count(BANNER) for path in files}


def locks_of(tree):
    """The semaphores of the preference files, and the logs that have a set of semaphores."""
    files = [lock_file(path) for path in (tree.prefs, tree.admin_prefs)]
    keys = {line.split()[0] for line in pathlib.Path("/proc/sysvipc/sem").read_text().splitlines()}
    logs = [str(path) for path in logs_of(tree) if str(log_key(path)) in keys]
    return [file.name for file in files if file.exists()] + logs


class Before:
    """What a run could change, as it was."""

    def __init__(self, tree):
        self.user = entries_of(tree.prefs)
        self.administrator = entries_of(tree.admin_prefs)
        self.keepsake = holds_keepsake(tree.prefs)
        self.logs = logs_of(tree)


def said_of(said):
    log = said["log"]
    settings = {f"setting {setting['key']}": setting for setting in said["settings"]}
    logs = [str(pathlib.Path(log["path"]).resolve())] if log["writes"] else []
    return settings | {"log": logs, "level": log["level"],
            "level in the file": str(log["level"]),
            "standard error": REASONS.get(log["id"], ""), "user": said["user"],
            "enabled": said["updater"]["enabled"], "due": said["check"]["due"],
            "last check replaced": said["check"]["id"] == "check.date-ahead",
            "notifier started": said["notifier"]["would_start"],
            "library loaded": said["library"]["usable"] and said["exit_status"] == 0,
            "exit status": said["exit_status"], "preferences wiped": said["wipes_preferences"],
            "preferences": said["preferences"]}


def done_of(tree, row, before, run, said):
    """The same of the run that has ended. Left out is what no trace tells."""
    after = entries_of(pathlib.Path(said["preferences"] or "/"))
    logs = [path for path, count in logs_of(tree).items() if count > before.logs.get(path, 0)]
    done = {
        "log": [str(path) for path in logs], "exit status": run.returncode,
        "standard error": next((why for why in REASONS.values() if why in run.stderr), run.stderr),
        "last check replaced": after.get("LastDateCheck") == row.today,
        "notifier started": (tree.top / "notified").exists(),
        "library loaded": (tree.top / "asked").exists(),
        "preferences wiped": before.keepsake and not holds_keepsake(tree.prefs)}
    for setting in said["settings"]:
        found = found_setting(setting, before, done["preferences wiped"], said["preferences"])
        done[f"setting {setting['key']}"] = found
    knows_level = said["log"]["id"] in ("log.written", "log.off")
    if knows_level and said["preferences_state"] in ("missing", "empty", "loaded"):
        done["level in the file"] = after.get("LogLevel")
    for path in logs:
        if path not in before.logs:
            done["user"] = pwd.getpwuid(path.stat().st_uid).pw_name
        done |= told_by(path)
    saved = [str(path) for path in tree.top.rglob("VantreUpdaterPrefs.dat")]
    if saved:
        done["preferences"] = saved[0] if len(saved) == 1 else said["preferences"]
    return done


def told_by(path):
    """What the log's lines tell, which at level 1 is no more than that there is a log."""
    text = path.read_text()
    if "cmdline option: -logLevel = " not in text:
        return {"level": 1}
    due = {"Window is Elapsed": True, "Window is NOT Elapsed": False}
    return {"level": int(text.split("cmdline option: -logLevel = ")[1].split()[0]),
            "due": next((is_due for line, is_due in due.items() if line in text), None),
            "enabled": "UCIsUpdaterEnabled : UpdaterIsEnabled." in text}


def found_setting(setting, before, is_wiped, prefs):
    """A setting as the files had it before the run, but for what the run finds no more."""
    key, value = setting["key"], setting["value"]
    source = "administrator" if key == "Suppressed" else "user"
    text = getattr(before, source).get(key)
    if text is None:
        source = "default"
    elif source == "user" and is_wiped and key != "uninstallts":
        text, source = None, "uninstall-stamp"
    if setting["source"] == "launch-agent" and key == "UpdaterPrefSchedCheckFreq":
        text, source = "3", "launch-agent"  # which the id of the check confirms
    if text is None:
        found = DEFAULTS.get(key, str(pathlib.Path(prefs or "/none").with_name("orlanul.log")))
    elif isinstance(value, bool):
        found = {"1": True, "0": False}.get(text)
    else:
        found = type(value)(text)
    return {"key": key, "value": found, "source": source}


def stage(row, tree):
    tree.set_today(datetime.date.fromisoformat(row.today))
    tree.install(tree.notifier, tree.library, tree.agent)
    (tree.home / "Library/Preferences").mkdir()  # beside which a run looks for the agent
    if row.prefs is not ABSENT:
        entries = row.prefs
        if isinstance(entries, dict):
            entries = {key: text for key, text in (ENTRIES | entries).items() if text is not None}
        tree.write(tree.prefs, entries)
    if row.admin is not ABSENT:
        tree.write(tree.admin_prefs, row.admin)
    row.stage(tree)
    if row.ordinary:
        tree.become_ordinary()


def differences(row):
    """What explain says of the row, does and should not, or what the run does otherwise."""
    mode = {True: ["-mode=scheduled"], False: []}[row.scheduled]
    tree = Tree()
    try:
        stage(row, tree)
        before, state, locks = Before(tree), tree.state(), locks_of(tree)
        said = tree.ctl_json("explain", *(["--scheduled"] if row.scheduled else []))
        changed = {path for path, _ in state.items() ^ tree.state().items()}
        found = [f"explain changed {path}" for path in sorted(changed)]
        found += [f"explain made or removed {name}" for name in set(locks_of(tree)) ^ set(locks)]
        kinds = ("log", "updater", "check", "notifier", "library")
        ids = [said[kind]["id"] for kind in kinds]
        found += [f"explain gives {given}, expected {wanted}: {said[kind]['why']}"
                  for kind, given, wanted in zip(kinds, ids, ids_of(row)) if given != wanted]
        done = done_of(tree, row, before, tree.run(*mode), said)
        told = said_of(said)
        return found + [f"{name}: explain said {told[name]!r}, the run made it {value!r}"
                        for name, value in done.items() if told[name] != value]
    finally:
        tree.remove()


class ExplainTest(TreeTest):
    def test_says_what_a_run_then_does(self):
        rows = [*decision_rows(), *due_rows(), *admin_rows(), *log_rows(), *program_rows(),
                *file_rows(), *home_rows()]
        rows.sort(key=lambda row: "locked" not in row.name)  # what takes seconds begins first
        for row, result in side_by_side(differences, rows):
            with self.subTest(row.name):
                found = "\n".join(result())
                self.assertFalse(found, "\n" + found)

    def test_tells_a_lock_of_the_log_for_which_a_run_would_wait_without_an_end(self):
        tree = self.tree()
        leave_log_lock(tree)
        log = tree.ctl_json("explain")["log"]
        self.assertEqual((log["id"], log["writes"]), ("log.lock-stuck", False), log["why"])

    def test_a_check_is_due_from_the_day_that_it_names_on(self):
        tree = self.tree()
        chance = random.Random(20240331)
        for _ in range(50):  # the rule itself is tried more often in check_schedule_test.cpp
            last = datetime.date(2019, 12, 31) + datetime.timedelta(chance.randrange(2000))
            frequency = chance.choice((0, 1, 2, 99))
            days = chance.choice((0, 1, 6, 7, 8, 27, 28, 29, 30, 31, 32))
            today = last + datetime.timedelta(days)
            tree.write(tree.prefs, {"LastDateCheck": f"{last}T10:00:00",
                                    "UpdaterPrefSchedCheckFreq": frequency})

            def check_at(day):
                return json.loads(tree.ctl("explain", "--json", "--at", str(day)).stdout)["check"]
            with self.subTest(last=str(last), frequency=frequency, today=str(today)):
                said = check_at(today)
                named = datetime.date.fromisoformat(said["next_due"])
                self.assertEqual(said["due"], named == today, said)
                self.assertTrue(check_at(named)["due"], f"on {named}")
                eve = named - datetime.timedelta(1)
                self.assertTrue(said["due"] or not check_at(eve)["due"], f"before {named}")

    def test_another_date_moves_the_date_alone(self):
        tree = self.tree()
        tree.set_today(datetime.date(2024, 3, 31))
        tree.install(tree.notifier, tree.library)
        tree.write(tree.prefs, {"LastDateCheck": "2024-03-31T10:00:00"})
        state, now = tree.state(), tree.ctl_json("explain")
        for day, due in (("2024-03-31", False), ("2024-04-01", True), ("2024-03-30", False)):
            with self.subTest(day):
                said = tree.ctl_json("explain", "--at", day)
                self.assertEqual((said["at"], said["check"]["due"]), (day, due))
                self.assertEqual(said["notifier"]["would_start"], due)
                moved = {"at", "check", "notifier"}
                self.assertEqual({name: said[name] for name in said if name not in moved},
                                 {name: now[name] for name in now if name not in moved})
        self.assertEqual(tree.state(), state)


if __name__ == "__main__":
    unittest.main()
