"""Web server of the update feed's tests, on this machine only, with and without TLS.

Prints its two ports, the plain one first. Usage: feed_server.py FILE_WITH_CERTIFICATE_AND_KEY
"""

import http.server
import ssl
import sys
import threading

FEED = b'{"version": "9.0", "url": "https://example.org/norvane"}'


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        if self.path == "/never":
            threading.Event().wait()
        self.send_response({"/missing": 404, "/moved": 302}.get(self.path, 200))
        if self.path == "/moved":
            self.send_header("Location", "/feed")
        self.end_headers()
        self.wfile.write(FEED if self.path != "/large" else b" " * 2_000_000 + FEED)

    def log_message(self, *_):
        pass


plain, tls = (http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler) for _ in range(2))
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(sys.argv[1])
tls.socket = context.wrap_socket(tls.socket, server_side=True)
threading.Thread(target=tls.serve_forever, daemon=True).start()
print(plain.server_port, tls.server_port, flush=True)
plain.serve_forever()
