"""Drives the built executable as its neighbours do: by console, files and exit status."""

import json
import os
import re
import shutil
import signal
import sqlite3
import subprocess
import unittest

from console_client import TIMEOUT
from support import BUNDLE, EXECUTABLE, HostTest, environment, read, write

LIBRARY = "Contents/Frameworks/libffi_bridge.dylib"
READY = {"channel": "norvane/deeplink", "method": "flutterReady"}
LOADED = "[Norvane] loaded Rust library at: "


class ConsoleTest(HostTest):
    def run_host(self, *options, executable=EXECUTABLE, text=""):
        return subprocess.run([executable, "--platform", "headless", *options], input=text,
                              capture_output=True, check=False, encoding="utf-8",
                              env=environment(), timeout=TIMEOUT)

    def assert_refused(self, status, *options):
        ended = self.run_host(*options)
        self.assertEqual((ended.returncode, ended.stdout), (status, ""), options)
        self.assertRegex(ended.stderr, r"\ANorvane: [^\n]+\n\Z", options)


class Lines(ConsoleTest):
    def test_what_is_not_utf8_or_too_deep_is_answered_and_changes_nothing(self):
        deep = '{"channel":"c","method":"m","arguments":' + "[" * 129 + "]" * 129 + "}"
        with self.start() as host:
            host.settle()
            before = host.state()
            for line, named in [("\udcff", "JSON"), ('{"desktop":"copy","text":"\udcff"}', "JSON"),
                                ("[" * 100000, "JSON"), (deep, "deep")]:
                host.send(line)
                self.assertIn(named, host.read()["error"])
            self.assertEqual(host.state(), before)

    def test_a_state_that_cannot_be_read_is_an_error_until_it_can(self):
        write(os.path.join(self.data, "keychain/stray\udcff/x"), "")
        with self.start() as host:
            host.settle()
            host.send('{"id":1,"desktop":"state"}')
            error = host.read()
            self.assertEqual(error.pop("id"), 1)
            self.assertIn("directory", error.pop("error"))
            shutil.rmtree(os.path.join(self.data, "keychain/stray\udcff"))
            self.assertEqual((error, host.state()["keychain"]), ({}, []))

    def test_settle_holds_back_later_lines_and_quit_drops_them(self):
        with self.start() as host:
            host.settle()
            host.send({"id": 1, **READY}, {"desktop": "openURL", "url": "norvane://1"}, "fault",
                      {"desktop": "settle"}, {"id": 2, **READY}, {"desktop": "settle"},
                      {"desktop": "quit"}, {"id": 3, **READY})
            status, lines, _ = host.ended()
        said = [line.get("id", line.get("call", line.get("desktop", "error"))) for line in lines]
        self.assertEqual((status, said), (0, [1, "urlOpened", "error", "settled", 2, "settled"]))

    def test_calls_read_before_the_end_of_input_are_answered(self):
        calls = "\n".join(json.dumps({"id": number, **READY, "arguments": "x" * 997})
                          for number in range(2000))  # the last without a line break
        ended = self.run_host("--data-dir", self.data, text=calls)
        answers = [json.loads(line) for line in ended.stdout.splitlines()]
        self.assertEqual((ended.returncode, [line["id"] for line in answers if "reply" in line]),
                         (0, list(range(2000))))

    def test_the_host_ends_when_nobody_reads_it(self):
        (reader, output), (silence, writer) = os.pipe(), os.pipe()
        os.close(reader)
        for descriptor in (output, silence, writer):
            self.addCleanup(os.close, descriptor)
        subprocess.run([EXECUTABLE, "--platform", "headless", "--data-dir", self.data],
                       stdin=silence, stdout=output,
                       stderr=subprocess.DEVNULL, timeout=TIMEOUT, check=True)

    def test_a_standard_stream_that_is_closed_is_no_file_of_the_host(self):
        for closed in ("<&-", ">&-", "<&- >&- 2>&-"):
            script = f'exec "$0" --platform headless --data-dir "$1" {closed}'
            subprocess.run(["sh", "-c", script, EXECUTABLE, self.data], check=True,
                           stdin=subprocess.DEVNULL, capture_output=True, timeout=TIMEOUT)
            self.assertIs(json.loads(read(self.defaults))["NorvaneDidSetInitialFrameV4"], True)
            os.remove(self.defaults)

    def test_no_link_and_no_path_can_forge_a_log_line(self):
        forged = "\n[Norvane] forged\r\x1b[2J\x7f\x85\x9b\u2028\u2029\t"
        library = shutil.copy(os.path.join(BUNDLE, LIBRARY), self.path(forged + ".dylib"))
        with self.start(NORVANE_RUST_LIB_PATH=library) as host:
            for link in ("norvane://" + forged, "norvane://\0" + forged):
                host.event("openURL", url=link)
            _, _, log = host.quit()
        self.assertEqual([sum(text in line for line in log) for text in
                          (LOADED + self.root, "] received deeplink: ")], [1, 1], log)
        for line in log:
            self.assertRegex(line, r"\A\[Norvane\] [^\x00-\x1f\x7f-\x9f\u2028\u2029]+\Z")


