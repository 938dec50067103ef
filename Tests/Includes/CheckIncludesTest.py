"""Plants includes in a tree of its own and looks at what .ci/check-includes says of them.

Usage: CheckIncludesTest.py SCRIPT
"""
import subprocess
import sys
import tempfile
from pathlib import Path

# Path, and what each of its includes is to bring: the words of the rule, or None.
FILES = {
    "Platform/Inc/Low.h": [("CHigh.h", "stands below")],
    "Platform/Src/Hidden.h": [],
    "ComponentShell/Inc/CHigh.h": [("Low.h", None), ("Hidden.h", "own floor alone"), ("elsewhere.h", None)],
    "Interfaces/_Inc/IZOThing.h": [("CThing.h", "stands before")],
    "Inc/CThing.h": [("IZOThing.h", None), ("CRemoteThing.h", "stands before")],
    "Remote/Inc/CRemoteThing.h": [("CThing.h", None)],
    "RemoteKernel/Inc/CRemoteKernel.h": [("Limits.h", None)],
    "RemoteKernel/Inc/Limits.h": [("Parsing/CParser.h", "stands before")],
    "RemoteKernel/CRemoteKernel.cpp": [("CRemoteKernel.h", None), ("Status/CStatus.h", None)],
    "RemoteKernel/Parsing/CParser.h": [("Status/CStatus.h", "stands before"), ("Limits.h", None)],
    "RemoteKernel/Status/CStatus.h": [
        ("CParser.h", 'written "Parsing/CParser.h"'),
        ("Parsing/CParser.h", None),
        ("CRegister.h", None),
        ("Status/CRegister.h", 'written "CRegister.h"'),
        ("CRemoteKernel.h", "stands before"),
    ],
    "RemoteKernel/Status/CRegister.h": [],
    "RemoteKernel/Cellar/CLost.h": [("Parsing/CParser.h", "lies in no room")],
    "Transports/Inc/CServer.h": [("Limits.h", None), ("Status/CStatus.h", "only the face")],
    "Transports/Raw/CChannel.h": [("CServer.h", None)],
    "DemoInstrument/Common/CCommon.h": [("CServer.h", None), ("Raw/CChannel.h", "only the face")],
    "Tools/Common/CTool.h": [("DemoInstrument/Common/CCommon.h", "do not know each other")],
    "Fixtures/CFixture.h": [("Status/CStatus.h", None)],
    "Tests/Support/CRecorder.h": [("Raw/CChannel.h", None), ("CFixture.h", None), ("Hidden.h", None)],
    "Benchmarks/Bench.cpp": [("CFixture.h", None), ("CRecorder.h", "do not know each other")],
    "Fuzz/Fuzz.cpp": [("CRecorder.h", "do not know each other")],
}


def plant(root):
    subprocess.run(["git", "init", "-q", root], check=True)
    for path, includes in FILES.items():
        file = Path(root, path)
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text("".join(f'#include "{name}"\n' for name, _ in includes), encoding="utf-8")


def expected():
    return {f'{path}:{number}: "{name}": ': words
            for path, includes in FILES.items() for number, (name, words) in enumerate(includes, 1) if words}


def main():
    with tempfile.TemporaryDirectory() as root:
        plant(root)
        result = subprocess.run([sys.executable, sys.argv[1], root], capture_output=True, text=True, check=False)
    # The exceptions are those of the real tree.
    lines = [line for line in result.stdout.splitlines() if "not needed any more" not in line]
    wrong = [] if result.returncode == 1 else [f"ended with {result.returncode}: {result.stderr}"]
    for begin, words in expected().items():
        if not any(line.startswith(begin) and words in line for line in lines):
            wrong.append(f"not said: {begin}{words}")
    wrong += [f"said: {line}" for line in lines if not any(line.startswith(begin) for begin in expected())]
    print("\n".join(wrong) if wrong else f"{len(lines)} includes found")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
