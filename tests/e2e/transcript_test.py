"""Plays the written transcript of every method against the built executable.

NORVANE_BUNDLE names the bundle to test; tools/ must be on PYTHONPATH.
"""

import os
import tempfile
import unittest

import transcript
from console_client import Host

BUNDLE = os.path.abspath(os.environ["NORVANE_BUNDLE"])
ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
TRANSCRIPT = os.path.join(ROOT, "examples/ui/every_method.txt")


class Transcript(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = directory.name

    def play(self, path):
        kept = {name: value for name, value in os.environ.items()
                if name != "NORVANE_RUST_LIB_PATH"}
        with tempfile.TemporaryDirectory(dir=self.root) as data:
            with Host(BUNDLE, "--data-dir", data, env=kept) as host:
                return transcript.play(host, path, data)

    def test_every_method_answers_as_written(self):
        self.assertEqual(self.play(TRANSCRIPT), len(transcript.read(TRANSCRIPT)))

    def test_one_altered_expectation_is_reported(self):
        with open(TRANSCRIPT, encoding="utf-8") as file:
            lines = file.readlines()
        at = next(index for index, line in enumerate(lines) if '"urlOpened"' in line)
        link, reply = lines[at:at + 2]
        for name, altered in {
                "another text": [link.replace("item/1", "item/2"), reply],
                "true for 1": [link, reply.replace('"id":1', '"id":true')],
                "a key more": [link, reply.replace("}", ',"more":null}')],
                "a number wanted": [link, reply.replace("null", '"$NUMBER"')],
                "base64 wanted": [link, reply.replace("null", '"$BASE64"')],
                "a line less": [reply],
                "a line more": [link, reply, reply],
                "another order": [reply, link]}.items():
            with self.subTest(name):
                self.assertNotEqual(altered, [link, reply])
                path = os.path.join(self.root, "altered.txt")
                with open(path, "w", encoding="utf-8") as file:
                    file.writelines(lines[:at] + altered + lines[at + 2:])
                with self.assertRaises(transcript.Difference):
                    self.play(path)


if __name__ == "__main__":
    unittest.main()
