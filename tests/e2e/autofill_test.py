"""AutoFill from the UI's call to what the extension reads, and what must be found nowhere else."""

import base64
import os
import random
import re
import resource
import secrets
import sqlite3
import subprocess
import unittest

from console_client import TIMEOUT
from sealed_files import ACCESS_GROUP, SERVICE, passkey_index, snapshot
from support import AUTOFILL, BUNDLE, EXECUTABLE, HostTest, read, write

SNAPSHOT, PASSKEYS = "syncVaultSnapshot", "syncPasskeyIndex"


def item(name):
    """A login and a passkey at once."""
    return {"id": name, "username": "u", "password": "p", "rp_id": "r", "credential_id": "AA==",
            "private_key": "k", "algorithm": "a"}


class AutoFillTest(HostTest):
    def setUp(self):
        super().setUp()
        self.files = {SNAPSHOT: snapshot(BUNDLE, self.data),
                      PASSKEYS: passkey_index(BUNDLE, self.data)}

    def call(self, host, method, items):
        reply = host.call(AUTOFILL, method, arguments={"items": items})
        self.assertEqual(reply["reply"], "success", reply)
        if method in self.files:
            self.assertEqual(reply["value"]["written"], len(items))

    def pairs(self):
        return {method: (file.key(), file.box()) for method, file in self.files.items()}


class Reading(AutoFillTest):
    def test_the_extension_reads_every_character_that_the_ui_sends(self):
        scalars = [chr(code) for code in range(0x110000) if not 0xD800 <= code < 0xE000]
        random.Random(1).shuffle(scalars)
        texts = ["".join(scalars[at:at + 5000]) for at in range(0, len(scalars), 5000)]
        texts += ["", " ", "\x00", '"\\/\b\f\n\r\t\x1f\x7f', "]}{[,:", "a" * 70000]
        items = [{**item(text), "title": text[::-1], "url": text[:7], "private_key": "k" + text,
                  "user_handle": text[-9:], "notes": "N" + text} for text in texts]
        with self.start() as host:
            for method, keys in [(SNAPSHOT, "id title url username password"), (
                    PASSKEYS, "id rp_id credential_id private_key algorithm user_name user_handle")]:
                self.call(host, method, items)
                expected = [{key: made.get(key, "") for key in keys.split()} for made in items]
                self.assertTrue(self.files[method].entries() == expected, method)

    def test_identities_and_pairs_outlive_the_host_for_their_owner_alone_whatever_the_umask(self):
        self.addCleanup(os.umask, os.umask(0))
        with self.start() as host:
            for method in ("registerCredentials", "registerPasskeys", *self.files):
                self.call(host, method, [item("1")])
            before = host.state()
            host.kill()
        self.assertGreaterEqual(len(self.kept()), 6)
        self.assert_for_their_owner_alone()
        with self.start() as host:
            after = host.state()
            for name in ("passwordIdentities", "passkeyIdentities", "keychain"):
                self.assertEqual((after[name] != [], after[name]), (True, before[name]))

    def test_the_identities_can_be_read_at_any_moment_and_what_is_cleared_is_gone(self):
        path = os.path.join(self.data, "credential-identities.sqlite")
        write(path + ".damaged", "canary")
        with self.start() as host:
            self.call(host, "registerCredentials", [item("canary")])
            with sqlite3.connect(f"file:{path}?mode=ro", uri=True, timeout=0) as reader:
                reader.execute("BEGIN")
                for expected in ([("canary",)], []):
                    self.assertEqual(reader.execute("SELECT record FROM password").fetchall(),
                                     expected)
                    self.call(host, "registerCredentials", [item("2")] * 2)
                    self.assertEqual(host.call(AUTOFILL, "clearCredentials")["value"], True)
                    if expected:
                        reader.execute("COMMIT")
            for file in self.kept("sqlite"):
                self.assertNotIn(b"canary", read(file), file)
            os.remove(path)
            self.call(host, "registerCredentials", [item("3")])
            self.assertTrue(os.path.exists(path), "written to a file that has gone")

    def test_a_full_quota_is_an_error_of_the_call(self):
        with self.start() as host:
            for limit in (10, resource.RLIM_INFINITY):
                resource.prlimit(host.pid, resource.RLIMIT_FSIZE, (limit, resource.RLIM_INFINITY))
                for method in (*self.files, "registerCredentials"):
                    reply = host.call(AUTOFILL, method, arguments={"items": [item("1")]})
                    self.assertEqual(reply["reply"], "error" if limit == 10 else "success", reply)

    def test_a_quit_amid_calls_ends_well(self):
        for _ in range(8):  # sometimes the workers are faster
            with self.start() as host:
                host.send(*({"channel": AUTOFILL, "method": method} for method in
                            (*self.files, "registerCredentials", "clearCredentials") * 5),
                          {"desktop": "quit"})
                status, _, log = host.ended()
            self.assertEqual((status, [line for line in log if "fault" in line]), (0, []))

    def test_the_keychain_program_writes_nothing_but_an_item(self):
        with self.start() as host:
            self.call(host, SNAPSHOT, [])
        self.assertEqual(len(self.files[SNAPSHOT].key()), 32)
        good = ["--data-dir", self.data, SERVICE, "session-key", ACCESS_GROUP]
        for status, *arguments in [
                (1, *good[:3], "passkey-session-key", ACCESS_GROUP), (1, *good[:4], ""),
                (1, *good[:4], "cn.kestrio.norvane"), (1, good[0], self.path("none"), *good[2:]),
                (64, *good[:4]), (64, *good, "more"), (64, "--data", *good[1:]), (64,)]:
            program = os.path.join(BUNDLE, "Contents/MacOS/norvane-keychain")
            ended = subprocess.run([program, *arguments], capture_output=True, check=False)
            self.assertEqual((ended.returncode, ended.stdout), (status, b""), arguments)
            self.assertEqual(ended.stderr.startswith(b"usage: "), status == 64, arguments)


