"""Drives the built executable as its neighbours do: by its console, its files and its exit status.

NORVANE_BUNDLE names the bundle to test; tools/ must be on PYTHONPATH.
"""

import base64
import json
import os
import re
import shutil
import signal
import stat
import struct
import subprocess
import tempfile
import time
import unittest
import zlib

from console_client import TIMEOUT, Host

BUNDLE = os.path.abspath(os.environ["NORVANE_BUNDLE"])
EXECUTABLE = os.path.join(BUNDLE, "Contents/MacOS/Norvane")
LIBRARY = "Contents/Frameworks/libffi_bridge.dylib"
READY = {"channel": "norvane/deeplink", "method": "flutterReady"}
AUTOFILL = "cn.kestrio.norvane.autofill"
LOADED = "[Norvane] loaded Rust library at: "
HOTKEY = "[Norvane] global hotkey ⌘\\ registered (status=0)"
RECEIVED = "[Norvane] received deeplink: "
FORCED = "[Norvane] forced MainFlutterWindow visible (post-launch fallback)"
NOT_FOUND = "[Norvane] no MainFlutterWindow found post-launch"


def environment(**changes):
    kept = {name: value for name, value in os.environ.items() if name != "NORVANE_RUST_LIB_PATH"}
    return kept | changes


class HostTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = directory.name
        self.data = self.path("data")
        self.defaults = os.path.join(self.data, "user-defaults.json")

    def path(self, name):
        return os.path.join(self.root, name)

    def write(self, path, content):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content if isinstance(content, bytes) else json.dumps(content).encode())
        return path

    def start(self, *options, profile=None, bundle=BUNDLE, env=None):
        options = ["--data-dir", self.data, *options]
        if profile is not None:
            options += ["--desktop", self.write(self.path("profile.json"), profile)]
        return Host(bundle, *options, env=env or environment())

    def run_host(self, *options, text=""):
        return subprocess.run([EXECUTABLE, *options], input=text, capture_output=True,
                              encoding="utf-8", env=environment(), timeout=TIMEOUT, check=False)

    def assert_refused(self, status, *options):
        ended = self.run_host(*options)
        self.assertEqual((ended.returncode, ended.stdout), (status, ""), ended.stderr)
        self.assertRegex(ended.stderr, r"\ANorvane: [^\n]+\n\Z")


