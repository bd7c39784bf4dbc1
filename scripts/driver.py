# Operates programs as a user does, on a virtual screen, and reads what they show.
#
#   with Screen() as screen:
#       app = screen.start(["build/quorven"], folder)     # with the folder as current directory
#       app.message("Device Found!", "Firmware: SimBox v1.00")
#       app.menu("File", "Exit")
#       assert app.wait(20) == 0 and app.output() == ""
#
# A Screen is an X server with a window manager and an accessibility bus; a Python process can have
# only one Screen. At its end, a Screen stops the processes that were started on it, in reverse
# order. If Python is killed, these processes are terminated too.
#
# A process is a subprocess.Popen. The windows of a process are those of its process group, so the
# command may be a wrapper that forks. A method that needs a window or an item waits for it, and
# raises TimeoutError after its time limit (in seconds) or as soon as the process has ended.
# Controls are found by their accessible name, which is what a screen reader says, and by their
# Role; BUTTON, TEXT and LABEL are short names for three roles.
#
#   screen.env                       the environment of its processes; start(env=...) adds to it
#   screen.server                    the X server's process
#   screen.picture(path)             saves a picture of the active window without its frame
#   process.output(), .stop(number=SIGTERM) -> exit status
#   app.until(what, condition, seconds=20)    polls; returns the first true value
#   app.window(title)                waits until this window is active
#   app.front()                      the active window, or None
#   app.find(name, role=None)        a visible item of any window, or None; app.item() waits for it
#   app.press(name), .select(list, row), .fill(text box, text), .menu(menu, entry)
#   app.keys("ctrl+a", "Down")
#   app.message(title, text)         waits for this message box, then presses OK

import contextlib
import os
import pathlib
import re
import signal
import subprocess
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402  (the version must be set first)

Role, State = Atspi.Role, Atspi.StateType
BUTTON = getattr(Role, "BUTTON", None) or Role.PUSH_BUTTON  # renamed in at-spi 2.56
TEXT, LABEL = Role.TEXT, Role.LABEL
ROOT = pathlib.Path(__file__).resolve().parent.parent
POWER_DOWN = ["set supplies 0 0 0", "release socket"]


def has(item, state):
    return item.get_state_set().contains(state)


def children(item):
    return list(filter(None, map(item.get_child_at_index, range(item.get_child_count()))))


# If the item is visible, yields it and its visible descendants in tree order, without the contents
# of tables and trees.
def shown(item):
    if has(item, State.SHOWING):
        yield item
        if item.get_role() not in (Role.TABLE, Role.TREE):  # the file dialog may list many files
            for child in children(item):
                yield from shown(child)


def same(what, found, expected):
    if found != expected:
        raise AssertionError(f"{what}: {found!r}, not {expected!r}")


# Returns the meaning of each frame in the trace that the simulated programmer has written to this
# folder.
def frames(folder):
    return re.findall(" > .*  (.*)", (folder / "trace.txt").read_text())


# Starts the simulated programmer as port 5 of a program that runs in this folder.
def start_simbox(screen, simbox, folder, *options):
    box = screen.start([simbox, "--link", folder / "com5", "--trace", folder / "trace.txt",
                        *options], folder, "simbox.txt")
    box.until("programmer", lambda: "simbox ready" in box.output())
    return box


