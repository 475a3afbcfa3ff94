"""Plays the written transcripts: of every method, and of lines and events at their limits."""

import glob
import json
import os
import re
import shutil
import unittest

import transcript
from support import ROOT, HostTest, read

EVERY_METHOD = os.path.join(ROOT, "examples/ui/every_method.txt")


class Transcript(HostTest):
    def play(self, path):
        """In a host of its own, on the desktop that a line "# profile: {...}" describes."""
        shutil.rmtree(self.data, ignore_errors=True)
        profile = re.search(r"^# profile: (.*)", read(path).decode(), re.M)
        with self.start(profile and json.loads(profile[1])) as host:
            self.assertGreater(transcript.play(host, path, self.data), 0)

    def test_the_host_answers_as_written(self):
        for path in [EVERY_METHOD, *glob.glob(os.path.join(ROOT, "tests/e2e/*.txt"))]:
            with self.subTest(os.path.basename(path)):
                self.play(path)


if __name__ == "__main__":
    unittest.main()
