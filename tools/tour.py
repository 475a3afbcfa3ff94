#!/usr/bin/env python3
"""A guided tour of the host on the headless desktop.

Plays the UI program and the person at the desk against the real executable, says what happens and
checks each answer. Exits with status 1 at the first that is wrong.
"""

import json
import os
import shutil
import sys
import tempfile
import textwrap

from console_client import Host, HostFailure

BUNDLE = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))),
                      "build/Norvane.app")
WIDTH = 80


class WrongResult(Exception):
    """The host did something else than it should."""


class Tour:
    """What a step talks with: the host, and the page that the newcomer reads."""

    def __init__(self, host, bundle, data_directory):
        self.host = host
        self.bundle = bundle
        self.data_directory = data_directory

    # Acts, each of which says what it does

    def person(self, what, event, **keys):
        """Something happens at the desk; `what` says it in words."""
        show("person", what)
        self.host.event(event, **keys)

    def ui_sends(self, channel, method, **keys):
        """The UI calls the host; returns the reply."""
        arguments = f" {json_of(keys['arguments'])}" if "arguments" in keys else ""
        show("UI sends", f"{channel}: {method}{arguments}")
        reply = self.host.call(channel, method, **keys)
        show("UI gets", f"reply: {words_of(reply)}")
        return reply

    def ui_is_called(self):
        """The host's next call to the UI."""
        call = self.host.next_ui_call()
        show("UI gets", f"{call['channel']}: {call['call']} {json_of(call['arguments'])}")
        return call

    def log_line(self):
        line = self.host.log_line()
        show("log", line.replace(self.bundle, os.path.basename(self.bundle)))
        return line

    def window(self):
        """The main window as the desktop has it now."""
        return self.host.state()["windows"][0]

    # Checks

    def check(self, what, found, expected):
        if found != expected:
            raise WrongResult(f"{what}\nexpected  {expected!r}\nfound     {found!r}")
        show("checked", what)


def show(label, text):
    indent = " " * 14
    print(textwrap.fill(text, WIDTH, initial_indent=f"    {label:<10}", subsequent_indent=indent,
                        break_long_words=False, break_on_hyphens=False))


def json_of(value):
    return json.dumps(value, ensure_ascii=False)


def words_of(reply):
    if reply.get("reply") == "success":
        return "success" if reply["value"] is None else f"success, {json_of(reply['value'])}"
    if reply.get("reply") == "error":
        return f"error {reply['code']}, {reply['message']}"
    return "not implemented" if reply.get("reply") == "notImplemented" else json_of(reply)


SUCCESS = {"reply": "success", "value": None}
NOT_IMPLEMENTED = {"reply": "notImplemented"}


def url_opened(link):
    return {"engine": "main", "channel": "norvane/deeplink", "call": "urlOpened",
            "arguments": {"url": link}}


# The steps, in the order in which they are played; each meets the host as the last one left it.


def the_core_library_is_loaded(tour):
    library = os.path.join(tour.bundle, "Contents/Frameworks/libffi_bridge.dylib")
    tour.check("the first thing in the log is the library inside the bundle",
               tour.log_line(), f"[Norvane] loaded Rust library at: {library}")
    with open(f"/proc/{tour.host.pid}/maps", encoding="utf-8") as maps:
        mapped = any(line.rstrip().endswith(library) for line in maps)
    tour.check("the system's dynamic loader has it in the process's memory", mapped, True)


def the_main_engine_opens_its_channels(tour):
    started = tour.host.read()
    show("UI gets", f"engine {started['engine']!r} runs its entry point {started['started']!r}")
    tour.check("the UI's program runs", started, {"engine": "main", "started": "main"})
    tour.check("the channels are there, after the library",
               tour.log_line().startswith("[Norvane] MainFlutterWindow channels registered"), True)
    plugins = [line["plugin"] for line in tour.host.settle() if "plugin" in line]
    show("UI gets", "plugins: " + ", ".join(plugins))
    tour.check("the UI toolkit's seven plugins have registered", len(set(plugins)), 7)


def the_window_gets_its_first_frame(tour):
    window = tour.window()
    x, y, width, height = window["frame"]
    show("screen", f"the main window is {width:g} x {height:g} points, at {x:g}, {y:g}")
    tour.check("it is on screen, in the middle of what the menu bar leaves of 1440 x 900",
               (window["visible"], window["frame"]), (True, [250, 137.5, 940, 600]))


