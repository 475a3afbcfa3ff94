"""The person and the other programs on the X11 desktop that $DISPLAY names."""

import os
import subprocess
import sys
import threading
import time
import queue

import Xlib.X
import Xlib.display
import Xlib.error

TIMEOUT = 20  # seconds; nothing takes this long
BACKSLASH = "super+backslash"
OTHER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "other_application.py")


class DesktopFailure(Exception):
    """The desktop did not come to show what it should."""


def output_of(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=TIMEOUT,
                          **options).stdout


def eventually(what, look):
    """What `look` returns once it is true. Other programs' windows can only be looked at."""
    end = time.monotonic() + TIMEOUT
    while not (found := look()):
        if time.monotonic() > end:
            raise DesktopFailure(f"never came: {what}")
        time.sleep(0.01)
    return found


def press(*keys):
    """Presses key combinations, by the names of xdotool."""
    output_of("xdotool", "key", "--clearmodifiers", *keys)


def click(x, y):
    output_of("xdotool", "mousemove", str(x), str(y), "click", "1")


def active_window():
    """The title of the window that has the keyboard; None when none has."""
    named = subprocess.run(["xdotool", "getactivewindow", "getwindowname"], check=False,
                           capture_output=True, text=True, timeout=TIMEOUT)
    return named.stdout.strip() if named.returncode == 0 else None


def window_named(title):
    """The id of the mapped window of that title; None when there is none."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"],
                           check=False, capture_output=True, text=True, timeout=TIMEOUT)
    return found.stdout.split()[-1] if found.stdout.split() else None


def frame_of(title):
    """A window's frame with its decoration: left, top, width, height, from the screen's top left."""
    window = eventually(f"the window {title}", lambda: window_named(title))
    facts = dict(line.strip().split(": ", 1) for line in
                 output_of("xwininfo", "-id", window).splitlines() if ": " in line)
    extents = output_of("xprop", "-id", window, "-notype", "_NET_FRAME_EXTENTS").split("=")
    left, right, top, bottom = map(int, extents[1].split(",")) if len(extents) > 1 else (0,) * 4
    return (int(facts["Absolute upper-left X"]) - left, int(facts["Absolute upper-left Y"]) - top,
            int(facts["Width"]) + left + right, int(facts["Height"]) + top + bottom)


def colours_of(window):
    """How many colours are to be seen in the middle of a window that nothing covers."""
    server = Xlib.display.Display()
    try:
        drawable = server.create_resource_object("window", int(window))
        size = drawable.get_geometry()
        image = drawable.get_image(size.width // 2 - 80, size.height // 2 - 80, 160, 160,
                                   Xlib.X.ZPixmap, 0xFFFFFF)
        return len(set(memoryview(image.data).cast("I")))
    except (Xlib.error.BadMatch, Xlib.error.BadWindow, Xlib.error.BadDrawable):
        return 0  # it is not on screen (any more)
    finally:
        server.close()


def close(title):
    """The person clicks the window's close button."""
    output_of("wmctrl", "-c", title)


def clipboard(target):
    return subprocess.run(["xclip", "-o", "-selection", "clipboard", "-t", target], check=False,
                          capture_output=True, timeout=TIMEOUT, env=os.environ | {"LC_ALL": "C"})


class OtherApplication:
    """Another program on the desktop; what happens to it comes as lines."""

    def __init__(self, *arguments):
        self._process = subprocess.Popen([sys.executable, OTHER, *arguments],
                                         stdout=subprocess.PIPE, stdin=subprocess.PIPE, text=True)
        self._lines = queue.Queue()
        threading.Thread(target=self._follow, daemon=True).start()
        self.expect("ready")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()

    def end(self):
        self._process.kill()
        self._process.wait()

    def _follow(self):
        for line in self._process.stdout:
            self._lines.put(line.rstrip("\n"))

    def line(self):
        try:
            return self._lines.get(timeout=TIMEOUT)
        except queue.Empty:
            raise DesktopFailure(f"{self._process.args[2:]} has heard nothing") from None

    def expect(self, wanted):
        """Waits for that line; passes over others."""
        while self.line() != wanted:
            pass

    def ask(self, command):
        self._process.stdin.write(command + "\n")
        self._process.stdin.flush()
