#!/usr/bin/python3
"""Carries out one command of the demonstration as an assistive tool does: by what the windows tell, and by actions.

    assistive_client.py DEMONSTRATION PROGRAM

Runs inside a session bus of its own, on a display with a window manager. Every wait is for something that the tools'
bus tells; none of them shorter than a busy machine needs. Ends with 0 when the program has, and everything was told.
"""

import pathlib
import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

LIMIT = 60  # seconds
LIST = "LumoScad - Scadenze e banche dei clienti"
ACCOUNT = "Lavanderia Nuvola Bianca"
TOLD = ("object:state-changed:showing", "object:state-changed:focused", "object:state-changed:checked",
        "object:property-change:accessible-name")

told = []


def listen(event):
    """Keeps what was told: what kind of event, of what, and its name by then."""
    try:
        event.source.clear_cache()
        kind = event.type.split(":")[-1]
        told.append((kind, event.detail1, event.source.get_role_name(), event.source.get_name()))
    except GLib.Error:
        pass  # gone meanwhile


def wait(what, look, limit=LIMIT):
    """Gives back what `look` gives once that is something; an object may go while it is looked at."""
    end = time.monotonic() + limit
    while True:
        while GLib.MainContext.default().iteration(False):
            pass
        try:
            found = look()
        except (GLib.Error, AttributeError):
            found = None
        if found:
            return found
        if time.monotonic() > end:
            raise SystemExit(f"not seen within {limit} s: {what}\ntold: {told[-40:]}")
        time.sleep(0.02)


def children(node):
    node.clear_cache()
    return [node.get_child_at_index(i) for i in range(node.get_child_count())]


def below(node):
    """The node and everything below it, without the cells of its tables."""
    yield node
    if node.get_role() != Atspi.Role.TABLE:
        for child in children(node):
            yield from below(child)


def find(node, role, name=None):
    for found in below(node):
        if found.get_role() == role and (name is None or found.get_name() == name):
            return found
    return None


def window(title, having):
    """The window of the program with this title in which something is; None while there is none."""
    for program in children(Atspi.get_desktop(0)):
        if program is not None and program.get_name() == "LumoScad":
            for dialog in children(program):
                if dialog.get_name() == title and having(dialog):
                    return dialog
    return None


def has_state(node, state):
    node.clear_cache()
    return node.get_state_set().contains(state)


def act(node, action):
    names = [Atspi.Action.get_action_name(node, i) for i in range(Atspi.Action.get_n_actions(node))]
    if action not in names:
        raise SystemExit(f"{node.get_name()!r} has {names} and no {action}")
    Atspi.Action.do_action(node, names.index(action))


def saw(kind, role, name):
    """Whether this was told: a notification came up, a cell was ticked, something has the keyboard."""
    return any(k == kind and on == 1 and r == role and name in n for k, on, r, n in told)


class Grid:
    """The list of the window, asked for its rows by their values."""

    def __init__(self, table):
        self.table = table
        self.columns = {Atspi.Table.get_column_description(table, c): c
                        for c in range(Atspi.Table.get_n_columns(table))}

    def rows(self):
        self.table.clear_cache()
        return Atspi.Table.get_n_rows(self.table)

    def cell(self, row, column):
        return Atspi.Table.get_accessible_at(self.table, row, self.columns[column])

    def said(self, row, column):
        cell = self.cell(row, column)
        cell.clear_cache()
        return cell.get_name()

    def row(self, **values):
        """The one row in which these columns begin with these values."""
        wanted = {name.replace("_", " "): value for name, value in values.items()}
        found = [row for row in range(self.rows())
                 if all(self.said(row, column).startswith(value) for column, value in wanted.items())]
        return found[0] + 1 if len(found) == 1 else None

    def find(self, **values):
        return wait(f"one row with {values}", lambda: self.row(**values)) - 1


