"""What the host costs with a real UI program, against the UI toolkit's own runner of that program.

Usage, within tools/with-desktop: python3 ui_bench.py BUILD_DIRECTORY UI_BUNDLE_DIRECTORY
The bundle lies beside its runner, which is named as the directory. Figures are medians of rounds in
which the programs take turns; both draw in software.
"""

import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from Xlib import X, XK, display, error
from Xlib.ext import xtest

ROUNDS = 15
WARM = 20  # showings of the panel
TRIPS = 5  # processes a side, of a thousand round trips each
TIMEOUT = 30  # seconds; nothing takes this long
AREA = 160, 160  # of a window's middle, where the program draws first
PLUGINS = ["ScreenRetrieverLinuxPlugin", "WindowManagerPlugin"]  # without which it draws nothing


class Screen:
    """What is to be seen on the X server."""

    def __init__(self):
        self.display = display.Display()
        self.root = self.display.screen().root
        self.clients = self.display.intern_atom("_NET_CLIENT_LIST")
        self.pid = self.display.intern_atom("_NET_WM_PID")

    def windows(self, pid):
        listed = self.root.get_full_property(self.clients, X.AnyPropertyType)
        for number in listed.value if listed else ():
            window = self.display.create_resource_object("window", number)
            try:
                owner = window.get_full_property(self.pid, X.AnyPropertyType)
                if owner and owner.value[0] == pid:
                    yield window
            except error.BadWindow:
                pass

    def is_drawn(self, window):
        """Whether the middle of the window has more than one colour."""
        width, height = AREA
        try:
            size = window.get_geometry()
            image = window.get_image((size.width - width) // 2, (size.height - height) // 2, width,
                                     height, X.ZPixmap, 0xFFFFFF)
        except (error.BadMatch, error.BadWindow, error.BadDrawable):  # not on screen (any more)
            return False
        return len(set(memoryview(image.data).cast("I"))) > 1

    def await_drawn(self, pid, known=()):
        """The moment at which a window of the process that is not `known` is drawn; and the window."""
        end = time.monotonic() + TIMEOUT
        while time.monotonic() < end:
            for window in self.windows(pid):
                if window.id not in known and self.is_drawn(window):
                    return time.monotonic(), window
        sys.exit("ui_bench: nothing was drawn")

    def await_gone(self, window):
        end = time.monotonic() + TIMEOUT
        while self.is_drawn(window):
            if time.monotonic() > end:
                sys.exit("ui_bench: a window stayed")

    def press(self, *names):
        """The moment at which the last key went down; all are up when this returns."""
        while self.display.get_input_focus().focus == X.NONE:
            time.sleep(0.001)  # no key goes anywhere until the window manager has chosen
        codes = [self.display.keysym_to_keycode(XK.string_to_keysym(name)) for name in names]
        for code in codes:
            xtest.fake_input(self.display, X.KeyPress, code)
        self.display.sync()
        pressed = time.monotonic()
        for code in reversed(codes):
            xtest.fake_input(self.display, X.KeyRelease, code)
        self.display.sync()
        return pressed


class Program:
    """A program in a home of its own, until the `with` block's end."""

    def __init__(self, *command):
        self._home = tempfile.TemporaryDirectory()
        homes = {name: self._home.name for name in ("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME",
                                                    "XDG_CACHE_HOME")}
        paths = [os.path.join(self._home.name, name) for name in "abc"]
        self.started = time.monotonic()
        self._process = subprocess.Popen([word for part in command for word in
                                          (part(paths) if callable(part) else [part])],
                                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                         env=os.environ | homes)
        self.pid = self._process.pid

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait(timeout=TIMEOUT)
        self._home.cleanup()

    def memory(self):
        """Proportional, in MB."""
        with open(f"/proc/{self.pid}/smaps_rollup", encoding="ascii") as file:
            return next(int(line.split()[1]) / 1024 for line in file if line.startswith("Pss:"))


def round_trip(build, bundle, side):
    """Of a call of the program and its answer, in microseconds."""
    program = os.path.join(build, "bench", "ui_round_trip")
    with tempfile.TemporaryDirectory() as home:
        return int(subprocess.run([program, bundle, side], check=True, stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL, timeout=2 * TIMEOUT,
                                  env=os.environ | {"HOME": home, "TMPDIR": home}).stdout)


def milliseconds(seconds):
    return f"{1000 * seconds:.0f} ms"


def main(build, bundle):
    os.environ["FLUTTER_LINUX_RENDERER"] = "software"
    screen = Screen()
    with tempfile.TemporaryDirectory() as root:
        app = os.path.join(root, "Norvane.app")
        shutil.copytree(os.path.join(build, "Norvane.app"), app, symlinks=True)
        with open(os.path.join(app, "Contents", "Info.json"), "w", encoding="utf-8") as file:
            json.dump({"UIPlugins": PLUGINS}, file)

        def arguments(paths):
            return [word for path in paths for word in ("--ui-argument", path)]

        programs = {
            "host": (os.path.join(app, "Contents", "MacOS", "Norvane"), "--allow-debugger",
                     "--ui-bundle", bundle, arguments),
            "runner": (os.path.join(bundle, os.path.basename(bundle)), lambda paths: paths),
        }
        starts = {name: [] for name in programs}
        cold, warm, one, two = [], [], [], []
        for _ in range(ROUNDS):
            for name, command in programs.items():
                with Program(*command) as program:
                    moment, window = screen.await_drawn(program.pid)
                    starts[name].append(moment - program.started)
                    if name != "host":
                        continue
                    one.append(program.memory())
                    known = {window.id}
                    pressed = screen.press("Super_L", "backslash")
                    moment, panel = screen.await_drawn(program.pid, known)
                    cold.append(moment - pressed)
                    two.append(program.memory())
                    for _ in range(WARM // ROUNDS + 1):
                        screen.press("Super_L", "backslash")
                        screen.await_gone(panel)
                        pressed = screen.press("Super_L", "backslash")
                        moment, panel = screen.await_drawn(program.pid, known)
                        warm.append(moment - pressed)
        median = {name: statistics.median(values) for name, values in starts.items()}
    ratio = median["host"] / median["runner"]
    print(f"start to the first frame: host {milliseconds(median['host'])}, the toolkit's own runner "
          f"{milliseconds(median['runner'])}: {ratio:.2f} times")
    print(f"press to the panel's first frame: cold {milliseconds(statistics.median(cold))}, "
          f"warm {milliseconds(statistics.median(warm))}")
    print(f"memory (PSS): one engine {statistics.median(one):.0f} MB, "
          f"two {statistics.median(two):.0f} MB")
    trips = {side: [] for side in ("host", "library")}
    for _ in range(TRIPS):
        for side, found in trips.items():
            found.append(round_trip(build, bundle, side))
    host, library = (statistics.median(found) for found in trips.values())
    print(f"round trip Dart, handler, Dart: the host's messenger and codec {host:.0f} us, the library's "
          f"own method channel {library:.0f} us: {host / library:.2f} times")


if __name__ == "__main__":
    main(*sys.argv[1:])
