"""Drives the host over its console: one JSON object a line, see docs/console.md."""

import json
import os
import queue
import signal
import subprocess
import threading

TIMEOUT = 60  # seconds; nothing takes this long, so a wait that does is a hang


class HostFailure(Exception):
    """The host hangs, has ended early or says what no console line may hold."""


class Host:
    """A running host. Use it in a `with` statement: whatever happens, the process is gone after."""

    def __init__(self, bundle, *options, platform="headless", env=None):
        self._process = subprocess.Popen(
            [os.path.join(bundle, "Contents/MacOS/Norvane"), "--platform", platform, *options],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            encoding="utf-8", errors="surrogateescape", env=env)
        self.pid = self._process.pid
        self._output = self._follow(self._process.stdout)
        self._log = self._follow(self._process.stderr)
        self._unread = []  # lines that were passed over in search of another one
        self._calls = 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        for stream in (self._process.stdin, self._process.stdout, self._process.stderr):
            try:
                stream.close()
            except BrokenPipeError:
                pass  # a line that the host did not live to take

    # What is said to the host

    def send(self, *lines):
        """Sends lines as they are: texts, or objects to be written as JSON."""
        for line in lines:
            text = line if isinstance(line, str) else json.dumps(line)
            self._process.stdin.write(text + "\n")
        self._process.stdin.flush()

    def event(self, name, **keys):
        """Something that the person, another application or the system does."""
        self.send({"desktop": name, **keys})

    def call(self, channel, method, **keys):
        """The UI calls the host; returns the reply without its id. Keys: arguments, engine."""
        self._calls += 1
        identifier = f"call {self._calls}"
        self.send({"id": identifier, "channel": channel, "method": method, **keys})
        reply = self.read_until(lambda line: line.get("id") == identifier)
        del reply["id"]
        return reply

    # What the host says

    def read(self):
        """The next line of output."""
        return self._unread.pop(0) if self._unread else self._read_new()

    def read_until(self, wanted):
        """The next line that `wanted` accepts; those before it can still be read."""
        for index, line in enumerate(self._unread):
            if wanted(line):
                return self._unread.pop(index)
        while not wanted(line := self._read_new()):
            self._unread.append(line)
        return line

    def next_ui_call(self):
        """The host's next call to a UI."""
        return self.read_until(lambda line: "call" in line)

    def settle(self):
        """Waits until nothing is under way; returns the lines not read so far."""
        self.event("settle")
        self.read_until(lambda line: line == {"desktop": "settled"})
        lines, self._unread = self._unread, []
        return lines

    def state(self):
        self.event("state")
        return self.read_until(lambda line: line.get("desktop") == "state")

    def log_line(self):
        """The next line of the log."""
        line = self._next(self._log)
        if line is None:
            raise HostFailure(f"the log has ended; exit status {self._process.wait(TIMEOUT)}")
        return line

    # How it ends

    def end_input(self):
        """Ends the input and waits for the host; returns its status, the lines and the log left."""
        self._process.stdin.close()
        return self.ended()

    def quit(self):
        self.event("quit")
        return self.ended()

    def kill(self):
        os.kill(self.pid, signal.SIGKILL)
        return self.ended()

    def ended(self):
        """Waits for the host's end; returns its status, the lines and the log not read so far."""
        lines = self._unread + [json.loads(line) for line in self._rest(self._output)]
        log = self._rest(self._log)
        return self._process.wait(TIMEOUT), lines, log

    # Reading without ever blocking the host, which waits for nobody's pipe

    @staticmethod
    def _follow(stream):
        lines = queue.Queue()

        def follow():
            for line in stream:
                lines.put(line.rstrip("\n"))
            lines.put(None)

        threading.Thread(target=follow, daemon=True).start()
        return lines

    def _next(self, lines):
        try:
            line = lines.get(timeout=TIMEOUT)
        except queue.Empty:
            raise HostFailure(f"the host has said nothing for {TIMEOUT} s") from None
        if line is None:
            lines.put(None)
        return line

    def _rest(self, lines):
        return list(iter(lambda: self._next(lines), None))

    def _read_new(self):
        line = self._next(self._output)
        if line is None:
            status, _, log = self.ended()
            raise HostFailure("\n".join([f"the host has ended with status {status}; log:", *log]))
        try:
            return json.loads(line)
        except ValueError:
            raise HostFailure(f"the host printed a line that is not JSON: {line}") from None
