"""Fetches a complete UI bundle of a generic program, to test with, into build/ui-bundle, once.

Nothing of it is ours, and nothing goes into the repository: version and hash stand beside this.
"""

import glob
import os
import platform
import subprocess
import sys
import tarfile
import tempfile
import zipfile

HERE = os.path.dirname(os.path.abspath(__file__))
BUILD = os.path.join(os.path.dirname(HERE), "build")
BUNDLE = os.path.join(BUILD, "ui-bundle", "flet")


class Unavailable(Exception):
    """No registry has it for this machine."""


def fetch(directory):
    if platform.machine() != "x86_64":
        raise Unavailable("it is for x86-64 only")
    pip = subprocess.run([sys.executable, "-m", "pip", "download", "--quiet", "--no-deps",
                          "--require-hashes", "--only-binary=:all:", "--platform",
                          "manylinux_2_36_x86_64", "--dest", directory, "--requirement",
                          os.path.join(HERE, "ui_bundle.requirements")],
                         check=False, stderr=subprocess.PIPE, text=True)
    if "DO NOT MATCH THE HASHES" in pip.stderr:
        sys.exit(pip.stderr)
    if pip.returncode:
        raise Unavailable(pip.stderr.strip().rpartition("\n")[2])
    [wheel] = glob.glob(os.path.join(directory, "*.whl"))
    with zipfile.ZipFile(wheel) as archive:
        packed = archive.extract("flet_desktop/app/flet-linux-amd64.tar.gz", directory)
    with tarfile.open(packed) as archive:
        archive.extractall(directory)


if __name__ == "__main__":
    if not os.path.isdir(BUNDLE):
        os.makedirs(os.path.dirname(BUNDLE), exist_ok=True)
        with tempfile.TemporaryDirectory(dir=BUILD) as parts:
            try:
                fetch(parts)
                os.rename(os.path.join(parts, "flet"), BUNDLE)
            except Unavailable as error:
                sys.exit(f"skipped: no UI bundle to be had: {error}")
            except OSError:
                if not os.path.isdir(BUNDLE):  # another fetched it meanwhile
                    raise
