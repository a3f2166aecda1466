"""A copy of the project in which faults are planted, and its test programs."""

import contextlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import time

# Without a line for so long, a test program hangs; waiting for the processor does
# not count. The longest case that only computes takes a few seconds; others wait for
# time limits of the program. What seems to hang is run again by itself and then gets
# the second time, so that a busy machine does not look like a fault.
SILENCE_SECONDS = 20, 60
SILENCE_SECONDS_OF_WAITING = 240, 240
LARGEST_LOG_BYTES = 100 << 20
WAITING = {"test_slow_faults", "test_memory_faults", "test_huge_images", "test_hylafax"}
NOT_BUILT = "does not compile, or makes no difference to the compiler"
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
mount -t tmpfs -o size=2g tmpfs /tmp
mount -o remount,bind,ro /
cd "$OLDPWD"
"$@"
exit $?
"""
# The first process of a namespace gets the orphans of all others. A test program
# that counts its children must not be it.
PARENT = '"$@"; exit $?'


def caged(command, folder):
    apart = ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc"]
    if os.geteuid() != 0:
        return [*apart, "--user", "--map-current-user", "sh", "-c", PARENT, "sh", *command]
    return [*apart, "--mount", "sh", "-c", CAGE, str(folder), *command]


def source_of(name):
    """The source that an object is made of."""
    return re.sub(r"/CMakeFiles/\w+\.dir/", "/", name)[:-len(".o")]


def waited_for_processor(pid):
    """The seconds for which a process and its children could run but did not."""
    seconds = 0
    for task in pathlib.Path(f"/proc/{pid}/task").glob("*"):
        try:
            seconds += int((task / "schedstat").read_text().split()[1]) / 1e9
            children = (task / "children").read_text().split()
        except (OSError, IndexError):
            continue  # it has ended
        seconds += sum(waited_for_processor(child) for child in children)
    return seconds


class Workshop:
    """One copy, for one fault at a time."""

    def __init__(self, top, folder):
        self.top = top
        self.folder = folder
        self.copy = folder / "copy"
        self.build = folder / "build"
        self.log = folder / "log"
        self.planted = folder / "planted"  # names the object of a fault while it is planted
        self.environment = {**os.environ, "TMPDIR": str(folder / "tmp"),
                            "XDG_CACHE_HOME": str(folder / "tmp"), "HOME": str(folder / "tmp")}
        self.objects = {}  # of each test program: those of the sources that it is made of
        self.suites = {}  # of test programs
        self.sound = set()  # what is known to pass without a fault

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
        # A test program is not to be run while it is built: with a fault it may crash.
        subprocess.run(["cmake", "-S", str(self.copy), "-B", str(self.build), "-G", "Ninja",
                        "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -g0",
                        "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",
                        "-DBUILD_TESTING=ON"], check=True, stdout=subprocess.DEVNULL)
        if self.planted.exists():
            # The last run was killed. To ninja the object is that of the source.
            (self.build / self.planted.read_text()).unlink(missing_ok=True)
            self.planted.unlink()
        targets = re.findall(r"^(tests/\S*/test_\w+): CXX_EXECUTABLE",
                             self._ninja("-t", "targets", "all").stdout, re.M)
        for target in targets:
            program = self.build / target
            if program.name not in LEFT_OUT:
                inputs = self._ninja("-t", "inputs", target).stdout.splitlines()
                self.objects[program] = {source_of(name): name for name in inputs
                                         if name.startswith("src/") and name.endswith(".cpp.o")}

    def _target(self, program):
        return str(program.relative_to(self.build))

    def _ninja(self, *arguments):
        return subprocess.run(["ninja", *arguments], cwd=self.build, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)

    def _own_suites(self, program, stem):
        """The suites in the test files of one source."""
        if program not in self.suites:
            self._build(program)
            listing = self.folder / "cases.json"
            subprocess.run([str(program), "--gtest_list_tests", f"--gtest_output=json:{listing}"],
                           stdout=subprocess.DEVNULL, check=True, env=self.environment)
            self.suites[program] = json.loads(listing.read_text())["testsuites"]
        return [suite["name"] for suite in self.suites[program]
                if any(pathlib.Path(case["file"]).stem.startswith(f"test_{stem}")
                       for case in suite["testsuite"])]

    def steps(self, file):
        """Which programs, with which filters, could notice a fault of a source: the
        nearest first, those that mostly wait last."""
        seeing = [program for program, objects in self.objects.items() if file in objects]
        library = pathlib.Path(self.objects[seeing[0]][file].split("/CMakeFiles/")[0])
        folder = self.build / "tests" / library.relative_to("src")

        def distance(program):
            common = pathlib.Path(os.path.commonpath([folder, program.parent]))
            return (program.name in WAITING, -len(common.parts), program.parent != folder,
                    program.name)

        for program in sorted(seeing, key=distance):
            own = program.parent == folder and self._own_suites(program, pathlib.Path(file).stem)
            if own:
                own = ":".join(f"{suite}.*" for suite in own)
                yield program, own
                yield program, "-" + own
            else:
                yield program, "*"

    def failing_case(self, program, cases, attempt=0):
        """The first case that fails or hangs; empty if all is well."""
        limits = SILENCE_SECONDS_OF_WAITING if program.name in WAITING else SILENCE_SECONDS
        command = ["choom", "-n", "1000", "--",  # the first to go where memory runs out
                   str(program), "--gtest_fail_fast", f"--gtest_filter={cases}"]
        with open(self.log, "wb") as log:
            child = subprocess.Popen(caged(command, self.folder), cwd=self.build, stdout=log,
                                     stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                                     env=self.environment, start_new_session=True)
        try:
            size, silence, before, delay_before = 0, 0, time.monotonic(), 0
            while child.poll() is None:
                time.sleep(0.1)
                now, delay = time.monotonic(), waited_for_processor(child.pid)
                # Where this program did not get to run for long, the other one did not either.
                silence += max(0, min(now - before, 0.5) - max(0, delay - delay_before))
                before, delay_before = now, delay
                if self.log.stat().st_size != size:
                    size, silence = self.log.stat().st_size, 0
                if silence > limits[attempt] or size > LARGEST_LOG_BYTES:
                    return self._last("RUN") or "*"
        finally:
            if child.poll() is None:
                os.killpg(child.pid, signal.SIGKILL)
                child.wait()
        if child.returncode == 0:
            return ""
        return self._last("FAILED") or self._last("RUN") or "*"

    def _noticing_case(self, program, cases):
        """The first case that fails or hangs twice; empty if there is none."""
        excluded = "" if "-" in cases else "-"
        while case := self.failing_case(program, cases):
            # A case that fails now and then, on a busy machine say, proves nothing.
            if self.failing_case(program, case, 1):
                return case
            if case == "*":
                break
            cases += f"{excluded or ':'}{case}"
            excluded = ""
        return ""

    def _last(self, word):
        text = self.log.read_text(errors="replace")
        found = re.findall(rf"^\[ *{word} *\] (\w\S*\.\w\S*)", text, re.M)
        return found[-1].rstrip(",") if found else ""

    def _build(self, program):
        return self._ninja(self._target(program)).returncode == 0

    @contextlib.contextmanager
    def _planted(self, fault, name):
        """The copy with the fault for a while. Afterwards there is the old object
        again, which spares compiling the source once more; what is made of it is not."""
        source, built = self.copy / fault.file, self.build / name
        text, times = source.read_text(), source.stat()
        old, known = built.read_bytes(), built.stat()
        self.planted.write_text(name)
        source.write_text(fault.planted(text))
        try:
            yield old
        finally:
            source.write_text(text)
            os.utime(source, ns=(times.st_atime_ns, times.st_mtime_ns))
            # ninja knows an object by its time.
            known = built.stat() if built.exists() else known
            built.write_bytes(old)
            os.utime(built, ns=(known.st_atime_ns, known.st_mtime_ns))
            made = self._ninja("-t", "query", name).stdout.split("  outputs:\n")[1].split()
            for output in made:
                (self.build / output).unlink(missing_ok=True)
            self.planted.unlink()

    def try_fault(self, fault, is_near):
        """NOT_BUILT, the program and case that notice the fault, or an empty text.
        Either the nearest cases are tried or the others are."""
        names = {objects[fault.file] for objects in self.objects.values() if fault.file in objects}
        if not names:
            return NOT_BUILT  # a source for another version of Qt
        name, = names
        steps = list(self.steps(fault.file))
        steps = steps[:1] if is_near else steps[1:]
        self._ninja(name)
        with self._planted(fault, name) as old:
            if self._ninja(name).returncode != 0 or (self.build / name).read_bytes() == old:
                return NOT_BUILT
            for program, cases in steps:
                if not self._build(program):
                    return NOT_BUILT
                if case := self._noticing_case(program, cases):
                    break
            else:
                return ""
        noticed = program.name, case
        if noticed not in self.sound:
            if not self._build(program) or self.failing_case(program, case, 1):
                raise RuntimeError(f"{case} of {program.name} fails without a fault, too")
            self.sound.add(noticed)
        return f"{program.name}: {case}"
