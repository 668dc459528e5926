#!/usr/bin/env python3
"""Loads cleaned pages in a real browser: nothing may run, happen or be asked for.

Usage: browser.py CLEAN [FILTER]

CLEAN is the program of clean.cpp. Every page of vectors.py is cleaned and loaded as a document of its
own; everything in it is clicked, hovered and sent every event. The browser's own serialisation
must be what was written; cleaned and loaded again, without a document type, it must still be. First, pages
that are left as they are must be found out, so that the test is seen to see.
"""
import os
import struct
import subprocess
import sys
import time

import testsite
import vectors
import webdriver

PAGES_AT_ONCE = 40
SOUP = 100

# A page for each way in; none is cleaned.
LEFT_UNCLEAN = [
    "<script>alert(1)</script>", "<script>window.quiet = 1</script>",
    "<img src=x onerror=alert(1)>", "<b onmouseover=alert(1)>b</b>", "<p onclick='quiet = 1'>b</p>",
    "<a href='javascript:alert(1)'>a</a>", "<a href=' java\tscript:quiet=1'>a</a>",
    "<img src='http://remote.test/i.png'>", "<img src='https://remote.test/i.png'>",
    "<img srcset='//remote.test/i.png 2x'>", "<div style='background: url(http://remote.test/c)'>x</div>",
    "<style>@import 'http://remote.test/s.css';</style>", "<iframe src='http://remote.test/f'></iframe>",
    "<iframe srcdoc='<script>parent.alert(1)</script>'></iframe>",
    "<meta http-equiv=refresh content='0; url=http://remote.test/m'>",
    "<link rel=stylesheet href='http://remote.test/l.css'>", "<link rel=prefetch href='http://remote.test/p'>",
    "<form action='http://remote.test/'><button>b</button></form>", "<svg onload=alert(1)></svg>",
    "<svg><image href='http://remote.test/i.svg'/></svg>", "<details open ontoggle=alert(1)>d</details>",
    "<object data='http://remote.test/o'></object>", "<video poster='http://remote.test/v'></video>",
    "<a href='#' ping='http://remote.test/ping'>a</a>", "<p id=body>clobbers</p>",
    "<base href='http://remote.test/'><img src=i.png>",
]

COLLECT = """
const done = arguments[arguments.length - 1], wait = arguments[0];
const frames = [...document.querySelectorAll('iframe')];
const results = frames.map(frame => {
  try {
    const test = frame.contentWindow.pageTest;
    const body = test.body();
    test.excite();
    return {body, seen: test.seen};
  } catch (error) {
    return {body: '', seen: ['the page is gone: ' + error]};
  }
});
setTimeout(() => done(results.map(({body, seen}) => ({body, seen: [...seen]}))), wait);
"""

# Where the mouse goes: the middle of the first element that is seen in each frame.
PLACES = """
const done = arguments[arguments.length - 1];
const places = [];
for (const frame of document.querySelectorAll('iframe')) {
  const box = frame.getBoundingClientRect();
  const document_ = frame.contentDocument;
  if (!document_) continue;
  for (const element of [...document_.body.querySelectorAll('a, img, td, p, div, span')].slice(0, 1)) {
    const inner = element.getBoundingClientRect();
    const x = box.left + inner.left + Math.min(inner.width, 60) / 2 + 2;
    const y = box.top + inner.top + Math.min(inner.height, 30) / 2 + 2;
    if (inner.width && inner.height && inner.top < 240 && inner.left < 360) places.push([x, y + scrollY]);
  }
}
done(places);
"""


