"""The table of the host's channels and methods, which its explorer shows.

Run as a program it writes docs/channels.md anew.
"""

import json
import os

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
TABLE = os.path.join(ROOT, "Runner/platform/explorer/channels.json")
PAGE = os.path.join(ROOT, "docs/channels.md")
HEAD = """# Channels and methods

Written by `tools/channel_table.py` from the table that the explorer shows, `Runner/platform/explorer/channels.json`.
Arguments are examples, in the console's JSON; a method without takes none. Every method that a channel
does not have is answered with "not implemented". `examples/ui/every_method.txt` has the answers.
"""


def read():
    with open(TABLE, encoding="utf-8") as file:
        return json.load(file)


def page():
    lines = [HEAD]
    for channel in read():
        lines.append(f"## {channel['channel']}\n\n{channel['about']} Engine: `{channel['engine']}`.\n")
        lines.append("| method | called by | arguments | |\n| --- | --- | --- | --- |")
        for method in channel["methods"]:
            caller = {"ui": "the UI", "host": "the host"}[method["by"]]
            example = f"`{json.dumps(method['example'])}`" if "example" in method else ""
            lines.append(f"| `{method['name']}` | {caller} | {example} | {method['about']} |")
        lines.append("")
    return "\n".join(lines)


if __name__ == "__main__":
    with open(PAGE, "w", encoding="utf-8") as file:
        file.write(page())
