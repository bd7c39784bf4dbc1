"""Uses the program as a person would, on a screen without a monitor, and reads what it shows.

    with Screen() as screen:
        box = screen.simbox(folder, "--fill", "FF")       # plugged in at port 5 of the folder
        app = screen.program("build/quorven", folder)     # started with the folder as current one
        app.message("Device Found!", "Firmware: SimBox v1.00")
        app.menu("File", "Exit")
        assert app.status() == 0 and app.output() == "" and box.stop() == 0

A Screen is an X server with a window manager and an accessibility bus, all its own. Whatever was
started on it ends with it, and each of these can also be used with "with" to end earlier.
Several programs may run on one screen; each verb acts on the windows of its own program only, and
brings the program to the front where it needs the keyboard. Programs that fork (a wrapper such as
strace) are recognised by their descent.

Every verb waits until it can act, up to a limit in seconds, and raises Failure otherwise, also
when the program has ended instead. Controls are given by accessible name, as a screen reader says
it, and by a role of Atspi.Role: BUTTON, LIST, ROW, TEXT, LABEL, RADIO, MENU_ITEM, FRAME.

    screen.env                            the environment of its programs, a dict to be changed
    screen.start(command, folder, log, ...)  any process on it; log gets all its output
    screen.picture(path)                  the whole screen; picture(path, frame=True) the window in
                                          front with its frame
    process.pid, .stop(signal=SIGTERM), .status(seconds=20), .output()
    app.window(title)                     waits until it is in front; app.front() is what is there
    app.find(name, *roles)                a control that is shown, or None; app.item() waits for it
    app.press(name), .select(list, row), .fill(text box, text), .menu(menu, entry)
    app.keys("ctrl+a", "Down"), .type(text)
    app.message(title, text, button="OK") a message box: waits, compares, presses its button
    app.texts(*roles, title=None)         names of what is shown, labels unless told otherwise
    app.shows(text)                       whether a label reads so; app.wait_for(text) waits for it
    wait(what, condition, seconds=20)     polls until the condition is true and returns its value
"""

import atexit
import ctypes
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import warnings

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402  (the version comes first)

warnings.simplefilter("ignore", DeprecationWarning)

Role, State = Atspi.Role, Atspi.StateType
BUTTON = getattr(Role, "BUTTON", None) or Role.PUSH_BUTTON  # renamed in at-spi 2.56
LIST, ROW, TEXT, LABEL = Role.LIST, Role.LIST_ITEM, Role.TEXT, Role.LABEL
RADIO, MENU_ITEM, FRAME = Role.RADIO_BUTTON, Role.MENU_ITEM, Role.FRAME
WITHOUT_INTEREST = {Role.TABLE, Role.TREE, Role.TREE_TABLE}  # those of the file dialog
libc = ctypes.CDLL(None)


class Failure(Exception):
    pass


def wait(what, condition, seconds=20, giving_up=lambda: None):
    deadline = time.monotonic() + seconds
    while True:
        while GLib.MainContext.default().iteration(False):
            pass
        try:
            if value := condition():
                return value
        except GLib.Error:
            pass  # it went away while it was being read
        giving_up()
        if time.monotonic() > deadline:
            raise Failure(f"waited {seconds} s in vain: {what}")
        time.sleep(0.02)


def has(item, state):
    return item.get_state_set().contains(state)


def shown(item):
    """The item and everything below it that is shown, in the order of the tree."""
    if item is None or not has(item, State.SHOWING):
        return
    yield item
    if item.get_role() not in WITHOUT_INTEREST:
        for index in range(item.get_child_count()):
            yield from shown(item.get_child_at_index(index))


def text_of(item):
    return Atspi.Text.get_text(item, 0, -1) if "Text" in item.get_interfaces() else ""


class Process:
    def __init__(self, command, folder, log, env, preexec=None, **more):
        def before():
            libc.prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG: it does not outlive this driver
            if preexec:
                preexec()

        self.name, self.log = os.path.basename(command[0]), pathlib.Path(log)
        with open(log, "wb") as output:
            self.process = subprocess.Popen(command, cwd=folder, env=env, stdin=subprocess.DEVNULL,
                                            stdout=output, stderr=output, preexec_fn=before, **more)
        self.pid = self.process.pid

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    def running(self):
        return self.process.poll() is None

    def output(self):
        return self.log.read_text("utf-8", "replace")

    def status(self, seconds=20):
        """Waits for the end and returns the exit status, -N after signal N."""
        wait(f"{self.name} to end", lambda: not self.running(), seconds)
        return self.process.returncode

    def stop(self, number=signal.SIGTERM):
        if self.running():
            self.process.send_signal(number)
        try:
            return self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            return self.process.wait()