class Protocol(HostTest):
    def test_a_faulty_line_is_answered_once_and_changes_nothing(self):
        faults = [
            ("garbage", "JSON"), ("", "JSON"), ('{"id":1} {"id":2}', "JSON"), ("\udcff", "JSON"),
            ('{"desktop":"openURL","url":"\udcff"}', "JSON"), ("[" * 100000, "JSON"),
            ("[1]", "object"), ("{}", "channel"), ({"channel": "c"}, "method"),
            ({"channel": 5, "method": "m"}, "channel"), ({"channel": "c", "method": []}, "method"),
            ({**READY, "argument": 1}, "argument"), ({**READY, "engine": None}, "engine"),
            ({**READY, "engine": "norvane-qa"}, "norvane-qa"),
            ({**READY, "arguments": {"$bytes": "AQ"}}, "base64"),
            ({**READY, "arguments": {"$bytes": "A*I="}}, "base64"),
            ({**READY, "arguments": {"$bytes": 5}}, "bytes"),
            ('{"channel":"c","method":"m","arguments":' + "[" * 129 + "]" * 129 + "}", "deep"),
            ({"desktop": "reboot"}, "reboot"), ({"desktop": 5}, "desktop"),
            ({"desktop": "openURL"}, "url"), ({"desktop": "openURL", "url": 5}, "url"),
            ({"desktop": "closeWindow", "now": True}, "now"),
            ({"desktop": "set", "applications": [], "dock": True}, "dock"),
            ({"desktop": "set", "applications": [], "osVersion": "14.x"}, "osVersion"),
            ({"desktop": "set", "applications": [{"active": True}] * 2}, "applications"),
            ({"desktop": "set", "applications": [], "screens": [{"frame": [0, 0, 1]}]}, "frame"),
            ({"desktop": "pressKeys", "key": 42}, "modifiers"),
            ({"desktop": "pressKeys", "key": -1, "modifiers": 256}, "key"),
            ({"desktop": "clickStatusItem", "button": 2}, "button"),
            ({"desktop": "resizeWindow", "frame": [0, 0, -9, 9]}, "negative"),
            ({"desktop": "activate", "application": "org.example.none"}, "running"),
            ({"desktop": "launch", "application": "org.example.mail"}, "application"),
            ({"desktop": "launch", "application": {"pid": 1}}, "pid"),
            ({"desktop": "terminate", "application": "org.example.none"}, "running"),
            ({"desktop": "copy", "text": None}, "text"),
            ({"desktop": "selectInputSource", "id": "com.example.keylayout.None"}, "source"),
            ({"desktop": "input", "type": "5"}, "type"),
        ]
        faults += [({"desktop": "set", "icloud": False, key: value}, "") for key, value in {
            "takenHotkeys": [[42]], "hotkeyHandlerStatus": None, "inputSources": [5],
            "asciiInputSource": 5, "appIdentifierPrefix": 5, "appGroup": 1, "random": "false",
            "credentialStore": {"enabled": True}, "keychain": {"update": "x"},
            "loginItem": {"status": 1.5}, "menuBarIcon": 0, "symbols": []}.items()]
        with self.start() as host:
            host.settle()
            before = host.state()
            for number, (line, named) in enumerate(faults):
                with self.subTest(line=str(line)[:60]):
                    expected = {}
                    if isinstance(line, dict):
                        line = {"id": number, **line}
                        expected = {"id": line["id"]}
                    host.send(line)
                    answer = host.read()
                    self.assertIn(named, answer.pop("error"), line)
                    self.assertEqual(answer, expected)
            self.assertEqual(host.state(), before)
            self.assertEqual(host.settle(), [])

    def test_an_event_happens_once_and_prints_nothing(self):
        mail = {"bundleIdentifier": "org.example.mail", "active": True}
        events = [
            ("openURL", {"url": "norvane://x"}, "frontApplication", "cn.kestrio.norvane"),
            ("activate", {"application": "org.example.editor"}, "frontApplication",
             "org.example.editor"),
            ("launch", {"application": mail}, "frontApplication", "org.example.mail"),
            ("terminate", {"application": "org.example.mail"}, "frontApplication", None),
            ("reopen", {}, "active", True),
            ("copy", {"text": "é"}, "pasteboard", [{"public.utf8-plain-text": "é"}]),
            ("selectInputSource", {"id": "com.example.keylayout.ABC"}, "inputSource",
             "com.example.keylayout.ABC"),
            ("resizeWindow", {"frame": [1, 2, 1000, 1]}, "frame", [1, 2, 1000, 600]),
            ("closeWindow", {}, "visible", False),
        ]
        with self.start() as host:
            host.settle()
            for name, keys, observed, expected in events:
                with self.subTest(name):
                    host.event(name, **keys)
                    self.assertEqual(host.settle(), [])
                    state = host.state()
                    self.assertEqual((state | state["windows"][0])[observed], expected)
            before = time.monotonic()
            host.event("input", type=5)
            idle = host.call("cn.kestrio.norvane.system_idle", "idleSeconds")["value"]
            self.assertLessEqual(idle, time.monotonic() - before)

    def test_what_is_set_later_counts_and_an_object_is_replaced_whole(self):
        with self.start() as host:
            state = {"isEnabled": True, "supportsIncrementalUpdates": True}
            for key in state:
                host.event("set", credentialStore={key: False})
                self.assertEqual(host.call(AUTOFILL, "getState")["value"], state | {key: False})
            for name, status in [("update", -5), ("add", -7)]:
                host.event("set", keychain={name: status})
                self.assertEqual(host.call(AUTOFILL, "syncVaultSnapshot").get("message"),
                                 f"keychain status {status}")
            for item, status in [({"status": 2}, 2), ({"error": "no"}, 0)]:
                host.event("set", loginItem=item)
                self.assertEqual(host.state()["loginItem"], status)

    def test_any_json_value_is_echoed_as_the_id(self):
        with self.start() as host:
            host.settle()
            for value in [None, True, 0, 1, -1, 1.5, 2**63 - 1, 2**64 - 1, "", "é\u2028\U0001f511\0",
                          [], {}, {"id": [1, {"id": "a"}, None]}]:
                for call, answer in [(READY, "reply"), ({"channel": "c", "method": 1}, "error")]:
                    host.send({"id": value, **call})
                    line = host.read()
                    self.assertIn(answer, line)
                    self.assertEqual(json.dumps(line["id"]), json.dumps(value))
            host.send(READY)
            self.assertEqual(host.read(), {"reply": "success", "value": None})

    def test_lines_are_taken_in_their_order_and_settle_holds_back_the_later_ones(self):
        def opened(url):
            return {"engine": "main", "channel": "norvane/deeplink", "call": "urlOpened",
                    "arguments": {"url": url}}
        with self.start() as host:
            host.settle()
            host.send({"desktop": "openURL", "url": "norvane://1"},
                      {"desktop": "openURL", "url": "norvane://2"},
                      {"id": 1, **READY}, {"id": 2, "channel": "nobody", "method": "m"},
                      {"desktop": "openURL", "url": None}, {"desktop": "settle"},
                      {"desktop": "openURL", "url": "norvane://3"}, {"id": 3, **READY},
                      {"desktop": "settle"}, {"desktop": "quit"}, {"id": 4, **READY})
            status, lines, _ = host.ended()
            self.assertEqual(status, 0)
            self.assertEqual(lines, [
                opened("norvane://2"), {"id": 1, "reply": "success", "value": None},
                {"id": 2, "reply": "notImplemented"}, {"desktop": "settled"},
                opened("norvane://3"), {"id": 3, "reply": "success", "value": None},
                {"desktop": "settled"}])

    def test_calls_read_before_the_end_of_input_are_answered(self):
        calls = [json.dumps({"id": number, **READY, "arguments": "x" * 997})
                 for number in range(2000)]
        ended = self.run_host("--data-dir", self.data, text="\n".join(calls))  # the last unended
        self.assertEqual(ended.returncode, 0)
        answers = [json.loads(line) for line in ended.stdout.splitlines()]
        self.assertEqual([line["id"] for line in answers if "reply" in line], list(range(2000)))

    def test_the_host_ends_when_nobody_reads_it(self):
        (reader, output), (silence, writer) = os.pipe(), os.pipe()
        os.close(reader)
        for descriptor in (output, silence, writer):
            self.addCleanup(os.close, descriptor)
        ended = subprocess.run([EXECUTABLE, "--data-dir", self.data], stdin=silence, stdout=output,
                               stderr=subprocess.DEVNULL, timeout=TIMEOUT, check=False)
        self.assertEqual(ended.returncode, 0)

    def test_a_standard_stream_that_is_closed_is_no_file_of_the_host(self):
        for closed in ("<&-", ">&-", "<&- >&- 2>&-"):
            with self.subTest(closed):
                script = f'exec "$0" --data-dir "$1" {closed}'
                subprocess.run(["sh", "-c", script, EXECUTABLE, self.data], env=environment(),
                               stdin=subprocess.DEVNULL, capture_output=True, timeout=TIMEOUT,
                               check=True)
                with open(self.defaults, "rb") as file:
                    self.assertIs(json.load(file)["NorvaneDidSetInitialFrameV4"], True)
                shutil.rmtree(self.data)

    def test_no_link_and_no_path_can_forge_a_log_line(self):
        forged = "\n[Norvane] forged\r\x1b[2J\x7f\x85\x9b\u2028\u2029\t\0"
        library = self.path("library" + forged.rstrip("\0") + ".dylib")
        shutil.copy(os.path.join(BUNDLE, LIBRARY), library)
        with self.start(env=environment(NORVANE_RUST_LIB_PATH=library)) as host:
            links = ["norvane://" + forged.rstrip("\0"), "norvane://?q=\U0001f511\"\\"]
            for link in links:
                host.event("openURL", url=link)
                host.call(**READY)
                self.assertEqual(host.next_ui_call()["arguments"], {"url": link})
            host.event("openURL", url="norvane://" + forged)
            _, _, log = host.quit()
        self.assertTrue(log[0].startswith(LOADED + self.root))
        self.assertEqual(sum(line.startswith(RECEIVED) for line in log), len(links), log)
        for line in log:
            self.assertRegex(line, r"\A\[Norvane\] [^\x00-\x1f\x7f-\x9f\u2028\u2029]+\Z")


