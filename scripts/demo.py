#!/usr/bin/python3
# The sample job with the real program and the simulated programmer: an Auto sequence built and run,
# the chip read back, the image edited, filled, saved and loaded, the chip locked, every menu command.
# Each step is checked by what the windows show and by an independent reading of the files.
#
#   demo.py play       plays it in build/play, with pictures of the screen in build/run/pictures
#   demo.py pictures   plays it at 100 % and at 200 % and takes docs/pictures, window by window
#   demo.py test QUORVEN SIMBOX FOLDER
#                      the end-to-end test: the job in two locales with a decimal comma, UTF-8 and
#                      Latin-1; the programmer lost during a run; a full disk
#
# The first two use the release build in build/.

import functools
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys
import time

from driver import FRAME, RADIO, TEXT, Failure, Screen, State, has, wait

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA, BUILD = ROOT / "data", ROOT / "build"
SETTINGS = (DATA / "quorven.cfg").read_text().split()
MAIN = "QUORVEN ~ USB Programmer - Ver." + SETTINGS[3].strip('"')
# What the window manager draws in every title bar: icon N, title L, minimise I, maximise M, close C.
# It does not ask the windows, so each picture sets it for its own.
TITLE_BARS = {"main": "NLIMC", "function": "NL"}


def same(what, found, expected):
    if found != expected:
        raise Failure(f"{what}: {found!r}, not {expected!r}")


def read_hex(path):
    """The 64 KiB that an Intel HEX file describes, FF where it has no data."""
    image = bytearray(b"\xff" * 65536)
    *records, end = [bytes.fromhex(line.removeprefix(":")) for line in path.read_text().split()]
    same("the end record", end, b"\0\0\0\1\xff")
    for record in records:
        same("length, type, sum", (record[0], record[3], sum(record) % 256), (len(record) - 5, 0, 0))
        start = int.from_bytes(record[1:3], "big")
        image[start:start + record[0]] = record[4:-1]
    return image


