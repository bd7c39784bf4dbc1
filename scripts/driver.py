# Operates the program as a user does, on a virtual screen, and reads what it shows.
#
#   with Screen() as screen:
#       box = screen.simbox(folder, "--fill", "FF")       # connected at port 5 of the folder
#       app = screen.program("build/quorven", folder)     # with the folder as current directory
#       app.message("Device Found!", "Firmware: SimBox v1.00")
#       app.menu("File", "Exit")
#       assert app.status() == 0 and app.output() == "" and box.stop() == 0
#
# A Screen is an X server with a window manager. What was started on a screen is stopped with it, in
# reverse order; "with" on a process stops it earlier. The accessibility bus is private as well,
# shared by all screens of a driver. If the driver is killed, all these processes end.
#
# Each method acts on the windows of its own program, found by process group, so a wrapper may fork.
# It waits until it can act and raises Failure after its time limit (seconds) or as soon as the
# program has ended. Controls are found by their accessible name, as a screen reader says it, and
# their role: BUTTON, LIST, ROW, TEXT, LABEL, RADIO, MENU_ITEM or any other Atspi.Role.
#
#   screen.env                       the environment of its programs; program(env=...) adds to it
#   screen.program(path, folder, env={}, wrapper=[])
#   screen.simbox(folder, *options, path="build/simbox", wrapper=[])
#   screen.start(command, folder, log, env={})    any other process, its output in log
#   screen.server                    the X server's process
#   screen.picture(path)             of the active window with its frame
#   process.pid, .running(), .output(), .stop(signal=SIGTERM) -> status, .status(seconds=20) waits
#   box.trace()                      the text of the trace file so far
#   box.frames()                     the meaning of each frame in the trace so far
#   app.window(title)                waits until that window is active; app.front(): the active one
#   app.find(name, *roles, title=None)   a visible item of that or any window, or None; .item waits
#   app.rows(list)                   the texts of all its rows
#   app.press(name), .select(list, row), .fill(text box, text), .menu(menu, entry)
#   app.keys("ctrl+a", "Down"), .type(text)
#   app.message(title, text)         waits for this message box, then presses OK
#   app.texts(*roles, title=None)    texts of the visible items with these roles (default: labels)
#   app.wait_for(text, seconds=20)   waits for a label with exactly this text
#   app.wait(what, condition, seconds=20), wait(...)    polls; returns the first true value

import atexit
import contextlib
import ctypes
import functools
import os
import pathlib
import re
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
RADIO, MENU_ITEM = Role.RADIO_BUTTON, Role.MENU_ITEM
libc = ctypes.CDLL(None)


class Failure(Exception):
    pass


def wait(what, condition, seconds=20, process=None):
    deadline = time.monotonic() + seconds
    while True:
        while GLib.MainContext.default().iteration(False):
            pass
        with contextlib.suppress(GLib.Error, ProcessLookupError):  # it went away while being read
            if value := condition():
                return value
        if process and not process.running():
            raise Failure(f"ended with status {process.status()}, waiting for {what}")
        if time.monotonic() > deadline:
            raise Failure(f"waited {seconds} s for {what}")
        time.sleep(0.02)


def has(item, state):
    return item.get_state_set().contains(state)


def children(item):
    items = (item.get_child_at_index(index) for index in range(item.get_child_count()))
    return [item for item in items if item]


# The item and its visible descendants, in tree order.
def shown(item):
    if has(item, State.SHOWING):
        yield item
        if item.get_role() not in (Role.TABLE, Role.TREE):  # many files in the file dialog
            for child in children(item):
                yield from shown(child)


def text_of(item):
    editable = item.get_role() in (TEXT, Role.PARAGRAPH) and "Text" in item.get_interfaces()
    return Atspi.Text.get_text(item, 0, -1) if editable else item.get_name()