class Start(ConsoleTest):
    def test_what_cannot_be_run_is_refused_in_one_line_and_makes_nothing(self):
        self.assertIn("--data-dir", self.run_host("--help").stdout)
        self.assertRegex(self.run_host("--version").stdout,
                         r"\ANorvane \d+\.\d+\.\d+( \([0-9a-f]+(-dirty)?\))?\n\Z")
        file = write(self.path("file"), "")
        os.makedirs(self.path("unreadable/user-defaults.json"))
        profiles = [write(self.path(f"{number}.json"), text)
                    for number, text in enumerate(["", b"\xff", "[]", '{"dock":1}'])]
        for status, *options in [
                (64, "--bogus"), (64, "stray"), (64, "--platform", "vms"), (64, "--data-dir"),
                (64, "--data-dir", ""), (73, "--data-dir", file), (73, "--data-dir", file + "/x"),
                (73, "--data-dir", self.path("unreadable")),
                (65, "--platform", "gtk", "norvane://item/1", "norvane://\udcff"),
                (64, "--quit", "norvane://item/1"), (64, "--platform", "gtk", "--ui", "none"),
                (64, "--platform", "gtk", "--ui", "explorer", "--ui-bundle", "x"),
                (64, "--platform", "gtk", "--ui-bundle", "x", "--console"),
                (64, "--platform", "gtk", "--ui", "explorer", "--ui-argument", "x"),
                (64, "--ui", "explorer"), (64, "--at-login"),
                *((65, "--data-dir", self.data, "--desktop", profile)
                  for profile in [self.path("missing"), *profiles])]:
            self.assert_refused(status, *options)
        self.assertFalse(os.path.exists(self.data))

    def test_a_second_host_is_turned_away_and_damages_nothing(self):
        with self.start() as host:
            host.settle()
            before = host.state(), read(self.defaults)
            for name in (self.data, os.path.join(self.root, ".", os.path.basename(self.data), "")):
                self.assert_refused(75, "--data-dir", name)
            self.assertEqual((host.state(), read(self.defaults)), before)

    def test_frames_and_user_defaults_outlive_a_killed_host(self):
        screen, states = {"frame": [0, 0, 2560, 1400], "visibleFrame": [-1640.5, 0, 2560, 1400]}, []
        for profile in ({"screens": [screen]}, {}):  # the second screen is smaller
            with self.start(profile) as host:
                host.settle()
                states.append(host.state())
                host.kill()
        self.assertEqual(*(state["windows"] for state in states))
        self.assertEqual(*(state["userDefaults"] for state in states))
        self.assertEqual(states[1]["windows"][0]["frame"], [-830.5, 400, 940, 600])

    def test_what_is_damaged_is_set_aside_with_one_log_line(self):
        identities = os.path.join(self.data, "credential-identities.sqlite")
        with sqlite3.connect(self.path("database")) as database:
            database.execute("CREATE TABLE two (pages)")
        for path, content in [(self.defaults, b""), (self.defaults, b"{"), (self.defaults, b"[]"),
                              (self.defaults, b"\xff\xfe"), (identities, b"x" * 5000),
                              (identities, read(self.path("database"))[:4096])]:
            write(path, content)
            with self.start() as host:
                host.settle()
                state = host.state()
                self.assertIs(state["userDefaults"]["NorvaneDidSetInitialFrameV4"], True)
                self.assertEqual(state["passwordIdentities"], [])
                _, _, log = host.quit()
            self.assertEqual(sum(path + ".damaged" in line for line in log), 1, log)
            self.assertEqual(read(path + ".damaged"), content)


class CoreLibrary(ConsoleTest):
    def setUp(self):
        super().setUp()
        self.bundle = shutil.copytree(BUNDLE, self.path("tree/1/2/3/4/5/6/7/Copy of Norvane.app"))
        self.places = {
            "own": self.path("own.dylib"), "bundle": os.path.join(self.bundle, LIBRARY),
            "debug": self.path("tree/target/debug/libffi_bridge.dylib"),
            "release": self.path("tree/target/release/libffi_bridge.dylib")}

    def test_a_bundle_that_is_started_through_a_link_finds_its_library(self):
        os.symlink(os.path.join(self.bundle, "Contents/MacOS/Norvane"), self.path("norvane"))
        ended = self.run_host("--data-dir", self.data, executable=self.path("norvane"))
        self.assertIn(LOADED + self.places["bundle"], ended.stderr)

    def test_the_first_candidate_that_loads_wins_and_without_one_all_are_named(self):
        own, bundle, debug, release = self.places
        for good, broken, loaded in [
                ([bundle, debug], [], bundle), ([own, bundle], [], own), ([bundle], [own], bundle),
                ([debug, release], [], debug), ([release], [bundle, debug], release),
                ([], [debug], None)]:
            for name, path in self.places.items():
                write(path, read(os.path.join(BUNDLE, LIBRARY)) if name in good else "no library")
                if name not in good + broken:
                    os.remove(path)
            with self.subTest(good=good, broken=broken), self.start(
                    bundle=self.bundle, NORVANE_RUST_LIB_PATH=self.places[own]) as host:
                for name in broken:
                    self.assertRegex(host.log_line(), r"\A\[Norvane\] dlopen failed for "
                                     + re.escape(self.places[name]) + ": .+")
                if loaded:
                    self.assertEqual(host.log_line(), LOADED + self.places[loaded])
                    continue
                status, lines, [last] = host.ended()
                self.assertEqual((status, lines), (-signal.SIGABRT, []))
                self.assertRegex(last, "MainFlutterWindow.* load libffi_bridge.dylib; tried: "
                                 + re.escape(json.dumps([*self.places.values()])) + "$")


if __name__ == "__main__":
    unittest.main()
