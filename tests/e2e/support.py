"""What the tests share. NORVANE_BUNDLE names the bundle to test; tools/ must be on PYTHONPATH."""

import json
import os
import stat
import tempfile
import unittest

from console_client import Host

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUNDLE = os.path.abspath(os.environ["NORVANE_BUNDLE"])
EXECUTABLE = os.path.join(BUNDLE, "Contents/MacOS/Norvane")
AUTOFILL = "cn.kestrio.norvane.autofill"


def environment(**changes):
    return {name: value for name, value in os.environ.items()
            if name != "NORVANE_RUST_LIB_PATH"} | changes


def read(path):
    with open(path, "rb") as file:
        return file.read()


def write(path, content):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(content if isinstance(content, bytes) else content.encode())
    return path


class HostTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = directory.name
        self.data = self.path("data of a user")
        self.defaults = os.path.join(self.data, "user-defaults.json")

    def path(self, name):
        return os.path.join(self.root, name)

    def start(self, profile=None, bundle=BUNDLE, **changes):
        options = ["--data-dir", self.data]
        if profile is not None:
            options += ["--desktop", write(self.path("profile.json"), json.dumps(profile))]
        return Host(bundle, *options, env=environment(**changes))

    def assert_for_their_owner_alone(self):
        for path in [path for path, _, _ in os.walk(self.data)] + self.kept():
            self.assertEqual(stat.S_IMODE(os.stat(path).st_mode),
                             0o700 if os.path.isdir(path) else 0o600, path)

    def kept(self, part=""):
        """The files of the data directory; those with `part` in their names."""
        return [os.path.join(path, name) for path, _, names in os.walk(self.data)
                for name in names if part in name]
