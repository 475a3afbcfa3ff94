"""The real desktop, whole and with parts that are missing, fail or go away."""

import ctypes
import os
import signal
import subprocess
import sys
import unittest

import real_desktop as desktop
from console_client import TIMEOUT
from desktop_support import DesktopTest
from support import AUTOFILL, EXECUTABLE, ROOT, environment, write

SYNC = {"channel": AUTOFILL, "method": "syncVaultSnapshot",
        "arguments": {"items": [{"id": "a", "username": "ann", "password": "secret"}]}}
WRITTEN = {"reply": "success", "value": {"written": 1, "encrypted": True}}
CLEARED = {"reply": "success", "value": True}
EXPOSED = """<KeePassFile><Meta><CustomData><Item><Key>FDO_SECRETS_EXPOSED_GROUP</Key>
<Value>{00000000-0000-0000-0000-000000000001}</Value></Item></CustomData></Meta>
<Root><Group><UUID>AAAAAAAAAAAAAAAAAAAAAQ==</UUID><Name>Root</Name></Group></Root></KeePassFile>"""


def refused(status):
    return {"reply": "error", "code": "autofill_sync_snapshot_failed",
            "message": f"keychain status {status}", "details": None}


class Tour(unittest.TestCase):
    def test_the_tour(self):
        played = subprocess.run(
            [f"{ROOT}/tools/with-desktop", sys.executable, "-m", "tour.desktop"], check=False,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=2 * TIMEOUT)
        self.assertEqual(played.returncode, 0, played.stdout)


class BareDesktop(DesktopTest):
    """An X server without a window manager, and a bus without services."""

    def test_without_a_display_it_says_how_to_do_without(self):
        for display in ({"DISPLAY": ":9999"}, {"WAYLAND_DISPLAY": "wayland-9"}, {}):
            env = environment(**display)
            if "DISPLAY" not in display:
                del env["DISPLAY"]
            ended = subprocess.run([EXECUTABLE], env=env, check=False, capture_output=True,
                                   text=True, timeout=TIMEOUT)
            self.assertEqual((ended.returncode, ended.stdout), (69, ""))
            self.assertRegex(ended.stderr, r"\ANorvane: [^\n]+ --platform headless [^\n]+\n\Z")

    def test_the_display_goes_away(self):
        host = self.host()
        self.display.kill()
        status, _, log = host.ended()
        self.assertEqual((status, log[-1]), (69, "[Norvane] the display has gone away"))

    def test_the_bus_goes_away_and_then_there_is_none(self):
        for there_was in (True, False):
            host = self.host()
            if there_was:
                self.assertEqual(host.call(**SYNC), refused(-25291))  # no keyring there
                self.bus.kill()
                self.bus.wait()
            self.assertEqual(host.call(**SYNC), refused(-25291))
            self.assertEqual(host.call(AUTOFILL, "clearCredentials"), CLEARED)
            self.assert_quick_access(host)
            self.assert_ends_well(host)

    def test_the_keyring_hangs(self):
        keyring, _ = self.serve("gnome-keyring-daemon", "--foreground", "--components=secrets",
                                "--unlock")
        desktop.output_of("gdbus", "wait", "--session", "org.freedesktop.secrets")
        host = self.host()
        os.kill(keyring.pid, signal.SIGSTOP)
        host.send({"id": 0} | SYNC)
        self.assert_quick_access(host)  # meanwhile
        os.kill(keyring.pid, signal.SIGCONT)
        self.assertEqual(host.read_until(lambda line: line.get("id") == 0), {"id": 0} | WRITTEN)
        self.assert_ends_well(host)

    def test_keepassxc_is_used_while_it_is_open_and_asks_nobody(self):
        base = self.path("base.kdbx")
        subprocess.run(["keepassxc-cli", "import", "-p", write(self.path("base.xml"), EXPOSED),
                        base], input="pw\npw\n", check=True, capture_output=True, text=True)
        settings = write(self.path("settings"), "[FdoSecrets]\nEnabled=true\n")
        program = ["keepassxc", "--config", settings, "--localconfig", self.path("local")]
        self.serve("sh", "-c", 'echo; exec "$0" "$@"', *program, "--pw-stdin", base, password="pw\n")
        host = self.host()
        desktop.eventually("an open database", lambda: host.call(**SYNC) == WRITTEN)
        for _ in range(2):
            self.assertEqual(host.call(**SYNC), WRITTEN)
        self.assertEqual(host.call(AUTOFILL, "clearCredentials"), CLEARED)
        desktop.output_of(*program, "--lock")
        desktop.eventually("a locked one", lambda: host.call(**SYNC) == refused(-25308))
        self.assert_ends_well(host)

    def test_processes_of_the_same_user_cannot_look_into_it(self):
        drop_capability, ptrace = 24, 19  # of prctl; else root may look into everything
        ctypes.CDLL(None).prctl(drop_capability, ptrace, 0, 0, 0)
        for option, status in ([], 1), (["--allow-debugger"], 0):
            host = self.host(*option)
            looked = subprocess.run(["readlink", f"/proc/{host.pid}/exe"], check=False,
                                    capture_output=True, timeout=TIMEOUT)
            self.assertEqual(looked.returncode, status, looked.stderr)
            with open(f"/proc/{host.pid}/limits", encoding="ascii") as limits:
                self.assertRegex(limits.read(), r"Max core file size +0 +0 ")
            self.assert_ends_well(host)

    def test_its_windows_have_their_icon_and_it_loads_no_gl(self):
        host = self.host("--allow-debugger")  # the first program of the toolkit's on this display
        window = desktop.eventually("its window", lambda: desktop.window_named("Norvane"))
        desktop.eventually("its icon", lambda: "Icon (48 x 48)" in desktop.output_of(
            "xprop", "-id", window, "_NET_WM_ICON"))
        with open(f"/proc/{host.pid}/maps", encoding="utf-8") as maps:
            self.assertNotRegex(maps.read(), "libLLVM|libGLX_mesa")
        self.assert_ends_well(host)

    def test_links_arrive_unchanged_as_one_log_line_each(self):
        links = [f"norvane://{place}\n[Norvane] forged\r\x1b[2J\x7f\u2028ä" for place in "ab"]
        host = self.host(links[0])
        host.call("norvane/deeplink", "flutterReady")
        subprocess.run([EXECUTABLE, links[1]], check=True, timeout=TIMEOUT, env=environment())
        self.assertEqual([host.next_ui_call()["arguments"]["url"] for _ in links], links)
        quit_running = [EXECUTABLE, "--quit"]
        log = self.assert_ends_well(host, lambda _: subprocess.run(
            quit_running, check=True, timeout=TIMEOUT, env=environment()))
        subprocess.run(quit_running, check=True, timeout=TIMEOUT, env=environment())  # none starts
        self.assertEqual(sum("] received deeplink: " in line for line in log), 2)
        self.assertNotRegex("".join(log), r"[\x00-\x1f\x7f\u2028]")


if __name__ == "__main__":
    unittest.main()