class Simbox(Process):
    def __init__(self, command, folder, env):
        self.trace_file = pathlib.Path(folder, "trace.txt")
        super().__init__(command, folder, pathlib.Path(folder, "simbox.txt"), env)
        wait("simbox to be ready", lambda: "simbox ready" in self.output(), giving_up=self.check)

    def check(self):
        if not self.running():
            raise Failure(f"simbox ended with status {self.status()}: {self.output()}")

    def trace(self):
        return self.trace_file.read_text() if self.trace_file.exists() else ""


class Program(Process):
    def __init__(self, screen, *args):
        self.screen = screen
        super().__init__(*args)

    def wait(self, what, condition, seconds=20):
        def giving_up():
            if not self.running():
                raise Failure(f"{self.name} ended with status {self.status()}, no {what}\n"
                              + self.output())
        try:
            return wait(what, condition, seconds, giving_up)
        except Failure as failure:
            raise Failure(f"{failure}\nshown: {self.texts(*Role.__enum_values__.values())}") from None

    def owns(self, pid):
        while pid > 1 and pid != self.pid:
            try:
                pid = int(pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[1])
            except OSError:
                return False
        return pid == self.pid

    def windows(self):
        desktop = Atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            program = desktop.get_child_at_index(index)
            if program and self.owns(program.get_process_id()):
                yield from (program.get_child_at_index(i) for i in range(program.get_child_count()))

    def shown(self, *roles, title=None):
        return (item for window in self.windows() if title is None or window.get_name() == title
                for item in shown(window) if item.get_role() in roles)

    def find(self, name, *roles, title=None):
        return next((item for item in self.shown(*roles, title=title) if item.get_name() == name), None)

    def item(self, name, *roles, seconds=20):
        return self.wait(f"{name!r}", lambda: self.find(name, *roles), seconds)

    def texts(self, *roles, title=None):
        return [name for item in self.shown(*roles or [LABEL], title=title)
                if (name := item.get_name() if item.get_role() != TEXT else text_of(item))]

    def shows(self, text):
        return self.find(text, LABEL) is not None

    def wait_for(self, text, seconds=20):
        self.item(text, LABEL, seconds=seconds)

    def front(self):
        """Its active window. Where another program has the keyboard, this one is given it."""
        ask = self.screen.ask
        if not self.owns(int(ask("getactivewindow", "getwindowpid") or 0)):
            for number in ask("search", "--onlyvisible", "--name", "").split():
                if self.owns(int(ask("getwindowpid", number) or 0)):
                    ask("windowactivate", number)
                    return None
        return next((window for window in self.windows() if has(window, State.SHOWING)
                     and has(window, State.ACTIVE)), None)

    def window(self, title, seconds=20):
        def there():
            window = self.front()
            return window if window and window.get_name() == title else None
        return self.wait(f"the window {title!r}", there, seconds)

    def keys(self, *keys):
        self.wait("a window in front", self.front)
        self.screen.ask("key", "--delay", "20", *keys)

    def type(self, text):
        self.wait("a window in front", self.front)
        self.screen.ask("type", "--delay", "20", text)

    def press(self, name):
        """A button of the window in front that is neither grey nor behind a dialog."""
        def enabled():
            window = self.front()
            return window and next((item for item in shown(window) if item.get_role() == BUTTON
                                    and item.get_name() == name and has(item, State.ENABLED)), None)
        button = self.wait(f"the button {name!r}", enabled)
        button.do_action(0)
        try:
            wait("its release", lambda: not has(button, State.PRESSED))
        except GLib.Error:
            pass

    def focus(self, name, role):
        item = self.item(name, role)

        def focused():
            return has(item, State.FOCUSED) or item.grab_focus() and has(item, State.FOCUSED)
        self.wait("a window in front", self.front)
        self.wait(f"the focus on {name!r}", focused)
        return item

    def select(self, name, row):
        """A row by its text, with the arrow keys."""
        rows = self.focus(name, LIST)
        names = [item.get_name() for item in shown(rows) if item.get_role() == ROW]
        if row not in names:
            raise Failure(f"{name!r} has no row {row!r} but {names}")
        self.keys("Home", *["Down"] * names.index(row))
        self.wait(f"the row {row!r}", lambda: has(self.find(row, ROW), State.SELECTED))

    def fill(self, name, text):
        """A text box, by the keyboard. One that it lacks a key for may lose a letter: again."""
        def filled():
            self.keys("ctrl+a")
            self.type(text)
            try:
                return wait(text, lambda: text_of(item) == text, 2)
            except Failure:
                return False
        item = self.focus(name, TEXT)
        self.wait(f"{name!r} to read {text!r}", filled)

    def menu(self, name, entry):
        """Opens the menu, again while the window takes no keys, and goes down to the entry."""
        def opened():
            self.keys("alt+" + name[0].lower())
            try:
                return wait(name, lambda: self.find(entry, MENU_ITEM), 1)
            except Failure:
                return None

        def reached():
            if not has(item, State.FOCUSED):
                self.keys("Down")
            return has(item, State.FOCUSED)
        item = self.wait(f"the menu {name!r} with {entry!r}", opened)
        self.wait(f"the entry {entry!r}", reached)
        self.keys("Return")

    def message(self, title, text, button="OK", seconds=20):
        self.window(title, seconds)
        self.wait_for(text)
        self.press(button)


