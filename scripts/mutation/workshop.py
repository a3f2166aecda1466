"""A copy of the project in which faults are planted, and its test programs."""

import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time

# Without a line for so long, a test program hangs. The longest case that only
# computes takes a few seconds; others wait for time limits of the program.
SILENCE_SECONDS = 60
SILENCE_SECONDS_OF_WAITING = 240
WAITING = {"test_slow_faults", "test_memory_faults", "test_huge_images", "test_hylafax"}
LEFT_OUT = {"test_hylafax_server"}  # touches the machine

# A faulty program may send signals to anybody and remove anything. It sees no
# process but its own and, where root could harm others, has devices of its own
# and can write nowhere but in its folder.
CAGE = """
set -e
mount --make-rprivate /
mount --bind "$0" "$0"
mkdir -p "$0/dev"
mount -t tmpfs tmpfs "$0/dev"
cd "$0/dev"
cp -a /dev/fd /dev/full /dev/null /dev/ptmx /dev/random /dev/stderr /dev/stdin /dev/stdout \\
    /dev/tty /dev/urandom /dev/zero .
mkdir pts shm
mount --bind /dev/pts pts
mount -t tmpfs tmpfs shm
mount --move . /dev
mount -t tmpfs tmpfs /tmp
mount -o remount,bind,ro /
cd "$OLDPWD"
exec "$@"
"""


def caged(command, folder):
    apart = ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc"]
    if os.geteuid() != 0:
        return [*apart, "--user", "--map-current-user", *command]
    return [*apart, "--mount", "sh", "-c", CAGE, str(folder), *command]


class Workshop:
    """One copy, for one fault at a time."""

    def __init__(self, top, folder):
        self.top = top
        self.folder = folder
        self.copy = folder / "copy"
        self.build = folder / "build"
        self.log = folder / "log"
        self.environment = {**os.environ, "TMPDIR": str(folder / "tmp"),
                            "XDG_CACHE_HOME": str(folder / "tmp"), "HOME": str(folder / "tmp")}
        self.sources = {}  # of each test program: the folders of src/ that it is made of

    def prepare(self):
        """Copies the project; it is built as far as it is needed."""
        shutil.rmtree(self.copy, ignore_errors=True)
        (self.folder / "tmp").mkdir(parents=True, exist_ok=True)
        (self.folder / "tmp").chmod(0o777)
        names = subprocess.run(["git", "ls-files", "-z"], cwd=self.top, check=True, text=True,
                               stdout=subprocess.PIPE).stdout.split("\0")[:-1]
        for name in names:
            (self.copy / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(self.top / name, self.copy / name)
        subprocess.run(["cmake", "-S", str(self.copy), "-B", str(self.build), "-G", "Ninja",
                        "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -g0",
                        "-DBUILD_TESTING=ON"], check=True, stdout=subprocess.DEVNULL)
        targets = re.findall(r"^(tests/\S*/test_\w+): CXX_EXECUTABLE",
                             self._ninja("-t", "targets", "all").stdout, re.M)
        for target in targets:
            program = self.build / target
            if program.name not in LEFT_OUT:
                inputs = self._ninja("-t", "inputs", target).stdout.splitlines()
                self.sources[program] = {name.split("/CMakeFiles/")[0] for name in inputs
                                         if name.startswith("src/") and name.endswith(".cpp.o")}

    def _target(self, program):
        return str(program.relative_to(self.build))

    def _ninja(self, *arguments):
        return subprocess.run(["ninja", *arguments], cwd=self.build, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)

    def _own_suites(self, program, stem):
        """The suites in the test files of one source."""
        if not program.exists():
            self._build(program)
        listing = self.folder / "cases.json"
        listing.unlink(missing_ok=True)
        subprocess.run([str(program), "--gtest_list_tests", f"--gtest_output=json:{listing}"],
                       stdout=subprocess.DEVNULL, check=False, env=self.environment)
        if not listing.exists():
            return []  # it does not even start
        suites = json.loads(listing.read_text())["testsuites"]
        return [suite["name"] for suite in suites
                if any(pathlib.Path(case["file"]).stem.startswith(f"test_{stem}")
                       for case in suite["testsuite"])]

    def steps(self, file):
        """Which programs, with which filters, could notice a fault of a source: the
        nearest first, those that mostly wait last."""
        source = pathlib.Path(file)
        folder = self.build / "tests" / source.parent.relative_to("src")

        def distance(program):
            common = pathlib.Path(os.path.commonpath([folder, program.parent]))
            return (program.name in WAITING, -len(common.parts), program.parent != folder,
                    program.name)

        seeing = [program for program, sources in self.sources.items()
                  if str(source.parent) in sources]
        for program in sorted(seeing, key=distance):
            own = program.parent == folder and self._own_suites(program, source.stem)
            if own:
                own = ":".join(f"{suite}.*" for suite in own)
                yield program, own
                yield program, "-" + own
            else:
                yield program, "*"

    def failing_case(self, program, cases):
        """The first case that fails or hangs; empty if all is well."""
        limit = SILENCE_SECONDS_OF_WAITING if program.name in WAITING else SILENCE_SECONDS
        command = [str(program), "--gtest_fail_fast", f"--gtest_filter={cases}"]
        with open(self.log, "wb") as log:
            child = subprocess.Popen(caged(command, self.folder), cwd=self.build, stdout=log,
                                     stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                                     env=self.environment, start_new_session=True)
        try:
            size, since = 0, time.monotonic()
            while child.poll() is None:
                time.sleep(0.05)
                if self.log.stat().st_size != size:
                    size, since = self.log.stat().st_size, time.monotonic()
                if time.monotonic() - since > limit:
                    return self._last("RUN") or "*"
        finally:
            if child.poll() is None:
                os.killpg(child.pid, signal.SIGKILL)
                child.wait()
        if child.returncode == 0:
            return ""
        return self._last("FAILED") or self._last("RUN") or "*"

    def _last(self, word):
        text = self.log.read_text(errors="replace")
        found = re.findall(rf"^\[ *{word} *\] (\w\S*\.\w\S*)", text, re.M)
        return found[-1].rstrip(",") if found else ""

    def _build(self, program):
        return self._ninja(self._target(program)).returncode == 0

    def try_fault(self, fault):
        """"does not compile", the program and case that notice the fault, or an
        empty text."""
        path = self.copy / fault.file
        original = path.read_text()
        path.write_text(fault.planted(original))
        try:
            for program, cases in self.steps(fault.file):
                if not self._build(program):
                    return "does not compile"
                # A case that fails now and then, on a busy machine say, proves nothing.
                case = self.failing_case(program, cases)
                if case and self.failing_case(program, case):
                    break
            else:
                return ""
        finally:
            path.write_text(original)
        # The source has to be compiled again in any case.
        if not self._build(program) or self.failing_case(program, case):
            sys.exit(f"scripts/mutate: {case} of {program.name} fails without a fault, too")
        return f"{program.name}: {case}"
