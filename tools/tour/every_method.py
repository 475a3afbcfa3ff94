"""The whole protocol at once: a written transcript, played against a host of its own."""

import os
import tempfile

import transcript
from console_client import Host
from tour.page import show

TRANSCRIPT = "examples/ui/every_method.txt"


def the_transcript_is_what_the_host_says(tour):
    root = os.path.dirname(os.path.dirname(tour.bundle))
    show("start", "another host, in a data directory of its own")
    with tempfile.TemporaryDirectory(prefix="norvane-tour-") as directory:
        with Host(tour.bundle, "--data-dir", directory, env=tour.environment) as host:
            count = transcript.play(host, os.path.join(root, TRANSCRIPT), directory)
            status = host.quit()[0]
    show("played", f"{count} exchanges of {TRANSCRIPT}: calls in their good and in their bad form, "
         "on every channel")
    tour.check(f"all {count} match, line by line, and the host ends with status 0", status, 0)


STEPS = [("Every method of every channel, against a written transcript",
          the_transcript_is_what_the_host_says)]
