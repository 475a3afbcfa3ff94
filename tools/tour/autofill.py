"""AutoFill: what the host leaves, sealed, for the extension that fills in passwords."""

import os
import stat

import sealed_files
from tour.page import show

CHANNEL = "cn.kestrio.norvane.autofill"
LOGINS = [
    {"id": "a1", "title": "Mail", "url": "https://mail.example/", "username": "ann",
     "password": "correct horse \"battery\"", "notes": "for nobody else"},
    {"id": "b2", "username": "ann", "password": "pässwörd 🔑"},
    {"id": "c3", "title": "No password yet", "username": "ann"},
]
PASSKEYS = [
    {"id": "d4", "rp_id": "example.org", "credential_id": "QUJDRA", "private_key": "MC4CAQAwBQ",
     "algorithm": "ES256", "user_name": "ann@example.org"},
]
SYNCS = [("syncVaultSnapshot", LOGINS), ("syncPasskeyIndex", PASSKEYS)]
# What the extension should find.
SNAPSHOT = [
    {"id": "a1", "title": "Mail", "url": "https://mail.example/", "username": "ann",
     "password": "correct horse \"battery\""},
    {"id": "b2", "title": "", "url": "", "username": "ann", "password": "pässwörd 🔑"},
]
PASSKEY_INDEX = [PASSKEYS[0] | {"user_handle": ""}]


def files_of(tour):
    """Both sealed files, each with the entries that it should hold."""
    return [(sealed_files.snapshot(tour.bundle, tour.data_directory), SNAPSHOT),
            (sealed_files.passkey_index(tour.bundle, tour.data_directory), PASSKEY_INDEX)]


def logins_and_passkeys_are_sealed(tour):
    tour.check("two logins and a passkey are written; one without a password is left out",
               [tour.ui_asks(CHANNEL, method, arguments={"items": items})
                for method, items in SYNCS],
               [{"written": 2, "encrypted": True}, {"written": 1}])
    for item in tour.host.state()["keychain"]:
        show("keychain", f"{item['account']}, {item['bytes']} bytes, for {item['accessGroup']}")
    for file, _ in files_of(tour):
        show("on disk", f"{os.path.basename(file.path)}, {len(file.box())} bytes")
        tour.check("its owner's alone", stat.S_IMODE(os.stat(file.path).st_mode), 0o600)
        readable = [name for name in (b"password", b"private_key", b"username") if name in file.box()]
        tour.check("nothing in it can be read", readable, [])


def an_independent_program_opens_them(tour):
    for file, expected in files_of(tour):
        name = os.path.basename(file.path)
        show("reader", f"opens {name} with its key from the keychain: {len(expected)} inside")
        tour.check("exactly these, with exactly their members", file.entries(), expected)


def one_changed_byte_is_refused(tour):
    for file, _ in files_of(tour):
        box, key = file.box(), file.key()
        opened = []
        for position in range(len(box)):
            changed = bytearray(box)
            changed[position] ^= 1
            try:
                opened.append(sealed_files.unseal(changed, key))
            except ValueError:
                pass
        tour.check(f"{os.path.basename(file.path)}: each of its {len(box)} bytes changed in turn, "
                   "and each time it does not open", opened, [])


def the_next_sync_has_a_new_key(tour):
    before = [file.key() for file, _ in files_of(tour)]
    show("UI sends", "both syncs again")
    for method, items in SYNCS:
        tour.host.call(CHANNEL, method, arguments={"items": items})
    after = [file.key() for file, _ in files_of(tour)]
    tour.check("all four keys differ", len(set(before + after)), 4)
    tour.check("and the new ones open the new files",
               [file.entries() for file, _ in files_of(tour)], [SNAPSHOT, PASSKEY_INDEX])


def the_system_learns_names_and_no_secrets(tour):
    for method, items in (("registerCredentials", LOGINS), ("registerPasskeys", PASSKEYS)):
        tour.ui_asks(CHANNEL, method, arguments={"items": items})
    state = tour.host.state()
    for identity in state["passwordIdentities"] + state["passkeyIdentities"]:
        show("system", ", ".join(f"{key} {value}" for key, value in identity.items() if value))
    tour.check("three logins and a passkey can be suggested",
               (len(state["passwordIdentities"]), len(state["passkeyIdentities"])), (3, 1))


def clearing_leaves_nothing(tour):
    tour.check("the UI clears", tour.ui_asks(CHANNEL, "clearCredentials"), True)
    for file, _ in files_of(tour):
        tour.check(f"no {os.path.basename(file.path)}, and no key for it",
                   (file.box(), file.key()), (None, None))
    state = tour.host.state()
    tour.check("and the system has forgotten every name",
               state["passwordIdentities"] + state["passkeyIdentities"], [])


STEPS = [
    ("Logins and passkeys are sealed for the AutoFill extension", logins_and_passkeys_are_sealed),
    ("A program that shares no code with the host opens them", an_independent_program_opens_them),
    ("One changed byte is enough, and they do not open", one_changed_byte_is_refused),
    ("Every sync draws a new key", the_next_sync_has_a_new_key),
    ("The system's credential store learns names and no secrets",
     the_system_learns_names_and_no_secrets),
    ("Clearing leaves nothing", clearing_leaves_nothing),
]
