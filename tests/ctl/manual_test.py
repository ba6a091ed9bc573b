"""The manual page and the completions tell what the program takes: each command, option and identifier."""

import os
import pty
import re
import select
import subprocess
import tempfile
import time
import unittest

from tree import SOURCE, WAKERLYCTL, SECONDS, TreeTest

COMPLETIONS = SOURCE / "packaging/completions"
ASK_BASH = """
source "$1"; shift
COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
_wakerlyctl; printf '%s\\n' "${COMPREPLY[@]}"
"""
# zsh completes on a terminal alone: what would be offered is printed there, each on a line with a mark.
ZSHRC = """
PS1= RPS1= ; unset zle_bracketed_paste; fpath=("$COMPLETIONS" $fpath)
autoload -Uz compinit; compinit -D -u; bindkey '^I' complete-word
compadd() {
  if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\\ * ]]; then builtin compadd "$@"; return; fi
  local -a hits; builtin compadd -A hits "$@"; print -l -- offered:${^hits}
}
comppostfuncs=(finish); finish() { print finished }
print ready
"""


def options(help_text):
    return set(re.findall(r"(?<![\w-])--[a-z][a-z-]*", help_text))


class ManualTest(TreeTest):
    def setUp(self):
        self.machine = self.tree()
        self.manual = (SOURCE / "packaging/wakerlyctl.8").read_text().replace("\\-", "-")
        usage = self.machine.ctl("--help").stdout
        self.commands = re.findall(r"^  ([a-z]+) ", usage[usage.index("Subcommands"):], re.MULTILINE)
        self.options = {command: options(self.machine.ctl(command, "--help").stdout)
                        for command in self.commands}
        self.options[""] = options(usage)

    def test_manual_has_each_command_option_and_identifier(self):
        for command in self.commands:
            self.assertRegex(self.manual, rf"\.It Cm {command}\b", "a command is not in the manual page")
            for option in self.options[command]:
                self.assertIn(f"Fl -{option[2:]}", self.manual, f"an option of {command} is not in the manual page")
        for row in self.machine.ctl_json("ids")["identifiers"]:
            self.assertTrue(f".It Li {row['id']} {row['meaning']} ." in " ".join(self.manual.split()),
                            f"not in the manual page: {row}")

    def offered_by_bash(self, *words):
        environment = dict(self.machine.environment, PATH=f"{WAKERLYCTL.parent}:{os.environ['PATH']}")
        said = subprocess.run(["bash", "-c", ASK_BASH, "bash", COMPLETIONS / "wakerlyctl.bash", *words],
                              env=environment, capture_output=True, text=True, timeout=SECONDS, check=True)
        self.assertEqual(said.stderr, "")
        return set(said.stdout.split())

    def offered_by_zsh(self, *words):
        with tempfile.TemporaryDirectory() as folder:
            with open(f"{folder}/.zshrc", "w", encoding="utf-8") as file:
                file.write(ZSHRC)
            environment = dict(self.machine.environment, ZDOTDIR=folder, COMPLETIONS=str(COMPLETIONS), TERM="dumb",
                               PATH=f"{WAKERLYCTL.parent}:{os.environ['PATH']}")
            child, terminal = pty.fork()
            if child == 0:
                os.execvpe("zsh", ["zsh", "-d", "-i"], environment)
            said, asked, deadline = "", False, time.monotonic() + SECONDS
            while "finished" not in said and time.monotonic() < deadline:
                if select.select([terminal], [], [], 1)[0]:
                    said += os.read(terminal, 65536).decode(errors="replace")
                if "ready" in said and not asked:
                    os.write(terminal, (" ".join(words) + "\t").encode())
                    asked = True
            os.close(terminal)
            os.waitpid(child, 0)
        return set(re.findall(r"offered:(\S+)", said))

    def test_completions_offer_each_command_and_option(self):
        for shell, offered in (("bash", self.offered_by_bash), ("zsh", self.offered_by_zsh)):
            with self.subTest(shell=shell):
                self.assertLessEqual(set(self.commands), offered("wakerlyctl", ""))
                for command in self.commands:
                    self.assertEqual(offered("wakerlyctl", command, "--"), self.options[command], command)

    def test_completions_offer_the_keys_of_the_preferences(self):
        for shell, offered in (("bash", self.offered_by_bash), ("zsh", self.offered_by_zsh)):
            with self.subTest(shell=shell):
                self.assertEqual(offered("wakerlyctl", "prefs", "LastDate"), {"LastDateCheck"})

    def test_completions_run_nothing_that_stands_in_the_preferences(self):
        ran = self.machine.top / "ran"
        entry = f'<MapPrefEntry MapPrefKey="key">$(&gt;{ran})</MapPrefEntry>'
        self.machine.write(self.machine.prefs, {"NotificationMessage": entry})
        for shell, offered in (("bash", self.offered_by_bash), ("zsh", self.offered_by_zsh)):
            ran.unlink(missing_ok=True)
            with self.subTest(shell=shell):
                self.assertEqual(offered("wakerlyctl", "prefs", "LastDate"), {"LastDateCheck"})
                self.assertFalse(ran.exists())


if __name__ == "__main__":
    unittest.main()
