#!/usr/bin/env python3
"""Runs the scripts of the macOS package over stand-ins for Apple's tools, which write down every call.

A script finds the stand-ins and a few of the real tools, and nothing else. Calls are compared as lines, quoted as
bash does it, with MADE, BUILD and WORK for the folders of the package, the build and the script.
"""

import os
import pathlib
import plistlib
import re
import shlex
import shutil
import subprocess
import tempfile
import unittest

PACKAGING = pathlib.Path(__file__).resolve().parent.parent / "packaging"
MACOS = PACKAGING / "macos"
COPY = "Library/LaunchAgents/com.vantre.VantreOrlanUpdater-1.0.plist"  # of the scheduled agent, in a home folder
UPDATER = "Library/Application Support/Vantre/OrlanUpdater/1.0"
REAL_TOOLS = ("awk", "basename", "cat", "cp", "dirname", "echo", "grep", "install", "mkdir", "mktemp", "mv", "rm",
              "rmdir", "sed", "sort", "tee", "xargs")

# What each stand-in does after it has written down its call: a Mac on which all is well.
HEALTHY = {
    "codesign": "",
    "lipo": "echo x86_64 arm64",
    "otool": """
        case $3 in
          -L) printf '%s (architecture %s):\\n\\t%s (compatibility version 1.0.0, current version 1.0.0)\\n' \\
                "$4" "$2" /usr/lib/libSystem.B.dylib
              printf '\\t/System/Library/Frameworks/Foundation.framework/Versions/C/Foundation (current)\\n' ;;
          -P) echo 'Contents of (__TEXT,__info_plist) section'; sed s/@PROJECT_VERSION@/1.2.3/ "$INFO_PLIST" ;;
        esac""",
    "pkgbuild": 'cp -Rp "$2" "$MADE/root"; cp -Rp "$4" "$MADE/scripts"; echo component >"${@: -1}"',
    "pkgutil": """
        case $1 in
          --expand) mkdir "$3"; echo '<pkg-info overwrite-permissions="true" auth="root"/>' >"$3/PackageInfo" ;;
          --flatten) cp "$2/PackageInfo" "$3" ;;
        esac""",
    "productbuild": """
        case $1 in
          --synthesize) cat "$3" >"${@: -1}" ;;
          --distribution) cat "$2" "$4/component.pkg" >"${@: -1}" ;;
        esac""",
    "xcrun": """
        case "$1 $2 $3" in
          *x86_64) printf '      cmd LC_VERSION_MIN_MACOSX\\n  cmdsize 16\\n  version 10.13\\n      sdk 14.0\\n' ;;
          *arm64) printf '      cmd LC_BUILD_VERSION\\n    minos 11.0\\n     tool LD\\n  version 1022.1\\n' ;;
          'notarytool submit '*) printf 'Current status: Accepted...\\n  id: 42-1\\n  status: Accepted\\n' ;;
        esac""",
    "id": "(($# == 1)) && echo 0 || echo 501",
    "launchctl": "",
    "ps": """
        for session in 0 501 502; do
          echo "  $session /System/Library/CoreServices/loginwindow.app/Contents/MacOS/loginwindow"
          echo "  $session /usr/sbin/cfprefsd"
        done""",
    "sleep": "",
    "stat": 'case $* in *console) echo ann ;; *Shared | -f*ben) echo 0 ;; *) echo 501 ;; esac',
    "sudo": 'shift 2; "$@"',
}

IDENTITIES = {"WAKERLY_SIGN_APPLICATION": "Application: V", "WAKERLY_SIGN_INSTALLER": "Installer: V"}
NOTARISED = {**IDENTITIES, "WAKERLY_NOTARY_PROFILE": "notary"}

# Users/Shared belongs to root, and everybody can lay something there; the second file is another program's.
OTHERS = [f"Users/Shared/{COPY}", "Users/ann/Library/LaunchAgents/com.other.plist"]


def prints(*lines):
    """What a stand-in does that prints these lines and nothing else."""
    return f"{{ printf '%s\\n' {' '.join(map(shlex.quote, lines))}; exit; }}"