class Kills(AutoFillTest):
    """Kills the host before each system call that changes something on disk."""

    def trace(self, host, on_main_thread, *options):
        """Makes both pairs, then traces the main thread or the worker that made them."""
        for method, file in self.files.items():
            self.call(host, method, [item("old")])
            host.settle()  # with the worker idle there will be no second one
            self.assertEqual(file.entries()[0]["id"], "old")
        self.assertEqual(self.kept(".tmp-"), [])
        [worker] = set(os.listdir(f"/proc/{host.pid}/task")) - {str(host.pid)}
        tracer = subprocess.Popen(
            ["strace", "-p", str(host.pid) if on_main_thread else worker, "-e", "signal=none", "-o",
             self.path("trace"), "-e", "trace=openat,mkdir,write,fsync,rename,unlink", *options],
            stderr=subprocess.PIPE)
        self.addCleanup(tracer.communicate)
        self.assertIn(b"attached", tracer.stderr.readline())
        return tracer

    def kills(self, method, on_main_thread, expected):
        """After each kill: where, and the pairs as they were and as they are."""
        with self.start() as host:
            tracer = self.trace(host, on_main_thread)
            self.call(host, method, [item("new")])
            host.settle()
            tracer.terminate()
            tracer.wait(TIMEOUT)
        names = re.findall(r"^(\w+)\(", read(self.path("trace")).decode(), re.M)
        while names[-1] == "write":  # wakes the main loop or replies, now more and now less often
            names.pop()
        self.assertEqual(len(re.findall(expected[0], " ".join(names))), expected[1], names)
        for name, nth in [(name, names[:at + 1].count(name)) for at, name in enumerate(names)]:
            if name == "openat":  # changes nothing that the next call does not find, and libraries
                continue          # open files of their own now and then
            with self.start() as host:
                self.trace(host, on_main_thread, "-e", f"inject={name}:signal=KILL:when={nth}")
                old = self.pairs()
                host.send({"channel": AUTOFILL, "method": method,
                           "arguments": {"items": [item("new")]}},
                          {"desktop": "settle"}, {"desktop": "quit"})
                self.assertEqual(host.ended()[0], -9, (name, nth, names))
            self.assertLessEqual(len(self.kept(".tmp-")), 1)
            yield f"{method}, {name} {nth}", old, self.pairs()
        with self.start() as host:  # what the last kill has left is no obstacle
            self.trace(host, on_main_thread)

    def test_a_killed_sync_leaves_a_pair_or_a_new_key_beside_the_old_file(self):
        durable = "openat write fsync rename openat fsync"
        for method, other in [(SNAPSHOT, PASSKEYS), (PASSKEYS, SNAPSHOT)]:
            seen = set()
            for where, old, found in self.kills(method, False, (durable, 2)):
                self.assertEqual(found[other], old[other], where)
                new_key, new_file = (a != b for a, b in zip(found[method], old[method]))
                seen.add((new_key, new_file))
                self.assertEqual(len(found[method][0]), 32, where)
                if new_key == new_file:
                    [entry] = self.files[method].entries()
                    self.assertEqual(entry["id"], "new" if new_file else "old", where)
            self.assertEqual(seen, {(False, False), (True, False), (True, True)})

    def test_a_killed_clear_leaves_no_key_without_its_file(self):
        for where, old, found in self.kills("clearCredentials", True, ("unlink", 4)):
            changes = list(zip(sum(found.values(), ()), sum(old.values(), ())))
            self.assertTrue(all(now in (before, None) for now, before in changes), where)
            gone = [now is None for now, _ in changes]
            self.assertEqual(gone, sorted(gone, reverse=True), f"order of deletion, {where}")


