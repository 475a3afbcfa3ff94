"""A real UI program on the UI toolkit's own library, in the windows of the whole host."""

import json
import os
import shutil
import statistics
import subprocess
import time
import unittest

import real_desktop as desktop
from console_client import TIMEOUT
from desktop_support import PANEL, DesktopTest
from support import BUNDLE, environment, read, write
from ui_bundle import BUNDLE as UI

# Without the first two the program draws nothing.
PLUGINS = ["WindowManagerPlugin", "ScreenRetrieverLinuxPlugin", "PasteboardPlugin"]


def memory(pid):
    """Proportional, in KB."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("Pss:"))


class RealUi(DesktopTest):
    def setUp(self):
        super().setUp()
        self.app = self.path("Norvane.app")
        shutil.copytree(BUNDLE, self.app)
        write(os.path.join(self.app, "Contents/Info.json"), json.dumps({"UIPlugins": PLUGINS}))
        self.executable = os.path.join(self.app, "Contents/MacOS/Norvane")
        self.serve("openbox", "--sm-disable", "--startup", "echo")

    def start(self, *options):
        arguments = [word for name in "abc" for word in ("--ui-argument", self.path(name))]
        host = subprocess.Popen(
            [self.executable, "--allow-debugger", "--data-dir", self.data, *arguments, *options],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            env=environment(FLUTTER_LINUX_RENDERER="software"))
        self.addCleanup(host.stdout.close)
        self.addCleanup(host.wait)
        self.addCleanup(host.kill)
        return host

    def run_again(self, *options):
        subprocess.run([self.executable, *options], check=True, timeout=TIMEOUT, env=environment())

    def await_drawn(self, title):
        desktop.eventually(title, lambda: (shown := desktop.window_named(title))
                           and desktop.colours_of(shown) > 1)

    def test_it_draws_in_both_windows_and_stays_while_they_come_and_go(self):
        host = self.start("--ui-bundle", UI)
        self.await_drawn("Norvane")
        grown = []
        for showing in range(20):
            desktop.press(desktop.BACKSLASH)
            self.await_drawn(PANEL)
            grown.append(memory(host.pid))
            desktop.press(desktop.BACKSLASH)
            desktop.eventually("its end", lambda: not desktop.window_named(PANEL))
            self.assertIsNone(host.poll(), showing)
        if b"__asan_init" not in read(self.executable):  # it keeps what is freed
            # The program's garbage comes and goes; what stays moves the middle.
            early, late = statistics.median(grown[1:10]), statistics.median(grown[10:])
            self.assertLess(late, 1.2 * early, grown)
        desktop.close("Norvane")
        desktop.eventually("its end", lambda: not desktop.window_named("Norvane"))
        self.run_again()
        self.await_drawn("Norvane")
        started = time.monotonic()
        self.run_again("--quit")
        said = host.stdout.read()
        self.assertEqual(host.wait(TIMEOUT), 0, said)
        self.assertLess(time.monotonic() - started, 2)
        self.assertNotIn("not run", said)  # of which the windows would tell, in colours

    def test_a_host_without_a_whole_ui_says_so_and_stays(self):
        os.makedirs(self.path("part/lib"))
        for directory, said in [("none", "there is none in "), ("part", "/lib/libflutter_linux_gtk")]:
            host = self.start("--ui-bundle", self.path(directory))
            desktop.eventually("its window", lambda: desktop.window_named("Norvane"))
            self.run_again("--quit")
            self.assertEqual(host.wait(TIMEOUT), 0)
            said_lines = [line for line in host.stdout if "interface cannot run" in line]
            self.assertEqual(len(said_lines), 1)
            self.assertIn(said, said_lines[0])


if __name__ == "__main__":
    if os.path.isdir(UI):
        unittest.main()
    print("no UI bundle to be had")