def play(program):
    dialog = wait("the list", lambda: window(LIST, lambda d: find(d, Atspi.Role.TABLE)))
    grid = Grid(wait("the table", lambda: find(dialog, Atspi.Role.TABLE)))
    wait("eleven rows", lambda: grid.rows() == 11)

    # The date and the bank for the ticks.
    date = wait("the date at the top", lambda: find(dialog, Atspi.Role.TEXT, "Nuova scadenza"))
    Atspi.EditableText.set_text_contents(date, "15/04/26")
    box = wait("the bank at the top", lambda: next(
        (c for c in below(dialog) if c.get_role() == Atspi.Role.COMBO_BOX and label_of(c) == "Nuova banca"), None))
    act(box, "ShowMenu")
    drop = wait("the banks dropped down",
                lambda: next((c for c in children(box) if has_state(c, Atspi.StateType.SHOWING)), None))
    act(wait("the bank", lambda: find(drop, Atspi.Role.LIST_ITEM, "Banca dell'Aniene")), "Press")
    wait("the bank chosen", lambda: named(box) == "Banca dell'Aniene")

    # By due date: the heading says so, and the rows follow.
    heading = wait("the heading", lambda: Atspi.Table.get_column_header(grid.table, grid.columns["Scadenza"]))
    act(heading, "Press")
    wait("the order told", lambda: named(heading) == "Scadenza, ordine crescente")
    wait("the order followed", lambda: grid.said(0, "Scadenza") == "19/11/2025")

    # One row gets the date, one the bank, one a date of its own and the bank.
    row = grid.find(Partita="2025/46", Scadenza="19/12/2025")
    tick(grid, row, "Spunta della nuova data")
    wait("the new date", lambda: grid.said(row, "Nuova Scad") == "15/04/2026, variata")
    wait("the foot told", lambda: saw("showing", "notification", "1 variata: 2.076,93 €"))
    row = grid.find(Partita="2026/119", Scadenza="01/02/2026")
    tick(grid, row, "Spunta della nuova banca")
    wait("the new bank", lambda: grid.said(row, "NuovaBanca") == "Banca dell'Aniene, variata")
    row = grid.find(Partita="2025/57", Scadenza="25/02/2026")
    tick(grid, row, "Spunta della nuova banca")
    act(grid.cell(row, "Nuova Scad"), "Press")
    name = f"Nuova Scad, riga {row + 1} di 11: {ACCOUNT}, 2025/57"
    editor = wait("the editor and whose it is", lambda: find(dialog, Atspi.Role.TEXT, name))
    wait("the keyboard in it", lambda: has_state(editor, Atspi.StateType.FOCUSED) and saw("focused", "text", name))
    Atspi.EditableText.set_text_contents(editor, "20/05/26")
    act(grid.cell(row, "Nuova Scad"), "Press")
    wait("the date written", lambda: grid.said(row, "Nuova Scad") == "20/05/2026, variata")
    wait("the foot told of all", lambda: saw("showing", "notification", "3 variate: "))

    act(wait("Conferma", lambda: find(dialog, Atspi.Role.PUSH_BUTTON, "Conferma")), "Press")
    message = wait("the message", lambda: window("LumoScad", lambda d: find(d, Atspi.Role.PUSH_BUTTON, "OK")))
    wait("what it says", lambda: find(message, Atspi.Role.LABEL, "Variate 3 scadenze"))
    act(find(message, Atspi.Role.PUSH_BUTTON, "OK"), "Press")
    wait("the end of the program", lambda: program.poll() is not None)


def named(node):
    node.clear_cache()
    return node.get_name()


def label_of(node):
    for relation in node.get_relation_set():
        if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY:
            return relation.get_target(0).get_name()
    return None


def tick(grid, row, column):
    told.clear()
    act(grid.cell(row, column), "Toggle")
    wait("the tick", lambda: has_state(grid.cell(row, column), Atspi.StateType.CHECKED))
    wait("the tick told", lambda: saw("checked", "table cell", "spuntata"))


def main(demonstration, path):
    base = pathlib.Path(demonstration)
    listener = Atspi.EventListener.new(listen)
    for event in TOLD:
        listener.register(event)
    with open(base / "comando", "rb") as command, open(base / "risultato", "wb") as result, \
            open(base / "errori", "wb") as errors:
        program = subprocess.Popen(
            ["sh", "-c", '. "$1"; exec "$2" -', "sh", str(base / "ambiente.sh"), path],
            stdin=command, stdout=result, stderr=errors)
    try:
        play(program)
        return program.wait()
    finally:
        if program.poll() is None:
            program.kill()
            program.wait()


sys.exit(main(*sys.argv[1:]))
