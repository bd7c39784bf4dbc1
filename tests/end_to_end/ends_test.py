#!/usr/bin/python3
"""Ends of the program that the user did not choose, crossed with its states and those of the disk.

    ends_test.py QUORVEN SIMBOX PRELOADED_FAULTS SCRATCH [WORD...]    only cases with these words

A case is a program with a simulated programmer of its own. It is brought to its state, its disk is
broken, the signal sent; then everything that must hold after an end is checked.
"""

import contextlib
import ctypes
import itertools
import operator
import os
import pathlib
import random
import resource
import shutil
import signal
import sys
import time

here = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(here.parent.parent / "scripts"))
from driver import Atspi, Failure, MENU_ITEM, Screen, wait  # noqa: E402  (found by the line above)

QUORVEN, SIMBOX, PRELOADED_FAULTS, SCRATCH = (os.path.abspath(path) for path in sys.argv[1:5])
# The folder by itself: a blank in LD_PRELOAD separates two libraries.
PRELOADED = {"LD_PRELOAD": os.path.basename(PRELOADED_FAULTS),
             "LD_LIBRARY_PATH": os.path.dirname(PRELOADED_FAULTS),
             "ASAN_OPTIONS": "verify_asan_link_order=0"}
AHEAD = 4  # cases between the steps of a case, since most of its time is waiting
seed = random.Random(20261123)

ORDERLY = [signal.SIGTERM, signal.SIGINT, signal.SIGHUP]
CRASH = [signal.SIGQUIT, signal.SIGILL, signal.SIGTRAP, signal.SIGABRT, signal.SIGBUS,
         signal.SIGFPE, signal.SIGUSR1, signal.SIGSEGV, signal.SIGUSR2, signal.SIGALRM, 16,
         signal.SIGXCPU, signal.SIGVTALRM, signal.SIGPROF, signal.SIGIO, signal.SIGPWR,
         signal.SIGSYS]  # 16: SIGSTKFLT
REAL_TIME = range(34, 65)  # 32 and 33 are the C library's own
WITHOUT_EFFECT = [signal.SIGCONT, signal.SIGPIPE, signal.SIGXFSZ, signal.SIGTTIN, signal.SIGTTOU,
                  signal.SIGCHLD, signal.SIGURG, signal.SIGWINCH]

# State: whether a run is in progress, and whether SIGTSTP stops the process.
STATES = {"idle": (False, True), "run": (True, False), "message": (True, False),
          "dialog": (False, True)}
# Disk: status after an orderly end, and the cause on the console.
DISKS = {"ok": (0, None), "full": (1, "File too large"), "gone": (1, "No such file or directory"),
         "descriptors": (1, "Too many open files")}
NEW_SETTINGS = b'5\r\n22\r\n8\r\n"1.[*]0"\r\n"%s"\r\n' % (b"22/11/2026" * 40)
OLD_SETTINGS = NEW_SETTINGS.replace(b"\r", b"")
FILE_SIZE_LIMIT = 256  # less than the settings, more than a line on the console
POWER_DOWN = ["set supplies 0 0 0", "release socket"]


def expect(what, seen, expected):
    if seen != expected:
        raise Failure(f"{what}: {seen!r}, not {expected!r}")


