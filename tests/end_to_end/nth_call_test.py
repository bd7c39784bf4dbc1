#!/usr/bin/python3
"""One call of the program fails, the first, the second, and so on, in one main job with each exit.

    nth_call_test.py QUORVEN SIMBOX FAILING_CALLS SCRATCH [all | CALL:N:EXIT...]

Without a further argument a sample of all calls. The job: start, load a hex file, Program, store the
Auto sequence, save, exit by the menu or by SIGTERM. Whatever fails, the program has to end and to
report what failed, the supplies have to be off, and each file has to be the old or the new one.
"""

import array
import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import sys

here = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(here.parent.parent / "scripts"))
from demo import MAIN, read_hex  # noqa: E402  (found by the line above)
from driver import BUTTON, Failure, Program, Screen, wait  # noqa: E402

QUORVEN, SIMBOX, FAILING_CALLS, SCRATCH = (os.path.abspath(path) for path in sys.argv[1:5])
CALLS = "write fsync rename open fopen close mkstemp new".split()
EXITS = "menu", "SIGTERM"
SAMPLE = ["write:1:menu", "write:2:menu", "rename:2:SIGTERM", "rename:3:menu", "mkstemp:1:menu",
          "mkstemp:3:SIGTERM", "close:1:SIGTERM", "fsync:5:menu", "open:1:menu", "fopen:2:menu",
          "new:1:menu", "new:100:menu", "new:400:menu", "new:700:SIGTERM"]
AT_ONCE = 4  # each with a screen of its own: most of a job is waiting
POWER_DOWN = ["set supplies 0 0 0", "release socket"]
SETTINGS, SEQUENCE = b'5\n22\n1\n"1.0"\n"22/11/2026"\n', b"1\n1\n"


def hex_file(image):
    text = ""
    for at in range(0, len(image), 16):
        record = bytes([16, at >> 8, at & 255, 0]) + image[at:at + 16]
        text += f":{record.hex().upper()}{-sum(record) & 255:02X}\r\n"
    return text.encode() + b":00000001FF\r\n"


def expect(what, good, seen):
    if not good:
        raise Failure(f"{what}: {seen}")


class Stopped(Exception):
    """The program has ended, or reports the error that ends it."""


class Watched(Program):
    def wait(self, what, condition, seconds=20):
        def settled():
            if not self.running() or self.find("OK", BUTTON, title="QUORVEN"):
                raise Stopped
            return condition()
        try:
            return super().wait(what, settled, seconds)
        except Failure:
            if self.running():
                raise
            raise Stopped from None

    def file_dialog(self, entry, title, name):
        self.menu("File", entry)
        self.window(title)
        self.fill("File name:", name)
        self.keys("Return")
        with contextlib.suppress(Failure):  # a failure ends the command silently
            self.window("", 3)
            self.press("OK")

    def job(self, box):
        self.item("OK", BUTTON)
        while self.find("Communication Error"):  # 100 ms may be short for a busy machine
            self.press("OK")
            self.menu("Options", "Settings")
            self.window("Settings")
            self.keys("Escape")
            self.item("OK", BUTTON)
        self.message("Device Found!", "Firmware: SimBox v1.00")
        self.file_dialog("Load", "Open", "sample.hex")
        self.menu("Device", "Function")
        self.window("Function")
        self.keys("p", "Return")
        self.wait("the end of the run", lambda: frames(box)[-2:] == POWER_DOWN)
        self.press("Close")
        self.menu("Options", "Edit Auto")
        self.window("Edit Auto")
        self.press("OK")
        self.file_dialog("Save", "Save As", "out.hex")

    def leave(self, exit_by):
        if exit_by == "menu":
            self.menu("File", "Exit")
        else:
            self.window(MAIN)
            self.process.send_signal(signal.SIGTERM)
        self.wait("the end", lambda: False)

    def finish(self):
        """The exit status and the report of an error, whose message box is closed."""
        report = [self.output()]
        if self.running():
            report = self.texts(title="QUORVEN")
            self.find("OK", BUTTON, title="QUORVEN").do_action(0)
        return self.status(), " ".join(report)


