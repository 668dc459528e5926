"""The little of the WebDriver protocol that the tests need, for chromedriver."""
import http.client
import json
import subprocess
import tempfile


class Browser:
    """A headless browser that reaches nothing but one local port."""

    def __init__(self, port):
        self.profile = tempfile.TemporaryDirectory(prefix="lumrmisc-browser-")
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL, text=True)
        self.session = None
        try:
            self._connect()
            self._open(port)
        except BaseException:
            self.close()
            raise

    def _connect(self):
        for line in self.driver.stdout:
            if "started successfully on port" in line:
                port = int(line.rstrip().rstrip(".").rsplit(" ", 1)[1])
                self.connection = http.client.HTTPConnection("127.0.0.1", port, timeout=120)
                return
        raise RuntimeError("chromedriver does not start")

    def _open(self, port):
        arguments = [
            "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
            "--disable-background-networking", "--disable-component-update", "--disable-sync",
            "--no-first-run", "--no-default-browser-check", "--disable-quic", "--no-pings",
            "--dns-prefetch-disable",
            "--disable-default-apps", "--disable-extensions", "--disable-client-side-phishing-detection",
            "--disable-features=OptimizationHints,MediaRouter,Translate,InterestFeedContentSuggestions,"
            "AutofillServerCommunication,CertificateTransparencyComponentUpdater,NetworkTimeServiceQuerying",
            f"--host-resolver-rules=MAP * 127.0.0.1:{port}, EXCLUDE 127.0.0.1",
            f"--user-data-dir={self.profile.name}", "--window-size=1200,900",
        ]
        value = self._call("POST", "/session", {"capabilities": {"alwaysMatch": {
            "browserName": "chrome", "unhandledPromptBehavior": "dismiss",
            "goog:chromeOptions": {
                "args": arguments,
                # No connection ahead of a click: where the mouse is pressed on a link, the browser would open one
                # before the page can cancel the click.
                "prefs": {"net.network_prediction_options": 2}},
            "goog:loggingPrefs": {"performance": "ALL"},
            "timeouts": {"script": 60000, "pageLoad": 60000},
        }}})
        self.session = f"/session/{value['sessionId']}"
        self.version = value["capabilities"]["browserVersion"]

    def _call(self, method, path, body=None):
        self.connection.request(method, path, None if body is None else json.dumps(body),
                                {"Content-Type": "application/json"})
        value = json.loads(self.connection.getresponse().read())["value"]
        if isinstance(value, dict) and "error" in value:
            raise RuntimeError(f"{value['error']}: {value['message'].splitlines()[0]}")
        return value

    def load(self, address):
        self._call("POST", f"{self.session}/url", {"url": address})

    def run(self, script, *arguments):
        """Runs the body of a function whose last argument takes the result."""
        return self._call("POST", f"{self.session}/execute/async",
                          {"script": script, "args": list(arguments)})

    def command(self, name, **parameters):
        """A command of the browser's own debugging protocol."""
        return self._call("POST", f"{self.session}/goog/cdp/execute",
                          {"cmd": name, "params": parameters})

    def requests(self):
        """The addresses asked for since the last call, as the browser itself logs them."""
        found = []
        for entry in self._call("POST", f"{self.session}/se/log", {"type": "performance"}):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                found.append(message["params"]["request"]["url"])
            elif message["method"] in ("Network.webSocketCreated", "Network.webTransportCreated"):
                found.append(message["params"]["url"])
        return found

    def close(self):
        try:
            if self.session:
                self._call("DELETE", self.session)
        except (OSError, RuntimeError, http.client.HTTPException):
            pass
        self.driver.terminate()
        self.driver.wait()
        self.driver.stdout.close()
        try:
            self.profile.cleanup()
        except OSError:
            pass  # a browser that is still closing writes into it
