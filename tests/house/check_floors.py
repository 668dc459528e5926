#!/usr/bin/env python3
"""Checks that the tree stands on its floors.

A file includes only what stands on a floor below or in its own folder, no files include each
other in a circle, public headers include no internal ones, and only lumrmisc/platform knows the
operating system.
"""
import pathlib
import re
import sys

# The folders each folder may include, besides itself.
FLOORS = {
    "platform": [],
    "buffer": ["platform"],
    "charset": ["platform", "buffer"],
    "mailtext": ["platform", "buffer", "charset"],
    "search": ["platform", "buffer", "charset"],
    "html": ["platform", "buffer", "charset"],
    "crypto": ["platform", "buffer", "charset", "mailtext"],
    "settings": ["platform", "buffer", "charset", "mailtext", "search", "html", "crypto"],
    "editor": ["platform", "buffer", "charset", "mailtext", "search", "html", "crypto", "settings"],
}
SYSTEM = re.compile(r"\b(_WIN32|_WIN64|__linux__|__unix__|__APPLE__)\b|#\s*include\s*<(windows\.h|unistd\.h|sys/)")
INCLUDE = re.compile(r'^\s*#\s*include\s*"(lumrmisc/[^"]+)"', re.M)


def folder_of(path):
    return path.split("/")[1] if path.count("/") > 1 else ""


def find_circle(graph):
    """Gives a list of files that include each other, or None."""
    done, path = set(), []

    def visit(node):
        if node in path:
            return path[path.index(node):] + [node]
        if node in done:
            return None
        path.append(node)
        for below in graph.get(node, []):
            circle = visit(below)
            if circle:
                return circle
        path.pop()
        done.add(node)
        return None

    for node in graph:
        circle = visit(node)
        if circle:
            return circle
    return None


def main(root):
    faults, graph = [], {}
    files = [p for p in (root / "lumrmisc").rglob("*") if p.suffix in (".h", ".cpp", ".inc")]
    for file in sorted(files):
        name = file.relative_to(root).as_posix()
        text = file.read_text(encoding="utf-8")
        graph[name] = INCLUDE.findall(text)
        own = folder_of(name)
        if own != "platform" and SYSTEM.search(text):
            faults.append(f"{name}: knows the operating system")
        for included in graph[name]:
            there = folder_of(included)
            if own and there != own and there not in FLOORS[own]:
                faults.append(f"{name}: includes {included}, which does not stand below it")
            if name.endswith(".h") and not name.endswith("_internal.h") and included.endswith("_internal.h"):
                faults.append(f"{name}: a public header includes {included}")
    circle = find_circle(graph)
    if circle:
        faults.append("a circle: " + " -> ".join(circle))
    for fault in faults:
        print(fault)
    return 1 if faults or not files else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