class Job:
    """The program and its programmer in a new folder. The device is a row of the device list."""

    def __init__(self, screen, quorven, simbox, folder, env=None, device=1, take=lambda name: None):
        self.folder, self.take, self.size = folder, functools.cache(take), 4096
        shutil.copytree(DATA, folder)
        self.settings = "\r\n".join([*SETTINGS[:2], str(device), *SETTINGS[3:], ""]).encode()
        (folder / "quorven.cfg").write_bytes(self.settings)
        (folder / "auto.cfg").write_bytes(b"1\r\n5\r\n")
        self.connect = lambda *options: screen.simbox(folder, *options, path=simbox)
        self.box = self.connect("--fill", "A5", "--chip", "chip.bin")
        self.app = screen.program(quorven, folder, env)

    def found(self, firmware="SimBox v1.00"):
        self.app.window("Device Found!")
        self.take("device-found")
        self.app.message("Device Found!", f"Firmware: {firmware}")
        self.app.window(MAIN)
        self.app.wait_for("COM5")

    def ended(self, status=0):
        same("exit status", self.app.status(), status)
        same("printed", self.app.output(), "")
        same("protocol errors", self.box.stop(), 0)
        same("settings", (self.folder / "quorven.cfg").read_bytes(), self.settings)

    def dialog(self, menu, entry, title, picture=None):
        self.app.menu(menu, entry)
        self.app.window(title)
        self.take(picture or entry.lower().replace(" ", "-"))

    def run(self, name, *lines):
        self.app.select("Function", name)
        self.app.press("Run")
        self.app.wait(lines, lambda: set(lines) <= set(self.app.texts(title="Function")), 60)

    def file(self, command, dialog, name, kind):
        self.app.menu("File", command)
        self.app.window(dialog)
        self.app.fill("File name:", name)
        self.app.keys("Return")
        self.app.window("")
        same(f"{kind} chosen", has(self.app.item(kind, RADIO), State.CHECKED), True)
        self.take("file-options")
        self.app.press("OK")
        self.app.window(MAIN)
        self.app.wait_for(f"File: {self.folder}/{name}")

    def shows_image(self, address=None):
        """The first page, the checksum of the device's range, the cursor's address."""
        def shown():
            page = "".join(re.findall("^00[0-9A-F]0=(.{48})", "\n".join(self.app.texts(TEXT)), re.M))
            labels = self.app.texts(title=MAIN)
            return (bytes.fromhex(page) == self.image[:256]
                    and labels[labels.index("CheckSum:") + 1] == "%04X" % (total % 65536)
                    and address in (None, labels[labels.index("Address:") + 1]))
        total = sum(self.image[:self.size])
        self.app.wait(f"the image with the sum {total:X}", shown)

    def chip_has_image(self):
        expected = self.image[:self.size] + b"\xff" * (65536 - self.size)
        wait("the chip to hold the image", lambda: (self.folder / "chip.bin").read_bytes() == expected)

    def clear(self):
        self.app.menu("Buffer", "Clear")
        self.image, kept = bytearray(b"\xff" * 65536), self.image
        self.shows_image("0000")
        self.image = kept

    def build_auto_sequence(self):
        self.app.menu("Options", "Edit Auto")
        self.app.press("Remove all")
        for name in ("Erase", "Blank", "Program", "Verify"):
            self.app.select("Functions", name)
            self.app.press("Add")
        self.app.press("OK")
        self.app.window(MAIN)
        same("auto.cfg", (self.folder / "auto.cfg").read_bytes(), b"4\r\n1\r\n2\r\n3\r\n4\r\n")
        self.dialog("Options", "Edit Auto", "Edit Auto")
        same("the sequence", self.app.rows("Auto sequence"), ["Erase", "Blank", "Program", "Verify"])
        self.app.press("Cancel")

    def program_and_read(self):
        self.app.menu("Device", "Function")
        self.run("Blank", "Blank Error at 0000")
        self.run("Auto", "Erasing ...OK", "Blank Checking ...   OK!", "Programming ...   OK!",
                 "Verifying ...   OK!", "100%")
        self.take("function")
        self.chip_has_image()
        self.app.press("Close")
        self.clear()
        self.app.keys("ctrl+w")
        self.app.wait("the buffer window to close", lambda: not self.app.find("Buffer", FRAME))
        self.app.menu("Device", "Function")
        self.app.select("Function", "Read")
        self.app.press("Run")
        self.app.window(MAIN, 60)
        self.shows_image("0000")

    def edit(self):
        self.app.menu("Buffer", "Edit")
        self.app.item("Buffer", FRAME)
        self.app.keys("7", "1")
        self.image[0] = 0x71
        self.shows_image("0001")
        self.dialog("Buffer", "Fill", "Buffer Fill")
        for name, text in (("Fill with", "3C"), ("Start", "0010"), ("Length", "30")):
            self.app.fill(name, text)
        self.app.press("OK")
        self.image[0x10:0x40] = b"\x3c" * 0x30
        self.shows_image()

    def save_and_load(self, name):
        self.file("Save", "Save As", name + ".hex", "Intel Hex")
        self.file("Save", "Save As", name + ".bin", "Binary")
        same("the hex file", read_hex(self.folder / (name + ".hex"))[:self.size], self.image[:self.size])
        same("the binary file", (self.folder / (name + ".bin")).read_bytes(), self.image[:self.size])
        for extension, kind in ((".hex", "Intel Hex"), (".bin", "Binary")):
            self.clear()
            self.file("Load", "Open", name + extension, kind)
            self.shows_image("0000")

    def other_windows(self):
        self.dialog("Options", "Settings", "Settings")
        self.app.keys("Escape")
        self.found()
        self.dialog("Help", "Contents", "QUORVEN Help", "help")
        self.app.keys("Escape")
        self.app.window(MAIN)
        self.dialog("Help", "About", "")
        self.app.wait_for("Version {}, {}".format(*SETTINGS[3:]).replace('"', ""))
        self.app.press("OK")

    def functions_one_by_one(self):
        self.app.menu("Device", "Function")
        self.run("Verify", "Verify Error at 0000")
        self.run("Erase", "Erasing ...OK")
        self.run("Blank", "Blank Checking ...   OK!")
        self.run("Program", "Programming ...   OK!")
        self.run("Verify", "Verifying ...   OK!")
        same("locked", (self.folder / "chip.bin.lock").exists(), False)
        self.run("Lock", "Locking ...   OK!")
        wait("the lock", (self.folder / "chip.bin.lock").exists)
        self.chip_has_image()
        self.app.press("Close")

    def other_device(self):
        self.dialog("Device", "Select", "Select Device", "select-device")
        self.app.select("Device", "SO8 32K type 32")
        self.app.press("OK")
        self.app.wait_for("Device: SO8 32K type 32")
        self.app.wait_for("Size: 8000H")
        self.settings = self.settings.replace(b"\r\n1\r\n", b"\r\n22\r\n")

    def play(self, sample="sample.hex", copy="edited"):
        self.app.item("USB Programmer")
        self.take("splash")
        self.found()
        self.build_auto_sequence()
        (self.folder / "sample.hex").rename(self.folder / sample)
        self.file("Load", "Open", sample, "Intel Hex")
        self.image = read_hex(self.folder / sample)
        self.app.keys("Right", "Right", "Down")
        self.shows_image("0011")
        self.take("main")
        self.program_and_read()
        self.edit()
        self.save_and_load(copy)
        self.other_windows()
        self.functions_one_by_one()
        requests = [line for line in self.box.trace().splitlines() if " > " in line]
        same("powered down", ["56 00 00 00" in requests[-2], " 53 00 " in requests[-1]], [True, True])
        self.other_device()
        self.app.menu("File", "Exit")
        self.ended()


