"""The tour on a real desktop: plays the UI over the console, and the person with real keys, clicks,
windows and programs. Usage, within tools/with-desktop: python3 -m tour.desktop [SCREENSHOT.png]
"""

import os
import re
import signal
import subprocess
import sys
import textwrap

import real_desktop as desktop
from console_client import Host, HostFailure
from tour.page import SUCCEEDED, Tour, WrongResult, call, show

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUNDLE = os.environ.get("NORVANE_BUNDLE", os.path.join(ROOT, "build/Norvane.app"))
NORVANE = os.path.join(BUNDLE, "Contents/MacOS/Norvane")
ID = "cn.kestrio.norvane"
MAIN = "Norvane"
PANEL = "Norvane — Quick Access"
DATA = os.environ["XDG_DATA_HOME"]
HOTKEY_CONFIG = "cn.kestrio.norvane.hotkey.config"
QA_PANEL = "cn.kestrio.norvane.qa_panel"


class DesktopTour(Tour):
    """The host, and the desktop around it."""

    editor = None
    screenshot = None

    def await_keyboard(self, title):
        desktop.eventually(f"the keyboard for {title}", lambda: desktop.active_window() == title)

    def await_frame(self, what, title, expected):
        """The window manager answers when it will."""
        desktop.eventually(f"the frame {expected} of {title}",
                           lambda: desktop.frame_of(title) == expected)
        show("checked", what)

    def await_call(self, method):
        """The host's calls to the UIs up to the one of that name; returns its arguments."""
        while (heard := self.ui_is_called())["call"] != method:
            pass
        return heard["arguments"]

    def presses_hotkey(self):
        show("person", "presses Super+\\")
        desktop.press(desktop.BACKSLASH)


def install_entries():
    """What `cmake --install` puts under share, for this bundle."""
    replacements = {"Exec=Norvane": f"Exec={NORVANE}"}
    for source, place in (("cn.kestrio.norvane.desktop", "applications"),
                          ("cn.kestrio.norvane.service.in", "dbus-1/services")):
        with open(os.path.join(ROOT, "packaging", source), encoding="utf-8") as file:
            text = file.read()
        for old, new in replacements.items():
            text = text.replace(old, new)
        text = text.replace("@NORVANE_EXECUTABLE@", NORVANE)
        os.makedirs(os.path.join(DATA, place), exist_ok=True)
        target = os.path.join(DATA, place, source.removesuffix(".in"))
        with open(target, "w", encoding="utf-8") as file:
            file.write(text)
    with open(os.path.join(DATA, "applications/org.example.Editor.desktop"), "w",
              encoding="utf-8") as file:
        file.write("[Desktop Entry]\nType=Application\nName=Editor\nExec=true\n"
                   "Icon=accessories-text-editor\nStartupWMClass=org.example.Editor\n")
    desktop.output_of("update-desktop-database", os.path.join(DATA, "applications"))
    desktop.output_of("gio", "mime", "x-scheme-handler/norvane", f"{ID}.desktop")


def a_window_opens(tour):
    tour.await_frame("the main window is in the middle of the screen, with its decoration",
                     MAIN, (250, 150, 940, 600))
    tour.await_keyboard(MAIN)
    show("screen", "and has the keyboard")
    tour.check("the UI's engine has started, with its plugins",
               [line.get("started") for line in tour.host.settle()], ["main"] + 7 * [None])
    tour.check("the UI reports that it is ready", tour.ui_sends(
        "norvane/deeplink", "flutterReady"), (SUCCEEDED, []))


def a_link_reaches_the_running_host(tour):
    for link in ("norvane://Item/1?q=ä%2Fb#part", "norvane:opaque"):
        show("person", f"gio open {link}")
        desktop.output_of("gio", "open", link)
        tour.check("it arrives unchanged", tour.ui_is_called(),
                   call("main", "norvane/deeplink", "urlOpened", {"url": link}))


def the_hotkey_calls_quick_access(tour):
    tour.editor = desktop.OtherApplication("editor")
    desktop.click(200, 700)
    tour.editor.expect("has the keyboard")
    show("person", "types into an editor")
    tour.presses_hotkey()
    shown = tour.await_call("shown")
    tour.check("the panel hears which application is in front, with its icon",
               (shown["identity"], shown["name"], "$bytes" in shown.get("iconPng", {})),
               ("org.example.Editor", "Editor", True))
    tour.await_keyboard(PANEL)
    tour.editor.expect("has lost the keyboard")
    tour.await_frame("it is where it belongs", PANEL, (310, 60, 820, 600))
    if tour.screenshot:
        screenshot(tour.screenshot)
        show("screenshot", tour.screenshot)
    show("person", "clicks into the editor")
    desktop.click(200, 700)
    tour.await_call("hidden")
    tour.editor.expect("has the keyboard")
    tour.check("the panel is gone", desktop.window_named(PANEL), None)