class Tester:
    def __init__(self, clean):
        self.clean = clean
        self.site = testsite.Site()
        self.browser = webdriver.Browser(self.site.port)
        self.loads = 0

    def close(self):
        self.browser.close()
        self.site.close()

    def cleaned(self, pages):
        data = b"".join(struct.pack("<I", len(p)) + p
                        for p in (page.encode("utf-16-le", "surrogatepass") for page in pages))
        out = subprocess.run([self.clean], input=data, stdout=subprocess.PIPE, check=True).stdout
        pages, at = [], 0
        while at < len(out):
            size = struct.unpack_from("<I", out, at)[0]
            pages.append(out[at + 4:at + 4 + size].decode("utf-16-le"))  # strict: must be well-formed
            at += 4 + size
        return pages

    def hover_and_click(self):
        for x, y in self.browser.run(PLACES):
            for kind in ("mouseMoved", "mousePressed", "mouseReleased"):
                if y < 880:
                    button = {} if kind == "mouseMoved" else {"button": "left", "clickCount": 1}
                    self.browser.command("Input.dispatchMouseEvent", type=kind, x=x, y=y, **button)

    def load(self, pages, quirks=False, real_mouse=True, wait=50):
        """Loads pages; gives for each what the browser made of its body and what was seen, and all
        requests that went out."""
        results, requests = [], []
        self.site.quirks = quirks
        for first in range(0, len(pages), PAGES_AT_ONCE):
            self.loads += 1
            self.site.pages = pages[first:first + PAGES_AT_ONCE]
            self.site.unexpected = []
            self.browser.requests()
            self.browser.load(f"{self.site.origin}/top/{self.loads}")
            if real_mouse:
                self.hover_and_click()
            results += self.browser.run(COLLECT, wait)
            own = tuple(f"{self.site.origin}/{kind}/{self.loads}" for kind in ("top", "page"))
            requests += [r for r in self.browser.requests()
                         if not r.startswith(own + ("data:", "cid:", "about:"))]
            requests += self.site.unexpected
        return results, requests


def short(text, limit=400):
    return text if len(text) <= limit else text[:limit] + f"... ({len(text)})"


def first_difference(a, b):
    at = next((i for i, (x, y) in enumerate(zip(a, b)) if x != y), min(len(a), len(b)))
    return f"at {at}: {a[max(0, at - 60):at + 60]!r} and {b[max(0, at - 60):at + 60]!r}"


def check_sight(tester):
    """Every page that is left unclean must be found out."""
    blind = []
    for page in LEFT_UNCLEAN:
        results, requests = tester.load([page], real_mouse=False, wait=250)
        if not results[0]["seen"] and not requests:
            blind.append(f"not found out: {page}")
    return blind


def check_pages(tester, named):
    failures = []
    names = [name for name, _ in named]
    sources = [page for _, page in named]
    first = tester.cleaned(sources)
    once, requests = tester.load(first)
    again = tester.cleaned([result["body"] for result in once])
    twice, more = tester.load(again, quirks=True, real_mouse=False)
    for name, source, out, one, two in zip(names, sources, first, once, twice):
        where = f"{name}: {short(source)!r}\n  cleaned: {short(out)!r}\n  "
        failures += [where + seen for seen in dict.fromkeys(one["seen"] + two["seen"])]
        if one["body"] != out:
            failures.append(where + "read differently " + first_difference(out, one["body"]))
        if two["body"] != one["body"]:
            failures.append(where + "not stable " + first_difference(one["body"], two["body"]))
    return failures + [f"request: {request}" for request in requests + more]


def main(arguments):
    clean, wanted = arguments[0], arguments[1] if len(arguments) > 1 else ""
    named = list(vectors.own())
    count = len(named)
    named += vectors.soup(SOUP)
    folder = os.environ.get("LUMRMISC_CORPUS")
    if folder:
        named += vectors.corpus(folder)
    else:
        print("LUMRMISC_CORPUS does not name the test data: the project's own list only")
    named = [(name, page) for name, page in named if wanted in name]
    began = time.monotonic()
    tester = Tester(clean)
    try:
        failures = check_sight(tester) + check_pages(tester, named)
        version = tester.browser.version
    finally:
        tester.close()
    for failure in failures[:50]:
        print(failure)
    print(f"{len(named)} pages ({count} of our own, {SOUP} random), {len(LEFT_UNCLEAN)} left unclean, browser {version}, "
          f"{time.monotonic() - began:.0f} s: {len(failures)} failures")
    return 1 if failures or not named else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