class Case:
    def __init__(self, name, state="run", number=signal.SIGTERM, disk="ok", function="Program",
                 delay=0, **start):
        self.name, self.state, self.number, self.disk, self.start = name, state, number, disk, start
        self.function, self.delay = function, delay
        self.run, self.stops = STATES[state]
        self.status, self.cause = DISKS[disk] if number in ORDERLY else (-number, None)
        self.folder = pathlib.Path(SCRATCH, name.replace(" ", "-"))

    def launch(self):
        shutil.copytree(here.parent.parent / "data", self.folder)
        (self.folder / "quorven.cfg").write_bytes(OLD_SETTINGS)
        (self.folder / "tmp").mkdir()
        faults = ["--fault", "silent-from@W3"] if self.state == "message" else []
        # 0.1 s for each of 256 blocks: no run ends before the test is ready for it.
        self.box = self.screen.simbox(self.folder, "--fill", "FF", "--write-time", "100000",
                                      *faults, path=SIMBOX)
        self.lock = pathlib.Path("/run/lock/LCK..pts_" + os.readlink(self.folder / "com5")[9:])
        self.start["env"] = {"TMPDIR": f"{self.folder}/tmp"} | self.start.get("env", {})
        self.app = self.screen.program(QUORVEN, self.folder, **self.start)

    def stop(self):
        self.app.stop(signal.SIGKILL)
        self.box.stop()

    def reach(self):
        found, missed = "Firmware: SimBox v1.00", "Cannot find device at COM 5 !"
        if self.app.wait("discovery", lambda: {found, missed} & set(self.app.texts())) == {missed}:
            # On an overloaded machine the reply is too late: once more.
            self.stop()
            shutil.rmtree(self.folder)
            self.launch()
        self.app.message("Device Found!", found)
        if self.state == "dialog":
            self.app.menu("File", "Load")
            self.app.window("Open")
            self.app.keys("Escape")  # here it stores its state
            self.app.menu("File", "Load")
            self.app.window("Open")
        elif self.run:
            self.app.menu("Device", "Function")
            self.app.window("Function")
            self.app.keys(self.function[0].lower())
            if not self.delay:
                self.app.keys("Return")

    def arrive(self):
        if self.state == "message":
            self.app.window("Device Error")
        elif self.delay:
            self.app.keys("Return")
            time.sleep(self.delay)
        elif self.run:
            self.app.wait("two blocks", lambda: self.box.trace().count("status N") >= 2)
        expect("lock file", self.lock.exists(), os.access("/run/lock", os.W_OK))

    def break_disk(self):
        if self.disk == "full":
            resource.prlimit(self.app.pid, resource.RLIMIT_FSIZE, (FILE_SIZE_LIMIT,) * 2)
        elif self.disk == "gone":
            self.folder = self.folder.rename(f"{self.folder}-moved")
            self.app.log = self.folder / self.app.log.name
            self.box.log = self.folder / self.box.log.name
        elif self.disk == "descriptors":
            taken = {int(name) for name in os.listdir(f"/proc/{self.app.pid}/fd")}
            free = min(set(range(len(taken) + 1)) - taken)
            resource.prlimit(self.app.pid, resource.RLIMIT_NOFILE, (free, free))

    def wait_for_status(self, text):
        status = pathlib.Path(f"/proc/{self.app.pid}/status")
        self.app.wait(text, lambda: text in status.read_text(), 1)

    def survive(self):
        if self.delay:
            return
        for number in [*WITHOUT_EFFECT, signal.SIGTSTP]:
            self.app.process.send_signal(number)
        if self.stops:
            self.wait_for_status("State:\tT")
            self.app.process.send_signal(signal.SIGCONT)
        else:  # a process that has been stopped does not end
            self.wait_for_status("ShdPnd:\t0000000000000000")

    def end(self):
        self.app.process.send_signal(self.number)

    def finish(self):
        self.arrive()
        self.survive()
        self.break_disk()
        names = set(os.listdir(self.folder))
        self.end()
        expect("status within a second", self.app.status(1), self.status)
        self.check(names)

    def pairs(self):
        """How many power-down pairs the trace ends with."""
        frames = [line.rpartition("  ")[2] for line in self.box.trace().splitlines()
                  if " > " in line]
        return next(count for count in itertools.count()
                    if frames[len(frames) - 2 * count - 2:len(frames) - 2 * count] != POWER_DOWN)

    def check(self, names):
        if self.run:
            wait("power-down", self.pairs, 5)
        expect("files", set(os.listdir(self.folder)), names)
        expect("temporary files", os.listdir(self.folder / "tmp"), [])
        expect("lock file", self.lock.exists(), False)
        expect("status of simbox", self.box.stop(), 0)
        own = 1 if self.delay and self.pairs() > 1 else 0  # of the run, at a random moment
        expect("power-down pairs", self.pairs() - own, 1 if self.run else 0)
        console = self.app.output()
        if self.cause:
            expect("lines on the console", console.count("\n"), 1)
            expect("cause", self.cause in console, True)
        else:
            expect("console", console, "")
        expect("settings", (self.folder / "quorven.cfg").read_bytes(),
               NEW_SETTINGS if self.status == 0 else OLD_SETTINGS)


class SignalInSave(Case):
    """A second signal while the first one's settings are being written."""
    def __init__(self):
        super().__init__("signal in save", env=PRELOADED | {
            "SIGNAL_IN_SAVE": str(signal.SIGQUIT.value)})
        self.status = -signal.SIGQUIT


class UnhandledException(Case):
    """The message box with the cause appears after the power-down; OK or a signal ends it."""
    def __init__(self, number):
        super().__init__(f"exception {number}", number=number or signal.SIGTERM)
        self.ok = not number
        self.status = 1 if self.ok else 0
        self.start["env"] = PRELOADED | {"THROW_WHEN": f"{self.folder}/throw"}

    def end(self):
        (self.folder / "throw").touch()
        self.app.window("QUORVEN")
        self.app.wait_for("no reading to be had")
        wait("power-down before the reply", self.pairs, 5)
        if self.ok:
            self.app.press("OK")
        else:
            super().end()


