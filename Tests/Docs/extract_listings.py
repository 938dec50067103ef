#!/usr/bin/env python3
"""Writes the C++ listings of a page as one source, so that a compiler can judge them.

usage: extract_listings.py PAGE SOURCE

What is compiled, in the order of the page:
  ```cpp ... ```        a listing
  <!-- cpp ... -->      what the listings around it need and readers do not: includes, the head of a function, its end
Other fences are left out. Lines keep the numbers of the page, so that a compiler's message names the page.
"""
import re
import sys

BEGIN = re.compile(r"^(?:```cpp|<!-- cpp)$")
END = {"```cpp": "```", "<!-- cpp": "-->"}


def extract(lines):
    """Lines of the source: those of the listings, in their places; all others are empty."""
    source = []
    end = None
    for line in lines:
        if end is None:
            end = END[line] if BEGIN.match(line) else None
            source.append("")
        elif line == end:
            end = None
            source.append("")
        else:
            source.append(line)
    if end is not None:
        raise ValueError(f"a listing without its end, {end}")
    return source


def main():
    page, target = sys.argv[1:]
    with open(page, encoding="utf-8") as file:
        source = extract(file.read().splitlines())
    with open(target, "w", encoding="utf-8") as file:
        file.write(f'#line 1 "{page}"\n' + "\n".join(source) + "\n")


if __name__ == "__main__":
    main()
