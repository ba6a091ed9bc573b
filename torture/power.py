"""A failure of the power at every point of a run's saves, on a small model of a disk.

The calls that change files are recorded with strace and replayed. Nobody flushes the folder, so a disk
may hold the names as they were after any of the calls so far; of a file's content it holds what was
flushed, and of the rest nothing, a part, zeros, or all.
"""

import dataclasses
import os
import re

from calls import strace, why_not
from machine import Tally, preferences

RECORDED = "openat write pwrite64 ftruncate fsync fdatasync rename link unlink unlinkat close".split()
# What the model would have to learn first.
UNKNOWN = "open creat writev pwritev pwritev2 truncate fallocate renameat renameat2 linkat".split()
CALL = re.compile(r"^\d+ +(\w+)\((.*)\) += (\d+)$")
TEXT = re.compile(r'"((?:\\x[0-9a-f]{2})*)"')
NUMBER = re.compile(r"\b\d+\b")


@dataclasses.dataclass(frozen=True)
class Call:
    """One line of a recording."""

    name: str
    texts: list     # in quotes
    numbers: list   # outside of them
    words: str      # all of the arguments but the quoted ones
    result: int

    @classmethod
    def parse(cls, line):
        """A call that succeeded; nothing for another one."""
        found = CALL.match(line)
        if not found:
            return None
        name, arguments, result = found.groups()
        words = TEXT.sub("", arguments)
        texts = [bytes.fromhex(text.replace("\\x", "")) for text in TEXT.findall(arguments)]
        return cls(name, texts, [int(number) for number in NUMBER.findall(words)], words, int(result))


@dataclasses.dataclass(eq=False)
class File:
    """The content of a file, as programs see it and as it was flushed."""

    content: bytes = b""
    flushed: bytes = b""

    def after_a_cut(self):
        """All that may be there when the power is back."""
        if self.content == self.flushed:
            return {self.content}
        size = len(self.content)
        half = self.content[:size // 2]
        return {self.flushed, b"", half, half.ljust(size, b"\0"), bytes(size), self.content}


class Disk:
    """Names, the files that they stand for, and the open ones."""

    def __init__(self, folder, files):
        self.folder = os.fsencode(folder)
        self.names = {os.fsencode(path): File(text, text) for path, text in files.items()}
        self.former_names = [dict(self.names)]
        self.open = {}

    def apply(self, call):
        """One call of a recording."""
        paths = [os.path.join(self.folder, text) for text in call.texts]
        if call.name == "openat":
            if "O_CREAT" in call.words:
                self.names.setdefault(paths[0], File())
            self.open[call.result] = self.names.get(paths[0])
            if "O_TRUNC" in call.words and paths[0] in self.names:
                self.names[paths[0]].content = b""
        elif call.name == "rename":
            self.names[paths[1]] = self.names.pop(paths[0])
        elif call.name == "link":
            self.names[paths[1]] = self.names[paths[0]]
        elif call.name in ("unlink", "unlinkat"):
            self.names.pop(paths[0], None)
        elif call.name == "close":
            self.open.pop(call.numbers[0], None)
        elif self.open.get(call.numbers[0]):
            self.change(self.open[call.numbers[0]], call)
        if self.names != self.former_names[-1]:
            self.former_names.append(dict(self.names))

    @staticmethod
    def change(file, call):
        """A call on an open file."""
        if call.name == "ftruncate":
            file.content = file.content[:call.numbers[1]].ljust(call.numbers[1], b"\0")
        elif call.name in ("fsync", "fdatasync"):
            file.flushed = file.content
        else:  # what is not written at a place goes to the end: that is the log
            at = call.numbers[-1] if call.name == "pwrite64" else len(file.content)
            text = call.texts[0][:call.result]
            file.content = file.content[:at].ljust(at, b"\0") + text + file.content[at + len(text):]

    def after_a_cut(self, path):
        """All that may stand under a name when the power is back; None for no file."""
        name = os.fsencode(path)
        found = set()
        for names in self.former_names:
            found |= names[name].after_a_cut() if name in names else {None}
        return found


def record(tree):
    """The calls of a run, in their order."""
    tree.run(strace(tree, "-xx", "-s", "1000000", "-e", "trace=" + ",".join(RECORDED + UNKNOWN)))
    lines = (tree.top / "trace").read_text().splitlines()
    return [call for call in map(Call.parse, lines) if call]


def cuts(recording, folder, files, path):
    """What may stand under a name, for each call after which the power fails."""
    disk = Disk(folder, files)
    for call in recording:
        disk.apply(call)
        yield call.name, disk.after_a_cut(path)


def judge(recording, path, before, allowed):
    """A tally of all cuts of one recording. `before` is the text in the file `path`, or None."""
    tally = Tally()
    files = {} if before is None else {path: before}
    for number, (name, contents) in enumerate(cuts(recording, path.parent, files, path)):
        for content in contents:
            where = f"cut after call {number + 1} of {len(recording)}, {name}: {content}"
            tally.count([] if content in allowed else [where])
    unknown = {call.name for call in recording} & set(UNKNOWN)
    if unknown:
        tally.count([f"calls that the model does not know: {unknown}"])
    if sum(call.name == "rename" for call in recording) != 2:
        tally.count(["the recording has not two renames: the run did not save twice"])
    unflushed = [call for call in recording if call.name not in ("fsync", "fdatasync")]
    if all(contents <= allowed for _, contents in cuts(unflushed, path.parent, files, path)):
        tally.count(["without its flushes the recording loses nothing either: the model cannot fail"])
    return tally


def existing_file(tree):
    """A file is replaced."""
    tree.reset()
    return judge(record(tree), tree.prefs, tree.states[0], set(tree.states))


def no_file(tree):
    """No file is there before."""
    tree.reset()
    tree.prefs.unlink()
    entries = [("StartupLogFile", tree.log), ("LogLevel", "2")]
    return judge(record(tree), tree.prefs, None,
                 {None, preferences(*entries[:1]), preferences(*entries)})


def link(tree):
    """The file at the end of a symbolic link is replaced, and the link stays."""
    tree.reset()
    tree.put_link()
    recording = record(tree)
    tally = judge(recording, tree.linked, tree.states[0], set(tree.states))
    if any(os.fsencode(tree.prefs) in call.texts for call in recording
           if call.name in ("rename", "unlink")):
        tally.count(["a call changes the link"])
    return tally


def try_cuts(case):
    """What tries one case."""

    def attempt(bench, _seconds):
        tree = bench.trees[0]
        reason = why_not(tree)
        return f"not tried: {reason}" if reason else case(tree).text("states of the disk")

    return attempt


FAULTS = [("power cut, a file", 0.1, try_cuts(existing_file)),
          ("power cut, no file", 0.1, try_cuts(no_file)),
          ("power cut, a link", 0.1, try_cuts(link))]