class ImmediateExit(Case):
    """A library ends the process past the exit handlers, as Qt does when the compositor is gone."""
    def __init__(self):
        super().__init__("immediate exit")
        self.status = 3
        self.start["env"] = PRELOADED | {"THROW_WHEN": f"{self.folder}/throw", "EXIT_STATUS": "3"}

    def end(self):
        (self.folder / "throw").touch()


class NoDisplay(Case):
    def __init__(self):
        super().__init__("no display")
        self.status = 1

    def launch(self):
        self.screen = Screen()
        super().launch()

    def end(self):
        self.screen.server.stop(signal.SIGKILL)

    def check(self, names):
        self.app.log.write_text("")  # the X library's message
        super().check(names)
        self.screen.close()


class Ignored(Case):
    """Every signal that was ignored at the start stays ignored."""
    def __init__(self):
        super().__init__("ignored", number=signal.SIGKILL, preexec=self.ignore, env={
            "ASAN_OPTIONS": "handle_segv=0:handle_sigbus=0:handle_sigfpe=0"})

    @staticmethod
    def ignore():
        for number in {*ORDERLY, *CRASH, *REAL_TIME, signal.SIGTSTP}:
            ctypes.CDLL(None).signal(int(number), 1)  # SIG_IGN; Python knows no SIGSTKFLT

    def survive(self):
        for number in [*CRASH, *REAL_TIME, signal.SIGTSTP, *ORDERLY]:
            self.app.process.send_signal(number)
        blocks = self.box.trace().count("status N")
        self.app.wait("more blocks", lambda: self.box.trace().count("status N") >= blocks + 3)

    def check(self, _):
        expect("settings", (self.folder / "quorven.cfg").read_bytes(), OLD_SETTINGS)


class StrangeStart(Case):
    """No open descriptors, and arguments that Qt would take."""
    def __init__(self):
        super().__init__("strange start", "idle", wrapper=(
            "sh", "-c", 'exec "$0" -reverse -style unknown <&- >&- 2>&-'))

    def arrive(self):
        self.app.window("QUORVEN ~ USB Programmer - Ver.1.[*]0")
        left, right = (Atspi.Component.get_extents(self.app.item(name, MENU_ITEM),
                                                   Atspi.CoordType.WINDOW).x
                       for name in ("File", "Help"))
        expect("File left of Help", left < right, True)
        expect("descriptors", {os.readlink(f"/proc/{self.app.pid}/fd/{number}")
                               for number in range(3)}, {"/dev/null"})


def cases():
    for number in ORDERLY:
        for state in STATES:
            for disk in DISKS:
                yield Case(f"{number.name} {state} {disk}", state, number, disk)
    for index, number in enumerate(CRASH):
        for column, state in enumerate(STATES):
            disk = list(DISKS)[(index + column) % len(DISKS)]
            yield Case(f"signal {int(number)} {state} {disk}", state, number, disk)
    for number in REAL_TIME:
        yield Case(f"signal {number} run", number=number)
    for function in ("Read", "Erase", "Blank", "Program", "Verify", "Lock", "Auto"):
        for _ in range(2):
            number, delay = seed.choice(ORDERLY + CRASH), seed.uniform(0, 1.5)
            yield Case(f"{function} {delay:.3f} s signal {int(number)}", number=number,
                       function=function, delay=delay)
    yield from (SignalInSave(), UnhandledException(0), UnhandledException(signal.SIGTERM),
                ImmediateExit(), NoDisplay(), Ignored(), StrangeStart())


def main():
    resource.setrlimit(resource.RLIMIT_CORE, (1, 1))  # no core dump, in a file or by a pipe
    for number in (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP):
        signal.signal(number, signal.SIG_DFL)  # a shell may have started this with them ignored
    shutil.rmtree(SCRATCH, ignore_errors=True)
    chosen = [case for case in cases() if all(word in case.name.split() for word in sys.argv[5:])]
    failed = set()

    def attempt(index, step):
        case = chosen[index]
        if case in failed:
            return
        try:
            step(case)
        except Failure as failure:
            print(f"FAILED {case.name}: {failure}", flush=True)
            failed.add(case)
            case.stop()

    with contextlib.ExitStack() as stack:
        screens = [stack.enter_context(Screen()) for _ in range(2 * AHEAD + 1)]
        for case, case.screen in zip(chosen, itertools.cycle(screens)):
            pass
        steps = [operator.methodcaller(name) for name in ("launch", "reach", "finish")]
        for turn in range(len(chosen) + 2 * AHEAD):
            for late, step in enumerate(steps):
                if 0 <= turn - late * AHEAD < len(chosen):
                    attempt(turn - late * AHEAD, step)
        expect("settings of Qt", os.path.exists(screens[0].env["HOME"] + "/.config"), False)
    print(f"{len(chosen) - len(failed)} of {len(chosen)} ends passed")
    return 0 if chosen and not failed else 1


sys.exit(main())
