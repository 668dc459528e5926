"""The pages to clean: the project's own list of attacks, and the corpus where it is."""
import email
import email.policy
import json
import pathlib
import random
import re

HERE = pathlib.Path(__file__).resolve().parent
OWN = HERE.parent / "data/html/xss"
ESCAPE = re.compile(r"\\(?:u([0-9A-F]{4})|x([0-9A-F]{2})|([nrt0\\]))")
PLAIN = {"n": "\n", "r": "\r", "t": "\t", "0": "\0", "\\": "\\"}


def unescaped(line):
    return ESCAPE.sub(lambda m: PLAIN[m[3]] if m[3] else chr(int(m[1] or m[2], 16)), line)


def own():
    """(name, page) of tests/data/html/xss: a file a class, a vector a line, after # a remark."""
    for file in sorted(OWN.glob("*.txt")):
        for number, line in enumerate(file.read_text(encoding="utf-8").split("\n"), 1):
            if line and not line.startswith("# "):
                yield f"{file.stem}:{number}", unescaped(line)


def decoded(data, charset=None):
    for name in filter(None, (charset, "utf-8", "iso2022_jp", "cp932", "euc_jp")):
        try:
            return data.decode(name)
        except (LookupError, UnicodeDecodeError):
            pass
    return data.decode("latin-1")


def mails(corpus):
    """(name, page) of the HTML parts of all messages and of the pages."""
    for file in sorted((corpus / "html").glob("*.html")):
        data = file.read_bytes()
        yield file.name, decoded(data, "utf-16" if data[:2] in (b"\xff\xfe", b"\xfe\xff") else None)
    for file in sorted((corpus / "mail").glob("*.eml")):
        try:
            message = email.message_from_bytes(file.read_bytes(), policy=email.policy.compat32)
            parts = [part for part in message.walk() if part.get_content_type() == "text/html"]
            for part in parts:
                yield file.name, decoded(part.get_payload(decode=True) or b"", part.get_content_charset())
        except (ValueError, TypeError, AttributeError, UnicodeError, AssertionError):
            continue  # a message that this reader cannot take apart


def corpus(folder):
    folder = pathlib.Path(folder)
    for file in sorted((folder / "xss").glob("*.jsonl")):
        for line in file.read_text(encoding="utf-8").split("\n"):
            if not line:
                continue
            case = json.loads(line)
            yield case["id"], case["html"]
    yield from mails(folder)


SOUP_TAGS = ("a abbr address b big blockquote body br button caption center code col colgroup dd del div dl dt em "
             "fieldset font form h1 h2 h3 hr i img input li listing main marquee math nobr noscript object ol "
             "option p plaintext pre rb rp rt rtc ruby s select small span strike strong style sub svg table "
             "tbody td template textarea tfoot th thead title tr tt u ul wbr xmp").split()
SOUP_RARE = {"plaintext", "template", "textarea", "style", "title", "xmp", "select", "svg", "math"}


def soup(count):
    """(name, page): seeded random tags, the same in every run."""
    for seed in range(count):
        chance = random.Random(seed)
        tags = chance.sample(SOUP_TAGS, chance.choice((4, 8, 16)))
        parts = []
        for _ in range(chance.randrange(5, 60)):
            tag = chance.choice(tags)
            if tag in SOUP_RARE and chance.random() < 0.8:
                tag = "b"
            kind = chance.randrange(8)
            if kind < 3:
                attribute = ' href="http://a.test/"' if tag == "a" else chance.choice(("", "", ' class=x align="left"'))
                parts.append(f"<{tag}{attribute}>")
            elif kind < 6:
                parts.append(f"</{tag}>")
            else:
                parts.append(chance.choice(("x", " ", "\n", "y z", "&nbsp;", "&#32;", "<!-- -->", "\0")))
        yield f"soup:{seed}", "".join(parts)
