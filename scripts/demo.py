#!/usr/bin/python3
# The sample job with the real program and the simulated programmer: an Auto sequence built and
# run, the chip read back, the image edited, filled, saved and loaded, the chip locked, every menu
# command. Each step is checked by what the windows show and by another reader of the files.
#
#   demo.py play       in build/play, pictures of the windows in build/run/pictures
#   demo.py pictures   takes docs/pictures, at 100 % and at 200 %
#   demo.py test QUORVEN SIMBOX FOLDER
#                      the end-to-end test, in locales with a decimal comma: UTF-8 and Latin-1
#
# The first two use the release build.

import functools
import pathlib
import re
import shutil
import subprocess
import sys

from driver import FRAME, RADIO, TEXT, Failure, Screen, State, has, wait

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA, BUILD = ROOT / "data", ROOT / "build"
SETTINGS = (DATA / "quorven.cfg").read_text().split()
MAIN = "QUORVEN ~ USB Programmer - Ver." + SETTINGS[3].strip('"')
SEQUENCE = ["Erase", "Blank", "Program", "Verify"]
# The window manager draws one title bar for all windows, whatever they ask for: icon N, title L,
# minimise I, maximise M, close C. Pictures set it window by window.
TITLE_BARS = {"main": "NLIMC", "function": "NL"}


def same(what, found, expected):
    if found != expected:
        raise Failure(f"{what}: {found!r}, not {expected!r}")


def read_hex(path):
    """The 64 KiB that an Intel HEX file from address 0 on describes, FF where it has no data."""
    subprocess.run(["objcopy", "-I", "ihex", "-O", "binary", "--gap-fill", "0xFF", "--pad-to",
                    "0x10000", path, f"{path}.bin"], check=True)
    return bytearray(pathlib.Path(f"{path}.bin").read_bytes())


class Job:
    """The program with its programmer in a new folder. "take" is called with each window's name."""

    def __init__(self, screen, quorven, simbox, folder, env=None, take=lambda name: None):
        self.folder, self.size, self.take = folder, 4096, functools.cache(take)  # each once
        shutil.copytree(DATA, folder)
        (folder / "auto.cfg").write_bytes(b"1\r\n5\r\n")
        # Not blank, so that only an erase makes room.
        self.box = screen.simbox(folder, "--fill", "A5", "--chip", "chip.bin", path=simbox)
        self.app = screen.program(quorven, folder, env)

    def found(self):
        self.app.window("Device Found!")
        self.take("device-found")
        self.app.message("Device Found!", "Firmware: SimBox v1.00")
        self.app.window(MAIN)
        self.app.wait_for("COM5")

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
            rows = re.findall("^00[0-9A-F]0=(.{48})", "\n".join(self.app.texts(TEXT)), re.M)
            labels = self.app.texts(title=MAIN)
            return (bytes.fromhex("".join(rows)) == self.image[:256]
                    and labels[labels.index("CheckSum:") + 1] == checksum
                    and address in (None, labels[labels.index("Address:") + 1]))
        checksum = "%04X" % (sum(self.image[:self.size]) % 65536)
        self.app.wait(f"the image with the checksum {checksum}", shown)

    def chip_has_image(self):
        expected, chip = self.image[:self.size].ljust(65536, b"\xff"), self.folder / "chip.bin"
        self.app.wait("the image on the chip", lambda: chip.read_bytes() == expected)

    def clear(self):
        self.app.menu("Buffer", "Clear")
        self.image, kept = bytearray(b"\xff" * 65536), self.image
        self.shows_image("0000")
        self.image = kept

    def build_auto_sequence(self):
        self.app.menu("Options", "Edit Auto")
        self.app.press("Remove all")
        for name in SEQUENCE:
            self.app.select("Functions", name)
            self.app.press("Add")
        self.app.press("OK")
        self.app.window(MAIN)
        same("auto.cfg", (self.folder / "auto.cfg").read_bytes(), b"4\r\n1\r\n2\r\n3\r\n4\r\n")
        self.dialog("Options", "Edit Auto", "Edit Auto")
        same("the sequence", self.app.rows("Auto sequence"), SEQUENCE)
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
        self.file("Save", "Save As", f"{name}.hex", "Intel Hex")
        self.file("Save", "Save As", f"{name}.bin", "Binary")
        expected = self.image[:self.size]
        same("the hex file", read_hex(self.folder / f"{name}.hex")[:self.size], expected)
        same("the binary file", (self.folder / f"{name}.bin").read_bytes(), expected)
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
        same("lock", (self.folder / "chip.bin.lock").exists(), False)
        self.run("Lock", "Locking ...   OK!")
        self.app.press("Close")
        wait("the lock", (self.folder / "chip.bin.lock").exists)
        self.chip_has_image()
        same("last frames", re.findall(" > ([0-9A-F ]+)  ", self.box.trace())[-2:],
             ["00 00 00 04 56 00 00 00", "00 00 00 02 53 00"])  # supplies off, socket released

    def choose_device_and_exit(self):
        self.dialog("Device", "Select", "Select Device", "select-device")
        self.app.select("Device", "SO8 32K type 32")
        self.app.press("OK")
        self.app.wait_for("Device: SO8 32K type 32")
        self.app.wait_for("Size: 8000H")
        self.app.menu("File", "Exit")
        same("exit status", self.app.status(), 0)
        same("settings", (self.folder / "quorven.cfg").read_text().split(),
             ["5", SETTINGS[1], "22", *SETTINGS[3:]])
        same("printed", self.app.output(), "")
        same("status of simbox", self.box.stop(), 0)

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
        self.choose_device_and_exit()


