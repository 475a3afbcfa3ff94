"""What the build promises: a hardened executable, and host files that include nothing foreign."""

import os
import shutil
import subprocess
import unittest

from support import EXECUTABLE, ROOT, HostTest, environment, write


def readelf(option):
    return subprocess.run(["readelf", "--wide", option, EXECUTABLE], check=True, encoding="utf-8",
                          capture_output=True, env=environment(LC_ALL="C")).stdout


class Hardening(HostTest):
    def test_the_executable_is_hardened(self):
        for name, option, pattern in [
                ("position-independent", "--dynamic", r"\(FLAGS_1\).*\bPIE\b"),
                ("relocations read-only", "--segments", r"\bGNU_RELRO\b"),
                ("bound at start", "--dynamic", r"\(FLAGS\).*\bBIND_NOW\b"),
                ("stack not executable", "--segments", r"\bGNU_STACK\b.* RW  +0x"),
                ("stack protector", "--dyn-syms", r"__stack_chk_fail\b"),
                ("FORTIFY", "--dyn-syms", r"UND __(?!stack)\w+_chk\b")]:
            self.assertRegex(readelf(option), pattern, name)
        self.assertNotRegex(readelf("--dynamic"), r"\((TEXTREL|RPATH|RUNPATH)\)")

    def test_a_host_file_that_includes_what_it_may_not_stops_the_build(self):
        runner = shutil.copytree(os.path.join(ROOT, "Runner"), self.path("Runner"))
        check = ["cmake", "-D", f"ROOT={runner}", "-P", f"{ROOT}/cmake/check_seam.cmake"]
        subprocess.run(check, check=True, capture_output=True)
        for name, line in [("storage/cipher.cpp", "#include <openssl/evp.h>"),
                           ("window/peek.h", '#include "platform/console/console.h"'),
                           ("services/idle.cpp", "#  include <chrono>"),
                           ("services/port.cpp", "#ifdef __linux__")]:
            path = write(os.path.join(runner, name), f"#include <string>\n{line}\n")
            checked = subprocess.run(check, capture_output=True, encoding="utf-8", check=False)
            self.assertNotEqual(checked.returncode, 0, line)
            self.assertIn(f"{name}: {line}", checked.stderr)
            os.remove(path)


if __name__ == "__main__":
    unittest.main()