def other_locale(screen, programs, scratch, name, charset):
    subprocess.run(["localedef", "-i", "de_DE", "-f", charset, scratch / name], check=True)
    env = {"LOCPATH": str(scratch), "LC_ALL": name, "LANG": name}
    same("charset", subprocess.check_output(["locale", "charmap"], env=env, text=True).strip(), charset)
    Job(screen, *programs, scratch / f"Prüfstand Ä {name}", env).play("Gerät № 1.hex", "Kopie für später")


def lost_programmer(screen, programs, scratch):
    """Killed in the middle of Program; a closed port takes no CPU time; found again and used."""
    def cpu_seconds():
        stat = pathlib.Path(f"/proc/{app.pid}/stat").read_text().rpartition(")")[2].split()
        return sum(map(int, stat[11:13])) / os.sysconf("SC_CLK_TCK")
    job = Job(screen, *programs, scratch / "lost", device=8)  # 64 KiB
    app = job.app
    job.found()
    app.menu("Device", "Function")
    job.run("Erase", "Erasing ...OK")
    app.select("Function", "Program")
    app.press("Run")
    app.wait("some blocks", lambda: job.box.trace().count("\n") > 80)
    job.box.stop(signal.SIGKILL)
    app.message("Device Error", "Communication Error!")
    app.wait_for("Programming ...   Device Fault!")
    before = cpu_seconds()
    time.sleep(2)  # the length of the measurement
    same("busy with a dead port", cpu_seconds() - before > 0.1, False)
    app.press("Close")
    job.box = job.connect("--firmware", "SimBox again")
    app.menu("Options", "Settings")
    app.keys("Escape")
    job.found("SimBox again")
    app.menu("Device", "Function")
    job.run("Erase", "Erasing ...OK")
    app.press("Close")
    app.keys("alt+F4")
    job.ended()


def full_disk(screen, programs, scratch):
    """What cannot be written is reported and stays as it was."""
    job = Job(screen, *programs, scratch / "full")
    job.found()
    resource.prlimit(job.app.pid, resource.RLIMIT_FSIZE, (0, 0))
    job.app.menu("Options", "Edit Auto")
    job.app.press("OK")
    job.app.message("QUORVEN", f"{job.folder}/auto.cfg: cannot be written: File too large")
    job.ended(status=1)
    same("auto.cfg", (job.folder / "auto.cfg").read_bytes(), b"1\r\n5\r\n")


def test(*paths):
    *programs, scratch = [pathlib.Path(path).resolve() for path in paths]
    shutil.rmtree(scratch, ignore_errors=True)
    scratch.mkdir()
    with Screen() as screen:
        other_locale(screen, programs, scratch, "de_DE.UTF-8", "UTF-8")
        other_locale(screen, programs, scratch, "de_DE", "ISO-8859-1")
        lost_programmer(screen, programs, scratch)
        full_disk(screen, programs, scratch)


def play():
    folder, pictures = BUILD / "play", BUILD / "run/pictures"
    for path in (folder, pictures):
        shutil.rmtree(path, ignore_errors=True)
    pictures.mkdir(parents=True)

    def take(name):
        picture = pictures / f"{len(list(pictures.iterdir())) + 1:02}-{name}.png"
        screen.picture(picture, still=name != "splash")
        print(picture.relative_to(ROOT), flush=True)
    with Screen() as screen:
        Job(screen, BUILD / "quorven", BUILD / "simbox", folder, take=take).play()


def pictures():
    def take(name):
        rc.write_text("<openbox_config xmlns='http://openbox.org/3.4/rc'><theme><titleLayout>"
                      f"{TITLE_BARS.get(name, 'NLC')}</titleLayout></theme></openbox_config>")
        subprocess.run(["openbox", "--reconfigure"], env=screen.env, check=True)
        screen.picture(ROOT / f"docs/pictures/{name}{suffix}.png", frame=True, still=name != "splash")
    for scale, suffix in (("1", ""), ("2", "-2x")):
        with Screen("2048x1536") as screen:
            rc = pathlib.Path(screen.env["HOME"], ".config/openbox/rc.xml")
            rc.parent.mkdir(parents=True, exist_ok=True)
            # The main window shows the folder's name, so it is always the same.
            job = Job(screen, BUILD / "quorven", BUILD / "simbox", pathlib.Path("/tmp/quorven"),
                      {"QT_SCALE_FACTOR": scale}, take=take)
            screen.callback(shutil.rmtree, job.folder)
            job.play()


if __name__ == "__main__":
    {"play": play, "pictures": pictures, "test": test}[sys.argv[1]](*sys.argv[2:])
