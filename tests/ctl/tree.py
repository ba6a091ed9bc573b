"""A machine's folder tree with a home folder, and the two programs run on it."""

import json
import os
import pathlib
import shutil
import stat
import subprocess
import tempfile
import unittest

import jsonschema

BUILD = pathlib.Path(os.environ["WAKERLY_BUILD"])
SOURCE = pathlib.Path(os.environ["WAKERLY_SOURCE"])
WAKERLY = BUILD / "wakerly"
WAKERLYCTL = BUILD / "wakerlyctl"
SECONDS = 60  # that a program gets


def prefs_text(entries):
    """A preference file: each value is a text, or XML where it begins with "<"."""
    body = "".join(f"<{key}>{value}</{key}>\n" for key, value in entries.items())
    return f'<?xml version="1.0" encoding="UTF-8" ?>\n<Preferences>\n{body}</Preferences>\n'


def check_schema(command, output):
    schema = json.loads((SOURCE / "docs/schemas" / f"{command}.json").read_text())
    jsonschema.validate(output, schema, jsonschema.Draft7Validator)


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

    def start(self, program, *arguments, **options):
        return subprocess.run([program, *arguments], env=self.environment, timeout=SECONDS,
                              capture_output=True, text=True, check=False, **options)

    def run(self, *arguments):
        """Runs wakerly to its end."""
        return self.start(WAKERLY, *arguments)

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
            status = path.lstat()
            content = path.read_bytes() if stat.S_ISREG(status.st_mode) else None
            return (status.st_mode, status.st_uid, status.st_gid, status.st_size,
                    status.st_mtime_ns, status.st_ctime_ns, status.st_ino, content)
        return {str(path): look(path) for path in [self.top, *self.top.rglob("*")]}

    def remove(self):
        for folder in self.top.rglob("*"):
            if folder.is_dir() and not folder.is_symlink():
                folder.chmod(0o700)
        shutil.rmtree(self.top)


class TreeTest(unittest.TestCase):
    """A test with trees that are gone at its end."""

    def tree(self):
        tree = Tree()
        self.addCleanup(tree.remove)
        return tree
