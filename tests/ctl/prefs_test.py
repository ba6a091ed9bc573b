"""wakerlyctl prefs: each key of both files with its value, and where that comes from."""

import unittest

from tree import TreeTest

TOKEN = "eyJhbGciOiJIUzI1NiJ9.eyJzdWIiOiIxIn0.c2ln"


def mapped(**entries):
    return "".join(f'<MapPrefEntry MapPrefKey="{key}">{value}</MapPrefEntry>' for key, value in entries.items())


class PrefsTest(TreeTest):
    def setUp(self):
        self.machine = self.tree()

    def listed(self, *arguments, section="preferences"):
        """The settings of a file by key."""
        before = self.machine.state()
        settings = self.machine.ctl_json("prefs", *arguments)[section]["settings"]
        self.assertEqual(self.machine.state(), before)
        return {setting["key"]: setting for setting in settings}

    def test_each_key_has_value_type_default_and_source(self):
        rows = (  # key, what stands in the file, or None; type, value, default, source, further members
            ("AutoCheck", "0", "boolean", False, True, "user", {"entries": 1}),
            ("IsFirstRun", None, "boolean", True, True, "default", {"entries": 0}),
            ("SilentCheck", "true", "boolean", "true", False, "user", {"valid": False}),
            ("ConnectionType", " +2 ", "integer", 2, 0, "user", {"valid": True}),
            ("LogLevel", "loud", "integer", "loud", 2, "user", {"valid": False}),
            ("WebFeedSize", "4294967296", "unsigned", 4294967296, 0, "user", {}),
            ("LogFile", None, "string", str(self.machine.folder / "orlanu.log"),
             str(self.machine.folder / "orlanu.log"), "default", {}),
            ("OSVersion", " 1 &amp; 2 ", "string", " 1 & 2 ", "", "user", {}),
            ("ProxyServer", TOKEN, "string", "****", "", "user", {}),
            ("ChannelsEnabled", mapped(a=1, b=0), "boolean-map", {"a": True, "b": False}, {}, "user", {}),
            ("ChannelsInstalled", mapped(a="yes"), "boolean-map", {"a": "yes"}, {}, "user", {"valid": False}),
            ("OndriChannels", "text", "boolean-map", {}, {}, "default", {"valid": True}),
            ("NotificationMessage", mapped(a="b", user="ann"), "string-map", {"a": "b", "user": "****"}, {},
             "user", {}),
            ("Password", "secret", "unknown", "****", None, "user", {"known": False}),
            ("NoText", "", "unknown", "", None, "user", {"known": False, "entries": 1}),
            ("AnyMap", mapped(a="b"), "unknown", {"a": "b"}, None, "user", {"known": False}))
        self.machine.write(self.machine.prefs, {row[0]: row[1] for row in rows if row[1] is not None})
        listed = self.listed()
        self.assertEqual(len(listed), 42 + 3, "keys of the schema, and unknown ones")
        for key, text, kind, value, otherwise, source, further in rows:
            with self.subTest(key=key, text=text):
                expected = dict(type=kind, value=value, default=otherwise, source=source, **further)
                self.assertEqual({name: listed[key][name] for name in expected}, expected)
        self.assertNotIn("secret", self.machine.ctl("prefs").stdout)

    def test_a_key_of_a_map_can_hold_tags(self):
        key = "user&gt;&lt;username&gt;" + 99 * "a" + "&lt;/username&gt;"
        self.machine.write(self.machine.prefs, {"NotificationMessage": mapped(**{key: "secret"})})
        (shown,) = self.listed("NotificationMessage")["NotificationMessage"]["value"].values()
        self.assertEqual(shown, "****")

    def test_time_grows_with_the_keys_and_no_faster(self):
        self.machine.write(self.machine.prefs, {f"Key{number}": "x" for number in range(100_000)})
        self.assertEqual(len(self.listed()), 42 + 100_000)  # within SECONDS

    def test_the_first_of_two_entries_counts(self):
        self.machine.write(self.machine.prefs, "<Preferences><LogLevel>3</LogLevel><LogLevel>1</LogLevel></Preferences>")
        level = self.listed("LogLevel")["LogLevel"]
        self.assertEqual((level["value"], level["entries"]), (3, 2))
        self.assertIn("stands 2 times", self.machine.ctl("prefs", "LogLevel").stdout)

    def test_what_the_run_would_replace_has_its_source(self):
        self.machine.write(self.machine.prefs, {"IsScheduledTaskNeeded": "0", "IsScheduledTaskAdded": "1",
                                                "OSVersion": "1", "ChannelsEnabled": mapped(a=1)})
        frequency = self.listed()["UpdaterPrefSchedCheckFreq"]
        self.assertEqual((frequency["value"], frequency["source"]), (3, "launch-agent"))
        self.machine.write(self.machine.stamp, "new")
        listed = self.listed()
        for key, value in (("OSVersion", ""), ("ChannelsEnabled", {}), ("uninstallts", "new")):
            with self.subTest(key=key):
                self.assertEqual((listed[key]["value"], listed[key]["source"]), (value, "uninstall-stamp"))

    def test_a_key_is_shown_from_each_file_that_knows_it(self):
        self.machine.write(self.machine.admin_prefs, {"Suppressed": "1", "LogLevel": "4"})
        rows = (  # key, status, value in the user's file and in the administrator's
            ("LogLevel", 0, 2, "4"), ("Suppressed", 0, None, True), ("loglevel", 1, None, None))
        for key, status, *values in rows:
            with self.subTest(key=key):
                said = self.machine.ctl("prefs", key)
                self.assertEqual((said.returncode, said.stdout == "", said.stderr != ""), (status, status == 1, status == 1))
                found = [self.listed(key, section=section).get(key, {"value": None})["value"]
                         for section in ("preferences", "administrator_preferences")]
                self.assertEqual(found, values)


if __name__ == "__main__":
    unittest.main()
