#!/usr/bin/env python3
"""Plants small faults at random, one at a time, and tells which of them the tests notice.

Works in a copy of a commit with a build folder of its own, so the tree at hand is never touched. One fault takes a
build of what it concerns and a run of the tests of its floor; when these do not notice it, all other tests follow.
A run that was broken off goes on where it stopped: what is known of a fault is kept in WORK/verdicts.jsonl.

verdicts:
  killed      a test failed, or took longer than its limit
  survived    all tests passed: a hole in the tests, or a fault that changes nothing
  equivalent  the compiler makes the same code of it, or it has been judged so
  refused     it does not compile (warnings are errors); counts for nothing

examples:
  Tests/Mutation/mutate.py --seed 7 --count 60             a sample of the whole product
  Tests/Mutation/mutate.py --seed 7 --count 60 --report    what is known of that sample
  Tests/Mutation/mutate.py --seed 7 --count 20 --floor RemoteKernel --kind 'dropped lock'
  Tests/Mutation/mutate.py --only 1f2e3d4c                 one fault again, for example after a test was added
  Tests/Mutation/mutate.py --judge 1f2e3d4c equivalent 'the list is sorted already'
"""

import argparse
import collections
import difflib
import fcntl
import hashlib
import io
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import tarfile

from faults import Fault, faults_of

ROOT = pathlib.Path(__file__).resolve().parents[2]
# The folder of Tests that belongs to a floor; faults of other folders meet all tests at once.
TESTS_OF = {
    'Platform': 'Platform', 'ComponentShell': 'ComponentShell', 'Interfaces': 'SoftwarePlatform',
    'Src': 'SoftwarePlatform', 'Remote': 'SoftwarePlatform', 'Commands': 'SoftwarePlatform',
    'RemoteKernel': 'RemoteKernel', 'Transports': 'Transports', 'DemoInstrument': 'DemoInstrument', 'Tools': 'Tools',
}
NO_PRODUCT = {'Tests', 'Benchmarks', 'Fuzz', 'Fixtures'}


def git(*arguments) -> bytes:
    return subprocess.run(['git', '-C', ROOT, *arguments], stdout=subprocess.PIPE, check=True).stdout


class Verdicts:
    """What is known of faults, by name; the file keeps every entry, the last one counts."""

    def __init__(self, file: pathlib.Path):
        self._file = file
        self.known = {}
        if file.exists():
            for line in file.read_text().splitlines():
                entry = json.loads(line)
                self.known[entry['name']] = {**self.known.get(entry['name'], {}), **entry}

    def add(self, name: str, **entry) -> None:
        self.known[name] = {**self.known.get(name, {}), 'name': name, **entry}
        with self._file.open('a') as out:
            out.write(json.dumps({'name': name, **entry}) + '\n')


def sources_of(commit: str) -> dict[str, tuple[bytes, int]]:
    """Contents and modes of all files of a commit, by path."""
    with tarfile.open(fileobj=io.BytesIO(git('archive', commit))) as archive:
        return {member.name: (archive.extractfile(member).read(), member.mode)
                for member in archive.getmembers() if member.isfile()}


def product_faults(sources) -> list[Fault]:
    found = []
    for path, (content, _) in sorted(sources.items()):
        if path.endswith('.cpp') and path.split('/')[0] not in NO_PRODUCT:
            found += faults_of(path, content.decode())
    return found


