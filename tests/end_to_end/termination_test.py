#!/usr/bin/python3
# Tests how the program ends: on a signal, a crash, an exception or a lost display, and by File Exit
# with inherited ignored signals and closed standard descriptors.
#
#   termination_test.py QUORVEN SIMBOX FAULTS FOLDER CASE
#
# FOLDER is recreated. Afterwards the supplies must be off, each file must be the old or the new
# one, and no other file may be left.

import os
import pathlib
import re
import resource
import shutil
import signal
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from driver import POWER_DOWN, ROOT, Screen, frames, same, start_simbox  # noqa: E402

# CAUSE-STATE[-OBSTACLE]: the expected exit status and a text expected on the console.
CASES = {"SIGTERM-idle": (0, ""), "SIGINT-run": (0, ""), "SIGHUP-message": (0, ""),
         "SIGTERM-dialog": (0, ""), "SIGTERM-run-full": (1, "File too large"),
         "SIGTERM-run-interrupted": (-signal.SIGQUIT, ""),
         "SIGSEGV-run": (-signal.SIGSEGV, ""), "SIGQUIT-dialog": (-signal.SIGQUIT, ""),
         "exception-run": (1, ""), "_exit-run": (3, ""), "display-run": (1, "X"),
         "menu-inherited": (0, "")}
NEW_SETTINGS = b'5\r\n22\r\n1\r\n"1.[*]0"\r\n"%s"\r\n' % (b"22/11/2026" * 40)
OLD_SETTINGS = NEW_SETTINGS.replace(b"\r", b"")
# Bit N - 1 is signal N. Ignored: SIGPIPE, SIGTTIN, SIGTTOU, SIGXFSZ. Caught: all except these and
# SIGKILL, SIGCHLD, SIGCONT, SIGSTOP, SIGURG, SIGWINCH.
IGNORED, CAUGHT, ALL = 0x1301000, 0xfffffffe7688eeff, 0xfffffffe7ffafeff

quorven, simbox, faults, folder = [pathlib.Path(path).resolve() for path in sys.argv[1:5]]
cause, state, obstacle = (sys.argv[5] + "-").split("-")[:3]
status, console = CASES[sys.argv[5]]
run, inherited = state in ("run", "message"), state == "inherited"


# The value of `key` in /proc/PID/status. A set of signals is returned as a number, without the bits
# of signals 32 and 33, which the C library uses.
def process(key):
    value = re.search(f"^{key}:\t(.*)", pathlib.Path(f"/proc/{app.pid}/status").read_text(), re.M)[1]
    return value if key == "State" else int(value, 16) & ~(3 << 31)


resource.setrlimit(resource.RLIMIT_CORE, (1, 1))  # no core dump to a file or a pipe
for ignored in (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP):
    signal.signal(ignored, signal.SIG_DFL)  # the shell that started this may ignore them
shutil.rmtree(folder, ignore_errors=True)
shutil.copytree(ROOT / "data", folder)
(folder / "quorven.cfg").write_bytes(OLD_SETTINGS)
with Screen() as screen:
    # 0.1 s for each of 256 blocks, so that no run ends before the test has acted.
    box = start_simbox(screen, simbox, folder, "--fill", "FF", "--write-time", "100000",
                       *(["--fault", "silent-from@W3"] if state == "message" else []))
    lock = pathlib.Path("/run/lock/LCK..pts_" + os.readlink(folder / "com5")[9:])
    # Signals that the parent process ignores stay ignored. Arguments, even Qt's, have no effect.
    wrapper = ["env", "--ignore-signal", "sh", "-c",
               'exec "$0" -platform offscreen <&- >&- 2>&-'] if inherited else []
    # The library's folder is passed separately, because LD_PRELOAD is split at spaces. Leaks are
    # not checked: Qt's connections leak on abnormal termination.
    app = screen.start([*wrapper, quorven], folder, env={
        "FAULT": obstacle or cause, "LD_PRELOAD": faults.name, "LD_LIBRARY_PATH": str(faults.parent),
        "ASAN_OPTIONS": "detect_leaks=0:verify_asan_link_order=0:"
                        "handle_segv=0:handle_sigbus=0:handle_sigfpe=0"})
    names = set(os.listdir(folder))
    app.message("Device Found!", "Firmware: SimBox v1.00")
    if run:
        app.menu("Device", "Function")
        app.window("Function")
        app.keys("p", "Return")
        app.window("Device Error") if state == "message" else app.until(
            "blocks", lambda: len(frames(folder)) > 7)
    elif state == "dialog":
        app.menu("File", "Load")
        app.window("Open")

    same("lock file", lock.exists(), os.access("/run/lock", os.W_OK))
    same("signals", (process("SigIgn"), process("SigCgt")),
         (ALL, 0) if inherited else (IGNORED, CAUGHT))
    app.send_signal(signal.SIGTSTP)
    if inherited:
        same("descriptors", {os.readlink(f"/proc/{app.pid}/fd/{n}") for n in range(3)},
             {"/dev/null"})
    elif run:  # a run must not stop, or the next signal would have no effect
        app.until("signal", lambda: process("ShdPnd") == 0, 1)
    else:
        app.until("stop", lambda: process("State") == "T (stopped)", 1)
        app.send_signal(signal.SIGCONT)
    if obstacle == "full":  # enough for a line on the console
        resource.prlimit(app.pid, resource.RLIMIT_FSIZE, (256, 256))

    if cause in ("exception", "_exit") or obstacle == "interrupted":
        (folder / "armed").touch()
    if cause == "menu":
        app.menu("File", "Exit")
    elif cause == "display":
        screen.server.stop(signal.SIGKILL)
    elif cause.startswith("SIG"):
        app.send_signal(signal.Signals[cause])
    if cause == "exception":
        app.window("QUORVEN")
        app.until("power-down", lambda: frames(folder)[-2:] == POWER_DOWN)
        app.message("QUORVEN", "There is not enough memory.")
    same("status within a second", app.wait(1), status)
    if run:
        box.until("power-down", lambda: frames(folder)[-2:] == POWER_DOWN)
    same("power-downs", frames(folder)[-4:].count(POWER_DOWN[1]), int(run))
    same("files, files of Qt, lock file", (set(os.listdir(folder)), os.path.exists(
        screen.env["HOME"] + "/.config"), lock.exists()), (names, False, False))
    same("status of simbox", box.stop(), 0)
    same("settings", (folder / "quorven.cfg").read_bytes(),
         NEW_SETTINGS if status == 0 else OLD_SETTINGS)
    same("console", (app.output().count("\n") > 1, app.output() != "", console in app.output()),
         (False, console != "", True))