def frames(box):
    return [line.rpartition("  ")[2] for line in box.trace().splitlines() if " > " in line]


def attempt(screen, call, at, exit_by):
    folder = pathlib.Path(SCRATCH, f"{call}-{at}-{exit_by}")
    shutil.copytree(here.parent.parent / "data", folder)
    image = bytes(read_hex(folder / "sample.hex")[:4096])
    files = {"quorven.cfg": [SETTINGS, SETTINGS.replace(b"\n", b"\r\n")],
             "auto.cfg": [SEQUENCE, SEQUENCE.replace(b"\n", b"\r\n")],
             "out.hex": [b"old", hex_file(image), hex_file(b"\xff" * 4096)]}
    for name, versions in files.items():
        (folder / name).write_bytes(versions[0])
    (folder / "counts").write_bytes(bytes(4 * len(CALLS)))
    box = screen.simbox(folder, "--no-pace", "--fill", "FF", path=SIMBOX)
    app = screen.start([QUORVEN], folder, "console.txt", Watched, {
        # The folder by itself: a blank in LD_PRELOAD separates two libraries.
        "LD_PRELOAD": os.path.basename(FAILING_CALLS),
        "LD_LIBRARY_PATH": os.path.dirname(FAILING_CALLS),
        "ASAN_OPTIONS": "verify_asan_link_order=0", "FAIL_CALL": call, "FAIL_AT": str(at),
        "CALL_COUNTS": str(folder / "counts")})
    app.screen = screen
    names = set(os.listdir(folder)) | {"console.txt", "trace.txt"}
    try:
        app.job(box)
        app.leave(exit_by)
    except Stopped:
        pass
    status, report = app.finish()
    counts = dict(zip(CALLS, array.array("i", (folder / "counts").read_bytes())))
    expect("preloaded calls", any(counts.values()), app.output())
    expect("end", status == 0 or status == 1 and report, f"status {status}, {report}")
    if any(frame.startswith("set supplies") for frame in frames(box)):
        wait("power-down", lambda: frames(box)[-2:] == POWER_DOWN, 5)
    expect("status of simbox", box.stop() == 0, box.trace()[-500:])
    expect("files", set(os.listdir(folder)) <= names, os.listdir(folder))
    for name, versions in files.items():
        contents = (folder / name).read_bytes()
        written = status == 0 and name != "out.hex"  # whose failure is not reported
        expect(name, contents in versions[written:], contents)
    reached = "not reached" if at > counts[call] else f"status {status} {report}"
    print(f"{call}:{at}:{exit_by} {reached}", flush=True)
    return counts


def run(cases):
    """Whether all of them ended as they should; one process with a screen for each AT_ONCE-th."""
    workers = [subprocess.Popen([sys.executable, __file__, *sys.argv[1:5], *cases[first::AT_ONCE]])
               for first in range(min(AT_ONCE, len(cases)))]
    return not any([worker.wait() for worker in workers])


def main():
    cases = sys.argv[5:]
    shutil.rmtree(SCRATCH, ignore_errors=True) if cases in ([], ["all"]) else None
    os.makedirs(SCRATCH, exist_ok=True)
    if not cases:
        return run(SAMPLE)
    if cases == ["all"]:
        with Screen() as screen:
            totals = {exit_by: attempt(screen, "new", 0, exit_by) for exit_by in EXITS}
        return run([f"{call}:{at}:{exit_by}" for exit_by, counts in totals.items()
                    for call, count in counts.items() for at in range(1, count + 1)])
    passed = True
    for case in cases:
        call, at, exit_by = case.split(":")
        with Screen() as screen:
            try:
                attempt(screen, call, int(at), exit_by)
            except Failure as failure:
                print(f"FAILED {case}: {failure}", flush=True)
                passed = False
    return passed


sys.exit(0 if main() else 1)
