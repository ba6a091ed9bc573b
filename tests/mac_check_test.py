#!/usr/bin/env python3
"""Runs tools/mac-check with the programs of this build over stand-ins for Apple's tools."""

import os
import pathlib
import shutil
import signal
import subprocess
import time
import unittest

import packaging_test

SOURCE = pathlib.Path(__file__).resolve().parent.parent
BUILD = pathlib.Path(os.environ["WAKERLY_BUILD"])
# Does something with the keys of a property list.
PLIST = """/usr/bin/python3 -c 'import os, plistlib, subprocess, sys
file = {file}
keys = plistlib.load(open(file, "rb")){body}' "$@\""""
packaging_test.HEALTHY.update({
    "ipcrm": f'{shutil.which("ipcrm")} "$@"',
    "stat": f"""[[ $2 == "%d %i" ]] && exec {shutil.which("stat")} -c "$2" "$3"
{packaging_test.HEALTHY["stat"]}""",
    "open": PLIST.format(file="sys.argv[3] + \"/Contents/Info.plist\"", body="""
subprocess.run([sys.argv[3] + "/Contents/MacOS/" + keys["CFBundleExecutable"]], env=keys["LSEnvironment"])"""),
    "plutil": PLIST.format(file="sys.argv[5]", body="""
outer, _, inner = sys.argv[2].partition(".")
if inner: keys[outer][int(inner) if inner.isdigit() else inner] = sys.argv[4]
else: keys[outer] = sys.argv[4]
plistlib.dump(keys, open(file, "wb"))"""),
    "sw_vers": "echo 0.0.0",
    "uname": "echo arm64",
    "xcode-select": "",
    "xcodebuild": "printf 'Xcode 16.2\\nBuild version 16C5032a\\n'",
})
START = PLIST.format(file="sys.argv[1]", body="""
sys.exit(subprocess.run(keys["ProgramArguments"], env={**os.environ, **keys["EnvironmentVariables"]}).returncode)""")
# An agent that is loaded is a file; that of the logon runs at once.
LAUNCHCTL = f"""
agent=$TMPDIR/${{2##*/}}
case $1 in
  bootstrap) agent=$TMPDIR/$(basename "$3" .plist); cp "$3" "$agent"
             grep -q RunAtLoad "$3" || exit 0; set -- "$agent"; {START} && echo 0 >"$agent.code"; exit 0 ;;
  kickstart) set -- "$agent"; {START} && echo 0 >"$agent.code"; exit 0 ;;
  print) [[ $2 == */*/* ]] || exit 0; [[ -f $agent ]] || exit 113
         echo "last exit code = $(cat "$agent.code" 2>/dev/null || echo '(never exited)')" ;;
  bootout) [[ -f $agent ]] || exit 3; rm -f "$agent" "$agent.code" ;;
  unsetenv) exit 1 ;;  # and the rest is taken back all the same
esac
exit"""
OWN = {"launchctl": LAUNCHCTL, "sudo": '"$@"; exit'}
REPORT = """\
ok       the programs are signed for Apple silicon
ok       a run does what explain says
ok       its log
ok       doctor finds no more than what is not installed
ok       no lock is left
ok       log tells of the run
ok       a client library loads
ok       a run drives the installed client library
ok       a notifier starts
ok       a run starts the installed notifier
ok       the logon agent
ok       the scheduled agent
"""


