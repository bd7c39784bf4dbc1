#!/usr/bin/python3
# Demo: one job with the real program and the simulated programmer, using every menu command. An
# Auto sequence is built and run, the chip is read back, the image is edited, filled, saved and
# loaded, the chip is locked, and another port and device are selected. Each step is checked against
# what the windows show and against the files as other tools read them.
#
#   demo.py run        in build/demo, pictures of the windows in build/run/pictures
#   demo.py pictures   takes docs/pictures, at 100 % and at 200 %
#   demo.py test QUORVEN SIMBOX FOLDER
#                      the end-to-end test, in a Latin-1 locale with a decimal comma
#
# The first two use the release build.

import functools
import pathlib
import re
import shutil
import subprocess
import sys

from driver import BUTTON, RADIO, TEXT, Atspi, Failure, Screen, State, has

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA, BUILD = ROOT / "data", ROOT / "build"
SETTINGS = (DATA / "quorven.cfg").read_text().split()
MAIN = "QUORVEN ~ USB Programmer - Ver." + SETTINGS[3].strip('"')
CHIP_BYTES = 4096
POWER_DOWN = ["set supplies 0 0 0", "release socket"]
# The window manager draws the same title bar for all windows, whatever their flags, so it is
# configured before each picture: icon N, title L, minimise I, maximise M, close C.
TITLE_BARS = {"main": "NLIMC", "function": "NL"}


def same(what, found, expected):
    if found != expected:
        raise Failure(f"{what}: {found!r}, not {expected!r}")


# The contents of an Intel HEX file as 64 KiB from address 0, FF where the file has no data.
def read_hex(path):
    subprocess.run(["objcopy", "-I", "ihex", "-O", "binary", "--gap-fill", "0xFF", "--pad-to",
                    "0x10000", path, f"{path}.bin"], check=True)
    return bytearray(pathlib.Path(f"{path}.bin").read_bytes())


# Steps of a job. "take" is called once with the name of each window.
class Job:
    def __init__(self, folder, box, app, take=lambda name: None):
        self.folder, self.box, self.app, self.take = folder, box, app, functools.cache(take)

    def found(self, port="COM5"):
        self.window("Device Found!", "device-found")
        self.app.message("Device Found!", "Firmware: SimBox v1.00")
        self.app.window(MAIN)
        self.app.wait_for(port)

    def window(self, title, picture):
        self.app.window(title)
        self.take(picture)

    def dialog(self, menu, entry, title, picture=None):
        self.app.menu(menu, entry)
        self.window(title, picture or entry.lower().replace(" ", "-"))

    def run(self, name, *lines):
        self.app.select("Function", name)
        self.app.press("Run")
        self.app.wait(lines, lambda: set(lines) <= set(self.app.texts(title="Function")), 60)
        self.app.wait("the end", lambda: has(self.app.find("Run", BUTTON), State.ENABLED))

    def auto(self, image):
        self.run("Auto", "Erasing ...OK", "Blank Checking ...   OK!", "Programming ...   OK!",
                 "Verifying ...   OK!", "100%")
        self.take("function")
        expected, chip = image[:CHIP_BYTES].ljust(65536, b"\xff"), self.folder / "chip.bin"
        self.app.wait("the image on the chip", lambda: chip.read_bytes() == expected)

    def file(self, command, title, name, kind):
        self.app.menu("File", command)
        self.app.window(title)
        self.app.fill("File name:", name)
        self.app.keys("Return")
        self.window("", "file-options")
        same(f"{kind} chosen", has(self.app.item(kind, RADIO), State.CHECKED), True)
        self.app.press("OK")

    # Waits until the hex view shows the image's first page and the checksum of the chip's range.
    def shows(self, image):
        def shown():
            rows = re.findall("^00[0-9A-F]0=(.{48})", "\n".join(self.app.texts(TEXT)), re.M)
            labels = self.app.texts(title=MAIN)
            return (bytes.fromhex("".join(rows)) == image[:256]
                    and labels[labels.index("CheckSum:") + 1] == checksum)
        checksum = f"{sum(image[:CHIP_BYTES]) % 65536:04X}"
        self.app.wait(f"the image with the checksum {checksum}", shown)

    def clear(self):
        self.app.menu("Buffer", "Clear")
        self.shows(b"\xff" * CHIP_BYTES)

    def load(self, name, kind, image):
        self.file("Load", "Open", name, kind)
        self.app.wait_for(f"File: {self.folder}/{name}")
        self.shows(image)

    # Saves over an existing file, without a confirmation. A binary file keeps its bytes past the
    # device's size.
    def save_and_load(self, path, kind, old, image):
        path.write_bytes(old)
        self.file("Save", "Save As", path.name, kind)
        self.app.wait_for(f"File: {path}")
        contents = read_hex(path) if kind == "Intel Hex" else path.read_bytes()
        same(path, contents, image[:CHIP_BYTES] + (old[CHIP_BYTES:] or b"\xff" * 61440))
        self.clear()
        self.load(path.name, kind, image)

    def open_help(self):
        self.dialog("Help", "Contents", "QUORVEN Help", "help")
        same("position in the guide", Atspi.Text.get_caret_offset(self.app.item("Help", TEXT)), 0)
        self.app.keys("Escape")

    def exit(self):
        self.app.menu("File", "Exit")
        same("status and console", (self.app.status(), self.app.output()), (0, ""))
        same("status of simbox", self.box.stop(), 0)