def a_link_that_comes_too_early_is_kept(tour):
    link = "norvane://item/8c1f?action=edit"
    tour.person(f"opens the link {link} while the UI is still starting", "openURL", url=link)
    tour.check("the host keeps it",
               tour.log_line(), "[Norvane] deeplink buffered (Dart not ready yet)")
    tour.check("the UI has heard nothing of it", tour.host.settle(), [])
    tour.host.send({"id": "ready", "channel": "norvane/deeplink", "method": "flutterReady"})
    show("UI sends", "norvane/deeplink: flutterReady")
    call = tour.ui_is_called()
    tour.check("the link is delivered, once the UI can take it", call, url_opened(link))
    reply = tour.host.read()
    show("UI gets", f"reply: {words_of(reply)}")
    tour.check("and before the reply to its call", reply, {"id": "ready", **SUCCESS})


def a_link_after_that_is_delivered_at_once(tour):
    link = "norvane://item/次?x=%20"
    tour.person(f"opens the link {link}", "openURL", url=link)
    tour.check("the UI has it, to the letter", tour.ui_is_called(), url_opened(link))
    tour.check("a second \"flutterReady\" delivers nothing again",
               tour.ui_sends("norvane/deeplink", "flutterReady"), SUCCESS)
    tour.check("nothing else came", tour.host.settle(), [])


def a_closed_window_comes_back(tour):
    tour.person("closes the window", "closeWindow")
    tour.check("it is off screen, and the host goes on", tour.window()["visible"], False)
    tour.person("opens the running application again", "reopen")
    state = tour.host.state()
    window = state["windows"][0]
    show("screen", f"in front: {state['frontApplication']}")
    tour.check("the same window is back, with the keyboard, and the host is the active application",
               (window["visible"], window["key"], state["active"]), (True, True, True))


def what_nobody_serves_is_still_answered(tour):
    tour.check("a method that the channel does not know",
               tour.ui_sends("norvane/deeplink", "makeCoffee"), NOT_IMPLEMENTED)
    tour.check("a channel that nobody has bound",
               tour.ui_sends("norvane/no_such_channel", "hello", arguments=[1, 2.5, None]),
               NOT_IMPLEMENTED)


def the_host_quits_when_it_is_told_to(tour):
    tour.person("quits the application", "quit")
    status, lines, _ = tour.host.ended()
    tour.check("it ends with status 0, and has nothing left to say", (status, lines), (0, []))


STEPS = [
    ("The core library is loaded before anything else", the_core_library_is_loaded),
    ("The UI's engine starts, and the host opens its channels", the_main_engine_opens_its_channels),
    ("The main window gets its first frame", the_window_gets_its_first_frame),
    ("A link that comes before the UI is ready is kept", a_link_that_comes_too_early_is_kept),
    ("A link after that is delivered at once", a_link_after_that_is_delivered_at_once),
    ("Closing the window does not end the host", a_closed_window_comes_back),
    ("What nobody serves is still answered", what_nobody_serves_is_still_answered),
    ("An explicit quit ends it", the_host_quits_when_it_is_told_to),
]


def main():
    sys.stdout.reconfigure(errors="backslashreplace")  # for a terminal that is not UTF-8
    print("A tour of Norvane's desktop host, on a simulated desktop without a display.\n"
          "What you read comes from the running program, and each step is checked.")
    data_directory = tempfile.mkdtemp(prefix="norvane-tour-")
    environment = {name: value for name, value in os.environ.items()
                   if name != "NORVANE_RUST_LIB_PATH"}  # the tour shows the bundle's own
    step = "Start"
    try:
        with Host(BUNDLE, "--data-dir", data_directory, env=environment) as host:
            tour = Tour(host, BUNDLE, data_directory)
            for number, (step, play) in enumerate(STEPS, 1):
                print(f"\n{number}. {step}")
                play(tour)
    except (WrongResult, HostFailure) as failure:
        sys.stdout.flush()
        print(f"\nWRONG in \"{step}\":\n{textwrap.indent(str(failure), '    ')}", file=sys.stderr)
        return 1
    finally:
        shutil.rmtree(data_directory)
    print(f"\nAll {len(STEPS)} steps went as they should. `./run console` lets you try it yourself.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