class Options(HostTest):
    def test_help_and_version(self):
        options = self.run_host("--help").stdout
        for option in ("--help", "--version", "--platform", "--desktop", "--data-dir"):
            self.assertIn(option, options)
        self.assertRegex(self.run_host("--version").stdout, r"\ANorvane \d+\.\d+\.\d+\n\Z")

    def test_what_cannot_be_run_is_refused_in_one_line(self):
        file = self.write(self.path("file"), b"")
        unreadable = self.path("unreadable")
        os.makedirs(os.path.join(unreadable, "user-defaults.json"))
        for status, *options in [
                (64, "--bogus"), (64, "stray"), (64, "--platform", "vms"), (64, "--data-dir"),
                (64, "--data-dir", ""), (73, "--data-dir", file),
                (73, "--data-dir", os.path.join(file, "data")), (73, "--data-dir", unreadable)]:
            with self.subTest(options=options):
                self.assert_refused(status, *options)

    def test_a_profile_that_is_not_valid_is_refused_before_anything_is_made(self):
        self.assert_refused(65, "--data-dir", self.data, "--desktop", self.path("missing"))
        for profile in [b"", b"{", b"\xff", [], {"dock": 1}, {"osVersion": "14."}, {"osVersion": 14},
                        {"osVersion": "1.2.3.4"}, {"osVersion": "-1"}, {"mainWindow": 1},
                        {"screens": {}}, {"screens": [{"visibleFrame": [0, 0, -1, 5]}]},
                        {"applications": [{"name": 5}]}]:
            with self.subTest(profile=profile):
                path = self.write(self.path("profile.json"), profile)
                self.assert_refused(65, "--data-dir", self.data, "--desktop", path)
        self.assertFalse(os.path.exists(self.data))


