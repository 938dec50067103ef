"""Compiles each declaration of a list and checks that it does not compile, for the stated reason.

A declaration without mistake goes first: it must compile, or the others would prove nothing.
"""
import argparse
import concurrent.futures
import os
import subprocess
import sys
import tempfile

SOURCE = """
using namespace ZoVelkor::Commands;
using Channel = CNumericSuffix<struct ChannelTag>;
struct I
{{
    void Set(double);
    void SetOf(Channel, double);
    void Switch(bool);
    void Two(std::optional<double>, double);
    double Get() const;
    void* Pointer() const;
}};
constexpr auto kCommands = DeclareCommands<I>({declaration});
auto table = CCommandSink<kCommands>::Table();
HRESULT Use(CCommandSink<kCommands>& sink) {{ return sink.Execute(nullptr, 0, 0, 1, nullptr, 0, nullptr, nullptr, nullptr); }}
"""

# The reason must stand where a reader looks first.
FIRST_LINES = 25


def prepare(options, folder):
    """Compiles the headers once for all declarations."""
    header = os.path.join(folder, "commands.h")
    with open(header, "w", encoding="utf-8") as file:
        file.write('#include "CCommandSink.h"\n')
    options.flags = ["-std=c++20"] + ["-I" + path for path in options.includes.split(":") if path]
    subprocess.run([options.compiler, *options.flags, "-x", "c++-header", header, "-o", header + ".gch"], check=True)
    options.flags += ["-include", header]


def compile_one(options, declaration):
    command = [options.compiler, *options.flags, "-fsyntax-only", "-x", "c++", "-"]
    result = subprocess.run(command, input=SOURCE.format(declaration=declaration), capture_output=True, text=True,
                            env={**os.environ, "LC_ALL": "C.UTF-8"})
    return result.returncode, result.stderr


def fault_of(options, row):
    declaration, reason = (part.strip() for part in row.split(" | ", 1))
    code, output = compile_one(options, declaration)
    if code == 0:
        return f"compiles: {declaration}"
    first = "\n".join(output.splitlines()[:FIRST_LINES])
    if reason not in first:
        return f"{declaration}: no '{reason}' in the first {FIRST_LINES} lines of\n{first}"
    return None


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--includes", required=True, help="folders, separated by colons")
    parser.add_argument("list")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        prepare(options, folder)
        check(options)


def check(options):
    code, output = compile_one(options, 'Command("VOLTage").Query(&I::Get)')
    if code != 0:
        sys.exit("the declaration without mistake does not compile:\n" + output)
    with open(options.list, encoding="utf-8") as file:
        rows = [line for line in file if line.strip() and not line.startswith("#")]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        faults = [fault for fault in pool.map(lambda row: fault_of(options, row), rows) if fault]
    print("\n".join(faults), f"{len(rows)} mistakes, {len(faults)} not told", sep="\n")
    sys.exit(1 if faults else 0)


main()
