"""Prints what the windows of the program on the accessibility bus say, a line an item.

    window_texts.py            every window that is shown
    window_texts.py TITLE      the window with this title only
    window_texts.py --focus    the items with the focus, "role: name", nothing else

    window "Function" (active)
      list item: Program (selected)
      label: Programming ...   OK!
      push button: Run
      push button: Close (off)

Items that are not shown, and items without a word, are left out. So are the cells of tables: the
program has none but in the toolkit's file dialog.
"""

import sys
import warnings

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402  (the version must be asked for first)

warnings.simplefilter("ignore", DeprecationWarning)

WITH_TEXT = {"text", "entry", "paragraph"}
WITHOUT_INTEREST = {"table cell", "table column header"}


def text_of(item):
    text = item.get_text_iface()
    return Atspi.Text.get_text(text, 0, -1) if text else ""


def marks(item, states):
    found = []
    if item.get_role_name() == "frame" and item.get_parent().get_role_name() != "application":
        return found
    if states.contains(Atspi.StateType.SELECTED):
        found.append("selected")
    if states.contains(Atspi.StateType.CHECKED):
        found.append("chosen")
    if not states.contains(Atspi.StateType.ENABLED):
        found.append("off")
    return found


def lines_of(item, depth, parent_name):
    try:
        states = item.get_state_set()
        role, name = item.get_role_name(), item.get_name()
        if not states.contains(Atspi.StateType.SHOWING) or role in WITHOUT_INTEREST:
            return
        # Qt gives a label without a word the name of the frame around it.
        if role == "label" and name == parent_name:
            name = ""
        said = [part for part in (name, text_of(item) if role in WITH_TEXT else "") if part]
        if said:
            after = "".join(f" ({mark})" for mark in marks(item, states))
            first, *rest = (": ".join(said) + after).split("\n")
            yield "  " * depth + f"{role}: {first}"
            yield from ("  " * (depth + 1) + line for line in rest)
            depth += 1
        for index in range(item.get_child_count()):
            child = item.get_child_at_index(index)
            if child:
                yield from lines_of(child, depth, name)
    except GLib.Error:
        return  # it went away while it was being read


def focused_in(item):
    try:
        states = item.get_state_set()
        if states.contains(Atspi.StateType.SHOWING):
            if states.contains(Atspi.StateType.FOCUSED) and item.get_name():
                yield f"{item.get_role_name()}: {item.get_name()}"
            for index in range(item.get_child_count()):
                child = item.get_child_at_index(index)
                if child:
                    yield from focused_in(child)
    except GLib.Error:
        return


def windows():
    desktop = Atspi.get_desktop(0)
    for number in range(desktop.get_child_count()):
        program = desktop.get_child_at_index(number)
        for index in range(program.get_child_count() if program else 0):
            window = program.get_child_at_index(index)
            if window and window.get_state_set().contains(Atspi.StateType.SHOWING):
                yield window


def main():
    wanted = sys.argv[1] if len(sys.argv) > 1 else None
    try:
        for window in windows():
            if wanted == "--focus":
                for line in focused_in(window):
                    print(line)
                continue
            title = window.get_name()
            if wanted is not None and title != wanted:
                continue
            active = window.get_state_set().contains(Atspi.StateType.ACTIVE)
            print(f'window "{title}"' + (" (active)" if active else ""))
            for index in range(window.get_child_count()):
                child = window.get_child_at_index(index)
                if child:
                    for line in lines_of(child, 1, title):
                        print(line)
    except GLib.Error:
        pass  # the program ended while it was being read: it says nothing any more


main()
