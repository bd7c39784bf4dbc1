#!/usr/bin/python3
# installed_program_test.py ROOT FOLDER PICTURES: the program installed in ROOT, as a new user meets it.
# FOLDER is the user's folder for the program. ROOT is entered by chroot; it has the same /tmp and the
# same home as the root of this script, which is scripts/try-on.sh's.

import filecmp
import os
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from demo import MAIN, Job, read_hex, same  # noqa: E402
from driver import Screen  # noqa: E402

root, folder, pictures = map(pathlib.Path, sys.argv[1:])
home = os.environ["HOME"]
# The right to enter the root ends there.
enter = ["/usr/sbin/chroot", root, "setpriv", "--ambient-caps=-all", "--inh-caps=-all", "--"]
entry = (root / "usr/share/applications/quorven.desktop").read_text()
command = "/usr/bin/" + entry.split("\nExec=")[1].split("\n")[0]
shipped = root / "usr/share/quorven"
names = sorted(os.listdir(shipped))


class Installed(Job):
    def __init__(self, screen):
        self.folder, self.size = folder, 4096
        self.take = lambda name: screen.picture(pictures / (name + ".png"))
        self.image = read_hex(folder / "sample.hex")
        # Only an erase makes room for the image.
        self.box = screen.simbox(folder, "--chip", folder / "chip.bin", "--fill", "A5",
                                 path="/usr/bin/simbox", wrapper=enter)
        self.app = screen.program(command, home, {"HOME": home}, wrapper=enter)

    def play(self):
        self.found()
        self.file("Load", "Open", "sample.hex", "Intel Hex")
        self.app.menu("Device", "Function")
        self.run("Auto", "Erasing ...OK", "Blank Checking ...   OK!", "Programming ...   OK!",
                 "Verifying ...   OK!", "100%")
        self.take("function")
        self.chip_has_image()
        self.app.press("Close")
        self.dialog("Help", "Contents", "QUORVEN Help", "help")
        self.app.keys("Escape")
        self.app.menu("File", "Exit")
        same("status and console", (self.app.status(), self.app.output()), (0, ""))
        same("status of simbox", self.box.stop(), 0)


pictures.mkdir()
with Screen() as screen:
    app = screen.program(command, home, {"HOME": home}, wrapper=enter)
    app.message("Communication Port Error",
                "COM5, /dev/ttyUSB0: there is no such device. Is the box plugged in?")
    app.window(MAIN)
    app.menu("File", "Exit")
    same("status and console", (app.status(), app.output()), (0, ""))
    same("the folder", sorted(os.listdir(folder)), names)
    Installed(screen).play()
same("shipped files", filecmp.cmpfiles(shipped, folder, names, shallow=False)[0], names)
print("A chip was programmed, byte for byte; nothing on the console")
