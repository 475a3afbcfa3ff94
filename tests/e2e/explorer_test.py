"""The explorer of the channels, by keyboard alone, and as screen readers have it."""

import os
import signal
import subprocess
import unittest

import real_desktop as desktop
from console_client import TIMEOUT
from desktop_support import PANEL, DesktopTest
from support import EXECUTABLE, environment

import gi
gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

SECRET = "p4ss \"word\""
CONTROLS = (Atspi.Role.PUSH_BUTTON, Atspi.Role.TOGGLE_BUTTON, Atspi.Role.TEXT, Atspi.Role.ENTRY,
            Atspi.Role.TREE_TABLE, Atspi.Role.TABLE, Atspi.Role.LIST_BOX)


def all_in(accessible):
    if accessible and accessible.get_state_set().contains(Atspi.StateType.SHOWING):
        yield accessible
        for index in range(accessible.get_child_count()):
            yield from all_in(accessible.get_child_at_index(index))


def text_of(accessible):
    isText = "Text" in accessible.get_interfaces()
    return Atspi.Text.get_text(accessible, 0, -1) if isText else accessible.get_name()


class Explorer(DesktopTest):
    def setUp(self):
        super().setUp()
        self.serve("openbox", "--sm-disable", "--startup", "echo")
        accessibility = subprocess.Popen(
            ["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"], start_new_session=True,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(accessibility.wait)
        self.addCleanup(os.killpg, accessibility.pid, signal.SIGKILL)  # with the bus that it starts
        # A program that starts before has no accessibility for all its life.
        desktop.eventually("accessibility", lambda: "true" in desktop.output_of(
            "gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/",
            "--method", "org.freedesktop.DBus.NameHasOwner", "org.a11y.Bus"))
        self.explorer = self.host("--ui", "explorer", "--console", NO_AT_BRIDGE="0")
        self.application = desktop.eventually("the application", lambda: next(
            (found for found in all_at_desk() if found.get_name() == "Norvane"), None))

    def window(self, title):
        return next((window for window in map(self.application.get_child_at_index,
                                              range(self.application.get_child_count()))
                     if window and window.get_name() == title), None)

    def texts(self, title="Norvane"):
        return [text_of(found) or "" for found in all_in(self.window(title))]

    def named(self, name, title="Norvane"):
        return next(found for found in all_in(self.window(title)) if found.get_name() == name)

    def await_text(self, wanted, title="Norvane"):
        try:
            desktop.eventually(wanted, lambda: any(wanted in text for text in self.texts(title)))
        except desktop.DesktopFailure:
            self.fail(f"never came: {wanted}; there is {self.texts(title)}")

    def types(self, *keys, text=""):
        desktop.press(*keys)
        if text:
            desktop.output_of("xdotool", "type", "--clearmodifiers", text)

    def assert_controls_are_named(self, title):
        controls = [found for found in all_in(self.window(title)) if found.get_role() in CONTROLS]
        self.assertGreater(len(controls), 1)
        self.assertEqual([found.get_role_name() for found in controls if not found.get_name() and not
                          found.get_relation_set()], [])

    def test_every_step_can_be_done_by_keyboard(self):
        desktop.eventually("the keyboard", lambda: desktop.active_window() == "Norvane")
        self.assert_controls_are_named("Norvane")
        self.types("alt+s")  # the first method, with its example
        desktop.eventually("the small window",
                           lambda: desktop.frame_of("Norvane")[2:] == (820, 540))
        self.await_text("success, null")

        self.types("alt+m", text="concealed")
        self.types("alt+a", "ctrl+a", text="{")
        self.types("Return", text=" \"text\": oops")
        self.await_text("line 2, column 10: Invalid value")
        self.assertFalse(self.named("Send").get_state_set().contains(Atspi.StateType.SENSITIVE))
        self.types("ctrl+a", text="{\"text\": \"p4ss \\\"word\\\"\"}")
        self.types("ctrl+Return", "ctrl+a", "Delete")
        desktop.eventually("the secret", lambda: desktop.output_of(
            "xclip", "-o", "-selection", "clipboard") == SECRET)
        self.await_text("hidden, 35 bytes")
        self.types("alt+t", "End")
        self.await_text("engine main:\nhidden, 35 bytes")
        self.assertFalse(any("ss \\\"word" in text for text in self.texts()))
        self.types("alt+w")  # asked for
        self.await_text("ss \\\"word")

        subprocess.run([EXECUTABLE, "norvane://item/7"], check=True, timeout=TIMEOUT,
                       env=environment())
        self.await_text("{\"url\":\"norvane://item/7\"}")

        editor, _ = self.serve("/usr/bin/python3", desktop.OTHER, "editor")
        desktop.eventually("the editor", lambda: desktop.active_window() not in ("Norvane", None))
        for keys in ("p", "i", "n", "Return", "Escape"), ("c", "l", "o", "s", "e", "Return"):
            desktop.press(desktop.BACKSLASH)
            self.explorer.read_until(lambda line: line.get("call") == "shown")
            desktop.eventually("the keyboard", lambda: desktop.active_window() == PANEL)
            self.await_text("Quick Access over ", PANEL)
            self.assert_controls_are_named(PANEL)
            self.assertNotIn("Pinned", self.texts(PANEL))  # the host lets it go with the panel
            self.types(*keys[:-1])
            if keys[-1] == "Escape":
                self.await_text("Pinned", PANEL)
            self.types(keys[-1])
            self.explorer.read_until(lambda line: line.get("call") == "hidden")
        editor.kill()
        self.assert_ends_well(self.explorer)


def all_at_desk():
    desk = Atspi.get_desktop(0)
    return filter(None, map(desk.get_child_at_index, range(desk.get_child_count())))


if __name__ == "__main__":
    unittest.main()