class ScriptTest(unittest.TestCase):
    """A scratch folder with stand-ins, and one script run in it."""

    def setUp(self):
        self.scratch = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="wakerly-packaging.")))
        for folder in ("bin", "build", "made", "tmp"):
            (self.scratch / folder).mkdir()
        for tool in REAL_TOOLS:
            (self.scratch / "bin" / tool).symlink_to(shutil.which(tool))
        for tool in HEALTHY:
            self.stand_in(tool)
        for program in ("wakerly", "wakerlyctl"):
            (self.scratch / "build" / program).write_text(program)

    def stand_in(self, tool, first=""):
        """Has a tool do something first."""
        path = self.scratch / "bin" / tool
        path.unlink(missing_ok=True)
        path.write_text(f"#!/bin/bash\n{{ printf %s {tool}; printf ' %q' \"$@\"; echo; }} >>\"$CALLS\"\n"
                        f"{first}\n{HEALTHY[tool] or 'true'}\n")
        path.chmod(0o755)

    def run_script(self, script, *arguments, **variables):
        """Sets calls, status, output and errors."""
        calls = self.scratch / "calls"
        calls.write_text("")
        made = self.scratch / "made"
        result = subprocess.run([script, *arguments], capture_output=True, text=True, timeout=60, check=False, env={
            "PATH": str(self.scratch / "bin"), "TMPDIR": str(self.scratch / "tmp"), "CALLS": str(calls),
            "MADE": str(made), "INFO_PLIST": str(MACOS / "Info.plist.in"), **variables})
        names = {str(made): "MADE", str(self.scratch / "build"): "BUILD", str(MACOS): "PACKAGING",
                 str(self.scratch / "disk"): "DISK"}

        def named(text):
            for folder, name in names.items():
                text = text.replace(folder, name)
            return re.sub(re.escape(str(self.scratch)) + r"/tmp/tmp\.\w+", "WORK", text)
        self.status, self.calls = result.returncode, named(calls.read_text())
        self.output, self.errors = named(result.stdout), named(result.stderr)

    def calls_of(self, *tools):
        return "".join(line for line in self.calls.splitlines(True) if line.split()[0] in tools)


