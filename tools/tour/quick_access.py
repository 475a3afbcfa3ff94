"""Quick Access: the panel that comes up over other applications, and the hotkey that calls it."""

import base64
import struct

from tour.page import EDITOR, SUCCEEDED, call, show
from tour.start import url_opened

PANEL = {"engine": "norvane-qa", "channel": "cn.kestrio.norvane.qa_panel"}
HIDDEN = call(**PANEL, method="hidden", arguments=None)
SYNC_LOCK_STATE = call("main", "norvane/hotkey", "syncLockState", None)
CMD_BACKSLASH = {"key": 42, "modifiers": 0x100}
CMD_SHIFT_BACKSLASH = {"key": 42, "modifiers": 0x300}


def pixels_of(png):
    """Width and height of a PNG, from its header."""
    return struct.unpack(">II", png[16:24]) if png.startswith(b"\x89PNG\r\n\x1a\n") else None


def click_elsewhere(tour):
    tour.person("clicks into the editor", "activate", application=EDITOR)


def check_panel_goes(tour, why):
    tour.check(f"{why}; the panel's UI is told", tour.ui_is_called(), HIDDEN)
    tour.check("and the main UI, which may have to lock", tour.ui_is_called(), SYNC_LOCK_STATE)


def panel_is_up(tour):
    return tour.windows()["QAPanel"]["visible"]


def the_hotkey_calls_the_panel_over_another_application(tour):
    tour.person("works in the editor", "activate", application=EDITOR)
    tour.person("presses ⌘\\", "pressKeys", **CMD_BACKSLASH)
    shown = tour.ui_is_called()
    tour.check("a second engine, the panel's own, was started for it",
               tour.log_line(), "[Norvane] QA panel engine created (entrypoint=qaMain)")
    icon = base64.b64decode(shown["arguments"].pop("iconPng")["$bytes"])
    tour.check("the panel is told which application was in front", shown,
               call(**PANEL, method="shown", arguments={
                   "identity": EDITOR, "name": "Editor", "frontmostApp": "Editor"}))
    tour.check("with its icon, a PNG of 64 x 64 pixels", pixels_of(icon), (64, 64))
    state = tour.host.state()
    panel = state["windows"][1]
    show("screen", f"in front: {state['frontApplication']}; the panel is at {panel['frame']}")
    tour.check("the panel has the keyboard, and the editor is still the application in front",
               (panel["key"], state["frontApplication"]), (True, EDITOR))
    tour.host.settle()  # the plugins of the second engine


def a_click_elsewhere_takes_it_away(tour):
    click_elsewhere(tour)
    check_panel_goes(tour, "it goes")
    tour.check("it is off screen", panel_is_up(tour), False)


def a_pinned_panel_stays(tour):
    tour.person("presses ⌘\\ again", "pressKeys", **CMD_BACKSLASH)
    tour.check("the same panel is back", tour.ui_is_called()["call"], "shown")
    tour.ui_asks(**PANEL, method="setPinned", arguments={"pinned": True})
    click_elsewhere(tour)
    tour.check_nothing_else_came()
    tour.check("the panel is still on screen", panel_is_up(tour), True)


def the_panel_opens_the_main_window_at_an_item(tour):
    arguments = {"editItemId": "item-7"}
    open_item = call("main", "norvane/hotkey", "openItem", arguments)
    tour.check("the panel goes first, then the main UI is asked for the item",
               tour.ui_sends(**PANEL, method="openMain", arguments=arguments),
               (SUCCEEDED, [HIDDEN, SYNC_LOCK_STATE, open_item]))
    tour.check("the main window has the keyboard, in the active application",
               (tour.main_window()["key"], tour.host.state()["active"]), (True, True))


def an_unpinned_panel_goes_again(tour):
    tour.person("clicks the status item", "clickStatusItem")
    tour.check("the panel comes, with no other application to tell of",
               tour.ui_is_called(), call(**PANEL, method="shown", arguments={}))
    for pinned in (True, False):
        tour.ui_asks(**PANEL, method="setPinned", arguments={"pinned": pinned})
    click_elsewhere(tour)
    check_panel_goes(tour, "unpinned, it goes")
    tour.check_nothing_else_came()


def the_unlock_link_shows_the_panel(tour):
    link = "norvane://unlock?from=browser"
    tour.person(f"opens the link {link}", "openURL", url=link)
    tour.check("it is the panel that answers", tour.ui_is_called()["call"], "shown")
    tour.log_line()
    tour.check("the main UI has heard nothing of it", tour.host.settle(), [])
    tour.check("the panel closes when its UI says so",
               tour.ui_sends(**PANEL, method="close"), (SUCCEEDED, [HIDDEN, SYNC_LOCK_STATE]))
    link = "norvane://Unlock"
    tour.person(f"opens the link {link}, in another spelling", "openURL", url=link)
    tour.check("which is a link like any other", tour.ui_is_called(), url_opened(link))
    tour.log_line()


def set_choice(tour, code):
    return tour.ui_asks("cn.kestrio.norvane.hotkey.config", "setChoice", arguments={"code": code})


def a_taken_hotkey_is_stepped_over(tour):
    tour.check("the UI hands over the person's choice, which is free",
               set_choice(tour, "ctrl-opt-space"), {"registered": "⌃⌥Space", "degraded": False})
    tour.log_line()
    tour.log_line()
    show("desktop", "another application takes ⌘\\")
    tour.host.event("set", takenHotkeys=[list(CMD_BACKSLASH.values())])
    tour.check("the host's own choice is the next one that is free",
               set_choice(tour, "auto"), {"registered": "⌘⇧\\", "degraded": True})
    lines = [tour.log_line() for _ in range(3)]
    tour.check("the log says which one was taken", lines[1],
               "[Norvane] hotkey ⌘\\ RegisterEventHotKey failed: -9878 — 已被占用,尝试下一个")
    tour.person("presses ⌘\\, which is the other application's", "pressKeys", **CMD_BACKSLASH)
    tour.check_nothing_else_came()
    tour.person("presses ⌘⇧\\", "pressKeys", **CMD_SHIFT_BACKSLASH)
    tour.check("the panel comes", tour.ui_is_called()["call"], "shown")
    tour.person("presses ⌘⇧\\ once more", "pressKeys", **CMD_SHIFT_BACKSLASH)
    check_panel_goes(tour, "it goes")


STEPS = [
    ("The hotkey calls Quick Access over another application",
     the_hotkey_calls_the_panel_over_another_application),
    ("A click elsewhere takes the panel away", a_click_elsewhere_takes_it_away),
    ("A pinned panel stays", a_pinned_panel_stays),
    ("The panel opens the main window at an item", the_panel_opens_the_main_window_at_an_item),
    ("A panel that is unpinned goes again", an_unpinned_panel_goes_again),
    ("The unlock link shows the panel", the_unlock_link_shows_the_panel),
    ("A hotkey that is taken is stepped over", a_taken_hotkey_is_stepped_over),
]