class Copy:
    """The copy of a commit that faults are planted in, and its build; one run at a time has it."""

    def __init__(self, work: pathlib.Path, sources, jobs: int, limit: int):
        self._tree = work / 'tree'
        self._build_folder = self._tree / 'build' / 'debug'
        self._log = work / 'log'
        self._jobs, self._limit = str(jobs), str(limit)
        self._sources = sources
        self._lock = (work / 'lock').open('w')
        try:
            fcntl.flock(self._lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            sys.exit(f'another run uses {work}; --work gives this one a folder of its own')
        for name, (content, mode) in sources.items():
            path = self._tree / name
            # What is as it should be keeps its time, so only the rest is built again.
            if not path.exists() or path.read_bytes() != content:
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_bytes(content)
                path.chmod(mode)
        for path in self._tree.rglob('*'):
            if path.is_file() and self._tree / 'build' not in path.parents and \
                    str(path.relative_to(self._tree)) not in sources:
                path.unlink()

    def prepare(self) -> None:
        """Builds without a fault, and sees the tests pass."""
        # What uses a shared library need not be linked again for a change inside it.
        self._must('configure', ['cmake', '--preset', 'debug', '-DCMAKE_LINK_DEPENDS_NO_SHARED=ON',
                                 f'-DZO_TEST_TIMEOUT={self._limit}'])
        self._must('build', self._build_command('all'))
        if (failed := self._failing_test('.')) is not None:
            sys.exit(f'without any fault {failed} fails, see {self._log}')
        commands = json.loads((self._build_folder / 'compile_commands.json').read_text())
        self._objects = collections.defaultdict(list)
        for command in commands:
            output = re.search(r' -o (\S+\.o)', command['command']).group(1)
            if (path := pathlib.Path(command['directory']) / output).exists():
                self._objects[command['file']].append(path)
        self._sound = {file: self._code_of(file) for file in self._objects}

    def judge(self, fault: Fault) -> dict:
        """Plants a fault, builds and tests."""
        path = self._tree / fault.path
        source = self._sources[fault.path][0].decode()
        path.write_text(fault.plant(source))
        try:
            return self._verdict(fault, str(path))
        finally:
            path.write_text(source)

    def _verdict(self, fault: Fault, file: str) -> dict:
        folder = TESTS_OF.get(fault.path.split('/')[0])
        steps = ([f'Tests/{folder}'] if folder else []) + ['.']
        for step in steps:
            if self._run(self._build_command('all' if step == '.' else step + '/all')) != 0:
                return {'verdict': 'refused'}
            if self._code_of(file) == self._sound[file]:
                return {'verdict': 'equivalent', 'note': 'same code'}
            if (failed := self._failing_test(step)) is not None:
                return {'verdict': 'killed', 'note': failed}
        return {'verdict': 'survived', 'note': ''}

    def _build_command(self, target: str) -> list[str]:
        return ['ninja', '-C', str(self._build_folder), '-j', self._jobs, target]

    def _failing_test(self, folder: str):
        """The first test below a folder that fails, or None; the installation is not among them."""
        result = self._run(['ctest', '--test-dir', str(self._build_folder / folder), '-j', self._jobs, '-E', '^Install',
                            '--stop-on-failure', '--no-tests=error'])
        if result == 0:
            return None
        failed = re.search(r'\d+ - (\S+) \((\w+)', self._log.read_text(errors='replace'))
        return f'{failed.group(1)} ({failed.group(2)})' if failed else 'the list of tests'

    def _code_of(self, file: str) -> str:
        digest = hashlib.sha1()
        for path in self._objects[file]:
            subprocess.run(['objcopy', '--strip-debug', path, path.with_suffix('.code')], check=True)
            digest.update(path.with_suffix('.code').read_bytes())
            path.with_suffix('.code').unlink()
        return digest.hexdigest()

    def _must(self, what: str, command: list[str]) -> None:
        print(f'{what} without a fault ...', file=sys.stderr)
        if self._run(command) != 0:
            sys.exit(f'{what} fails, see {self._log}')

    def _run(self, command: list[str]) -> int:
        """Runs it in a group of processes of its own, of which nothing remains."""
        # The build stamp of error reports uses __DATE__, without this ccache would skip those files.
        environment = {**os.environ, 'CCACHE_SLOPPINESS': 'time_macros'}
        with self._log.open('w') as log:
            process = subprocess.Popen(command, cwd=self._tree, stdout=log, stderr=subprocess.STDOUT,
                                       stdin=subprocess.DEVNULL, env=environment, start_new_session=True,
                                       preexec_fn=lambda: os.nice(10))
            try:
                return process.wait()
            finally:
                try:
                    os.killpg(process.pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass


def sample(faults: list[Fault], options) -> list[Fault]:
    """A random choice, of one line one fault at most; a larger count only adds to it."""
    order = sorted(faults, key=lambda fault: hashlib.sha1(f'{options.seed} {fault.name}'.encode()).digest())
    chosen, lines = [], set()
    for fault in order:
        if options.floor and fault.path.split('/')[0] not in options.floor:
            continue
        if options.kind and fault.kind not in options.kind:
            continue
        if (fault.path, fault.line) not in lines:
            lines.add((fault.path, fault.line))
            chosen.append(fault)
    return chosen[:options.count]


def diff_of(fault: Fault, source: str) -> str:
    lines = difflib.unified_diff(source.splitlines(), fault.plant(source).splitlines(), n=0, lineterm='')
    return '\n'.join('    ' + line for line in lines if not line.startswith(('---', '+++', '@@')))


def describe(fault: Fault, entry: dict) -> str:
    note = entry.get('note', '')
    return f'{fault.name}  {entry.get("verdict", "open"):10}  {fault.path}:{fault.line}  {fault.kind}' + \
        (f'  [{note}]' if note else '')


def report(chosen: list[Fault], known: dict, sources) -> None:
    """The faults that nobody noticed with their differences, and the figures by floor."""
    counts = collections.defaultdict(collections.Counter)
    for fault in chosen:
        entry = known.get(fault.name, {})
        verdict = entry.get('verdict', 'open')
        counts[fault.path.split('/')[0]][verdict] += 1
        print(describe(fault, entry))
        if verdict in ('survived', 'equivalent'):
            print(diff_of(fault, sources[fault.path][0].decode()))
    columns = ('killed', 'survived', 'equivalent', 'refused', 'open')
    total = collections.Counter()
    print(f'\n{"floor":16}' + ''.join(f'{column:>12}' for column in columns) + f'{"noticed":>10}')
    for floor, count in [*sorted(counts.items()), ('all', total)]:
        if count is not total:
            total.update(count)
        tried = count['killed'] + count['survived']
        share = f'{100 * count["killed"] / tried:.0f} %' if tried else '-'
        print(f'{floor:16}' + ''.join(f'{count[column]:12}' for column in columns) + f'{share:>10}')


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('--seed', default='1', help='which sample; the same seed gives the same one (default: 1)')
    parser.add_argument('--count', type=int, default=20, help='how many faults (default: 20)')
    parser.add_argument('--floor', action='append', help='top folder to plant in; may be repeated')
    parser.add_argument('--kind', action='append', help="kind of fault, such as 'dropped lock'; may be repeated")
    parser.add_argument('--only', action='append', metavar='NAME', help='this fault, again; may be repeated')
    parser.add_argument('--commit', default='HEAD', help='what is tested (default: HEAD)')
    parser.add_argument('--work', type=pathlib.Path, default=ROOT / 'build' / 'mutation',
                        help='folder of copy, build and verdicts (default: build/mutation)')
    parser.add_argument('--jobs', type=int, default=2, help='processes for builds and tests (default: 2)')
    parser.add_argument('--limit', type=int, default=60, help='seconds for one test (default: 60)')
    parser.add_argument('--list', action='store_true', help='show the faults and plant none')
    parser.add_argument('--report', action='store_true', help='show what is known and plant none')
    parser.add_argument('--judge', nargs=3, metavar=('NAME', 'VERDICT', 'REASON'),
                        help='note what a survivor is: survived or equivalent, and why')
    return parser.parse_args()


def main() -> None:
    options = parse_options()
    for number in (signal.SIGINT, signal.SIGTERM):
        # Also where whoever started this ignores them: the fault is taken back and nothing runs on.
        signal.signal(number, signal.default_int_handler)
    options.work.mkdir(parents=True, exist_ok=True)
    verdicts = Verdicts(options.work / 'verdicts.jsonl')
    if options.judge:
        name, verdict, reason = options.judge
        if verdict not in ('survived', 'equivalent'):
            sys.exit('a judgement is "survived" or "equivalent"')
        verdicts.add(name, verdict=verdict, note=reason)
        return
    sources = sources_of(options.commit)
    faults = product_faults(sources)
    chosen = [f for f in faults if f.name in options.only] if options.only else sample(faults, options)
    open_faults = [f for f in chosen if options.only or f.name not in verdicts.known]
    if not options.list and not options.report and open_faults:
        copy = Copy(options.work, sources, options.jobs, options.limit)
        copy.prepare()
        for number, fault in enumerate(open_faults, 1):
            verdicts.add(fault.name, **copy.judge(fault))
            print(f'{number}/{len(open_faults)}  {describe(fault, verdicts.known[fault.name])}', flush=True)
    report(chosen, verdicts.known, sources)


if __name__ == '__main__':
    try:
        main()
    except KeyboardInterrupt:
        sys.exit('broken off')