class BuildPackage(ScriptTest):
    def build(self, **variables):
        self.run_script(MACOS / "build-package", self.scratch / "build", self.scratch / "made/W.pkg", **variables)
        self.made = (self.scratch / "made/W.pkg").exists()
        self.assertEqual(os.listdir(self.scratch / "tmp"), [], "left behind")

    def test_checks_signs_packs_notarises_and_staples_in_this_order(self):
        self.build(**NOTARISED)
        self.maxDiff = None
        checks = "".join(f"""\
lipo -archs BUILD/{program}
otool -arch x86_64 -L BUILD/{program}
otool -arch arm64 -L BUILD/{program}
xcrun vtool -arch x86_64 -show-build BUILD/{program}
xcrun vtool -arch arm64 -show-build BUILD/{program}
""" for program in ("wakerly", "wakerlyctl"))
        updater = f"WORK/root/{UPDATER}".replace(" ", r"\ ")
        signature = (r"--timestamp --options runtime --entitlements PACKAGING/wakerly.entitlements "
                     r"--sign Application:\ V")
        self.assertEqual(self.errors.splitlines()[-1:], ["  status: Accepted"])
        self.assertEqual(self.calls, checks + f"""\
otool -arch x86_64 -P BUILD/wakerly
otool -arch arm64 -P BUILD/wakerly
otool -arch x86_64 -P BUILD/wakerly
otool -arch arm64 -P BUILD/wakerly
codesign --force --identifier com.vantre.Wakerly {signature} {updater}/wakerly
codesign --verify --strict {updater}/wakerly
codesign --force --identifier com.vantre.Wakerlyctl {signature} WORK/root/usr/local/bin/wakerlyctl
codesign --verify --strict WORK/root/usr/local/bin/wakerlyctl
pkgbuild --root WORK/root --scripts PACKAGING/scripts --ownership recommended --identifier com.vantre.Wakerly \
--version 1.2.3 WORK/built.pkg
pkgutil --expand WORK/built.pkg WORK/expanded
pkgutil --flatten WORK/expanded WORK/component.pkg
productbuild --synthesize --product WORK/requirements.plist --package WORK/component.pkg WORK/distribution.xml
productbuild --distribution WORK/distribution.xml --package-path WORK --timestamp --sign Installer:\\ V \
WORK/product/W.pkg
xcrun notarytool submit WORK/product/W.pkg --keychain-profile notary --wait
xcrun stapler staple WORK/product/W.pkg
""")
        self.assertEqual(self.status, 0)
        self.assertTrue(self.made)

    def test_without_identities_signs_ad_hoc_and_says_that_it_is_not_notarised(self):
        self.build()
        self.assertEqual(re.sub(r"(\\ |\S)+/", "", self.calls_of("codesign", "productbuild")), """\
codesign --force --identifier com.vantre.Wakerly --sign - wakerly
codesign --verify --strict wakerly
codesign --force --identifier com.vantre.Wakerlyctl --sign - wakerlyctl
codesign --verify --strict wakerlyctl
productbuild --synthesize --product requirements.plist --package component.pkg distribution.xml
productbuild --distribution distribution.xml --package-path WORK W.pkg
""")
        self.assertNotIn("notarytool", self.calls)
        self.assertEqual(self.errors,
                         "build-package: not notarised: no keychain profile in WAKERLY_NOTARY_PROFILE\n")
        self.assertEqual((self.status, self.made), (0, True))

    def test_installs_what_the_agents_start_with_rights_for_everybody(self):
        self.build()
        root = self.scratch / "made/root"
        found = {str(path.relative_to(root)): f"{path.stat().st_mode & 0o777:o}"
                 for path in root.rglob("*") if path.is_file()}
        pages = {f"usr/local/share/man/man8/{page.name}": "644" for page in PACKAGING.glob("*.8")}
        source = PACKAGING.parent
        for name in ("*.md", "docs/*.md", "docs/*.svg", "docs/**/*.json"):
            pages.update({f"Library/Documentation/Wakerly/{path.relative_to(source)}": "644"
                          for path in source.glob(name)})
        self.assertEqual(found, {
            "Library/LaunchAgents/com.vantre.Wakerly-1.0.plist": "644",
            f"{UPDATER}/com.vantre.VantreOrlanUpdater-1.0.plist": "644", f"{UPDATER}/uninstall": "755",
            f"{UPDATER}/wakerly": "755", "usr/local/bin/wakerlyctl": "755",
            "usr/local/share/zsh/site-functions/_wakerlyctl": "644", **pages})
        self.assertIn("usr/local/share/man/man8/wakerly.8", pages)
        self.assertEqual({f"{path.stat().st_mode & 0o777:o}" for path in root.rglob("*") if path.is_dir()}, {"755"})
        self.assertTrue(os.access(self.scratch / "made/scripts/postinstall", os.X_OK))
        for agent in root.rglob("*.plist"):
            keys = plistlib.loads(agent.read_bytes())
            self.assertEqual(keys["Label"], agent.stem)
            self.assertIn(keys["ProgramArguments"][0].lstrip("/"), found)

    def test_asks_for_the_oldest_system_and_leaves_the_owners_of_folders(self):
        newer = f"[[ $3 == x86_64 ]] && {prints('cmd LC_BUILD_VERSION', 'minos 11.0')}"
        for oldest, first in (("10.13", ""), ("11.0", newer)):
            with self.subTest(oldest=oldest):
                self.stand_in("xcrun", first)
                self.build(WAKERLY_OLDEST_SYSTEM=oldest)
                package = (self.scratch / "made/W.pkg").read_text()
                self.assertRegex(package, rf"<key>os</key>\s*<array>\s*<string>{re.escape(oldest)}</string>")
                self.assertIn('overwrite-permissions="false"', package)
                shutil.rmtree(self.scratch / "made")
                (self.scratch / "made").mkdir()

    def test_refuses_what_would_not_run_or_be_notarised(self):
        versionless = self.scratch / "Info.plist"
        versionless.write_text("<key>CFBundleIdentifier</key>\n<string>com.vantre.Wakerly</string>\n")
        library = "printf '\\t%s (compatibility)\\n'"
        rows = (  # what is wrong, tool, what it does first, variables, the end of the error
            ("one architecture", "lipo", "echo arm64; exit", {}, 'wakerly: expected "arm64 x86_64", found "arm64"'),
            ("of wakerlyctl, too", "lipo", "[[ $2 == *ctl ]] && exit", {},
             'wakerlyctl: expected "arm64 x86_64", found ""'),
            ("library of a package manager", "otool",
             f"[[ $* == *arm64\\ -L* ]] && {library} /opt/homebrew/lib/libb.dylib", {},
             'expected "", found "/opt/homebrew/lib/libb.dylib"'),
            ("library beside it", "otool", f"[[ $* == *-L*ctl ]] && {library} @rpath/libc++.1.dylib", {},
             'expected "", found "@rpath/libc++.1.dylib"'),
            ("otool fails", "otool", "echo broken >&2; exit 1", {}, "broken"),
            ("too new for Intel", "xcrun", f"[[ $3 == x86_64 ]] && {prints('cmd LC_BUILD_VERSION', 'minos 11.0')}", {},
             'oldest system of BUILD/wakerly on x86_64: expected "10.13", found "11.0"'),
            ("too new for arm64", "xcrun",
             f"[[ $* == *arm64*ctl ]] && {prints('cmd LC_BUILD_VERSION', 'minos 12.0')}", {},
             'oldest system of BUILD/wakerlyctl on arm64: expected "11.0", found "12.0"'),
            ("no Info.plist", "otool", "[[ $* == *arm64\\ -P* ]] && exit", {},
             'Info.plist on arm64: expected "com.vantre.Wakerly", found ""'),
            ("no version", "lipo", "", {"INFO_PLIST": str(versionless)}, "there is no version in wakerly's Info.plist"),
            ("two versions", "otool",
             "[[ $* == *arm64\\ -P* ]] && { sed s/@PROJECT_VERSION@/1.2.4/ \"$INFO_PLIST\"; exit; }", {},
             'version in wakerly\'s Info.plist on arm64: expected "1.2.3", found "1.2.4"'),
            ("oldest system that nothing is built for", "lipo", "", {"WAKERLY_OLDEST_SYSTEM": "10.9"},
             "WAKERLY_OLDEST_SYSTEM is neither 10.13 nor 11.0: 10.9"),
            ("to be notarised, but not signed", "lipo", "", {"WAKERLY_NOTARY_PROFILE": "notary",
                                                             "WAKERLY_SIGN_APPLICATION": "A"},
             "both identities are needed: WAKERLY_SIGN_APPLICATION and WAKERLY_SIGN_INSTALLER"),
        )
        for what, tool, first, variables, error in rows:
            with self.subTest(what):
                self.stand_in(tool, first)
                self.build(**variables)
                self.stand_in(tool)
                self.assertTrue(self.errors.endswith(error + "\n"), self.errors)
                self.assertEqual(self.calls_of("codesign", "pkgbuild"), "", "something was signed or packed")
                self.assertEqual((self.status, self.made), (1, False))
        self.run_script(MACOS / "build-package", self.scratch / "build", "/no/folder/W.pkg")
        self.assertEqual((self.status, self.errors), (1, "build-package: there is no folder for /no/folder/W.pkg\n"))
        (self.scratch / "build/wakerlyctl").unlink()
        self.build()
        self.assertEqual((self.status, self.errors), (1, "build-package: there is no BUILD/wakerlyctl\n"))

    def test_a_step_that_fails_leaves_no_package(self):
        rows = (  # tool, what it does first, the last line of the errors, the last call
            ("codesign", "[[ $1 == --verify ]] && exit 3", "", "codesign --verify"),
            ("pkgbuild", "exit 1", "", "pkgbuild"),
            ("pkgutil", '[[ $1 == --expand ]] && { mkdir "$3"; echo "<pkg-info/>" >"$3/PackageInfo"; exit; }',
             "pkgbuild does not say what becomes of the owners of folders", "pkgutil --expand"),
            ("productbuild", "[[ $1 == --distribution ]] && exit 1", "", "productbuild --distribution"),
            ("xcrun", "[[ $1 == notarytool ]] && exit 69", "not notarised: notarytool fails",
             "xcrun notarytool submit"),
            ("xcrun", f"[[ $2 == submit ]] && {prints('  id: 42-1', 'Current status: Accepted', '  status: Invalid')}",
             "not notarised: Apple does not accept the package",
             "xcrun notarytool log 42-1 --keychain-profile notary"),
            ("xcrun", "[[ $1 == stapler ]] && exit 65", "", "xcrun stapler staple"),
        )
        for tool, first, error, last in rows:
            with self.subTest(tool=tool, first=first):
                self.stand_in(tool, first)
                self.build(**NOTARISED)
                self.stand_in(tool)
                self.assertTrue(self.calls.splitlines()[-1].startswith(last), self.calls)
                self.assertIn(error, self.errors.splitlines()[-1] if self.errors else "")
                self.assertNotEqual(self.status, 0)
                self.assertFalse(self.made)
                for copy in ("root", "scripts"):
                    shutil.rmtree(self.scratch / "made" / copy, ignore_errors=True)


