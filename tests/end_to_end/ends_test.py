#!/usr/bin/python3
# Ends that the user did not request, and system calls that fail during a job.
#
#   ends_test.py QUORVEN SIMBOX FAULTS SCRATCH [CASE...]
#
# Each case runs the program with its own simulated programmer and screen. Afterwards the supplies
# must be off, each file must be the old or the new one, and no other file may be left.

import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from demo import CHIP_BYTES, DATA, POWER_DOWN, read_hex, same  # noqa: E402
from driver import BUTTON, Failure, Program, Screen, wait  # noqa: E402

QUORVEN, SIMBOX, FAULTS, SCRATCH = (os.path.abspath(path) for path in sys.argv[1:5])
AT_ONCE = 6  # most of a case is waiting

# The library's folder is passed separately, because LD_PRELOAD splits at blanks. Leaks are not
# checked: Qt's connections leak on abnormal termination.
PRELOADED = {"LD_PRELOAD": os.path.basename(FAULTS), "LD_LIBRARY_PATH": os.path.dirname(FAULTS),
             "ASAN_OPTIONS": "detect_leaks=0:verify_asan_link_order=0:"
                             "handle_segv=0:handle_sigbus=0:handle_sigfpe=0"}

# What ends the program, its state and any obstacle: the exit status and a text on the console.
ENDS = {"SIGTERM idle": (0, ""), "SIGINT run": (0, ""), "SIGHUP message": (0, ""),
        "SIGTERM dialog": (0, ""), "SIGTERM run full": (1, "File too large"),
        "SIGINT idle gone": (1, "No such file or directory"),
        "SIGHUP message descriptors": (1, "Too many open files"),
        "SIGTERM run interrupted": (-signal.SIGQUIT, ""), "SIGSEGV run": (-signal.SIGSEGV, ""),
        "SIGABRT message": (-signal.SIGABRT, ""), "SIGQUIT dialog": (-signal.SIGQUIT, ""),
        "SIGRTMIN run": (-signal.SIGRTMIN, ""), "exception run": (1, ""), "_exit run": (3, ""),
        "display run": (1, "X")}
NEW_SETTINGS = b'5\r\n22\r\n1\r\n"1.[*]0"\r\n"%s"\r\n' % (b"22/11/2026" * 40)
OLD_SETTINGS = NEW_SETTINGS.replace(b"\r", b"")
# Bit N - 1 is signal N. Ignored: SIGPIPE, SIGTTIN, SIGTTOU, SIGXFSZ. Caught: all except these and
# SIGKILL, SIGCHLD, SIGCONT, SIGSTOP, SIGURG, SIGWINCH.
IGNORED, CAUGHT, ALL = 0x1301000, 0xfffffffe7688eeff, 0xfffffffe7ffafeff

# Failing call and way to exit: the file that is reported, and those that keep their contents. None:
# not specified, as for allocations. A call that is not in the table, such as "new:250 menu", can be
# run too; nothing is specified for it either.
FILES = {"auto.cfg", "out.hex", "quorven.cfg"}
AUTO, CFG = ("auto.cfg", FILES), ("quorven.cfg", {"quorven.cfg"})
HEX, NO_FILE = ("", {"out.hex"}), ("", set())
CALLS = {"write:1 menu": AUTO, "rename:1 menu": AUTO, "fsync:1 SIGTERM": AUTO, "close:2 menu": AUTO,
         "write:2 menu": HEX, "rename:2 SIGTERM": HEX, "fsync:3 menu": HEX, "close:4 menu": HEX,
         "write:3 menu": CFG, "rename:3 SIGTERM": CFG, "fsync:5 menu": CFG,
         "mkstemp:1 menu": NO_FILE, "mkstemp:3 SIGTERM": NO_FILE, "fsync:2 menu": NO_FILE,
         "open:1 menu": NO_FILE, "fopen:4 menu": NO_FILE, "fopen:2 menu": ("quorven.dev", FILES),
         "new:1 menu": None, "new:100 menu": None, "new:400 menu": None, "new:700 SIGTERM": None}


