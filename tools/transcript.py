"""Plays a written transcript against a running host and compares what the host says.

A line that begins "> " is sent; the lines that begin "< " are what the host says until all is quiet
again, in their order. "#" begins a comment. In what is expected, "$DIR" stands for the data
directory, "$NUMBER" for any number, and "$BASE64" for any text that is not empty.
"""

import json


class Difference(Exception):
    """The host said something else than the transcript has."""


def read(path):
    """The exchanges of a transcript: what is sent, and the lines that are expected."""
    exchanges = []
    with open(path, encoding="utf-8") as transcript:
        for line in transcript:
            if line.startswith("> "):
                exchanges.append((line[2:].strip(), []))
            elif line.startswith("< "):
                exchanges[-1][1].append(json.loads(line[2:]))
            elif line.strip() and not line.startswith("#"):
                raise ValueError(f"not a line of a transcript: {line}")
    return exchanges


def fits(found, expected, directory):
    if expected == "$NUMBER":
        return isinstance(found, (int, float)) and not isinstance(found, bool)
    if expected == "$BASE64":
        return isinstance(found, str) and found != ""
    if isinstance(expected, str) and isinstance(found, str):
        return found == expected.replace("$DIR", directory)
    if isinstance(expected, dict) and isinstance(found, dict):
        return found.keys() == expected.keys() and all(
            fits(found[key], expected[key], directory) for key in expected)
    if isinstance(expected, list) and isinstance(found, list):
        return len(found) == len(expected) and all(
            fits(*pair, directory) for pair in zip(found, expected))
    return type(found) is type(expected) and found == expected


def play(host, path, directory):
    """Returns the number of exchanges; raises Difference at the first that differs."""
    exchanges = read(path)
    for sent, expected in exchanges:
        host.send(sent)
        found = host.settle()
        if not fits(found, expected, directory):
            raise Difference("\n".join(
                [f"sent      {sent}", *(f"expected  {json.dumps(line)}" for line in expected),
                 *(f"found     {json.dumps(line)}" for line in found)]))
    return len(exchanges)