class Bus:
    """The accessibility bus, one for all screens of this process: its client library keeps to it.
    It is no client of any X server, so it outlives them. Ended when Python ends."""

    def __init__(self):
        # Sockets are here and their names may not be long. Only ours (0700).
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="quorven."))
        (self.folder / "home").mkdir()
        self.processes = []
        atexit.register(self.close)
        signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))  # takes all down on the way
        self.address = os.environ["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.folder}/bus"
        self.start("dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + self.address)
        wait("the message bus", (self.folder / "bus").is_socket)
        self.start("/usr/libexec/at-spi-bus-launcher", "--launch-immediately")
        registry = self.start("/usr/libexec/at-spi2-registryd")
        wait("the accessibility bus", lambda: "is running" in registry.output())
        Atspi.get_desktop(0).set_cache_mask(Atspi.Cache.NONE)

    def start(self, *command):
        log = self.folder / (os.path.basename(command[0]) + ".txt")
        env = {name: value for name, value in os.environ.items() if name != "DISPLAY"}
        self.processes.append(Process(command, "/", log, env))
        return self.processes[-1]

    def close(self):
        for process in reversed(self.processes):
            process.stop()
        shutil.rmtree(self.folder, ignore_errors=True)


class Screen:
    bus = None

    def __init__(self, size="1024x768"):
        Screen.bus = Screen.bus or Bus()
        folder = Screen.bus.folder
        self.processes = []
        self.env = {name: os.environ[name] for name in os.environ if name.endswith("SAN_OPTIONS")}
        self.env |= {"PATH": os.environ["PATH"], "HOME": f"{folder}/home", "LC_ALL": "C.UTF-8",
                     "XDG_RUNTIME_DIR": str(folder), "QT_QPA_PLATFORM": "xcb",
                     "DBUS_SESSION_BUS_ADDRESS": Screen.bus.address,
                     "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
        reading, writing = os.pipe()
        self.server = self.start(["Xvfb", "-displayfd", str(writing), "-screen", "0", size + "x24",
                                  "-nolisten", "tcp"], pass_fds=[writing])
        os.close(writing)
        with open(reading) as number:
            self.env["DISPLAY"] = ":" + number.readline().strip()
        self.start(["openbox"])
        wait("the window manager", lambda: self.ask("get_num_desktops"))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        for process in reversed(self.processes):
            process.stop()

    def keep(self, process):
        self.processes.append(process)
        return process

    def start(self, command, folder="/", log=None, env={}, **more):
        log = log or Screen.bus.folder / (os.path.basename(command[0]) + ".txt")
        return self.keep(Process(command, folder, log, self.env | env, **more))

    def simbox(self, folder, *options, path="build/simbox", wrapper=()):
        folder = os.path.abspath(folder)
        command = [*wrapper, os.path.abspath(path), "--link", f"{folder}/com5", "--trace",
                   f"{folder}/trace.txt", *options]
        return self.keep(Simbox(command, folder, self.env))

    def program(self, path, folder, env={}, preexec=None, wrapper=()):
        """What it prints goes to console.txt of the folder; app.output() reads it."""
        command = [*wrapper, os.path.abspath(path)]
        return self.keep(Program(self, command, folder, pathlib.Path(folder, "console.txt"),
                                 self.env | env, preexec))

    def ask(self, *words):
        """xdotool with these words; what it printed, nothing where it failed."""
        return subprocess.run(["xdotool", *words], env=self.env, text=True, check=False,
                              capture_output=True).stdout

    def picture(self, path, frame=False):
        window = ["-frame", "-window", self.ask("getactivewindow").strip()] if frame else \
            ["-window", "root"]
        subprocess.run(["import", "-silent", *window, path], env=self.env, check=True)