def test(*paths):
    *programs, scratch = [pathlib.Path(path).resolve() for path in paths]
    shutil.rmtree(scratch, ignore_errors=True)
    scratch.mkdir()
    for name, charset in (("de_DE.UTF-8", "UTF-8"), ("de_DE", "ISO-8859-1")):
        subprocess.run(["localedef", "-i", "de_DE", "-f", charset, scratch / name], check=True)
        env = {"LOCPATH": str(scratch), "LC_ALL": name, "LANG": name}
        said = subprocess.check_output(["locale", "charmap"], env=env, text=True)
        same("locale", said, charset + "\n")
        with Screen() as screen:
            job = Job(screen, *programs, scratch / f"Prüfstand Ä {name}", env)
            job.play("Gerät № 1.hex", "Kopie für später")


def play(folder=BUILD / "play", pictures=BUILD / "run/pictures", suffix="", scale="1"):
    def take(name):
        rc.write_text("<openbox_config xmlns='http://openbox.org/3.4/rc'><theme><titleLayout>"
                      f"{TITLE_BARS.get(name, 'NLC')}</titleLayout></theme></openbox_config>")
        subprocess.run(["openbox", "--reconfigure"], env=screen.env, check=True)
        path = pictures / f"{name}{suffix}.png"
        screen.picture(path, frame=True, still=name != "splash")  # which is there for a second
    with Screen("2048x1536") as screen:
        rc = pathlib.Path(screen.env["HOME"], ".config/openbox/rc.xml")
        for path in (rc.parent, pictures):
            path.mkdir(parents=True, exist_ok=True)
        Job(screen, BUILD / "quorven", BUILD / "simbox", folder, {"QT_SCALE_FACTOR": scale},
            take).play()


def pictures():
    folder = pathlib.Path("/tmp/quorven")  # in the main window's status bar: the same everywhere
    for suffix, scale in (("", "1"), ("-2x", "2")):
        play(folder, ROOT / "docs/pictures", suffix, scale)
        shutil.rmtree(folder)


if __name__ == "__main__":
    {"play": play, "pictures": pictures, "test": test}[sys.argv[1]](*sys.argv[2:])
