"""What the build promises: a hardened executable, and host files that include nothing foreign.

NORVANE_BUNDLE names the release bundle.
"""

import os
import shutil
import subprocess
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
EXECUTABLE = os.path.join(os.environ["NORVANE_BUNDLE"], "Contents/MacOS/Norvane")


def readelf(*options):
    return subprocess.run(["readelf", "--wide", *options, EXECUTABLE], check=True,
                          capture_output=True, encoding="utf-8", env={**os.environ, "LC_ALL": "C"}
                          ).stdout


class Hardening(unittest.TestCase):
    def test_the_executable_is_hardened(self):
        segments, dynamic = readelf("--segments"), readelf("--dynamic")
        symbols = readelf("--dyn-syms")
        for name, text, pattern in [
                ("position-independent executable", dynamic, r"\(FLAGS_1\).*\bPIE\b"),
                ("relocations read-only", segments, r"\bGNU_RELRO\b"),
                ("bound at start", dynamic, r"\(FLAGS\).*\bBIND_NOW\b"),
                ("stack not executable", segments, r"\bGNU_STACK\b.* RW  +0x"),
                ("stack protector", symbols, r"__stack_chk_fail\b"),
                ("FORTIFY", symbols, r"UND __(?!stack)\w+_chk\b")]:
            with self.subTest(name):
                self.assertRegex(text, pattern)
        self.assertNotRegex(dynamic, r"\((TEXTREL|RPATH|RUNPATH)\)")

    def test_a_host_file_that_includes_what_it_may_not_stops_the_build(self):
        with tempfile.TemporaryDirectory() as directory:
            runner = os.path.join(directory, "Runner")
            shutil.copytree(os.path.join(ROOT, "Runner"), runner)

            def check():
                return subprocess.run(
                    ["cmake", "-D", f"ROOT={runner}", "-P",
                     os.path.join(ROOT, "cmake/check_seam.cmake")],
                    capture_output=True, encoding="utf-8", check=False)

            self.assertEqual(check().returncode, 0, check().stderr)
            for name, line in [("storage/cipher.cpp", "#include <openssl/evp.h>"),
                               ("window/peek.h", '#include "platform/headless/console.h"'),
                               ("services/idle.cpp", "#  include <chrono>"),
                               ("services/port.cpp", "#ifdef __linux__")]:
                with self.subTest(line):
                    path = os.path.join(runner, name)
                    os.makedirs(os.path.dirname(path), exist_ok=True)
                    with open(path, "w", encoding="utf-8") as file:
                        file.write(f"#include <string>\n{line}\n")
                    checked = check()
                    self.assertNotEqual(checked.returncode, 0)
                    self.assertIn(f"{name}: {line}", checked.stderr)
                    os.remove(path)


if __name__ == "__main__":
    unittest.main()