def five_times_with_the_locks_on(tour):
    show("person", "switches Caps Lock and Num Lock on")
    desktop.output_of("xdotool", "key", "Caps_Lock", "Num_Lock")
    for _ in range(5):
        desktop.output_of("xdotool", "key", "super+backslash")
        tour.await_call("shown")
        tour.await_keyboard(PANEL)
        desktop.output_of("xdotool", "key", "super+backslash")
        tour.await_call("hidden")
        tour.editor.expect("has the keyboard")
    desktop.output_of("xdotool", "key", "Caps_Lock", "Num_Lock")
    show("checked", "five times shown and hidden, and the editor had the keyboard after each")
    tour.check("nothing but the main UI's notices came besides",
               {line.get("call") for line in tour.host.settle()} - {None, "syncLockState"}, set())


def a_taken_combination_is_stepped_over(tour):
    tour.check("another choice is registered", tour.ui_asks(
        HOTKEY_CONFIG, "setChoice", arguments={"code": "opt-shift-space"}),
        {"registered": "⌥⇧Space", "degraded": False})
    with desktop.OtherApplication("hotkey"):
        show("desktop", "another program takes Super+\\")
        tour.check("the automatic choice takes the next one", tour.ui_asks(
            HOTKEY_CONFIG, "setChoice", arguments={"code": "auto"}),
            {"registered": "⌘⇧\\", "degraded": True})
        desktop.press("super+shift+backslash")
        tour.await_call("shown")
        tour.ui_sends(QA_PANEL, "close", engine="norvane-qa")
    tour.ui_asks(HOTKEY_CONFIG, "setChoice", arguments={"code": "opt-shift-space"})
    tour.check("and the first again when it is free", tour.ui_asks(
        HOTKEY_CONFIG, "setChoice", arguments={"code": "auto"}),
        {"registered": "⌘\\", "degraded": False})
    tour.host.settle()


def a_click_on_the_status_item(tour):
    for desktops in ("a panel of the desktop starts", "the panel was restarted"):
        with desktop.OtherApplication("watcher") as watcher:
            show("desktop", desktops)
            tour.check("the status item is there", watcher.line(),
                       "item Norvane: Norvane — Quick Access")
            show("person", "clicks it")
            watcher.ask("click")
            tour.await_call("shown")
            tour.await_keyboard(PANEL)
            watcher.ask("click")
            tour.await_call("hidden")
    tour.host.settle()


def a_password_is_copied(tour):
    password = "pä$$wörd 🔑"
    tour.check("the UI copies a password", tour.ui_asks(
        "cn.kestrio.norvane.secure_clipboard", "setConcealed", arguments={"text": password}), None)
    for target in ("UTF8_STRING", "text/plain", "text/plain;charset=utf-8"):
        tour.check(f"another program in the C locale pastes it whole as {target}",
                   desktop.clipboard(target).stdout, password.encode())
    tour.check("clipboard managers are told that it is a secret",
               desktop.clipboard("x-kde-passwordManagerHint").stdout, b"secret")


def logins_are_sealed_with_a_key_in_the_keyring(tour):
    import gi
    gi.require_version("Secret", "1")
    from gi.repository import Secret
    import sealed_files
    items = [{"id": "a", "title": "Mail", "url": "https://mail.example/", "username": "ann",
              "password": "correct horse"}]
    channel = "cn.kestrio.norvane.autofill"
    tour.check("the UI hands over a login", tour.ui_asks(
        channel, "syncVaultSnapshot", arguments={"items": items}), {"written": 1, "encrypted": True})
    service = Secret.Service.get_sync(Secret.ServiceFlags.OPEN_SESSION, None)
    attributes = {"service": sealed_files.SERVICE, "account": "session-key"}
    found = service.search_sync(None, attributes,
                                Secret.SearchFlags.ALL | Secret.SearchFlags.LOAD_SECRETS, None)
    tour.check("one key is in the keyring", len(found), 1)
    file = sealed_files.snapshot(BUNDLE, tour.data_directory)
    tour.check("which opens the file",
               sealed_files.unseal(file.box(), bytes(found[0].get_secret().get())).decode(),
               '[{"id":"a","title":"Mail","url":"https://mail.example/","username":"ann",'
               '"password":"correct horse"}]')
    tour.ui_asks(channel, "clearCredentials")
    tour.check("after clearing neither is left", (service.search_sync(
        None, attributes, Secret.SearchFlags.ALL, None), file.box()), ([], None))


