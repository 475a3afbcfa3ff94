"""The main window: its two layouts, and that the host outlives it."""

from tour.page import SUCCEEDED, show


def set_mode(tour, mode):
    """Asks for a layout and returns the frame that it leads to."""
    tour.check("the reply comes at once", tour.ui_sends(
        "cn.kestrio.norvane.window", "setMode", arguments={"mode": mode}), (SUCCEEDED, []))
    frame = tour.main_window()["frame"]
    show("screen", f"the main window is {frame[2]:g} x {frame[3]:g} points")
    return frame


def the_window_has_two_layouts(tour):
    tour.check("for signing in: compact, in the middle",
               set_mode(tour, "auth"), [310, 167.5, 820, 540])
    tour.check("for the vault: larger", set_mode(tour, "vault"), [250, 137.5, 940, 600])


def the_vault_remembers_its_size(tour):
    tour.person("makes the window larger", "resizeWindow", frame=[20, 30, 1200, 700])
    set_mode(tour, "auth")
    tour.check("the size for signing in is not what is remembered",
               tour.host.state()["userDefaults"]["NSWindow Frame NorvaneMainWindow"],
               "20 30 1200 700")
    tour.check("the vault has the size that the person gave it, in the middle again",
               set_mode(tour, "vault"), [120, 87.5, 1200, 700])


def a_closed_window_comes_back(tour):
    tour.person("closes the window", "closeWindow")
    tour.check("it is off screen, and the host goes on", tour.main_window()["visible"], False)
    tour.person("opens the running application again", "reopen")
    state = tour.host.state()
    window = state["windows"][0]
    show("screen", f"in front: {state['frontApplication']}")
    tour.check("the same window is back, with the keyboard, and the host is the active application",
               (window["visible"], window["key"], state["active"]), (True, True, True))


STEPS = [
    ("The window has one layout for signing in and one for the vault", the_window_has_two_layouts),
    ("The vault's layout remembers its size", the_vault_remembers_its_size),
    ("Closing the window does not end the host", a_closed_window_comes_back),
]