class Process(contextlib.AbstractContextManager):
    def __init__(self, command, folder, log, env, **more):
        self.log = pathlib.Path(folder, log)
        with open(self.log, "wb") as output:
            self.process = subprocess.Popen(
                command, cwd=folder, env=env, stdin=subprocess.DEVNULL, stdout=output,
                stderr=output, process_group=0,
                preexec_fn=lambda: libc.prctl(1, signal.SIGTERM), **more)  # 1: PR_SET_PDEATHSIG
        self.pid = self.process.pid

    def __exit__(self, *_):
        self.stop()

    def running(self):
        return self.process.poll() is None

    def output(self):
        return self.log.read_text("utf-8", "replace")

    # Waits for the end and returns the exit status; -N after signal N.
    def status(self, seconds=20):
        wait(f"the end of {self.process.args}", lambda: not self.running(), seconds)
        return self.process.returncode

    def stop(self, number=signal.SIGTERM):
        self.process.send_signal(number)  # unless it has ended
        with contextlib.suppress(subprocess.TimeoutExpired):
            return self.process.wait(10)
        self.process.kill()
        return self.process.wait()


class Simbox(Process):
    def trace(self):
        return self.log.with_name("trace.txt").read_text()

    def frames(self):
        return re.findall(" > .*  (.*)", self.trace())


class Program(Process):
    ask = None  # its screen's
    active = 0  # when one of its windows was last active, seconds

    def wait(self, what, condition, seconds=20):
        try:
            return wait(what, condition, seconds, self)
        except Failure as failure:
            texts = [text_of(item) for item in self.shown()]
            raise Failure(f"{failure}\nshown: {texts}\nprinted: {self.output()}") from None

    def windows(self):
        return [window for program in children(Atspi.get_desktop(0))
                if os.getpgid(program.get_process_id()) == self.pid for window in children(program)]

    def shown(self, *roles, title=None):
        return (item for window in self.windows() if title in (None, window.get_name())
                for item in shown(window) if not roles or item.get_role() in roles)

    def find(self, name, *roles, title=None):
        items = self.shown(*roles, title=title)
        return next((item for item in items if item.get_name() == name), None)

    def item(self, name, *roles, title=None, seconds=20):
        return self.wait(repr(name), lambda: self.find(name, *roles, title=title), seconds)

    def texts(self, *roles, title=None):
        return [text_of(item) for item in self.shown(*(roles or [LABEL]), title=title)]

    def wait_for(self, text, seconds=20):
        self.item(text, LABEL, seconds=seconds)

    # On a busy machine the window manager may leave no window active for a while.
    def front(self):
        window = next((window for window in self.windows() if has(window, State.ACTIVE)), None)
        if window:
            self.active = time.monotonic()
        elif time.monotonic() > self.active + 2:
            for number in self.ask("search", "--onlyvisible", "--name", "").split():
                self.ask("windowactivate", number)
        return window

    def window(self, title, seconds=20):
        return self.wait(f"the window {title!r}", lambda: (window := self.front())
                         and window.get_name() == title and window, seconds)

    def keys(self, *keys, verb="key"):
        self.wait("a window in front", self.front)
        self.ask(verb, "--delay", "20", *keys)

    def type(self, text):
        self.keys(text, verb="type")

    # Repeats an action until it has an effect: a window that accepts no input at the moment loses
    # keys.
    def insist(self, what, act, condition):
        def acted():
            act()
            with contextlib.suppress(Failure):
                return wait(what, condition, 1)
        return self.wait(what, acted)

    # Presses an enabled button of the active window, so never one that is blocked by a dialog.
    def press(self, name):
        def enabled():
            window = self.front()
            button = window and self.find(name, BUTTON, title=window.get_name())
            return button and has(button, State.ENABLED) and button
        button = self.wait(f"the button {name!r}", enabled)
        button.do_action(0)
        with contextlib.suppress(GLib.Error):  # its window is closed
            while has(button, State.PRESSED):
                time.sleep(0.02)

    def focus(self, name, role):
        item = self.item(name, role)

        def focused():
            item.grab_focus()
            return self.front() and has(item, State.FOCUSED)
        self.wait(f"the focus on {name!r}", focused)
        return item

    # The texts of a list's rows, shown or not.
    def rows(self, name):
        return [row.get_name() for row in children(self.item(name, LIST))]

    # Selects a row of a list by its text, with the arrow keys.
    def select(self, name, row):
        self.focus(name, LIST)
        self.keys("Home", *["Down"] * self.rows(name).index(row))
        self.wait(f"the row {row!r}", lambda: has(self.find(row, ROW), State.SELECTED))

    # Fills a text box by the keyboard.
    def fill(self, name, text):
        item = self.focus(name, TEXT)
        self.insist(f"{text!r} in {name!r}", lambda: self.keys("ctrl+a") or self.type(text),
                    lambda: text_of(item) == text)

    # Opens the menu by its access key, moves down to the entry and presses Return.
    def menu(self, name, entry):
        item = self.insist(f"the menu {name!r}", lambda: self.keys("alt+" + name[0].lower()),
                           lambda: self.find(entry, MENU_ITEM))
        self.wait(f"{entry!r} to be chosen", lambda: has(item, State.FOCUSED) or self.keys("Down"))
        self.keys("Return")

    def message(self, title, text, seconds=20):
        self.window(title, seconds)
        self.wait_for(text)
        self.press("OK")