class Case:
    def __init__(self, screen, name, fault, *options, effect="", files=(), kind=Program,
                 wrapper=()):
        self.folder, self.screen = pathlib.Path(SCRATCH, name.replace(" ", "-")), screen
        shutil.rmtree(self.folder, ignore_errors=True)
        shutil.copytree(DATA, self.folder)
        for file, contents in {"quorven.cfg": OLD_SETTINGS, **dict(files)}.items():
            (self.folder / file).write_bytes(contents)
        self.box = screen.simbox(self.folder, "--fill", "FF", *options, path=SIMBOX)
        self.lock = pathlib.Path("/run/lock/LCK..pts_" + os.readlink(self.folder / "com5")[9:])
        self.app = screen.start([*wrapper, QUORVEN], self.folder, "console.txt", kind,
                                {**PRELOADED, "FAULT": fault, "FAULT_EFFECT": effect})
        self.app.ask = screen.ask
        self.names = set(os.listdir(self.folder)) - {"armed"}

    # Repeated, because a reply may be too late on a busy machine.
    def find_programmer(self):
        while self.app.item("OK", BUTTON) and not self.app.find("Firmware: SimBox v1.00"):
            self.app.press("OK")
            self.open("Options", "Settings", "Settings")
            self.app.keys("Escape")
        self.app.message("Device Found!", "Firmware: SimBox v1.00")

    def open(self, menu, entry, title):
        self.app.menu(menu, entry)
        self.app.window(title)

    def power_down(self):
        wait("power-down", lambda: self.box.frames()[-2:] == POWER_DOWN, 5)

    # A line of /proc/PID/status; numbers without signals 32 and 33, which the C library uses.
    def process(self, key):
        text = pathlib.Path(f"/proc/{self.app.pid}/status").read_text()
        value = re.search(f"^{key}:\t(.*)", text, re.M)[1]
        return value if key == "State" else int(value, 16) & ~(3 << 31)

    def ended(self, status):
        same("status", self.app.status(), status)
        same("files", set(os.listdir(self.folder)), self.names)
        same("files of Qt", os.path.exists(self.screen.env["HOME"] + "/.config"), False)
        same("lock file", self.lock.exists(), False)
        same("status of simbox", self.box.stop(), 0)


def reach(case, state):
    case.find_programmer()
    if state == "dialog":
        case.open("File", "Load", "Open")
    elif state != "idle":
        case.open("Device", "Function", "Function")
        case.app.keys("p", "Return")
        if state == "message":
            case.app.window("Device Error")
        else:
            case.app.wait("blocks", lambda: case.box.trace().count("status N") >= 2)


def hinder(case, hindrance):
    if hindrance == "full":  # enough for a line on the console
        resource.prlimit(case.app.pid, resource.RLIMIT_FSIZE, (256, 256))
    elif hindrance == "gone":
        case.folder.rename(f"{case.folder}-moved")
    elif hindrance == "descriptors":
        used = f"/proc/{case.app.pid}/fd/"
        free = next(number for number in range(999) if not os.path.lexists(used + str(number)))
        resource.prlimit(case.app.pid, resource.RLIMIT_NOFILE, (free, free))
    elif hindrance == "interrupted":
        (case.folder / "armed").touch()


def strike(case, cause):
    if cause == "display":
        case.screen.server.stop(signal.SIGKILL)
    elif cause.startswith("SIG"):
        case.app.process.send_signal(signal.Signals[cause])
    else:
        (case.folder / "armed").touch()
    if cause == "exception":
        case.app.window("QUORVEN")
        case.power_down()
        case.app.message("QUORVEN", "There is not enough memory.")


def end(screen, name):
    cause, state, hindrance = (name + " ").split(" ")[:3]
    status, console = ENDS[name]
    run = state in ("run", "message")
    # 0.1 s for each of 256 blocks, so that no run ends before the test has acted.
    options = ["--write-time", "100000"]
    options += ["--fault", "silent-from@W3"] if state == "message" else []
    call_to_fail = "fsync:1" if hindrance else "read:1"
    case = Case(screen, name, call_to_fail, *options, effect=hindrance or cause)
    reach(case, state)
    same("lock file", case.lock.exists(), os.access("/run/lock", os.W_OK))
    same("signals", (case.process("SigIgn"), case.process("SigCgt")), (IGNORED, CAUGHT))
    case.app.process.send_signal(signal.SIGTSTP)
    if run:  # a run must not stop, or the next signal would have no effect
        wait("the signal", lambda: case.process("ShdPnd") == 0, 1)
    else:
        wait("the stop", lambda: case.process("State") == "T (stopped)", 1)
        case.app.process.send_signal(signal.SIGCONT)
    hinder(case, hindrance)
    strike(case, cause)
    same("status within a second", case.app.status(1), status)
    if hindrance == "gone":
        pathlib.Path(f"{case.folder}-moved").rename(case.folder)
    if run:
        case.power_down()
    case.ended(status)
    same("power-downs", case.box.frames()[-4:].count(POWER_DOWN[1]), int(run))
    same("settings", (case.folder / "quorven.cfg").read_bytes(),
         NEW_SETTINGS if status == 0 else OLD_SETTINGS)
    said = case.app.output()
    same("console", (said.count("\n") > 1, said != "", console in said),
         (False, console != "", True))


