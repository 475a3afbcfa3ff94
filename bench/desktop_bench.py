"""What the host costs on a real desktop, against a plain GTK window of the same size and KeePassXC.

Usage, within tools/with-desktop: python3 desktop_bench.py BUILD_DIRECTORY
Where it says nothing else, a figure is the median of rounds in which the programs take turns.
"""

import glob
import os
import select
import statistics
import subprocess
import sys
import tempfile
import time

from Xlib import X, XK, display
from Xlib.ext import xtest

ROUNDS = 11
PRESSES = 40
SETTLED = 1  # seconds after which a program that was started has come to rest
POOLS_END = 20  # seconds after which the toolkit has ended the threads that it needs no more
IDLE = 30  # seconds
TIMEOUT = 20  # seconds; nothing takes this long


def await_all(what, *sources):
    """The moments at which each of `what`, by name, came to be true; `sources` tell of news."""
    moments = {}
    while True:
        # Ahead of waiting: what was read already wakes nobody.
        moments |= {name: time.monotonic() for name, is_true in what.items()
                    if name not in moments and is_true()}
        if len(moments) == len(what):
            return moments
        if not select.select(sources, [], [], TIMEOUT)[0]:
            sys.exit(f"desktop_bench: never came: {what.keys() - moments.keys()}")


class Desktop:
    """The X server, seen by a client of its own."""

    def __init__(self):
        self._display = display.Display()
        self.root = self._display.screen().root
        self.root.change_attributes(event_mask=X.SubstructureNotifyMask)
        self.flush()

    def fileno(self):
        return self._display.fileno()

    def flush(self):
        self._display.sync()

    def next_event(self, kind, window=None):
        """Whether such an event has come by now, of `window` alone; those before it are forgotten."""
        while self._display.pending_events():
            event = self._display.next_event()
            if event.type == kind and window in (None, event.window):
                return True
        return False

    def key(self, name, down):
        code = self._display.keysym_to_keycode(XK.string_to_keysym(name))
        xtest.fake_input(self._display, X.KeyPress if down else X.KeyRelease, code)

    def press_hotkey(self):
        """The moment at which the key went down; it is up again when this returns."""
        self.key("Super_L", True)
        self.flush()
        pressed = time.monotonic()
        for name, down in (("backslash", True), ("backslash", False), ("Super_L", False)):
            self.key(name, down)
        self.flush()
        return pressed

    def watch(self, title):
        """The window with that in its title; events tell when it gets the keyboard."""
        listed, name = map(self._display.intern_atom, ("_NET_CLIENT_LIST", "_NET_WM_NAME"))
        for number in self.root.get_full_property(listed, X.AnyPropertyType).value:
            window = self._display.create_resource_object("window", number)
            if title in window.get_full_text_property(name):
                window.change_attributes(event_mask=X.FocusChangeMask)
                return window
        sys.exit(f"desktop_bench: no window {title}")


class Program:
    """A program on the desktop, in a home directory of its own, until the `with` block's end."""

    def __init__(self, *command):
        self._home = tempfile.TemporaryDirectory()
        homes = {name: self._home.name for name in ("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME",
                                                    "XDG_CACHE_HOME")}
        self.started = time.monotonic()
        self._process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                         stderr=subprocess.DEVNULL, env=os.environ | homes)
        self._output = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.communicate(timeout=TIMEOUT)
        self._home.cleanup()

    def fileno(self):
        return self._process.stdout.fileno()

    def has_called(self, method):
        """Whether the host has called the UI so since this was last true."""
        if select.select([self], [], [], 0)[0]:
            self._output += os.read(self.fileno(), 1 << 20)
        before, found, after = self._output.partition(f'"call":"{method}"'.encode())
        self._output = after if found else before
        return bool(found)

    def memory(self):
        """Resident and proportional, in MB; None where the system does not tell."""
        try:
            with open(f"/proc/{self._process.pid}/smaps_rollup", encoding="ascii") as file:
                sizes = {line.split()[0]: int(line.split()[1]) / 1024 for line in file
                         if line.endswith("kB\n")}
            return sizes["Rss:"], sizes["Pss:"]
        except PermissionError:
            return None

    def switches(self):
        """The voluntary context switches of each thread so far."""
        counts = {}
        for path in glob.glob(f"/proc/{self._process.pid}/task/*/status"):
            with open(path, encoding="ascii") as file:
                counts[path] = sum(int(line.split()[1]) for line in file
                                   if line.startswith("voluntary_ctxt_switches"))
        return counts