class Files(HostTest):
    def test_a_second_host_is_turned_away_and_damages_nothing(self):
        with self.start() as host:
            host.settle()
            before = host.state()
            with open(self.defaults, "rb") as file:
                kept = file.read()
            self.assert_refused(75, "--data-dir", self.data)
            self.assert_refused(75, "--data-dir", os.path.join(self.root, ".", "data", ""))
            with open(self.defaults, "rb") as file:
                self.assertEqual(file.read(), kept)
            self.assertEqual(host.state(), before)
            self.assertEqual(host.quit()[0], 0)
        with self.start() as host:
            self.assertTrue(host.state()["windows"])

    def test_what_is_kept_is_for_its_owner_alone(self):
        with self.start() as host:
            for method in ("syncVaultSnapshot", "registerCredentials"):
                self.assertEqual(host.call(AUTOFILL, method)["reply"], "success")
            host.quit()
        kept = list(os.walk(self.data))
        self.assertGreaterEqual(sum(len(files) for _, _, files in kept), 5, kept)
        for directory, _, files in kept:
            self.assertEqual(stat.S_IMODE(os.stat(directory).st_mode), 0o700, directory)
            for path in (os.path.join(directory, name) for name in files):
                self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o600, path)

    def test_frames_and_user_defaults_outlive_a_killed_host(self):
        screen = [0, 0, 2560, 1400]
        with self.start(profile={"screens": [{"frame": screen, "visibleFrame": screen}]}) as host:
            host.settle()
            before = host.state()
            self.assertEqual(host.kill()[0], -signal.SIGKILL)
        with self.start() as host:  # on the smaller default screen
            host.settle()
            after = host.state()
        self.assertEqual(after["windows"][0]["frame"], [810, 400, 940, 600])
        self.assertEqual(after["windows"], before["windows"])
        self.assertEqual(after["userDefaults"], before["userDefaults"])

    def test_damaged_user_defaults_are_set_aside_with_one_log_line(self):
        for content in [b"", b"{", b"\xff\xfe", []]:
            with self.subTest(content=content):
                self.write(self.defaults, content)
                with open(self.defaults, "rb") as file:
                    damaged = file.read()
                with self.start() as host:
                    host.settle()
                    self.assertIs(host.state()["userDefaults"]["NorvaneDidSetInitialFrameV4"], True)
                    _, _, log = host.quit()
                self.assertEqual(sum(self.defaults + ".damaged" in line for line in log), 1, log)
                with open(self.defaults + ".damaged", "rb") as file:
                    self.assertEqual(file.read(), damaged)