# Signals that the parent process ignores stay ignored. Arguments, even Qt's, have no effect.
def inherited(screen, name):
    case = Case(screen, name, "none:0", wrapper=(
        "env", "--ignore-signal", "sh", "-c", 'exec "$0" -platform offscreen <&- >&- 2>&-'))
    case.find_programmer()
    same("signals", (case.process("SigIgn"), case.process("SigCgt")), (ALL, 0))
    same("descriptors", {os.readlink(f"/proc/{case.app.pid}/fd/{number}") for number in range(3)},
         {"/dev/null"})
    case.app.menu("File", "Exit")
    case.ended(0)


class Watched(Program):
    # Every wait fails as soon as the error that ends the program is shown.
    def wait(self, what, condition, seconds=20):
        def settled():
            if self.find("OK", BUTTON, title="QUORVEN"):
                raise Failure("an error is reported")
            return condition()
        return super().wait(what, settled, seconds)

    def file_dialog(self, entry, title, name):
        self.menu("File", entry)
        self.window(title)
        self.fill("File name:", name)
        self.keys("Return")
        self.window("")
        self.press("OK")


def call(screen, name):
    fault, exit_by = name.split(" ")
    old = {"quorven.cfg": OLD_SETTINGS, "auto.cfg": b"1\n1\n", "out.hex": b"old"}
    new = {"quorven.cfg": NEW_SETTINGS, "auto.cfg": b"1\r\n1\r\n"}
    case = Case(screen, name, fault, "--no-pace", files={**old, "armed": b""}, kind=Watched)
    app = case.app
    try:
        case.find_programmer()
        app.file_dialog("Load", "Open", "sample.hex")
        case.open("Device", "Function", "Function")
        app.keys("p", "Return")
        case.power_down()
        app.press("Close")
        case.open("Options", "Edit Auto", "Edit Auto")
        app.press("OK")
        app.file_dialog("Save", "Save As", "out.hex")
        app.menu("File", "Exit") if exit_by == "menu" else app.process.send_signal(signal.SIGTERM)
        app.wait("the end", lambda: False)
    except Failure:
        said = app.output()
        if app.running():
            said = " ".join(app.texts(title="QUORVEN"))
            app.find("OK", BUTTON, title="QUORVEN").do_action(0)
    if "set supplies 12 0 50" in case.box.frames():
        case.power_down()
    case.ended(int(said != ""))
    contents = {file: (case.folder / file).read_bytes() for file in old}
    unchanged = {file for file in old if contents[file] == old[file]}
    reported, kept = CALLS.get(name) or (said, unchanged)
    same("report", (bool(said), reported in said), (bool(reported), True))
    same("old files", unchanged, kept)
    for file in new.keys() - kept:
        same(file, contents[file], new[file])
    if "out.hex" not in kept:  # the image, or an empty one if it could not be loaded
        images = [read_hex(case.folder / file)[:CHIP_BYTES] for file in ("out.hex", "sample.hex")]
        same("out.hex", images[0] in (images[1], b"\xff" * CHIP_BYTES), True)


def attempt(name):
    try:
        with Screen() as screen:
            (inherited if name == "inherited" else call if ":" in name else end)(screen, name)
        print(f"passed {name}", flush=True)
        return True
    except Exception as failure:  # of any kind, so that the next case runs
        print(f"FAILED {name}: {failure!r}", flush=True)
        return False


def main(names):
    if names:
        return all([attempt(name) for name in names])
    names = ["inherited", *CALLS, *ENDS]
    shutil.rmtree(SCRATCH, ignore_errors=True)
    workers = [subprocess.Popen([sys.executable, __file__, *sys.argv[1:5], *names[first::AT_ONCE]])
               for first in range(AT_ONCE)]
    return not any([worker.wait() for worker in workers])


resource.setrlimit(resource.RLIMIT_CORE, (1, 1))  # no core dump to a file or a pipe
for ignored in (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP):
    signal.signal(ignored, signal.SIG_DFL)  # the shell that started this may ignore them
sys.exit(0 if main(sys.argv[5:]) else 1)
