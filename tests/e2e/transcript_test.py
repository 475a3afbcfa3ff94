"""Plays the written transcripts: of every method, and of lines and events at their limits."""

import glob
import json
import os
import re
import shutil
import unittest

import channel_table
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

    def test_the_table_has_every_method_and_examples_that_the_host_takes(self):
        answered, called = set(), set()
        for sent, said in transcript.read(EVERY_METHOD):
            sent = json.loads(sent)
            answered |= {(sent.get("channel"), sent.get("method")) for line in said
                         if line.get("reply") in ("success", "error")}
            called |= {(line["channel"], line["call"]) for line in said if "call" in line}
        table = [(row["channel"], row["engine"], method) for row in channel_table.read()
                 for method in row["methods"]]
        # Of an old system, where this channel answers every method alike.
        answered.remove(("cn.kestrio.norvane.launch_at_login", "toggle"))
        for by, found in ("ui", answered), ("host", called):
            self.assertEqual(found, {(channel, method["name"]) for channel, _, method in table
                                     if method["by"] == by})
        with self.start() as host:
            host.event("pressKeys", key=42, modifiers=256)
            for channel, engine, method in table:
                if method["by"] == "ui":
                    self.assertEqual(host.call(channel, method["name"], engine=engine,
                                               arguments=method.get("example"))["reply"], "success")
        self.assertEqual(read(channel_table.PAGE).decode(), channel_table.page())


if __name__ == "__main__":
    unittest.main()