def it_starts_at_login(tour):
    entry = os.path.join(os.environ["XDG_CONFIG_HOME"], "autostart", f"{ID}.desktop")
    channel = "cn.kestrio.norvane.launch_at_login"
    tour.ui_asks(channel, "set", arguments={"enabled": True})
    with open(entry, encoding="utf-8") as file:
        started = [line for line in file.read().splitlines() if line.startswith("Exec=")]
    tour.check("the session will start this program", started,
               [f'Exec="{os.path.realpath(NORVANE)}" --at-login'])
    tour.ui_asks(channel, "set", arguments={"enabled": False})
    tour.check("and no longer", os.path.exists(entry), False)


def closing_and_reopening(tour):
    show("person", "closes the window")
    desktop.close(MAIN)
    desktop.eventually("the closed window", lambda: desktop.window_named(MAIN) is None)
    show("person", "starts Norvane again")
    tour.check("the second start ends at once", subprocess.run(
        [NORVANE], check=False, timeout=desktop.TIMEOUT).returncode, 0)
    tour.await_keyboard(MAIN)
    tour.await_frame("the same window is back in its place", MAIN, (250, 150, 940, 600))


def it_ends_and_a_link_starts_it(tour):
    status, _, log = tour.host.quit()
    tour.check("it ends when asked to", status, 0)
    tour.check("and has reported no fault", [line for line in log if "fault" in line], [])
    show("person", "starts Norvane with a link")
    with Host(BUNDLE, "--ui", "console", "norvane://item/7", platform="gtk") as host:
        reply = host.call("norvane/deeplink", "flutterReady")
        tour.check("the link waits for the UI", (host.next_ui_call()["arguments"], reply),
                   ({"url": "norvane://item/7"}, SUCCEEDED))
        host.quit()
    show("person", "gio open norvane://item/8, while no host runs")
    desktop.output_of("gio", "open", "norvane://item/8")
    tour.await_keyboard(MAIN)
    show("checked", "the session bus has started the host")
    process = desktop.output_of(
        "gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/",
        "--method", "org.freedesktop.DBus.GetConnectionUnixProcessID", ID)
    os.kill(int(re.search(r"(\d+),\)", process)[1]), signal.SIGTERM)


STEPS = [
    ("A window opens", a_window_opens),
    ("A link reaches the host that runs", a_link_reaches_the_running_host),
    ("The hotkey calls up Quick Access over another application", the_hotkey_calls_quick_access),
    ("Five times, with the locks on", five_times_with_the_locks_on),
    ("A combination that is taken is stepped over", a_taken_combination_is_stepped_over),
    ("A click on the status item", a_click_on_the_status_item),
    ("A password is copied", a_password_is_copied),
    ("A login is sealed, its key in the keyring", logins_are_sealed_with_a_key_in_the_keyring),
    ("It starts at login", it_starts_at_login),
    ("Closing the window, and starting a second time", closing_and_reopening),
    ("The end, and a link that starts it", it_ends_and_a_link_starts_it),
]


def screenshot(path):
    import gi
    gi.require_version("Gdk", "3.0")
    from gi.repository import Gdk
    root = Gdk.get_default_root_window()
    Gdk.pixbuf_get_from_window(root, 0, 0, root.get_width(), root.get_height()).savev(
        path, "png", [], [])


def main():
    print("A tour of Norvane's desktop host on a real desktop, inside Xvfb. Each step is checked.")
    install_entries()
    data_directory = os.path.join(DATA, "norvane")
    step = "Start"
    tour = None
    try:
        with Host(BUNDLE, "--ui", "console", platform="gtk") as host:
            tour = DesktopTour(host, BUNDLE, data_directory, os.environ)
            tour.screenshot = sys.argv[1] if len(sys.argv) > 1 else None
            for number, (step, play) in enumerate(STEPS, 1):
                print(f"\n{number}. {step}")
                play(tour)
    except (WrongResult, HostFailure, desktop.DesktopFailure,
            subprocess.SubprocessError) as failure:
        sys.stdout.flush()
        print(f"\nWRONG in \"{step}\":\n{textwrap.indent(str(failure), '    ')}", file=sys.stderr)
        return 1
    finally:
        if tour and tour.editor:
            tour.editor.end()
    print(f"\nAll {len(STEPS)} steps went as they should.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