class CoreLibrary(HostTest):
    def setUp(self):
        super().setUp()
        self.bundle = self.path("tree/1/2/3/4/5/6/7/Copy of Norvane.app")
        shutil.copytree(BUNDLE, self.bundle)
        self.places = {
            "own": self.path("own.dylib"), "bundle": os.path.join(self.bundle, LIBRARY),
            "debug": self.path("tree/target/debug/libffi_bridge.dylib"),
            "release": self.path("tree/target/release/libffi_bridge.dylib")}
        self.own = environment(NORVANE_RUST_LIB_PATH=self.places["own"])

    def place(self, **contents):
        for name, path in self.places.items():
            os.makedirs(os.path.dirname(path), exist_ok=True)
            if os.path.exists(path):
                os.remove(path)
            if contents.get(name) == "good":
                shutil.copy(os.path.join(BUNDLE, LIBRARY), path)
            elif name in contents:
                self.write(path, b"not a library")

    def test_a_bundle_that_is_started_through_a_link_finds_its_library(self):
        self.place(bundle="good")
        link = self.path("norvane")
        os.symlink(os.path.join(self.bundle, "Contents/MacOS/Norvane"), link)
        ended = subprocess.run([link, "--data-dir", self.data], env=environment(), check=True,
                               stdin=subprocess.DEVNULL, capture_output=True, encoding="utf-8")
        self.assertIn(LOADED + self.places["bundle"], ended.stderr)

    def test_the_first_candidate_that_loads_wins(self):
        good, broken = "good", "broken"
        for contents, failed, loaded in [
                ({"bundle": good, "debug": good}, [], "bundle"),
                ({"own": good, "bundle": good}, [], "own"),
                ({"bundle": good}, [], "bundle"),
                ({"own": broken, "bundle": good}, ["own"], "bundle"),
                ({"debug": good, "release": good}, [], "debug"),
                ({"bundle": broken, "debug": broken, "release": good}, ["bundle", "debug"],
                 "release")]:
            with self.subTest(contents=contents):
                self.place(**contents)
                with self.start(bundle=self.bundle, env=self.own) as host:
                    for name in failed:
                        self.assertRegex(host.log_line(), r"\A\[Norvane\] dlopen failed for "
                                         + re.escape(self.places[name]) + ": .+")
                    self.assertEqual(host.log_line(), LOADED + self.places[loaded])
                    self.assertIn("channels registered", host.log_line())
                    self.assertEqual(host.log_line(), HOTKEY)
                    self.assertEqual(host.call(**READY)["reply"], "success")

    def test_without_one_that_loads_the_host_ends_and_names_them_all(self):
        self.place(debug="broken")
        names = ["bundle", "debug", "release"]
        for variable, listed in [(None, []), ("", [""]), (self.places["own"], [self.places["own"]])]:
            env = environment() if variable is None else environment(NORVANE_RUST_LIB_PATH=variable)
            with self.subTest(variable=variable), self.start(bundle=self.bundle, env=env) as host:
                status, lines, log = host.ended()
                self.assertEqual((status, lines), (-signal.SIGABRT, []))
                self.assertEqual(len(log), 2, log)
                paths = json.dumps(listed + [self.places[name] for name in names])
                self.assertIn("MainFlutterWindow", log[1])
                self.assertTrue(log[1].endswith(
                    "[Norvane] could not load libffi_bridge.dylib; tried: " + paths), log[1])


