#!/usr/bin/python3
# Demo: runs a job with the real program and the simulated programmer. The job builds and runs an
# Auto sequence, edits and saves the image, reads the chip back and selects another device. Each
# step is checked against what the windows show and what other tools read from the files. This demo
# is also the end-to-end test, so it runs in a Latin-1 locale with a decimal comma.
#
#   demo.py QUORVEN SIMBOX FOLDER [PICTURES [SCALE]]
#
# FOLDER is deleted and recreated. If PICTURES is given, a picture of each window is saved in that
# folder. SCALE is the screen scale: 1 (default) or 2.

import pathlib
import shutil
import subprocess
import sys

from driver import (BUTTON, LABEL, POWER_DOWN, ROOT, Screen, State, frames, has, same,
                    start_simbox)

SETTINGS = (ROOT / "data/quorven.cfg").read_text().split()
CHIP_BYTES = 4096
quorven, simbox, folder = [pathlib.Path(path).resolve() for path in sys.argv[1:4]]
pictures, scale = sys.argv[4:] + [None, "1"][len(sys.argv) - 4:]
sample, copy = (("sample.hex", "edited.hex") if pictures else
                ("Gerät № 1.hex", "Kopie für später.hex"))


# Returns the contents of an Intel HEX file, padded with FF to 64 KiB. The file must have data at
# address 0.
def read_hex(path):
    subprocess.run(["objcopy", "-I", "ihex", "-O", "binary", "--gap-fill", "0xFF", "--pad-to",
                    "0x10000", path, f"{path}.bin"], check=True)
    return bytearray(pathlib.Path(f"{path}.bin").read_bytes())


def take(name):
    if pictures:
        screen.picture(pathlib.Path(pictures, f"{name}{'-2x' * (scale == '2')}.png"))


def opens(menu, entry, title, picture):
    app.menu(menu, entry)
    app.window(title)
    take(picture)


def file(entry, title, name, picture):
    app.menu("File", entry)
    app.window(title)
    app.fill("File name:", name)
    app.keys("Return")
    app.window("")
    take(picture)
    app.press("OK")
    app.item(f"File: {folder}/{name}", LABEL)


def run(name, *lines):
    app.menu("Device", "Function")
    app.select("Function", name)
    app.press("Run")
    app.until(lines, lambda: all(app.find(line, LABEL) for line in lines), 60)
    app.until("end", lambda: has(app.find("Run", BUTTON), State.ENABLED))
    take("function")
    app.press("Close")


def shows(image):
    app.item(f"{sum(image[:CHIP_BYTES]) % 65536:04X}", LABEL)  # the checksum


shutil.rmtree(folder, ignore_errors=True)
shutil.copytree(ROOT / "data", folder)
(folder / "sample.hex").rename(folder / sample)
with Screen("2048x1536") as screen:
    home = screen.env["HOME"]
    subprocess.run(["localedef", "-i", "de_DE", "-f", "ISO-8859-1", home + "/de_DE"], check=True)
    env = {"LOCPATH": home, "LC_ALL": "de_DE", "QT_SCALE_FACTOR": scale}
    # The chip is not blank, so programming succeeds only after an erase.
    box = start_simbox(screen, simbox, folder, "--fill", "A5", "--chip", folder / "chip.bin")
    app = screen.start([quorven], folder, env=env)
    image = read_hex(folder / sample)
    edited = b"\x71" + image[1:]
    app.item("USB Programmer", LABEL)
    take("splash")
    app.window("Device Found!")
    take("device-found")
    app.message("Device Found!", "Firmware: SimBox v1.00")
    opens("Options", "Edit Auto", "Edit Auto", "edit-auto")
    app.press("Remove all")
    for name in ("Erase", "Blank", "Program", "Verify"):
        app.select("Functions", name)
        app.press("Add")
    app.press("OK")
    file("Load", "Open", sample, "file-options")
    shows(image)
    app.keys("Right", "Right", "Down")
    take("main")
    run("Lock", "Locking ...   OK!")
    same("lock", (folder / "chip.bin.lock").exists(), True)
    run("Auto", "Erasing ...OK", "Blank Checking ...   OK!", "Programming ...   OK!",
        "Verifying ...   OK!", "100%")
    same("chip", (folder / "chip.bin").read_bytes(), image[:CHIP_BYTES].ljust(65536, b"\xff"))

    app.menu("Buffer", "Edit")
    app.keys("7", "1")
    shows(edited)
    (folder / copy).write_text("old")  # is overwritten without a confirmation
    file("Save", "Save As", copy, "file-options")
    same(copy, read_hex(folder / copy), edited[:CHIP_BYTES].ljust(65536, b"\xff"))
    app.menu("Device", "Function")
    app.select("Function", "Read")
    app.press("Run")  # the window closes after a successful Read
    app.until("closed window", lambda: not app.find("Run", BUTTON), 60)
    shows(image)
    app.until("power-down", lambda: frames(folder)[-2:] == POWER_DOWN)
    for window in (("Buffer", "Fill", "Buffer Fill", "fill"), ("Help", "About", "", "about"),
                   ("Help", "Contents", "QUORVEN Help", "help"),
                   ("Options", "Settings", "Settings", "settings")):
        opens(*window)
        app.keys("Escape")
    app.message("Device Found!", "Firmware: SimBox v1.00")
    opens("Device", "Select", "Select Device", "select-device")
    app.select("Device", "SO8 32K type 32")
    app.press("OK")
    app.item("Device: SO8 32K type 32", LABEL)
    app.menu("File", "Exit")
    same("status, console, status of simbox", (app.wait(20), app.output(), box.stop()), (0, "", 0))
    same("settings", (folder / "quorven.cfg").read_text().split(),
         [*SETTINGS[:2], "22", *SETTINGS[3:]])
