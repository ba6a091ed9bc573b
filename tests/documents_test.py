"""Runs the commands that the documents show, and compares what they print with what the documents quote.

A block of commands stands behind a line that says what becomes of it, which no reader sees:

    <!-- run: STAGE -->       run over a fresh machine of that STAGE (see STAGES), in a folder of the document
    <!-- run: same -->        run over the machine as the block before left it
    <!-- run: source -->      run in the source tree
    <!-- file: NAME -->       written to NAME in the document's folder
    <!-- mac only: NAME -->   not run, since only a Mac has what it needs
    <!-- by hand: WHY -->     not run

In a manual page the line is a comment: .\\" run: STAGE. A command begins with "$ ", its further lines with "> ";
what stands below is its output, where "..." stands for any part of a line, and alone for any lines. The home
folder is written /Users/ann and the tree's root is left out, in both.
"""

import difflib
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent / "ctl"))
from tree import BUILD, SECONDS, SOURCE, TreeTest  # pylint: disable=wrong-import-position

MARKDOWN = sorted([SOURCE / "README.md", SOURCE / "CONTRIBUTING.md", *SOURCE.glob("docs/*.md")])
MANUALS = sorted(SOURCE.glob("packaging/*.8"))
KINDS = ("run", "file", "mac only", "by hand")
MARK = re.compile(rf'(?:<!--|\.\\") ({"|".join(KINDS)}): (.*?)(?: -->)?$')
# Begin a command although this machine may lack them.
FOREIGN = {"brew", "codesign", "journalctl", "launchctl", "lipo", "log", "otool", "sample", "sudo", "xcrun"}
END = "\x1e"

WEEKLY = {"LastDateCheck": "2026-11-13T09:30:00", "UpdaterPrefSchedCheckFreq": "1"}


def install(entries=None, *paths):
    """A machine with all that the programs look for, a weekly check that is due, and something changed."""
    def stage(tree):
        tree.install(tree.notifier, tree.library, *(getattr(tree, path) for path in paths))
        tree.write(tree.prefs, {**WEEKLY, **(entries or {})})
    return stage


def leave_a_lock(tree):
    install()(tree)
    name = re.search(r"semaphore (/\S+)", tree.ctl("lock").stdout).group(1)
    # No semaphore, but what the system shows of one.
    tree.semaphore = tree.write(pathlib.Path(f"/dev/shm/sem.{name[1:]}"))


def install_garbage(tree):
    install()(tree)
    tree.write(tree.library, "garbage")


STAGES = {
    "empty": lambda tree: None,
    "due": install(),
    "after a run": lambda tree: (install()(tree), tree.run()),
    "date ahead": install({"LastDateCheck": "2099-01-05T09:30:00"}),
    "level 3": install({"LogLevel": "3"}),
    "level unreadable": install({"LogLevel": "loud"}),
    "lock left behind": leave_a_lock,
    "malformed": lambda tree: (install()(tree), tree.write(
        tree.prefs, "<Preferences>\n<LogLevel>3</LogLevel>\n<ProxyServer>a & b</ProxyServer>\n</Preferences>\n")),
    "library is garbage": install_garbage,
    "suite installed": install(None, "suite"),
    "suppressed": lambda tree: (install()(tree), tree.write(tree.admin_prefs, {"Suppressed": "1"})),
}


class Block:
    """Some lines of code in a document, with what is to become of them."""

    def __init__(self, document, line, mark):
        self.place = f"{document.relative_to(SOURCE)}:{line}"
        self.kind, self.what = mark or (None, None)
        self.lines = []

    def commands(self):
        """Each command with the lines that it is to print."""
        found = []
        for line in self.lines:
            if line.startswith("$ "):
                found.append([line[2:], []])
            elif line.startswith("> ") and found and not found[-1][1]:
                found[-1][0] += "\n" + line[2:]
            elif found:
                found[-1][1].append(line)
        return found

    def looks_like_commands(self):
        words = [line.split()[0] for line in self.lines if line.strip()]
        return any(word == "$" or word in FOREIGN or word.startswith("./") or shutil.which(word)
                   for word in words[:1])


