"""What an installation puts on a system, and whether the desktops understand it.

NORVANE_BUILD names the build directory that is installed.
"""

import configparser
import os
import shlex
import subprocess
import tempfile
import unittest

import gi

gi.require_version("GdkPixbuf", "2.0")
from gi.repository import GdkPixbuf, Gio  # noqa: E402

ID = "cn.kestrio.norvane"


def run(*command, **environment):
    done = subprocess.run(command, capture_output=True, encoding="utf-8", check=False,
                          env=os.environ | environment)
    if done.returncode != 0:
        raise AssertionError(f"{command}: {done.stdout}{done.stderr}")
    return done.stdout


class Packaging(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(directory.cleanup)
        cls.stage = os.path.join(directory.name, "stage")
        cls.prefix = os.path.join(directory.name, "an odd prefix")
        for environment in [{}, {"DESTDIR": cls.stage}]:
            run("cmake", "--install", os.environ["NORVANE_BUILD"], "--prefix", cls.prefix,
                **environment)

    def share(self, name):
        return os.path.join(self.prefix, "share", name)

    def test_the_desktop_entry_opens_the_links(self):
        path = self.share(f"applications/{ID}.desktop")
        self.assertEqual(run("desktop-file-validate", path), "")
        # Its program must be found before GLib takes the entry.
        os.environ["PATH"] = f"{self.prefix}/bin:{os.environ['PATH']}"
        entry = Gio.DesktopAppInfo.new_from_filename(path)
        self.assertEqual(entry.get_supported_types(), ["x-scheme-handler/norvane"])
        self.assertTrue(entry.supports_uris())
        self.assertTrue(entry.get_boolean("DBusActivatable"))
        icon = entry.get_icon().to_string()
        image = GdkPixbuf.Pixbuf.new_from_file(
            self.share(f"icons/hicolor/scalable/apps/{icon}.svg"))
        corner, middle = (image.get_pixels()[at] for at in (3, (64 * image.get_rowstride()) + 259))
        self.assertEqual((corner, middle), (0, 255), "round corners around a drawing")

    def test_the_metainfo_is_that_of_the_desktop_entry(self):
        path = self.share(f"metainfo/{ID}.metainfo.xml")
        run("appstreamcli", "validate", "--no-net", path)
        self.assertIn(f"{ID}.desktop", run("appstreamcli", "convert", path, "-", "--format=yaml"))

    def test_the_command_and_the_bus_start_the_bundle(self):
        command = os.path.join(self.prefix, "bin", "Norvane")
        self.assertIn("Norvane", run(command, "--version"))
        self.assertTrue(os.path.realpath(command).startswith(self.prefix), "moves with the prefix")
        bundle = os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(command))))
        self.assertTrue(bundle.endswith("/norvane/Norvane.app"))
        symbolic = self.share(f"icons/hicolor/symbolic/apps/{ID}-symbolic.svg")
        with open(symbolic, "rb") as image, \
                open(f"{bundle}/Contents/Resources/MenuBarIcon-symbolic.svg", "rb") as resource:
            self.assertEqual(image.read(), resource.read())
        self.assertTrue(os.path.exists(f"{bundle}/Contents/Frameworks/libffi_bridge.dylib"))

        service = configparser.ConfigParser()
        service.read(self.share(f"dbus-1/services/{ID}.service"))
        self.assertEqual(service["D-BUS Service"]["Name"], ID)
        self.assertEqual(shlex.split(service["D-BUS Service"]["Exec"]),
                         [command, "--gapplication-service"])

    def test_a_staged_installation_is_the_same(self):
        def files(root):
            return sorted(os.path.relpath(os.path.join(path, name), root)
                          for path, _, names in os.walk(root) for name in names)
        staged = self.stage + self.prefix
        self.assertEqual(files(staged), files(self.prefix))
        self.assertIn("Norvane", run(os.path.join(staged, "bin", "Norvane"), "--version"))


if __name__ == "__main__":
    unittest.main()
