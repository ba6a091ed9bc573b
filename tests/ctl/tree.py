"""A machine's folder tree with a home folder, and the two programs run on it."""

import base64
import concurrent.futures
import ctypes
import datetime
import hashlib
import json
import os
import pathlib
import shutil
import stat
import struct
import subprocess
import tempfile
import time
import unittest

import jsonschema

BUILD = pathlib.Path(os.environ["WAKERLY_BUILD"])
SOURCE = pathlib.Path(os.environ["WAKERLY_SOURCE"])
WAKERLY = BUILD / "wakerly"
WAKERLYCTL = BUILD / "wakerlyctl"
SECONDS = 60  # that a program gets
LIBC = ctypes.CDLL(None, use_errno=True)
LIBC.sem_open.restype = ctypes.c_void_p
IPC_CREAT, IPC_EXCL, IPC_RMID = 0o1000, 0o2000, 0  # <sys/ipc.h>
PIPES = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE}
ORDINARY = 65534  # the user and group called nobody


def prefs_text(entries):
    """A preference file: each value is a text, or XML where it begins with "<"."""
    body = "".join(f"<{key}>{value}</{key}>\n" for key, value in entries.items())
    return f'<?xml version="1.0" encoding="UTF-8" ?>\n<Preferences>\n{body}</Preferences>\n'


def log_key(path):
    """The key of the semaphore set that guards the log."""
    return LIBC.ftok(bytes(path), 11)


def check_schema(command, output):
    schema = json.loads((SOURCE / "docs/schemas" / f"{command}.json").read_text())
    jsonschema.validate(output, schema, jsonschema.Draft7Validator)


def side_by_side(task, rows):
    """Each row with what gives the task's result on it, or raises what the task did: rows wait more than they work."""
    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        yield from [(row, pool.submit(task, row).result) for row in rows]