def markdown_blocks(document):
    blocks, mark, block = [], None, None
    for number, line in enumerate(document.read_text().splitlines(), 1):
        if line.startswith("    "):
            if block is None:
                block, mark = Block(document, number, mark), None
                blocks.append(block)
            block.lines += [""] * blank + [line[4:]]
        elif line.strip():
            block = None
            found = MARK.match(line)
            assert mark is None, f"{document}:{number}: there is no block behind the mark"
            mark = found and found.groups()
        blank = 0 if line.strip() else 1
    return blocks


def manual_blocks(document):
    escapes = {r"\e": "\\", r"\(dq": '"', r"\-": "-", r"\&": ""}
    blocks, mark, block = [], None, None
    for number, line in enumerate(document.read_text().splitlines(), 1):
        if line.startswith((".Bd -literal", ".Dl ")):
            block, mark = Block(document, number, mark), None
            blocks.append(block)
        if line.startswith(".Dl "):
            line = line[4:]
        elif line.startswith("."):
            block = None if line == ".Ed" else block
            found = MARK.match(line)
            mark = found.groups() if found else mark
            continue
        if block is not None:
            block.lines.append(re.sub(r"\\\(dq|\\.", lambda match: escapes[match[0]], line))
    return blocks


def matches(expected, found):
    """Whether the lines are those of the document, which may leave out some by "..."."""
    if not expected:
        return not found
    if expected[0] == "...":
        return any(matches(expected[1:], found[skipped:]) for skipped in range(len(found) + 1))
    pattern = ".*".join(re.escape(part) for part in expected[0].split("..."))
    return bool(found) and re.fullmatch(pattern, found[0]) is not None and matches(expected[1:], found[1:])


