"""A program that shares the desktop with the host, for the tour and the tests.

Usage: other_application.py editor       a window that says which keys it gets
       other_application.py window NAME  a window of that class, with a red icon
       other_application.py hotkey       holds Super+backslash for itself
       other_application.py watcher      the desktop's place for status items; "click" clicks the
                                         one that registered last
       other_application.py item         such a place, until an item has registered: writes the
                                         name on the bus, and no more
Prints a line for each thing that happens, "ready" first.
"""

import signal
import sys

import gi

gi.require_version("Gtk", "3.0")
gi.require_version("Gdk", "3.0")
from gi.repository import Gdk, GdkPixbuf, Gio, GLib, Gtk  # noqa: E402

WATCHER = """<node><interface name="org.kde.StatusNotifierWatcher">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
</interface></node>"""


def say(line):
    print(line, flush=True)


def editor():
    GLib.set_prgname("org.example.Editor")
    window = Gtk.Window(title="Editor", default_width=500, default_height=300)
    window.connect("key-press-event", lambda _, event: say("key " + Gdk.keyval_name(event.keyval)))
    window.connect("map-event", lambda *_: say("ready"))
    window.connect("focus-in-event", lambda *_: say("has the keyboard"))
    window.connect("focus-out-event", lambda *_: say("has lost the keyboard"))
    window.move(20, 560)
    window.present()


def window():
    Gdk.set_program_class(sys.argv[2])
    icon = GdkPixbuf.Pixbuf.new(GdkPixbuf.Colorspace.RGB, True, 8, 2, 2)
    icon.fill(0xFF0000FF)
    Gtk.Window(icon=icon).show()
    say("ready")


def hotkey():
    from Xlib import X, XK, display
    connection = display.Display()
    code = connection.keysym_to_keycode(XK.string_to_keysym("backslash"))
    connection.screen().root.grab_key(code, X.Mod4Mask, False, X.GrabModeAsync, X.GrabModeAsync)
    connection.sync()
    say("ready")
    return connection  # which holds the grab


def offer_place(called):
    """For status items; `called` hears of each that registers."""
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    interface = Gio.DBusNodeInfo.new_for_xml(WATCHER).interfaces[0]
    bus.register_object("/StatusNotifierWatcher", interface, called,
                        lambda *_: GLib.Variant("b", True), None)
    return bus


def item():
    def called(connection, sender, _path, _interface, _method, _arguments, invocation):
        invocation.return_value(None)
        connection.flush_sync()
        print(sender, end="")
        Gtk.main_quit()

    Gio.bus_own_name_on_connection(offer_place(called), "org.kde.StatusNotifierWatcher", 0)


def watcher():
    items = []

    def called(connection, sender, _path, _interface, _method, arguments, invocation):
        service, = arguments.unpack()
        items.append((sender, service) if service.startswith("/") else (service, "/StatusNotifierItem"))
        invocation.return_value(None)
        properties = connection.call_sync(
            items[-1][0], items[-1][1], "org.freedesktop.DBus.Properties", "GetAll",
            GLib.Variant("(s)", ("org.kde.StatusNotifierItem",)), None, 0, 5000, None).unpack()[0]
        say(f"item {properties['Title']}: {properties['ToolTip'][2] or properties['ToolTip'][3]}")

    def clicked(*_):
        if sys.stdin.readline().strip() != "click":
            return False
        bus.call(*items[-1], "org.kde.StatusNotifierItem", "Activate", GLib.Variant("(ii)", (0, 0)),
                 None, 0, 5000, None)
        return True

    bus = offer_place(called)
    Gio.bus_own_name_on_connection(bus, "org.kde.StatusNotifierWatcher", 0,
                                   lambda *_: say("ready"), None)
    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_DEFAULT, GLib.IOCondition.IN, clicked)


signal.signal(signal.SIGINT, signal.SIG_DFL)
kept = {"editor": editor, "window": window, "hotkey": hotkey, "watcher": watcher,
        "item": item}[sys.argv[1]]()
Gtk.main()
