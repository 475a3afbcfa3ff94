"""How the host starts, takes and passes on links, and ends."""

import os

from tour.page import NOT_IMPLEMENTED, SUCCEEDED, call, show


def url_opened(link):
    return call("main", "norvane/deeplink", "urlOpened", {"url": link})


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


def the_hotkey_and_the_status_item_are_installed(tour):
    tour.check("the first choice of hotkeys was free",
               tour.log_line(), "[Norvane] global hotkey ⌘\\ registered (status=0)")
    item = tour.host.state()["statusItem"]
    show("screen", f"in the menu bar: {item['image']}, {item['toolTip']!r}")
    tour.check("the status item is in the menu bar", item["image"], "MenuBarIcon")


def the_window_gets_its_first_frame(tour):
    window = tour.main_window()
    x, y, width, height = window["frame"]
    show("screen", f"the main window is {width:g} x {height:g} points, at {x:g}, {y:g}")
    tour.check("it is on screen, in the middle of what the menu bar leaves of 1440 x 900",
               (window["visible"], window["frame"]), (True, [250, 137.5, 940, 600]))


def a_link_that_comes_too_early_is_kept(tour):
    link = "norvane://item/8c1f?action=edit"
    tour.person(f"opens the link {link} while the UI is still starting", "openURL", url=link)
    tour.check("the host has it", tour.log_line(), f"[Norvane] received deeplink: {link}")
    tour.check("and keeps it",
               tour.log_line(), "[Norvane] deeplink buffered (Dart not ready yet)")
    tour.check("the UI has heard nothing of it", tour.host.settle(), [])
    tour.check("the link is delivered, once the UI can take it, ahead of the reply to its call",
               tour.ui_sends("norvane/deeplink", "flutterReady"), (SUCCEEDED, [url_opened(link)]))


def a_link_after_that_is_delivered_at_once(tour):
    link = "norvane://item/次?x=%20"
    tour.person(f"opens the link {link}", "openURL", url=link)
    tour.check("the UI has it, to the letter", tour.ui_is_called(), url_opened(link))
    tour.check("and the log, one line for each link",
               tour.log_line(), f"[Norvane] received deeplink: {link}")
    tour.check("a second \"flutterReady\" delivers nothing again",
               tour.ui_sends("norvane/deeplink", "flutterReady"), (SUCCEEDED, []))
    tour.check_nothing_else_came()


def what_nobody_serves_is_still_answered(tour):
    tour.check("a method that the channel does not know",
               tour.ui_sends("norvane/deeplink", "makeCoffee"), (NOT_IMPLEMENTED, []))
    tour.check("a channel that nobody has bound",
               tour.ui_sends("norvane/no_such_channel", "hello", arguments=[1, 2.5, None]),
               (NOT_IMPLEMENTED, []))


def the_host_quits_when_it_is_told_to(tour):
    tour.person("quits the application", "quit")
    tour.check("it ends with status 0, and has nothing left to say, nor to log",
               tour.host.ended(), (0, [], []))


STEPS = [
    ("The core library is loaded before anything else", the_core_library_is_loaded),
    ("The UI's engine starts, and the host opens its channels", the_main_engine_opens_its_channels),
    ("The hotkey and the status item are installed", the_hotkey_and_the_status_item_are_installed),
    ("The main window gets its first frame", the_window_gets_its_first_frame),
    ("A link that comes before the UI is ready is kept", a_link_that_comes_too_early_is_kept),
    ("A link after that is delivered at once", a_link_after_that_is_delivered_at_once),
]
ENDING = [
    ("What nobody serves is still answered", what_nobody_serves_is_still_answered),
    ("An explicit quit ends it", the_host_quits_when_it_is_told_to),
]
