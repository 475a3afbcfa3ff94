"""Opens the two files that the host seals, as the AutoFill extension would.

Shares nothing with the host: the cipher is pycryptodome's, the host's is OpenSSL's.
"""

import json
import os
import subprocess

from Cryptodome.Cipher import AES

SERVICE = "cn.kestrio.norvane.autofill.snapshot"
ACCESS_GROUP = "TEAM123456.cn.kestrio.norvane"  # with the prefix of the default profile
NONCE_SIZE = 12
TAG_SIZE = 16


def unseal(box, key):
    """What is sealed in `box`: nonce, ciphertext, tag. Raises ValueError when it is not as sealed."""
    cipher = AES.new(key, AES.MODE_GCM, nonce=box[:NONCE_SIZE])
    return cipher.decrypt_and_verify(box[NONCE_SIZE:-TAG_SIZE], box[-TAG_SIZE:])


def unrepeated(members):
    """The object of these members; of two with one name, readers differ in which they take."""
    if len(dict(members)) != len(members):
        raise ValueError("a member twice")
    return dict(members)


class SealedFile:
    """A sealed file of a data directory, and its session key in the keychain."""

    def __init__(self, bundle, data_directory, name, account):
        self.path = os.path.join(data_directory, "Group Containers/group.cn.kestrio.norvane",
                                 "Library/Application Support", name)
        self._read_key = [os.path.join(bundle, "Contents/MacOS/norvane-keychain"),
                          "--data-dir", data_directory, SERVICE, account, ACCESS_GROUP]

    def key(self):
        """The session key; None when the keychain has none."""
        ended = subprocess.run(self._read_key, capture_output=True, timeout=60, check=False)
        if ended.returncode == 1 and not ended.stderr:
            return None
        ended.check_returncode()
        return ended.stdout

    def box(self):
        """The file's bytes; None when there is no file."""
        if not os.path.exists(self.path):
            return None
        with open(self.path, "rb") as file:
            return file.read()

    def entries(self):
        text = unseal(self.box(), self.key()).decode()
        return json.loads(text, object_pairs_hook=unrepeated)


def snapshot(bundle, data_directory):
    return SealedFile(bundle, data_directory, "snapshot.enc", "session-key")


def passkey_index(bundle, data_directory):
    return SealedFile(bundle, data_directory, "passkey_index.enc", "passkey-session-key")