def residue(pid, needles):
    """The needles that are found in the memory of a process, and where."""
    found = []
    with open(f"/proc/{pid}/maps", encoding="utf-8") as maps, \
            open(f"/proc/{pid}/mem", "rb", buffering=0) as memory:
        for line in maps:
            span, access, *_ = line.split()
            name = line[73:].strip() or "anonymous"
            if not access.startswith("r") or name.startswith(("[vvar", "[vsyscall")):
                continue
            begin, end = (int(address, 16) for address in span.split("-"))
            memory.seek(begin)
            content = memory.read(end - begin)
            found += [(needle, name) for needle, pattern in needles.items() if pattern in content]
    return found


def resident(pid):
    """The memory of a process, in bytes."""
    pages = read(f"/proc/{pid}/statm").split()[1]
    return int(pages) * resource.getpagesize()


@unittest.skipIf(b"__asan_init" in read(EXECUTABLE),
                 "sanitizers keep what is freed, and replace what wipes it")
class Residue(AutoFillTest):
    def test_after_a_sync_no_secret_is_left_in_memory_on_disk_or_in_the_log(self):
        # Head and tail: what frees a block writes over its first bytes.
        names = [f"{secret} {end}" for secret in ("password", "private_key", "notes")
                 for end in ("head", "tail")]
        for sizes in [[8], [1000], [100000, 1000]]:
            with self.subTest(sizes=sizes), self.start() as host:
                control, *marks = ("".join(secrets.choice("BCDFGHJKLMNPQRSTVWX") for _ in range(10))
                                   for _ in ["control", *names])
                secret = base64.b64encode(secrets.token_bytes(30)).decode()
                host.event("openURL", url="norvane://" + control)
                for size in sizes:
                    items = [{**item(f"{number:08}"), "url": f"https://example.org/{number}",
                              "password": f"{marks[0]}{number:06}{marks[1]}",
                              "private_key": f"{marks[2]}{number:040}{marks[3]}",
                              "notes": f"{marks[4]} {number} {marks[5]}"} for number in range(size)]
                    for method in (*self.files, "registerCredentials", "registerPasskeys"):
                        self.call(host, method, items)
                    # All at once, long before short, so that reading ends amid lines.
                    host.send(*({"id": f"{channel} {count}", "channel": channel, "method": "unknown",
                                 "arguments": {"items": items[:count], "bytes": {"$bytes": secret}}}
                                for channel in (AUTOFILL, "nobody")
                                for count in (1000, 50, 1000, 150, 1000, 250)))
                    host.read_until(lambda line: line.get("id") == "nobody 250")
                needles = {name: mark.encode() for name, mark in zip(names, marks)}
                needles |= {"JSON": b'"password":"' + marks[0][:3].encode(),
                            "base64": secret.encode()[:12]}
                for method, file in self.files.items():
                    self.assertEqual(len(file.entries()), sizes[-1])
                    key = file.key()
                    needles |= {method: key, method + " tail": key[16:],
                                method + " in hex": key.hex().encode(),
                                method + " in base64": base64.b64encode(key)[:42]}
                self.assertEqual(residue(host.pid, needles), [])
                self.assertTrue(residue(host.pid, {"control": control.encode()}), "scan is blind")
                _, lines, log = host.quit()
                said = "".join(map(str, lines + log)).encode() + b"".join(
                    read(path) for path in self.kept() if "/keychain/" not in path)
                self.assertEqual([name for name, pattern in needles.items() if pattern in said], [])

    def test_the_memory_of_a_large_sync_is_given_back(self):
        items = [{**item(f"{number:08}"), "notes": "N" * 200} for number in range(100_000)]
        with self.start() as host:
            self.call(host, SNAPSHOT, items[:1000])
            before = resident(host.pid)
            self.call(host, SNAPSHOT, items)
            host.settle()
            self.assertLess(resident(host.pid) - before, 12 << 20)


if __name__ == "__main__":
    unittest.main()