class MacCheck(packaging_test.ScriptTest):
    def setUp(self):
        super().setUp()
        for tool in ("paste", "pkill", "sort", "touch", "tr"):
            if not (self.scratch / "bin" / tool).exists():
                (self.scratch / "bin" / tool).symlink_to(shutil.which(tool))
        for tool, does in OWN.items():
            self.stand_in(tool, does)
        self.build, self.root = self.scratch / "build", self.scratch / "root"
        (self.root / "Library/Application Support").mkdir(parents=True)
        shutil.copytree(BUILD / "samples", self.build / "samples", ignore=shutil.ignore_patterns("CMake*"))
        for program in ("wakerly", "wakerlyctl"):
            shutil.copy(BUILD / program, self.build)

    def check(self, *options):
        self.run_script(SOURCE / "tools/mac-check", *options, self.build, WAKERLY_ROOT=str(self.root))
        self.assert_nothing_left()

    def assert_nothing_left(self):
        self.assertEqual(os.listdir(self.scratch / "tmp"), [], "left behind")
        self.assertEqual(os.listdir(self.root / "Library/Application Support"), [], "left behind")

    def test_a_mac_on_which_all_is_well(self):
        self.check("--install")
        self.assertEqual((self.output.partition("\n")[2], self.errors, self.status), ("Xcode 16.2\n" + REPORT, "", 0))
        self.assertRegex(self.output, r"^wakerly [0-9.]+ on macOS 0\.0\.0, arm64\n")
        self.assertEqual(self.calls_of("sudo").count("\n"), 6)
        self.assertRegex(self.calls_of("ipcrm"), r"^(ipcrm -S [0-9]+\n){3}$", "the locks of the logs")

    def test_names_what_fails_and_why(self):
        program = 'exec "$0.real" "$@"'
        rows = (  # tool, what it does first, the line that is another one, its beginning
            ("codesign", "[[ $1 == --verify && $5 == */wakerly ]] && { echo no signature; exit 1; }",
             "the programs are signed for Apple silicon", "FAILED", "no signature"),
            ("wakerly", "exit 1", "a run does what explain says", "FAILED", 'exit status: expected "0", found "1"'),
            ("sw_vers", "echo 15.3; exit", "its log", "FAILED", "Mac OS 15.3.0"),
            ("wakerlyctl", '[[ $1 == doctor ]] && echo "problem  Bad. [log.bad]"',
             "doctor finds no more than what is not installed", "FAILED", "log.bad notifier.missing"),
            ("wakerlyctl", '[[ $1 == lock ]] && { echo "preferences  held"; exit; }', "no lock is left", "FAILED",
             "preferences held"),
            ("wakerlyctl", '[[ $1 == log ]] && { echo cut off; exit; }', "log tells of the run", "FAILED", "cut off"),
            ("wakerlyctl", '[[ $1 == try-library ]] && echo refused >&3', "a client library loads", "FAILED",
             "refused"),
            ("sudo", "[[ $1 == cp ]] && { echo may not; exit 1; }", "a run drives the installed client library",
             "FAILED", "may not"),
            ("open", "exit", "a notifier starts", "FAILED", "did not come"),
            ("wakerly", "[[ $1 == -mode=scheduled && -v NOTIFIER_TRACE ]] && exit",
             "a run starts the installed notifier", "FAILED", "did not come"),
            ("launchctl", "[[ $1 == kickstart ]] && { echo 78 >$TMPDIR/${2##*/}.code; exit; }", "the scheduled agent",
             "FAILED", 'exit code: expected "0", found "78"'),
            ("launchctl", "[[ $1 == print && $2 != */*/* ]] && exit 113", "the logon agent", "skipped",
             "not logged on"),
            ("launchctl", "[[ $1 == print && $2 != */*/* ]] && exit 113", "a notifier starts", "skipped",
             "not logged on"),
        )
        for tool, first, what, verdict, why in rows:
            with self.subTest(what=what, tool=tool):
                if tool in ("wakerly", "wakerlyctl"):
                    path = self.build / tool
                    path.rename(f"{path}.real")
                    path.write_text(f"#!/bin/bash\n{first}\n{program}\n")
                    path.chmod(0o755)
                else:
                    self.stand_in(tool, first + "\n" + OWN.get(tool, ""))
                self.check(*["--install"] * ("installed" in what))
                line = next(line for line in self.output.splitlines() if f" {what}: " in line)
                self.assertTrue(line.startswith(verdict), line)
                self.assertIn(why, self.output)
                self.assertEqual(self.status, 1 if verdict == "FAILED" else 0)
                if tool in ("wakerly", "wakerlyctl"):
                    pathlib.Path(f"{path}.real").rename(path)
                else:
                    self.stand_in(tool, OWN.get(tool, ""))

    def end_once_it_waits(self, waits):
        run = subprocess.Popen([SOURCE / "tools/mac-check", "--install", self.build],
                               stdout=subprocess.DEVNULL, env={
            "PATH": str(self.scratch / "bin"), "TMPDIR": str(self.scratch / "tmp"), "WAKERLY_ROOT": str(self.root),
            "CALLS": str(self.scratch / "calls")})
        deadline = time.monotonic() + 60
        while not waits.exists() and time.monotonic() < deadline:
            time.sleep(0.05)
        run.send_signal(signal.SIGTERM)
        self.assertEqual(run.wait(60), 143)
        self.assert_nothing_left()

    def test_takes_everything_back_when_it_is_ended(self):
        waits = self.scratch / "waits"
        never_ends = f"[[ $1 == print && -f $TMPDIR/${{2##*/}} ]] && {{ echo >{waits}; exit 113; }}\n"
        self.stand_in("launchctl", never_ends + LAUNCHCTL)
        self.stand_in("sleep", "exec /bin/sleep 1")
        self.end_once_it_waits(waits)

    def test_ends_the_run_that_it_waits_for_before_it_takes_everything_back(self):
        waits = self.scratch / "waits"
        (self.build / "wakerly").write_text(f"#!/bin/bash\necho $$ >{waits}.new\nmv {waits}.new {waits}\n"
                                            "exec /bin/sleep 60\n")
        self.end_once_it_waits(waits)
        with self.assertRaises(ProcessLookupError, msg="the run goes on"):
            os.kill(int(waits.read_text()), 0)

    def test_runs_nothing_where_its_home_folder_is_not_heeded(self):
        (self.build / "wakerlyctl").write_text("#!/bin/bash\necho 'log  goes to /Users/ann/orlanul.log, at level 2'\n")
        (self.build / "wakerly").write_text(f"#!/bin/bash\ntouch '{self.scratch}/ran'\n")
        self.check("--install")
        self.assertEqual((self.status, self.output.count("\n")), (1, 2), self.output)
        self.assertIn("mac-check: the programs look elsewhere than in the home folder", self.errors)
        self.assertFalse((self.scratch / "ran").exists())

    def test_refuses_a_machine_with_the_updater(self):
        library = self.root / "Library/Application Support/Vantre/VantreKDClient/kdupdater.dylib"
        library.parent.mkdir(parents=True)
        library.touch()
        self.run_script(SOURCE / "tools/mac-check", self.build, WAKERLY_ROOT=str(self.root))
        self.assertIn("the updater is installed here", self.errors)
        self.assertEqual((self.status, self.output, self.calls), (1, "", ""))


if __name__ == "__main__":
    unittest.main()
