#!/usr/bin/python3
"""The main job by ear: what a screen reader says, where it follows the focus, and what the session
manager is asked for.

    heard_test.py QUORVEN SIMBOX SCRATCH
"""

import contextlib
import os
import pathlib
import select
import shutil
import sys
import time

here = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(here.parent.parent / "scripts"))
from driver import (Atspi, BUTTON, Failure, LABEL, LIST, MENU_ITEM, Role, Screen, TEXT,  # noqa: E402
                    text_of)
from gi.repository import Gio, GLib  # noqa: E402

QUORVEN, SIMBOX, FOLDER = (os.path.abspath(path) for path in sys.argv[1:4])
LOGIND = """<node><interface name="org.freedesktop.login1.Manager"><method name="Inhibit">
    <arg direction="in" type="s"/><arg direction="in" type="s"/><arg direction="in" type="s"/>
    <arg direction="in" type="s"/><arg direction="out" type="h"/></method></interface></node>"""
said, focus, values, inserted, inhibited = [], [], [], [], []


def hear(event):
    with contextlib.suppress(GLib.Error):  # the source is gone
        kind, item, on = event.type.split(":")[-1], event.source, event.detail1
        if kind == "showing" and on and item.get_role() == Role.NOTIFICATION:
            said.append(item.get_name())
        elif kind == "focused" and on:
            focus.append((item.get_name(), item.get_role()))
        elif kind == "accessible-value":
            values.append((time.monotonic(), Atspi.Value.get_current_value(item)))
        elif kind == "insert" and item.get_role() == TEXT:
            inserted.append(event.any_data)


def inhibit(_bus, _sender, _path, _interface, _method, arguments, call):
    held, holder = os.pipe()
    inhibited.append((*arguments.unpack()[::3], held))
    call.return_value_with_unix_fd_list(GLib.Variant("(h)", (0,)),
                                        Gio.UnixFDList.new_from_array([holder]))


def expect(what, seen, expected):
    if seen != expected:
        raise Failure(f"{what}: {seen!r}, not {expected!r}")


def hears(*texts):
    app.wait(f"to hear {texts}", lambda: said[-len(texts):] == [*texts])
    said.clear()


def focused(name, role):
    app.wait(f"the focus on {name!r}", lambda: focus[-1:] == [(name, role)])


def run(row, *texts):
    app.keys("alt+d")
    app.item("Function", MENU_ITEM)
    app.keys("f")  # not an access key, but the only entry that starts with it
    app.window("Function")
    expect("names of empty lines", "Message:" in app.texts(title="Function"), False)
    app.select("Function", row)
    values.clear()
    app.press("Run")
    hears(*texts)
    what, mode, held = inhibited.pop()
    released = select.poll()
    released.register(held)
    expect("held back", (what, mode, released.poll(0)), ("sleep:idle", "block", []))
    app.wait("the release", lambda: released.poll(0))
    expect("last frame", "release socket" in box.trace().split(" > ")[-1], True)


shutil.rmtree(FOLDER, ignore_errors=True)
shutil.copytree(here.parent.parent / "data", FOLDER)
with Screen() as screen:
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)  # also serves as the program's system bus
    manager = Gio.DBusNodeInfo.new_for_xml(LOGIND).interfaces[0]
    bus.register_object("/org/freedesktop/login1", manager, inhibit, None, None)
    Gio.bus_own_name_on_connection(bus, "org.freedesktop.login1", 0, None, None)
    listener = Atspi.EventListener.new(hear)
    for kind in ("state-changed:showing", "state-changed:focused", "text-changed:insert",
                 "property-change:accessible-value"):
        listener.register("object:" + kind)
    box = screen.simbox(FOLDER, "--fill", "FF", path=SIMBOX)
    app = screen.program(QUORVEN, FOLDER,
                         {"DBUS_SYSTEM_BUS_ADDRESS": os.environ["DBUS_SESSION_BUS_ADDRESS"]})
    app.window("Device Found!")
    focused("OK", BUTTON)
    app.keys("Tab")
    focused("Firmware: SimBox v1.00", LABEL)
    app.keys("ctrl+a", "ctrl+c")
    app.press("OK")
    app.menu("Device", "Select")
    expect("the drawing", app.item("Device", LIST).get_description()[:9], "Long chip")
    app.press("Cancel")
    app.menu("File", "Load")
    app.window("Open")
    app.keys("ctrl+v")
    app.wait("the copied text", lambda: "Firmware: SimBox v1.00" in app.texts(TEXT))
    app.fill("File name:", "sample.hex")
    app.keys("Return")
    app.window("")
    app.press("OK")
    focused("Buffer", TEXT)
    app.keys("Tab", "Down")  # in the scroll bar
    hears("0010 6D")
    app.keys("Up", "Tab")
    focused("Buffer", TEXT)
    said.clear()
    app.keys("Right", "Right")
    hears("0001 55")
    app.keys(*["Down"] * 16)
    hears("0100=00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F ................")
    inserted.clear()
    app.keys("a", "5")
    hears("0102 02")
    expect("inserted", [len(text) for text in inserted], [69, 69])

    run("Program", "Programming ...", "Programming ...   OK!")
    times, percents = zip(*values)
    expect("percents", (sorted(percents), percents[-1]), ([*percents], 100))
    expect("four a second", 2 < len(times) <= 4 * (times[-1] - times[0]) + 2, True)
    app.press("Close")
    focused("Buffer", TEXT)
    app.keys("f")
    run("Verify", "Verify Error at 0102")
    app.press("Close")
    run("Read", "Reading ...   OK!")
    focused("Buffer", TEXT)
    expect("printed", app.output(), "")