def run_job(screen, quorven, simbox, folder, env=None, take=lambda name: None,
            sample="sample.hex", copy="edited"):
    shutil.copytree(DATA, folder)
    (folder / "sample.hex").rename(folder / sample)
    (folder / "com6").symlink_to("com5")
    # Not blank, so that programming succeeds only after an erase.
    box = screen.simbox(folder, "--fill", "A5", "--chip", "chip.bin", path=simbox)
    app = screen.program(quorven, folder, env)
    job = Job(folder, box, app, take)
    image = read_hex(folder / sample)
    app.item("USB Programmer")
    job.take("splash")
    job.found()
    job.dialog("Options", "Edit Auto", "Edit Auto")
    app.press("Remove all")
    for name in ("Erase", "Blank", "Program", "Verify"):
        app.select("Functions", name)
        app.press("Add")
    app.press("OK")
    app.window(MAIN)
    same("auto.cfg", (folder / "auto.cfg").read_bytes(), b"4\r\n1\r\n2\r\n3\r\n4\r\n")

    job.file("Load", "Open", "missing.hex", "Intel Hex")  # no message, no effect
    job.load(sample, "Intel Hex", image)
    app.keys("Right", "Right", "Down")
    app.wait_for("0011")  # the address
    job.take("main")
    app.menu("Device", "Function")
    job.run("Blank", "Blank Error at 0000")
    job.auto(image)
    app.press("Close")
    job.clear()
    app.menu("Device", "Function")
    app.select("Function", "Read")
    app.press("Run")  # which closes the window
    app.window(MAIN, 60)
    job.shows(image)

    app.menu("Buffer", "Edit")
    app.keys("7", "1")
    job.dialog("Buffer", "Fill", "Buffer Fill")
    for name, text in (("Fill with", "3C"), ("Start", "0010"), ("Length", "30")):
        app.fill(name, text)
    app.press("OK")
    image[0], image[0x10:0x40] = 0x71, b"\x3c" * 0x30
    job.shows(image)
    job.save_and_load(folder / f"{copy}.hex", "Intel Hex", b":00000001FF\r\n", image)
    job.save_and_load(folder / f"{copy}.bin", "Binary", b"?" * 5000, image)

    app.menu("Device", "Function")
    job.run("Verify", "Verify Error at 0000")
    same("locked", (folder / "chip.bin.lock").exists(), False)
    job.run("Lock", "Locking ...   OK!")
    app.press("Close")
    app.wait("the lock", (folder / "chip.bin.lock").exists)
    same("last frames", box.frames()[-2:], POWER_DOWN)

    job.open_help()
    job.dialog("Help", "About", "")
    app.wait_for("Version {}, {}".format(*SETTINGS[3:]).replace('"', ""))
    app.press("OK")
    job.dialog("Options", "Settings", "Settings")
    app.keys("Down", "Return")
    job.found("COM6")
    job.dialog("Device", "Select", "Select Device", "select-device")
    app.select("Device", "SO8 32K type 32")
    app.press("OK")
    app.wait_for("Device: SO8 32K type 32")
    app.wait_for("Size: 8000H")
    job.exit()
    same("settings", (folder / "quorven.cfg").read_text().split(),
         ["6", SETTINGS[1], "22", *SETTINGS[3:]])


def test(*paths):
    *programs, scratch = [pathlib.Path(path).resolve() for path in paths]
    shutil.rmtree(scratch, ignore_errors=True)
    scratch.mkdir()
    subprocess.run(["localedef", "-i", "de_DE", "-f", "ISO-8859-1", scratch / "de_DE"], check=True)
    env = {"LOCPATH": str(scratch), "LC_ALL": "de_DE"}
    same("locale", subprocess.check_output(["locale", "charmap"], env=env), b"ISO-8859-1\n")
    with Screen() as screen:
        run_job(screen, *programs, scratch / "Prüfstand Ä", env, sample="Gerät № 1.hex",
                copy="Kopie für später")


def with_pictures(folder=BUILD / "demo", pictures=BUILD / "run/pictures", suffix="", scale="1"):
    def take(name):
        rc.write_text("<openbox_config xmlns='http://openbox.org/3.4/rc'><theme><titleLayout>"
                      f"{TITLE_BARS.get(name, 'NLC')}</titleLayout></theme></openbox_config>")
        screen.ask("--reconfigure", tool="openbox")
        # The splash is shown for only a second.
        screen.picture(pictures / f"{name}{suffix}.png", still=name != "splash")
    with Screen("2048x1536") as screen:
        rc = pathlib.Path(screen.env["HOME"], ".config/openbox/rc.xml")
        for path in (rc.parent, pictures):
            path.mkdir(parents=True, exist_ok=True)
        run_job(screen, BUILD / "quorven", BUILD / "simbox", folder, {"QT_SCALE_FACTOR": scale},
                take)


def for_docs():
    folder = pathlib.Path("/tmp/quorven")  # fixed, because the status bar shows it
    for suffix, scale in (("", "1"), ("-2x", "2")):
        with_pictures(folder, ROOT / "docs/pictures", suffix, scale)
        shutil.rmtree(folder)


if __name__ == "__main__":
    {"run": with_pictures, "pictures": for_docs, "test": test}[sys.argv[1]](*sys.argv[2:])