def start(desktop, command):
    """The program and the milliseconds until its first window was mapped."""
    desktop.next_event(None)  # forgets all that came before
    program = Program(*command)
    mapped = await_all({"window": lambda: desktop.next_event(X.MapNotify)}, desktop)["window"]
    return program, (mapped - program.started) * 1000


def measure_starts(desktop, programs):
    taken = {name: [] for name in programs}
    memory = {name: [] for name in programs}
    for round_number in range(ROUNDS + 1):
        for name, command in programs.items():
            program, milliseconds = start(desktop, command)
            with program:
                if round_number == 0:
                    continue  # reads the files into the page cache
                taken[name].append(milliseconds)
                time.sleep(SETTLED)
                memory[name].append(program.memory())
    print(f"\nStart to the first mapped window, and memory {SETTLED} s later ({ROUNDS} rounds)")
    print(f"  {'':<24}{'start ms':>10}{'least':>8}{'most':>8}{'RSS MB':>9}{'PSS MB':>9}")
    for name in programs:
        sizes = "".join(f"{statistics.median(size):>9.1f}" for size in zip(*memory[name])
                        ) if None not in memory[name] else "   not told"
        print(f"  {name:<24}{statistics.median(taken[name]):>10.1f}{min(taken[name]):>8.1f}"
              f"{max(taken[name]):>8.1f}{sizes}")


def measure_idle(desktop, programs):
    running = {name: start(desktop, command)[0] for name, command in programs.items()}
    time.sleep(POOLS_END)
    before = {name: program.switches() for name, program in running.items()}
    time.sleep(IDLE)
    print(f"\nVoluntary context switches of all threads in {IDLE} idle seconds (all run at once)")
    for name, program in running.items():
        with program:
            switches = sum(count - before[name].get(thread, 0)
                           for thread, count in program.switches().items())
            print(f"  {name:<24}{switches:>8}")


def measure_hotkey(desktop, command, other_command):
    """Shows the panel over another program's window and hides it, over and over."""
    shown, focused = [], []
    with start(desktop, command)[0] as host, start(desktop, other_command)[0]:
        time.sleep(SETTLED)
        pressed = desktop.press_hotkey()
        shows = {"shown": lambda: host.has_called("shown")}
        first = (await_all(shows, host)["shown"] - pressed) * 1000
        time.sleep(SETTLED)
        panel, other = desktop.watch("Quick Access"), desktop.watch("Plain window")
        shows["focus"] = lambda: desktop.next_event(X.FocusIn, panel)
        hides = {"hidden": lambda: host.has_called("hidden"),
                 # Without it nobody would have the keyboard, and the server drop the next press.
                 "focus": lambda: desktop.next_event(X.FocusIn, other)}
        for number in range(PRESSES + 1):
            if number > 0:  # the first one is shown already
                pressed = desktop.press_hotkey()
                came = await_all(shows, host, desktop)
                shown.append((came["shown"] - pressed) * 1000)
                focused.append((came["focus"] - pressed) * 1000)
            desktop.press_hotkey()
            await_all(hides, host, desktop)
    print(f"Hotkey press over another program's window, ms ({PRESSES} presses)")
    print(f"  {'':<24}{'median':>8}{'least':>8}{'most':>8}")
    print(f"  {'to shown, first time':<24}{first:>8.1f}")
    for name, values in ("to shown", shown), ("to the panel's focus", focused):
        print(f"  {name:<24}{statistics.median(values):>8.1f}{min(values):>8.1f}"
              f"{max(values):>8.1f}")


def main():
    build = os.path.abspath(sys.argv[1])
    host = [os.path.join(build, "Norvane.app/Contents/MacOS/Norvane"), "--allow-debugger"]
    programs = {"norvane": host, "plain GTK window": [os.path.join(build, "bench/plain_window")],
                "keepassxc": ["keepassxc"]}
    desktop = Desktop()
    measure_hotkey(desktop, host + ["--ui", "console"], programs["plain GTK window"])
    measure_starts(desktop, programs)
    measure_idle(desktop, programs)


if __name__ == "__main__":
    main()