class Process(subprocess.Popen):
    active = 0  # time in seconds when one of its windows was last active

    def __init__(self, screen, command, folder, log, env):
        self.ask, self.log = screen.ask, pathlib.Path(folder, log)
        with open(self.log, "wb") as output:
            super().__init__(["setpriv", "--pdeathsig", "TERM", *command], cwd=folder, env=env,
                             stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                             process_group=0)

    def __exit__(self, *_):
        self.stop()

    def output(self):
        return self.log.read_text("utf-8", "replace")

    def stop(self, number=signal.SIGTERM):
        self.send_signal(number)  # no effect if the process has ended
        try:
            return self.wait(10)
        finally:
            self.kill()

    def until(self, what, condition, seconds=20):
        end = time.monotonic() + seconds
        while True:
            while GLib.MainContext.default().iteration(False):
                pass
            with contextlib.suppress(GLib.Error, ProcessLookupError):  # an item was deleted
                if value := condition():
                    return value
            if time.monotonic() > end or self.poll() is not None:
                names = [item.get_name() for window in self.windows() for item in shown(window)]
                raise TimeoutError(f"no {what}; status {self.returncode}, shown: {names}, "
                                   f"printed: {self.output()}")
            time.sleep(0.02)

    def windows(self):
        return [window for program in children(Atspi.get_desktop(0))
                if os.getpgid(program.get_process_id()) == self.pid for window in children(program)]

    def find(self, name, role=None):
        return next((item for window in self.windows() for item in shown(window)
                     if item.get_name() == name and role in (None, item.get_role())), None)

    def item(self, name, role=None):
        return self.until(repr(name), lambda: self.find(name, role))

    # On a busy machine the window manager may leave no window active for a while.
    def front(self):
        window = next((window for window in self.windows() if has(window, State.ACTIVE)), None)
        if window:
            self.active = time.monotonic()
        elif time.monotonic() > self.active + 2:
            self.ask("search", "--onlyvisible", "--name", "", "windowactivate", "%@")
        return window

    def window(self, title):
        return self.until(f"window {title!r}", lambda: (window := self.front())
                          and window.get_name() == title and window)

    def keys(self, *keys):
        self.until("active window", self.front)
        self.ask("key", "--delay", "20", *keys)

    # Presses an enabled button of the active window, so never one that is blocked by a dialog.
    def press(self, name):
        button = self.until(f"button {name!r}", lambda: (window := self.front()) and next(
            (item for item in shown(window) if item.get_name() == name
             and item.get_role() == BUTTON and has(item, State.ENABLED)), None))
        button.do_action(0)
        with contextlib.suppress(GLib.Error):  # the window has been closed
            while has(button, State.PRESSED):
                time.sleep(0.02)

    # Uses the arrow keys to select the row with this text in a list.
    def select(self, name, row):
        box = self.item(name, Role.LIST)
        self.until(f"focus on {name!r}", lambda: (box.grab_focus(), has(box, State.FOCUSED))[1])
        self.keys("Home", *["Down"] * [item.get_name() for item in children(box)].index(row))
        self.until(f"row {row!r}", lambda: has(self.find(row, Role.LIST_ITEM), State.SELECTED))

    def fill(self, name, text):
        Atspi.EditableText.set_text_contents(self.item(name, TEXT), text)

    # Opens the menu with its access key, moves down to the entry and presses Return. A window that
    # accepts no input at the moment ignores keys, so the access key is repeated until the menu is
    # open.
    def menu(self, name, entry):
        def opened():
            self.keys("alt+" + name[0].lower())
            with contextlib.suppress(TimeoutError):
                return self.until(repr(entry), lambda: self.find(entry, Role.MENU_ITEM), 1)
        item = self.until(f"menu {name!r}", opened)
        self.until(f"focus on {entry!r}", lambda: has(item, State.FOCUSED) or self.keys("Down"))
        self.keys("Return")

    def message(self, title, text):
        self.window(title)
        self.item(text, LABEL)
        self.press("OK")


class Screen(contextlib.ExitStack):
    def __init__(self, size="1024x768"):
        super().__init__()
        signal.signal(signal.SIGTERM, signal.default_int_handler)  # so that every __exit__ runs
        # The folder has a short name, because it contains sockets, whose paths are limited in
        # length.
        home = self.enter_context(tempfile.TemporaryDirectory(prefix="quorven."))
        bus = os.environ["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={home}/bus"
        self.env = {name: os.environ[name] for name in os.environ if name.endswith("SAN_OPTIONS")}
        self.env |= {"PATH": os.environ["PATH"], "HOME": home, "LC_ALL": "C.UTF-8",
                     "XDG_RUNTIME_DIR": home, "DBUS_SESSION_BUS_ADDRESS": bus,
                     "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
                     # Qt 6.8 prints a line if a client asks for a control that has just been
                     # deleted.
                     "QT_LOGGING_RULES": "qt.accessibility.atspi=false"}
        # If the bus started its services on demand, they might start too late for the client
        # library.
        for command, sign in (
                (["dbus-daemon", "--session", "--print-address", "--address=" + bus], bus),
                (["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"], ""),
                (["/usr/libexec/at-spi2-registryd"], "is running"),
                (["Xvfb", "-displayfd", "1", "-screen", "0", size + "x24", "-nolisten", "tcp",
                  "-noreset"], "")):
            self.server = self.start(command, home, os.path.basename(command[0]) + ".txt")
            self.server.until(repr(sign), lambda: sign in self.server.output())
        Atspi.get_desktop(0).set_cache_mask(Atspi.Cache.NONE)
        self.env["DISPLAY"] = ":" + self.server.until("display", lambda: re.search(
            r"^(\d+)\n", self.server.output(), re.M))[1]
        self.start(["openbox"], home, "openbox.txt")
        self.server.until("window manager", lambda: self.ask("get_num_desktops") > b"0")

    def start(self, command, folder, log="console.txt", env=None):
        return self.enter_context(Process(self, command, folder, log, self.env | (env or {})))

    # Runs the tool and returns its output. A failure of the tool is ignored, because the tool also
    # fails if no window is active.
    def ask(self, *words, tool="xdotool"):
        return subprocess.run([tool, *words], env=self.env, check=False, capture_output=True,
                              timeout=20).stdout

    # Saves a screenshot as soon as two in a row are equal, because the window is then
    # fully drawn.
    def picture(self, path):
        def shot():
            return self.ask("-silent", "-window", self.ask("getactivewindow").strip(), "+dither",
                            "-colors", "128", "-strip", "png8:-", tool="import")
        path.write_bytes(self.server.until("picture", lambda: (one := shot()) == shot() and one))
