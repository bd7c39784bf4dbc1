#!/usr/bin/python3
# installed_program_test.py ROOT FOLDER PICTURES: uses the program installed in ROOT as a new user.
# FOLDER is the user's folder for the program. The test enters ROOT by chroot; /tmp and the home are
# the same there as in the root of this script, which scripts/try-on.sh provides.

import filecmp
import os
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from demo import MAIN, Job, read_hex, same  # noqa: E402
from driver import Screen  # noqa: E402

root, folder, pictures = map(pathlib.Path, sys.argv[1:])
home = os.environ["HOME"]
# The program runs in ROOT without the capability to enter it.
enter = ["/usr/sbin/chroot", root, "setpriv", "--ambient-caps=-all", "--inh-caps=-all", "--"]
shipped = root / "usr/share/quorven"
names = sorted(os.listdir(shipped))

pictures.mkdir()
with Screen() as screen:
    def start():
        return screen.program("/usr/bin/quorven", home, {"HOME": home}, wrapper=enter)

    app = start()
    app.message("Communication Port Error",
                "COM5, /dev/ttyUSB0: there is no such device. Is the programmer plugged in?")
    app.window(MAIN)
    app.menu("File", "Exit")
    same("status and console", (app.status(), app.output()), (0, ""))
    same("the folder", sorted(os.listdir(folder)), names)
    # A5, not FF, so that programming needs an erase first.
    box = screen.simbox(folder, "--chip", folder / "chip.bin", "--fill", "A5",
                        path="/usr/bin/simbox", wrapper=enter)
    job = Job(folder, box, start(), lambda name: screen.picture(pictures / f"{name}.png"))
    image = read_hex(folder / "sample.hex")
    job.found()
    job.load("sample.hex", "Intel Hex", image)
    job.app.menu("Device", "Function")
    job.auto(image)
    job.app.press("Close")
    job.open_help()
    job.exit()
same("shipped files", filecmp.cmpfiles(shipped, folder, names, shallow=False)[0], names)
print("A chip was programmed, byte for byte; nothing on the console")
