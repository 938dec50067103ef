#!/usr/bin/env python3
"""Holds the conversations that the pages show against the demo instrument and the tool zo.

usage: check_conversations.py ROOT BIN

Of each page every ``` block that begins with "$ " is run, in order, with an instrument, a registry and a folder of the page's
own. A line that begins with "$ " is a command; what stands below it, to the next one, is what it must print.
  $ nc 127.0.0.1 5025     the lines below are typed, one by one; each with a "?" is followed by its answer
  $ ... zo scpi ADDRESS   lines below that begin with "ADDRESS> " are typed, the others are answers
  <!-- not run: reason --> in front of a block leaves it out
  <!-- file: NAME         ... --> makes a file of the lines in between, for the commands behind it
The addresses and ports of the page are those that the instrument really has.
"""
import os
import pathlib
import re
import shlex
import socket
import subprocess
import sys
import tempfile

LIMIT_S = 30
PART = re.compile(r"^<!-- not run: .*-->\n\n```.*?^```$|^<!-- file: (?P<name>\S+)\n(?P<content>.*?)^-->$|^```\n(?P<block>\$ .*?)^```$",
                  re.MULTILINE | re.DOTALL)


class Instrument:
    """The demo instrument with an empty registry, at a port that was free."""

    def __init__(self, program, folder):
        self.process = subprocess.Popen(
            [program, "--port", "0", "--lxi-port", "0", "--registry", folder / "instrument.db"], cwd=folder,
            stdout=subprocess.PIPE, text=True)
        ready = self.process.stdout.readline()
        self.port = int(re.search(r"ready on 127\.0\.0\.1:(\d+)", ready).group(1))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(LIMIT_S)
        self.process.stdout.close()


def talk(port, lines):
    """Sends the lines that are no answers and puts the instrument's answers in place of those that are."""
    said = []
    with socket.create_connection(("127.0.0.1", port), LIMIT_S) as connection, connection.makefile("rb") as answers:
        remaining = iter(lines)
        for line in remaining:
            connection.sendall(line.encode() + b"\n")
            said.append(line)
            if "?" in line:
                next(remaining, None)
                said.append(answers.readline().decode().rstrip("\n"))
    return said


class Page:
    """Runs the commands of one page."""

    def __init__(self, programs, folder, port):
        self.folder = folder
        self.port = port
        self.environment = dict(os.environ, PATH=f"{programs}:{os.environ['PATH']}", ZO_REGISTRY=str(folder / "tool.db"),
                                XDG_STATE_HOME=str(folder))

    def shell(self, command, typed=""):
        """What the command prints, messages included."""
        command = re.sub(r"(localhost|127\.0\.0\.1)(::|:)5025\b", rf"\1\g<2>{self.port}", command)
        command = re.sub(r"(zo scpi \w+ localhost)(?!:)", rf"\1:{self.port}", command).replace("build/demo/bin/", "")
        done = subprocess.run(["bash", "-c", command], input=typed, cwd=self.folder, env=self.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=LIMIT_S, check=False)
        return done.stdout.splitlines()

    def run(self, command, shown):
        """What the page should show below the command."""
        words = shlex.split(command)
        if words[0] == "nc":
            return talk(self.port, shown)
        if words[0] == "lxi":
            return self.shell(shlex.join(["zo", "scpi", "query", "localhost:5025", words[-1]]))
        prompt = words[-1] + "> "
        typed = [line for line in shown if line.startswith(prompt)]
        if not typed:
            return self.shell(command)
        answers = self.shell(command, "".join(line[len(prompt):] + "\n" for line in typed))
        return shown if answers == [line for line in shown if line not in typed] else typed + answers


def commands(block):
    """The commands of a block, each with the lines below it."""
    for part in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
        command, *shown = part.splitlines()
        yield command, shown


def faults(path, programs):
    """Where the page differs from what happens."""
    text = path.read_text(encoding="utf-8")
    parts = list(PART.finditer(text))
    if not any(part["block"] for part in parts):
        return
    with tempfile.TemporaryDirectory() as name, Instrument(programs / "zo-demo-instrument", pathlib.Path(name)) as instrument:
        page = Page(programs, pathlib.Path(name), instrument.port)
        for part in parts:
            if part["name"]:
                (page.folder / part["name"]).write_text(part["content"], encoding="utf-8")
            for command, shown in commands(part["block"] or ""):
                happened = page.run(command, shown)
                if happened != shown:
                    line = text.count("\n", 0, part.start()) + 1
                    yield "\n    ".join([f"{path.name}, block at line {line}: $ {command}", "shown:", *shown, "happened:", *happened])


def main():
    root, programs = map(pathlib.Path, sys.argv[1:3])
    pages = [root / "README.md", *sorted((root / "Docs").glob("*.md"))]
    found = [fault for page in pages for fault in faults(page, programs.resolve())]
    print("\n".join(found) or "all conversations are as the pages show them")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
