"""What the tests of the real desktop share."""

import os
import signal
import subprocess
from unittest import mock

import real_desktop as desktop
from console_client import Host
from support import BUNDLE, HostTest, environment, write

PANEL = "Norvane — Quick Access"
BUS = """<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><policy context="default">
<allow send_destination="*"/><allow eavesdrop="true"/><allow own="*"/></policy></busconfig>"""  # starts no services


class DesktopTest(HostTest):
    """An X server without a window manager, and a bus without services."""

    def setUp(self):
        super().setUp()
        self.addCleanup(os.umask, os.umask(0))
        os.mkdir(self.path("run"), 0o700)
        self.enterContext(mock.patch.dict(os.environ, {
            "HOME": self.root, "XDG_RUNTIME_DIR": self.path("run"), "LC_ALL": "C.UTF-8",
            "NO_AT_BRIDGE": "1", "GTK_A11Y": "none"}))
        for name in ("XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_SESSION_TYPE",
                     "WAYLAND_DISPLAY"):
            os.environ.pop(name, None)
        self.display, number = self.serve("Xvfb", "-displayfd", "1", "-screen", "0", "1440x900x24",
                                          "-nolisten", "tcp", "-noreset")
        self.bus, address = self.serve("dbus-daemon", "--nofork", "--print-address=1",
                                       "--config-file", write(self.path("bus.conf"), BUS))
        os.environ |= {"DISPLAY": ":" + number, "DBUS_SESSION_BUS_ADDRESS": address}

    def serve(self, *command, password="\n"):
        """Starts a server; returns it and the line by which it says that it takes clients."""
        with open(write(self.path("password"), password), "rb") as given:  # for keyrings
            server = subprocess.Popen(command, stdin=given, stdout=subprocess.PIPE,
                                      stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(server.stdout.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        return server, server.stdout.readline().strip()

    def host(self, *options, **changes):
        host = self.enterContext(Host(BUNDLE, "--ui", "console", "--data-dir", self.data, *options,
                                      platform="gtk", env=environment(**changes)))
        host.settle()
        return host

    def assert_quick_access(self, host):
        """The hotkey shows the panel, with the keyboard, and hides it."""
        desktop.press(desktop.BACKSLASH)
        host.read_until(lambda line: line.get("call") == "shown")
        desktop.eventually("the panel's keyboard", lambda: PANEL == desktop.output_of(
            "xdotool", "getwindowfocus", "getwindowname").strip())
        desktop.press(desktop.BACKSLASH)
        host.read_until(lambda line: line.get("call") == "hidden")

    def assert_ends_well(self, host, end=lambda host: os.kill(host.pid, signal.SIGTERM)):
        end(host)
        status, _, log = host.ended()
        self.assert_for_their_owner_alone()
        self.assertEqual((status, [line for line in log if not line.startswith("[Norvane] ")
                                   or "fault" in line]), (0, []))
        return log