class Tree:
    """A fresh tree with what a run needs, but for preferences, notifier and library."""

    def __init__(self):
        self.top = pathlib.Path(tempfile.mkdtemp(prefix="wakerly-ctl-")).resolve()
        self.root, self.home = self.top / "root", self.top / "home"
        self.support = self.root / "Library/Application Support"
        self.folder = self.home / "Library/Application Support/Vantre/OrlanUpdater/1.0"
        self.prefs = self.folder / "VantreUpdaterPrefs.dat"
        self.log = self.folder / "orlanul.log"
        self.inventory = self.support / "Vantre/OrlanUpdaterInventory/1.0"
        self.admin_prefs = self.inventory / "VantreUpdaterAdminPrefs.dat"
        self.stamp = self.inventory / "uninstallts"
        self.agent = self.home / "Library/LaunchAgents/com.vantre.VantreOrlanUpdater-1.0.plist"
        self.bundle = self.support / "Vantre/Welko/Tarnik/Brevo/Orlan Updates Notifier.app"
        self.notifier = self.bundle / "Contents/MacOS/Orlan Updates Notifier"
        self.library = self.support / "Vantre/VantreKDClient/kdupdater.dylib"
        self.suite = self.root / "Applications/Utilities/Vantre Lumora/Lumdesk/Lumora.app"
        for folder in (self.support, self.home, self.top / "tmp"):
            folder.mkdir(parents=True)
        self.environment = {
            "PATH": os.environ["PATH"], "HOME": str(self.home), "WAKERLY_ROOT": str(self.root),
            "TMPDIR": str(self.top / "tmp"), "TZ": "UTC", "KDUPDATER_CALLBACK": "request",
            "NOTIFIER_TRACE": str(self.top / "notified"), "KDUPDATER_TRACE": str(self.top / "asked")}
        self.programs, self.options = {}, {}

    def write(self, path, content=""):
        """Makes the file with its folders; a dictionary is written as preferences."""
        path.parent.mkdir(parents=True, exist_ok=True)
        text = prefs_text(content) if isinstance(content, dict) else content
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    def install(self, *paths):
        """Puts the sample notifier or library in its place, anything else as a text."""
        samples = {self.notifier: "notifier", self.library: "kdupdater.dylib"}
        for path in paths:
            self.write(path, "something")
            if path in samples:
                shutil.copy(BUILD / "samples" / samples[path], path)

    def set_today(self, day):
        """From here on it is noon of that day for the programs: in a time zone that far off."""
        noon = datetime.datetime.combine(day, datetime.time(12), datetime.timezone.utc)
        offset = round(noon.timestamp() - time.time())
        counts = struct.pack(">6i", 0, 0, 0, 0, 1, 4)  # tzfile(5): one type, four letters
        self.write(self.top / "zone",
                   b"TZif" + bytes(16) + counts + struct.pack(">i2B", offset, 0, 0) + b"NOW\0")
        self.environment["TZ"] = str(self.top / "zone")

    def give_away(self):
        """Makes it an ordinary user's tree; only root can."""
        self.top.chmod(0o755)
        for path in [self.top, *self.top.rglob("*")]:
            os.chown(path, ORDINARY, ORDINARY, follow_symlinks=False)

    def become_ordinary(self):
        """From here on the programs run as an ordinary user, whose tree it is: the test's own user,
        or nobody where that is root."""
        if os.geteuid() != 0:
            return
        self.programs = {program: shutil.copy(program, self.top) for program in (WAKERLY, WAKERLYCTL)}
        self.options = {"user": ORDINARY, "group": ORDINARY, "extra_groups": []}
        self.give_away()

    def start(self, program, *arguments, **options):
        return subprocess.run([self.programs.get(program, program), *arguments],
                              env=self.environment, cwd=self.top, timeout=SECONDS, text=True,
                              check=False, **PIPES | self.options | options)

    def run(self, *arguments):
        """Runs wakerly to its end, and what it started."""
        outcome = self.start(WAKERLY, *arguments)
        deadline = time.monotonic() + SECONDS
        while self.processes():
            assert time.monotonic() < deadline, f"still run: {self.processes()}"
            time.sleep(0.01)
        return outcome

    def processes(self):
        """The numbers of those that were started in the tree's folder."""
        def is_of_the_tree(process):
            try:
                return os.readlink(process / "cwd") == str(self.top)
            except OSError:  # another user's, or over
                return False
        return [path.name for path in pathlib.Path("/proc").glob("[0-9]*") if is_of_the_tree(path)]

    def ctl(self, *arguments, **options):
        return self.start(WAKERLYCTL, *arguments, **options)

    def ctl_json(self, command, *arguments):
        """What the command says for machines, once it was seen to keep to its schema."""
        said = self.ctl(command, *arguments, "--json")
        assert said.returncode in (0, 1), said
        output = json.loads(said.stdout)
        check_schema(command, output)
        return output

    def state(self):
        """All that could change below the tree, by path."""
        def look(path):
            try:
                status = path.lstat()
            except PermissionError:
                return None  # in a closed folder
            is_readable = stat.S_ISREG(status.st_mode) and os.access(path, os.R_OK)
            content = path.read_bytes() if is_readable else None
            return (status.st_mode, status.st_uid, status.st_gid, status.st_size,
                    status.st_mtime_ns, status.st_ctime_ns, status.st_ino, content)
        return {str(path): look(path) for path in [self.top, *self.top.rglob("*")]}

    def remove(self):
        """With the locks of the preference files, and the semaphore sets of the logs, which a run leaves."""
        for prefs in (self.prefs, self.admin_prefs):
            lock_file(prefs).unlink(missing_ok=True)
        for log in self.top.rglob("*.log"):
            left = LIBC.semget(log_key(log), 0, 0)
            if left != -1:
                LIBC.semctl(left, 0, IPC_RMID)
        for folder in self.top.rglob("*"):
            if folder.is_dir() and not folder.is_symlink():
                folder.chmod(0o700)
        shutil.rmtree(self.top)


def semaphore(prefs):
    """The name of the preference file's lock."""
    return "/" + base64.b64encode(hashlib.md5(bytes(prefs)).digest()).decode().replace("/", "_")


def lock_file(prefs):
    """What the system shows of that lock."""
    return pathlib.Path("/dev/shm/sem." + semaphore(prefs)[1:])


def leave_lock(prefs, age=0):
    """As by a process that made that lock `age` seconds ago, and was killed."""
    made = LIBC.sem_open(semaphore(prefs).encode(), os.O_CREAT | os.O_EXCL, 0o700, 1)
    assert made, prefs
    LIBC.sem_close(ctypes.c_void_p(made))
    os.utime(lock_file(prefs), (time.time() - age,) * 2)


def leave_log_lock(tree):
    """As by a program that made the set, counted itself, and was killed."""
    child = os.fork()
    if child == 0:
        log_set = LIBC.semget(log_key(tree.write(tree.log)), 2, 0o1666)
        for semaphore_number, value in ((0, 1), (1, 0)):  # the count, and whether it is free
            LIBC.semctl(log_set, semaphore_number, 16, value)  # SETVAL
        os._exit(0)
    os.waitpid(child, 0)


class TreeTest(unittest.TestCase):
    """A test with trees that are gone at its end."""

    def tree(self):
        tree = Tree()
        self.addCleanup(tree.remove)
        return tree
