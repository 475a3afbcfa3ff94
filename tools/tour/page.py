"""What a step of the tour talks with: the host, and the page that the newcomer reads."""

import json
import os
import textwrap

WIDTH = 80
EDITOR = "org.example.editor"  # the other application of the default desktop

SUCCEEDED = {"reply": "success", "value": None}
NOT_IMPLEMENTED = {"reply": "notImplemented"}


class WrongResult(Exception):
    """The host did something else than it should."""


class Tour:
    def __init__(self, host, bundle, data_directory, environment):
        self.host = host
        self.bundle = bundle
        self.data_directory = data_directory
        self.environment = environment

    # Acts, each of which says what it does

    def person(self, what, event, **keys):
        """Something happens at the desk; `what` says it in words."""
        show("person", what)
        self.host.event(event, **keys)

    def ui_sends(self, channel, method, **keys):
        """A UI calls the host; returns the reply, and the calls to the UIs that came ahead of it."""
        engine = keys.get("engine", "main")
        show(speaker(engine, "sends"), words_of_call(channel, method, keys.get("arguments")))
        self.host.send({"id": method, "channel": channel, "method": method, **keys})
        ahead = []
        while "call" in (line := self.host.read()):
            ahead.append(self._heard(line))
        show(speaker(engine, "gets"), f"reply: {words_of(line)}")
        if line.pop("id", None) != method:
            raise WrongResult(f"this is not the reply to {method}: {found_text(line)}")
        return line, ahead

    def ui_asks(self, channel, method, **keys):
        """The same where no calls come ahead of the reply; returns what a success carries."""
        reply, ahead = self.ui_sends(channel, method, **keys)
        if ahead or reply["reply"] != "success":
            raise WrongResult(f"{method} should simply succeed")
        return reply["value"]

    def ui_is_called(self):
        """The host's next call to a UI."""
        return self._heard(self.host.next_ui_call())

    @staticmethod
    def _heard(call):
        show(speaker(call["engine"], "gets"),
             words_of_call(call["channel"], call["call"], call["arguments"]))
        return call

    def log_line(self):
        line = self.host.log_line()
        show("log", line.replace(self.bundle, os.path.basename(self.bundle)))
        return line

    def windows(self):
        """The windows as the desktop has them now, by class."""
        return {window["class"]: window for window in self.host.state()["windows"]}

    def main_window(self):
        return self.windows()["MainFlutterWindow"]

    # Checks

    @staticmethod
    def check(what, found, expected):
        if found != expected:
            raise WrongResult(f"{what}\nexpected  {found_text(expected)}\n"
                              f"found     {found_text(found)}")
        show("checked", what)

    def check_nothing_else_came(self):
        self.check("nothing else came", self.host.settle(), [])


def show(label, text):
    indent = " " * 17
    print(textwrap.fill(text, WIDTH, initial_indent=f"    {label:<13}", subsequent_indent=indent,
                        break_long_words=False, break_on_hyphens=False))


def speaker(engine, verb):
    return f"{'UI' if engine == 'main' else 'panel'} {verb}"


def json_of(value):
    """The value as JSON, byte arrays by their size only."""
    if isinstance(value, dict):
        value = {key: f"<{len(part['$bytes'])} characters of base64>"
                 if isinstance(part, dict) and "$bytes" in part else part
                 for key, part in value.items()}
    return json.dumps(value, ensure_ascii=False)


def words_of_call(channel, method, arguments):
    return f"{channel}: {method}" + ("" if arguments is None else f" {json_of(arguments)}")


def found_text(value):
    text = repr(value)
    return text if len(text) < 500 else text[:500] + " …"


def words_of(reply):
    if reply.get("reply") == "success":
        return "success" if reply["value"] is None else f"success, {json_of(reply['value'])}"
    if reply.get("reply") == "error":
        return f"error {reply['code']}, {reply['message']}"
    return "not implemented" if reply.get("reply") == "notImplemented" else json_of(reply)


def call(engine, channel, method, arguments):
    """The line by which the host calls a UI."""
    return {"engine": engine, "channel": channel, "call": method, "arguments": arguments}
