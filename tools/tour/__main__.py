"""Plays the UI programs and the person at the desk against the real executable.

Says what happens and checks each answer. Exits with status 1 at the first that is wrong.
"""

import os
import shutil
import sys
import tempfile
import textwrap

from console_client import Host, HostFailure
from tour import autofill, every_method, quick_access, start, window
from tour.page import Tour, WrongResult
from transcript import Difference

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUNDLE = os.path.join(ROOT, "build/Norvane.app")

# In the order in which they are played; each meets the host as the last one left it.
STEPS = (start.STEPS + quick_access.STEPS + autofill.STEPS + window.STEPS + start.ENDING
         + every_method.STEPS)


def main():
    sys.stdout.reconfigure(errors="backslashreplace")  # for a terminal that is not UTF-8
    print("A tour of Norvane's desktop host, on a simulated desktop without a display.\n"
          "What you read comes from the running program, and each step is checked.")
    data_directory = tempfile.mkdtemp(prefix="norvane-tour-")
    environment = {name: value for name, value in os.environ.items()
                   if name != "NORVANE_RUST_LIB_PATH"}  # the tour shows the bundle's own
    step = "Start"
    try:
        with Host(BUNDLE, "--data-dir", data_directory, env=environment) as host:
            tour = Tour(host, BUNDLE, data_directory, environment)
            for number, (step, play) in enumerate(STEPS, 1):
                print(f"\n{number}. {step}")
                play(tour)
    except (WrongResult, HostFailure, Difference) as failure:
        sys.stdout.flush()
        print(f"\nWRONG in \"{step}\":\n{textwrap.indent(str(failure), '    ')}", file=sys.stderr)
        return 1
    finally:
        shutil.rmtree(data_directory)
    print(f"\nAll {len(STEPS)} steps went as they should. `./run console` lets you try it yourself.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