class DocumentsTest(TreeTest):
    counts = dict.fromkeys(KINDS, 0)
    skipped = []

    @classmethod
    def tearDownClass(cls):
        print(f"\ndocuments: {cls.counts['run']} commands run, {cls.counts['by hand']} to be run by hand, "
              f"{cls.counts['mac only']} that only a Mac can show skipped ({'; '.join(cls.skipped)})")

    def run_block(self, block, tree, folder):
        """Runs the commands in one shell, each of which must end with 0 unless its status is printed next."""
        commands = block.commands()
        ask = f"status=$?; printf '{END}%d{END}' $status; (exit $status)\n"
        script = "".join(f"{{ {command}\n}} 2>&1\n{ask}" for command, _ in commands)
        # The run's own notifier outlives it, and would write into a tree that goes.
        environment = {key: value for key, value in tree.environment.items() if key != "NOTIFIER_TRACE"}
        path = f"{BUILD}:{environment['PATH']}"
        done = subprocess.run(
            ["bash", "-c", script], cwd=SOURCE if block.what == "source" else folder, timeout=SECONDS,
            env={**environment, "PATH": path, "F": str(tree.folder), "R": str(tree.root), "BUILD": str(BUILD)},
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", check=False)
        output = done.stdout.replace(str(tree.home), "/Users/ann").replace(str(tree.root), "")
        said = output.split(END)
        for index, (command, expected) in enumerate(commands):
            with self.subTest(block=block.place, command=command):
                self.assertLess(2 * index + 1, len(said), "the shell ended before it:\n" + output)
                found = said[2 * index].splitlines()
                while expected and not expected[-1]:
                    expected.pop()
                if not matches(expected, found):
                    self.fail("other output:\n" + "\n".join(
                        difflib.unified_diff(expected, found, "the document", "the command", lineterm="")))
                following = commands[index + 1][0] if index + 1 < len(commands) else ""
                if "$?" not in following:
                    self.assertEqual(said[2 * index + 1], "0", "exit status; it printed:\n" + said[2 * index])
            self.counts["run"] += 1

    def check_document(self, blocks):
        folder = self.tree().top / "work"
        folder.mkdir()
        tree = None
        for block in blocks:
            if block.kind == "file":
                (folder / block.what).write_text("\n".join(block.lines) + "\n")
            elif block.kind == "run":
                if block.what != "same" or tree is None:
                    tree = self.tree()
                    tree.semaphore = tree.top / "none"
                    self.addCleanup(lambda made=tree: made.semaphore.unlink(missing_ok=True))
                    STAGES.get(block.what, STAGES["empty"])(tree)
                self.assertIn(block.what, {*STAGES, "same", "source"}, f"{block.place}: no such stage")
                self.assertTrue(block.commands(), f"{block.place}: no line begins with \"$ \"")
                self.run_block(block, tree, folder)
            elif block.kind:
                self.counts[block.kind] += len(block.commands())
                if block.kind == "mac only":
                    self.skipped.append(block.what)
            else:
                with self.subTest(block=block.place):
                    self.assertFalse(block.looks_like_commands(), "commands without a mark such as "
                                     "<!-- run: STAGE --> (see tests/documents_test.py)")


def anchors_of(text):
    """The names by which the headings of a Markdown text are linked."""
    headings = re.findall(r"^#+ (.*)$", text, re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


class InstalledTest(unittest.TestCase):
    """The documents as a user has them."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="wakerly-installed-")
        cls.addClassCleanup(folder.cleanup)
        cls.prefix = pathlib.Path(folder.name)
        subprocess.run(["cmake", "--install", BUILD, "--prefix", cls.prefix], stdout=subprocess.DEVNULL, check=True,
                       timeout=SECONDS)

    def test_links_lead_to_installed_documents_and_sections(self):
        documents = list(self.prefix.rglob("*.md"))
        self.assertEqual(sorted(path.name for path in documents),
                         sorted([*(path.name for path in MARKDOWN), "CHANGELOG.md"]))
        for document in documents:
            for target, anchor in re.findall(r"\]\((?!https:)([^)#]*)#?([^)]*)\)", document.read_text()):
                with self.subTest(document=document.name, target=target, anchor=anchor):
                    path = document.parent / target if target else document
                    self.assertTrue(path.is_file(), "a link to what is not installed")
                    if anchor:
                        self.assertIn(anchor, anchors_of(path.read_text()), "no such heading")

    def test_manual_pages_name_pages_and_files_that_are_installed(self):
        for manual in MANUALS:
            text = manual.read_text()
            pages = re.findall(r"^\.Xr (\S+) (\d)", text, re.MULTILINE)
            self.assertTrue(pages, manual)
            for page, section in pages:
                self.assertTrue((self.prefix / f"share/man/man{section}/{page}.{section}").is_file(), (manual, page))
            files = re.findall(r"^\.Pa (share/\S+)", text, re.MULTILINE)
            self.assertTrue(files, manual)
            for file in files:
                self.assertTrue((self.prefix / file).is_file(), (manual, file))

    def test_picture_of_a_run_is_that_of_its_text(self):
        drawn = subprocess.run([SOURCE / "tools/draw_run.py", SOURCE / "docs/run.txt"], capture_output=True, text=True,
                               timeout=SECONDS, check=True)
        self.assertEqual((SOURCE / "docs/run.svg").read_text(), drawn.stdout,
                         "tools/draw_run.py docs/run.txt >docs/run.svg makes it anew")


def add_test(document, blocks_of):
    name = re.sub(r"\W", "_", document.stem if document.suffix == ".md" else document.name)
    setattr(DocumentsTest, f"test_commands_of_{name}", lambda self: self.check_document(blocks_of(document)))


for path in MARKDOWN:
    add_test(path, markdown_blocks)
for path in MANUALS:
    add_test(path, manual_blocks)


if __name__ == "__main__":
    unittest.main()
