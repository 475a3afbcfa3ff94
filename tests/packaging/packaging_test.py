"""Whether an installation is what the desktops look for. NORVANE_BUILD: what is installed."""

import filecmp
import os
import subprocess
import tempfile

from gi.repository import Gio

ID = "cn.kestrio.norvane"


def run(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, encoding="utf-8").stdout


with tempfile.TemporaryDirectory(prefix="an odd prefix") as prefix:
    run("cmake", "--install", os.environ["NORVANE_BUILD"], "--prefix", prefix)
    share = f"{prefix}/share"
    entry_path = f"{share}/applications/{ID}.desktop"
    assert run("desktop-file-validate", entry_path) == ""
    run("appstreamcli", "validate", "--no-net", f"{share}/metainfo/{ID}.metainfo.xml")

    os.environ["PATH"] = f"{prefix}/bin:{os.environ['PATH']}"  # where GLib looks for Exec
    entry = Gio.DesktopAppInfo.new_from_filename(entry_path)
    assert entry.get_supported_types() == ["x-scheme-handler/norvane"] and entry.supports_uris()
    assert entry.list_actions() == ["Quit"] and entry.get_action_name("Quit") == "Quit"
    assert "Norvane" in run(entry.get_executable(), "--version")
    with open(f"{share}/dbus-1/services/{ID}.service", encoding="utf-8") as service:
        assert service.read().splitlines()[1:] == [
            f"Name={ID}", f'Exec="{prefix}/bin/Norvane" --gapplication-service']

    contents = f"{prefix}/lib/norvane/Norvane.app/Contents"
    assert os.path.realpath(f"{prefix}/bin/Norvane") == f"{contents}/MacOS/Norvane"
    assert os.path.exists(f"{contents}/MacOS/norvane-desktop")
    assert os.path.exists(f"{share}/icons/hicolor/scalable/apps/{entry.get_icon().to_string()}.svg")
    assert filecmp.cmp(f"{share}/icons/hicolor/symbolic/apps/{ID}-symbolic.svg",
                       f"{contents}/Resources/MenuBarIcon-symbolic.svg")
