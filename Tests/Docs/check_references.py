#!/usr/bin/env python3
"""Looks whether what the pages name is there: links, headings, files, classes of the code.

usage: check_references.py ROOT

Checked in README.md and Docs/*.md:
  [text](Page.md#heading)    the file exists, relative to the page, and has the heading
  `Folder/File.cpp`          the path exists, from the root; so does a file that is named without its folder
  `CName`, `IZOName::Part`   each part is a word of some header or source
"""
import pathlib
import re
import sys

FOLDERS = ("Platform", "ComponentShell", "Inc", "Src", "Interfaces", "Remote", "Commands", "RemoteKernel", "Transports",
           "DemoInstrument", "Tools", "Tests", "Fixtures", "Benchmarks", "Fuzz", "Docs", "CMake", ".ci")
FILE_NAME = re.compile(r"[\w.-]+\.(?:cpp|h|md|cmake|py|txt)$")
CLASS_NAME = re.compile(r"(?:C[A-Z][a-z]|CB[A-Z]|IZO[A-Z])\w*(?:::~?\w+)*$")
GENERATED = {"PrsTab.cpp"}  # written by `zo table source`


def prose(text):
    """The page without fenced blocks and comments."""
    return re.sub(r"^```.*?^```|<!--.*?-->", "", text, flags=re.MULTILINE | re.DOTALL)


def anchors(text):
    """The names by which headings are linked to."""
    headings = re.findall(r"^#+ (.*)$", prose(text), flags=re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


class Tree:
    """What the repository has."""

    def __init__(self, root):
        self.root = root
        files = [path for folder in FOLDERS for path in (root / folder).rglob("*") if path.is_file()]
        self.file_names = {path.name for path in files} | {path.name for path in root.iterdir()}
        self.words = set()
        for path in files:
            if path.suffix in (".h", ".cpp"):
                self.words.update(re.findall(r"\w+", path.read_text(encoding="utf-8")))

    def link_fault(self, page, target):
        if re.match(r"\w+:", target):
            return None
        name, _, anchor = target.partition("#")
        path = page.parent / name if name else page
        if not path.exists():
            return "no such file"
        if anchor and anchor not in anchors(path.read_text(encoding="utf-8")):
            return "no such heading"
        return None

    def code_fault(self, code):
        if "/" in code and code.split("/")[0] in FOLDERS:
            return None if (self.root / code).exists() else "no such file"
        if FILE_NAME.match(code):
            return None if code in self.file_names | GENERATED else "no file of this name"
        if CLASS_NAME.match(code):
            missing = set(re.findall(r"\w+", code)) - self.words
            return f"{missing.pop()} is not in the code" if missing else None
        return None

    def faults(self, page):
        text = prose(page.read_text(encoding="utf-8"))
        for target in re.findall(r"\]\(([^)\s]+)\)", text):
            yield target, self.link_fault(page, target)
        for code in re.findall(r"`([^`\n]+)`", text):
            yield code, self.code_fault(re.sub(r"\(.*\)$", "", code))


def main():
    root = pathlib.Path(sys.argv[1])
    tree = Tree(root)
    pages = [root / "README.md", *sorted((root / "Docs").glob("*.md"))]
    found = [f"{page.relative_to(root)}: {what}: {fault}" for page in pages for what, fault in tree.faults(page) if fault]
    print("\n".join(found) or f"{len(pages)} pages: all that they name is there")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