# The environment of all programs, with their accessibility bus. All screens share one bus, since
# the client library keeps using the first one it connects to.
@functools.cache
def bus():
    stack = contextlib.ExitStack()
    atexit.register(stack.close)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))  # runs every __exit__
    # A short name, because the paths of the sockets in it are limited in length.
    folder = stack.enter_context(tempfile.TemporaryDirectory(prefix="quorven."))
    address = os.environ["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={folder}/bus"
    env = {name: os.environ[name] for name in os.environ if name.endswith("SAN_OPTIONS")}
    env |= {"PATH": os.environ["PATH"], "HOME": folder, "LC_ALL": "C.UTF-8",
            "XDG_RUNTIME_DIR": folder, "DBUS_SESSION_BUS_ADDRESS": address,
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_QPA_PLATFORM": "xcb",
            # Qt 6.8 prints a line when asked for a control that has just gone.
            "QT_LOGGING_RULES": "qt.accessibility.atspi=false"}
    # If the bus started its services on demand, they might be too late for the client library.
    for command, sign in (
            (["dbus-daemon", "--session", "--print-address", "--address=" + address], address),
            (["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"], ""),
            (["/usr/libexec/at-spi2-registryd"], "is running")):
        service = Process(command, folder, os.path.basename(command[0]) + ".txt", env)
        stack.enter_context(service)
        wait(command[0], lambda: sign in service.output(), process=service)
    Atspi.get_desktop(0).set_cache_mask(Atspi.Cache.NONE)
    return env


class Screen(contextlib.ExitStack):
    def __init__(self, size="1024x768"):
        super().__init__()
        self.env = bus().copy()
        home = self.env["HOME"]
        reading, writing = os.pipe()
        self.server = self.start(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", size + "x24", "-nolisten", "tcp",
             "-noreset"], home, "xvfb.txt", pass_fds=[writing])
        os.close(writing)
        with open(reading) as number:
            self.env["DISPLAY"] = ":" + number.readline().strip()
        self.start(["openbox"], home, "openbox.txt")
        wait("the window manager", lambda: self.ask("get_num_desktops") > b"0")

    def start(self, command, folder, log, kind=Process, env=None, **more):
        return self.enter_context(kind(command, folder, log, self.env | (env or {}), **more))

    def simbox(self, folder, *options, path="build/simbox", wrapper=()):
        files = [f"{os.path.abspath(folder)}/{name}" for name in ("com5", "trace.txt")]
        box = self.start([*wrapper, os.path.abspath(path), "--link", files[0], "--trace", files[1],
                          *options], folder, "simbox.txt", Simbox)
        wait("simbox", lambda: "simbox ready" in box.output(), process=box)
        return box

    def program(self, path, folder, env=None, wrapper=()):
        app = self.start([*wrapper, os.path.abspath(path)], folder, "console.txt", Program, env)
        app.ask = self.ask
        return app

    # The tool's output. Failure is ignored: the tool fails if no window is active.
    def ask(self, *words, tool="xdotool"):
        return subprocess.run([tool, *words], env=self.env, check=False, capture_output=True,
                              timeout=20).stdout

    # With "still", waits until two successive screenshots are equal.
    def picture(self, path, still=True):
        shots = [b""]

        def shot():
            window = self.ask("getactivewindow").strip()
            shots.append(self.ask("-silent", "-frame", "-window", window, "+dither", "-colors",
                                  "128", "-strip", "png8:-", tool="import"))
            return shots[-1] and (not still or shots[-1] == shots[-2])
        wait("a picture that stays", shot)
        pathlib.Path(path).write_bytes(shots[-1])
