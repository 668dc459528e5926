"""The local server that all of the browser's requests end at: pages under test, and a count of the rest."""
import http.server
import pathlib
import socket
import socketserver
import threading

HERE = pathlib.Path(__file__).resolve().parent
POLICY = ("default-src 'none'; script-src 'nonce-traps'; style-src 'unsafe-inline'; img-src data: cid:; "
          "base-uri 'none'; form-action 'none'")
# A document each, so that each is read as a browser reads a page.
TOP = """<!DOCTYPE html><html><head><meta charset="utf-8"><link rel="icon" href="data:,">
<style>iframe { width: 370px; height: 250px }</style></head><body>%s</body></html>"""


# The browser's own services, which it goes on calling whatever it is told. A page's requests for these
# would be in the browser's log of the page.
BROWSER_SERVICES = {"update.googleapis.com", "clients2.google.com", "accounts.google.com", "www.google.com",
                    "content-autofill.googleapis.com", "optimizationguide-pa.googleapis.com",
                    "android.clients.google.com", "mtalk.google.com", "safebrowsing.googleapis.com"}


def server_name(hello):
    """The host that a TLS greeting asks for (RFC 6066), or an empty text."""
    try:
        at = 43 + 1 + hello[43]  # record, handshake, version, random, session
        at += 2 + int.from_bytes(hello[at:at + 2], "big")
        at += 1 + hello[at] + 2
        while at < len(hello):
            kind, size = (int.from_bytes(hello[at + i:at + i + 2], "big") for i in (0, 2))
            if kind == 0:
                return hello[at + 9:at + 4 + size].decode("ascii")
            at += 4 + size
    except (IndexError, UnicodeDecodeError):
        pass
    return ""


class Site:
    def __init__(self):
        self.pages = []
        self.quirks = False
        self.unexpected = []
        traps = (HERE / "traps.js").read_text(encoding="utf-8")
        self.head = ("<html><head><meta charset=\"utf-8\"><script nonce=\"traps\">(() => {" + traps +
                     "})();</script></head><body>")
        site = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def handle(self):
                first = self.request.recv(4096, socket.MSG_PEEK)
                if first[:1] != b"\x16":
                    super().handle()
                elif server_name(first) not in BROWSER_SERVICES:
                    site.unexpected.append("https://" + server_name(first))

            def do_GET(self):
                site.answer(self)

            do_POST = do_HEAD = do_PUT = do_OPTIONS = do_GET

            def log_error(self, *arguments):  # what is no HTTP
                site.unexpected.append("connection: " + repr(arguments)[:100])

            def log_message(self, *arguments):
                pass

        class Server(socketserver.ThreadingMixIn, http.server.HTTPServer):
            daemon_threads = True

        self.server = Server(("127.0.0.1", 0), Handler)
        self.port = self.server.server_port
        self.origin = f"http://127.0.0.1:{self.port}"
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def text_of(self, path):
        kind, _, number = path.strip("/").partition("/")
        if kind == "top" and number.isdigit():
            return TOP % "".join(f'<iframe src="/page/{number}-{i}"></iframe>'
                                 for i in range(len(self.pages)))
        if kind == "page" and "-" in number:
            doctype = "" if self.quirks else "<!DOCTYPE html>"
            return doctype + self.head + self.pages[int(number.split("-")[1])]
        return None

    def answer(self, request):
        own = request.headers.get("Host") == f"127.0.0.1:{self.port}" and request.command == "GET"
        text = self.text_of(request.path) if own else None
        if request.headers.get("Host") in BROWSER_SERVICES:
            return
        if text is None:
            self.unexpected.append(f"{request.command} {request.headers.get('Host')}{request.path}"[:200])
            request.send_response(404)
            request.send_header("Content-Length", "0")
            request.end_headers()
            return
        data = text.encode("utf-8", "surrogatepass")
        request.send_response(200)
        request.send_header("Content-Type", "text/html; charset=utf-8")
        request.send_header("Content-Length", str(len(data)))
        request.send_header("Cache-Control", "no-store")
        if request.path.startswith("/page/"):
            request.send_header("Content-Security-Policy-Report-Only", POLICY)
        request.end_headers()
        request.wfile.write(data)

    def close(self):
        self.server.shutdown()
        self.server.server_close()