class PostInstall(ScriptTest):
    def test_loads_the_logon_agent_for_who_is_at_the_console(self):
        service = "gui/501/com.vantre.Wakerly-1.0"
        agent = "/Library/LaunchAgents/com.vantre.Wakerly-1.0.plist"
        asked = "stat -f %Su /dev/console\n"
        load = f"launchctl bootstrap gui/501 {agent}\n"
        loaded = f"{asked}id -u ann\nlaunchctl bootout {service}\n{load}"
        twice = '[[ $1 == bootstrap && $(grep -c bootstrap "$CALLS") == 1 ]] && exit 5'
        rows = (  # what, disk, tool, what it does first, calls
            ("a user", "/", "stat", "", loaded),
            ("no agent was loaded before", "/", "launchctl", "[[ $1 == bootout ]] && exit 3", loaded),
            ("the old agent takes a moment", "/", "launchctl", twice, f"{loaded}sleep 1\n{load}"),
            ("it cannot be loaded", "/", "launchctl", "[[ $1 == bootstrap ]] && exit 5",
             loaded + f"sleep 1\n{load}" * 4),
            ("another disk", "/Volumes/Other", "stat", "", ""),
            ("nobody", "/", "stat", "exit 1", asked),
            ("root", "/", "stat", "echo root; exit", asked),
            ("the login window", "/", "stat", "echo loginwindow; exit", asked),
            ("the assistant of a new Mac", "/", "stat", "echo _mbsetupuser; exit", asked),
            ("somebody unknown", "/", "id", "exit 1", f"{asked}id -u ann\n"),
        )
        for what, disk, tool, first, calls in rows:
            with self.subTest(what):
                self.stand_in(tool, first)
                self.run_script(MACOS / "scripts/postinstall", "/W.pkg", disk, disk, "/")
                self.stand_in(tool)
                self.assertEqual(self.calls, calls)
                self.assertEqual(self.status, 0, "the installation would fail")
                self.assertEqual(self.errors, "wakerly: com.vantre.Wakerly-1.0 is not loaded for ann before the "
                                 "next logon\n" if calls.count("bootstrap") == 5 else "")


