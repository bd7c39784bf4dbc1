#!/usr/bin/python3
# installed_program_test.py ROOT FOLDER PICTURES: uses the program installed in ROOT as a new user.
# FOLDER is the user's folder for the program. The test enters ROOT by chroot; /tmp and the home are
# the same there as in the root of this script, which scripts/try-on.sh provides.

import filecmp
import os
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from demo import MAIN, job, same  # noqa: E402
from driver import Screen  # noqa: E402

root, folder, pictures = map(pathlib.Path, sys.argv[1:])
home = os.environ["HOME"]
# The program runs in ROOT without the capability to enter it.
enter = ["/usr/sbin/chroot", root, "setpriv", "--ambient-caps=-all", "--inh-caps=-all", "--"]
shipped = root / "usr/share/quorven"
names = sorted(os.listdir(shipped))
pictures.mkdir()
with Screen() as screen:
    app = screen.start([*enter, "/usr/bin/quorven"], home, env={"HOME": home})
    app.message("Communication Port Error",
                "COM5, /dev/ttyUSB0: there is no such device. Is the programmer plugged in?")
    app.window(MAIN)
    app.menu("File", "Exit")
    same("status and console", (app.wait(20), app.output()), (0, ""))
    same("the folder", filecmp.cmpfiles(shipped, folder, names, shallow=False)[0], names)
    job(screen, [*enter, "/usr/bin/quorven"], [*enter, "/usr/bin/simbox"], folder, {"HOME": home},
        lambda name: screen.picture(pictures / f"{name}.png"))
print("The demo ran with the installed program")