class Desktop(HostTest):
    def test_a_main_window_that_comes_late_serves_as_one_that_was_there(self):
        with self.start(profile={"mainWindow": False}) as host:
            self.assertEqual([host.log_line(), host.log_line()], [HOTKEY, NOT_FOUND])
            host.event("openURL", url="norvane://lost")
            self.assertEqual(host.log_line(), RECEIVED + "norvane://lost")
            host.event("reopen")
            self.assertEqual(host.settle(), [])
            self.assertEqual(host.state()["windows"], [])
            host.send({"id": 1, **READY}, {"desktop": "closeWindow"})
            self.assertIn("main", host.read()["error"])
            self.assertIn("main window", host.read()["error"])
            host.event("openURL", url="norvane://just in time")
            host.event("set", mainWindow=True)
            self.assertEqual(host.read(), {"engine": "main", "started": "main"})
            self.assertEqual(host.call(**READY)["reply"], "success")
            host.event("openURL", url="norvane://found")
            links = [line["arguments"]["url"] for line in host.settle() if "call" in line]
            self.assertEqual(sorted(links), ["norvane://found", "norvane://just in time"])
            self.assertEqual(len(host.state()["windows"]), 1)

    def test_only_a_main_window_that_is_hidden_after_launch_is_forced_on_screen(self):
        for visible in (False, True):
            with self.subTest(visible=visible):
                with self.start(profile={"mainWindowVisible": visible}) as host:
                    host.settle()
                    state = host.state()
                    _, _, log = host.quit()
                window = state["windows"][0]
                self.assertEqual((window["visible"], window["key"], state["active"]),
                                 (True, not visible, not visible))
                self.assertEqual((log.count(FORCED), log.count(NOT_FOUND)), (int(not visible), 0))

    def test_an_old_system_has_every_channel_but_autofill(self):
        with self.start(profile={"osVersion": "10.15"}) as host:
            self.assertEqual(host.call(AUTOFILL, "getState"), {"reply": "notImplemented"})
            self.assertEqual(host.call(**READY)["reply"], "success")

    def test_the_icon_of_the_application_in_front_is_a_png_that_others_can_read(self):
        with self.start() as host:
            host.event("pressKeys", key=42, modifiers=256)
            png = base64.b64decode(host.next_ui_call()["arguments"]["iconPng"]["$bytes"])
        self.assertEqual(png[:8], b"\x89PNG\r\n\x1a\n")
        chunks, at = [], 8
        while at < len(png):
            size = int.from_bytes(png[at:at + 4], "big")
            chunk, at = png[at + 4:at + 8 + size], at + 12 + size
            self.assertEqual(int.from_bytes(png[at - 4:at], "big"), zlib.crc32(chunk))
            chunks.append(chunk)
        rgba_of_8_bits = struct.pack(">IIBBBBB", 64, 64, 8, 6, 0, 0, 0)
        self.assertEqual((chunks[0], chunks[-1]), (b"IHDR" + rgba_of_8_bits, b"IEND"))
        rows = zlib.decompress(b"".join(chunk[4:] for chunk in chunks if chunk[:4] == b"IDAT"))
        self.assertEqual(len(rows), 64 * (1 + 64 * 4))
        self.assertGreater(len(set(rows)), 2)  # not one colour all over


if __name__ == "__main__":
    unittest.main()