class Uninstall(ScriptTest):
    def setUp(self):
        super().setUp()
        path = "PATH=/usr/bin:/bin:/usr/sbin:/sbin\n"
        text = (MACOS / "uninstall").read_text()
        self.assertEqual(text.count(path), 1)
        self.script = self.scratch / "uninstall"
        self.script.write_text(text.replace(path, ""))
        self.script.chmod(0o755)
        self.run_script(MACOS / "build-package", self.scratch / "build", self.scratch / "made/W.pkg")

    def lay_out(self):
        """A disk as the package leaves it, with a user who has the updater's files, and one whose home was moved."""
        disk = self.scratch / "disk"
        shutil.rmtree(disk, ignore_errors=True)
        shutil.copytree(self.scratch / "made/root", disk)
        (disk / "usr/local/share/man/man8/wakerlyctl.8").touch()
        mine = [f"Users/ann/{UPDATER}/{name}" for name in ("VantreUpdaterPrefs.dat", "orlanul.log", "orlanul_1.log")]
        for name in (*mine, f"Users/ann/{COPY}", f"Moved/ben/{COPY}", *OTHERS):
            path = disk / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.touch()
        (disk / "Users/ben").symlink_to(disk / "Moved/ben")
        return disk

    def left(self):
        disk = self.scratch / "disk"
        return sorted(str(path.relative_to(disk)) for path in disk.rglob("*") if path.is_file() or
                      path.name in ("Vantre", "OrlanUpdater", "1.0", "Wakerly"))

    def test_takes_back_all_that_the_package_installs_and_leaves_what_is_the_updaters(self):
        disk = self.lay_out()
        installed = [path for path in (self.scratch / "made/root").rglob("*") if path.is_file()]
        self.run_script(self.script, disk)
        mine = f"Users/ann/{UPDATER}"
        kept = ["Users/ann/Library/Application Support/Vantre", mine.removesuffix("/1.0"), mine,
                f"{mine}/VantreUpdaterPrefs.dat", f"{mine}/orlanul.log", f"{mine}/orlanul_1.log", *OTHERS]
        self.assertEqual(self.left(), sorted(kept))
        self.assertEqual((self.status, self.errors), (0, ""))
        for path in installed:
            self.assertIn(f"removed DISK/{path.relative_to(self.scratch / 'made/root')}\n", self.output)
        self.assertEqual(self.calls_of("launchctl", "pkgutil"), "pkgutil --volume DISK --pkg-info com.vantre.Wakerly\n"
                         "pkgutil --volume DISK --forget com.vantre.Wakerly\n")
        self.assertEqual(self.calls_of("sudo"), "".join(
            f"sudo -u \\#501 rm -f DISK/Users/{user}/{COPY}\n" for user in ("ann", "ben")))

        self.stand_in("pkgutil", "exit 1")
        self.run_script(self.script, "--all", disk)
        self.assertEqual(self.left(), OTHERS)
        self.assertEqual(self.calls_of("sudo").count("sudo -u \\#501 rm -f "), 3)
        self.assertNotIn("--forget", self.calls)
        self.run_script(self.script, disk)
        self.assertEqual((self.status, self.errors, self.output), (0, "", ""), "nothing was left to remove")

    def test_an_installation_that_is_gone_in_parts_goes_as_a_whole(self):
        self.lay_out()
        # Of the documents one stands for all.
        parts = [part for part in self.left() if "Documentation" not in part or part.endswith(("README.md", "Wakerly"))]
        for part in parts:
            with self.subTest(gone=part):
                path = self.lay_out() / part
                (shutil.rmtree if path.is_dir() else pathlib.Path.unlink)(path)
                self.run_script(self.script, "--all", self.scratch / "disk")
                self.assertEqual((self.status, self.errors), (0, ""))
                self.assertEqual(self.left(), [name for name in OTHERS if name != part])

    def test_unloads_the_agents_of_who_is_logged_on_first(self):
        # Whatever there may be on the machine of the test stays.
        for tool in ("rm", "rmdir"):
            HEALTHY[tool] = ""
            self.addCleanup(HEALTHY.pop, tool)
            self.stand_in(tool)
        logon, scheduled = "com.vantre.Wakerly-1.0", "com.vantre.VantreOrlanUpdater-1.0"
        rows = (  # what launchctl does first, what is said, errors, status
            ("", [f"unloaded {label} of user {user}" for user in (501, 502) for label in (logon, scheduled)], "", 0),
            (f"[[ $* == *print*502/* || $* == *{scheduled} ]] && exit 113", [f"unloaded {logon} of user 501"], "", 0),
            ("[[ $* == *print*502* ]] && exit 113; [[ $1 == bootout ]] && exit 36",
             [f"unloaded {logon} of user 501", f"unloaded {scheduled} of user 501"], "", 0),
            ("[[ $* == *print*502* ]] && exit 113; [[ $1 == bootout ]] && exit 5", [],
             f"uninstall: cannot unload {logon} of user 501\nuninstall: cannot unload {scheduled} of user 501\n", 1),
        )
        for first, said, errors, status in rows:
            with self.subTest(first):
                self.stand_in("launchctl", first)
                self.run_script(self.script)
                self.assertEqual([line for line in self.output.splitlines() if line.startswith("unl")], said)
                self.assertEqual((self.errors, self.status), (errors, status))
                self.assertEqual(self.calls.splitlines()[:3], [
                    "id -u", "ps -axww -o uid= -o comm=", f"launchctl print gui/501/{logon}"])
                self.assertEqual("--forget" in self.calls, status == 0)

    def test_what_cannot_be_removed_is_told_and_the_script_stays(self):
        disk = self.lay_out()
        self.stand_in("sudo", "exit 1")
        self.run_script(self.script, disk)
        self.assertEqual((self.status, self.errors), (1, "".join(
            f"uninstall: cannot remove DISK/Users/{user}/{COPY}\n" for user in ("ann", "ben"))))
        self.assertIn(f"{UPDATER}/uninstall", self.left())
        self.assertNotIn("pkgutil", self.calls)

    def test_refuses_who_is_not_root_and_what_makes_no_sense(self):
        disk = self.lay_out()
        before = self.left()
        for user, arguments, error, status in (
                ("501", [disk], "uninstall: only root can do that: use sudo\n", 1),
                ("0", ["/no/disk"], "uninstall: there is no folder /no/disk\n", 1),
                ("0", ["--everything"], "usage: sudo uninstall [--all] [VOLUME]\n", 2),
                ("0", [disk, disk], "usage: sudo uninstall [--all] [VOLUME]\n", 2)):
            with self.subTest(user=user, arguments=arguments):
                self.stand_in("id", f"echo {user}; exit")
                self.run_script(self.script, *arguments)
                self.assertEqual((self.errors.splitlines(True)[0], self.status), (error, status))
                self.assertEqual(self.left(), before)


if __name__ == "__main__":
    unittest.main()
