#!/usr/bin/env python3
"""Compares a saved list with what a spreadsheet made of it.

Usage: spreadsheet.py LIST.csv SHEET.fods
"""
import csv
import decimal
import sys
import xml.etree.ElementTree as tree

TABLE = "{urn:oasis:names:tc:opendocument:xmlns:table:1.0}"
OFFICE = "{urn:oasis:names:tc:opendocument:xmlns:office:1.0}"
TEXT = "{urn:oasis:names:tc:opendocument:xmlns:text:1.0}"

AMOUNTS = {"Importo"}
DATES = {"Scadenza", "Scad. orig.", "Nuova Scad"}


def text_of(cell):
    """The text of a cell as it shows; runs of blanks, tabulators and line ends are elements of their own."""
    parts = []

    def walk(element):
        parts.append(element.text or "")
        for child in element:
            if child.tag == TEXT + "s":
                parts.append(" " * int(child.get(TEXT + "c", "1")))
            elif child.tag == TEXT + "tab":
                parts.append("\t")
            else:
                walk(child)
            parts.append(child.tail or "")

    for number, paragraph in enumerate(cell.findall(TEXT + "p")):
        parts.append("\n" if number else "")
        walk(paragraph)
    return "".join(parts)


def cells_of(sheet):
    """The rows of the first table, each cell as often as it is repeated; empty rows at the end are none."""
    rows = []
    for row in tree.parse(sheet).getroot().find(f".//{TABLE}table").iter(TABLE + "table-row"):
        cells = []
        for cell in row:
            if cell.tag == TABLE + "table-cell":
                cells += [cell] * min(int(cell.get(TABLE + "number-columns-repeated", "1")), 50)
        if any(cell.get(OFFICE + "value-type") for cell in cells):
            rows += [cells] * int(row.get(TABLE + "number-rows-repeated", "1"))
    return rows


def fault(heading, written, cell):
    """What is wrong with a cell; nothing where it is what was written."""
    kind = cell.get(OFFICE + "value-type")
    if cell.get(TABLE + "formula") is not None:
        return "is a formula"
    if heading in AMOUNTS:
        number = decimal.Decimal(written.replace(".", "").replace(",", "."))
        if kind not in ("float", "currency") or decimal.Decimal(cell.get(OFFICE + "value")) != number:
            return f"is {kind} {cell.get(OFFICE + 'value')}"
    elif heading in DATES and written:
        day, month, year = written.split("/")
        if kind != "date" or cell.get(OFFICE + "date-value") != f"{year}-{month}-{day}":
            return f"is {kind} {cell.get(OFFICE + 'date-value')}"
    elif written:
        shown = text_of(cell).replace("\r\n", "\n").replace("\r", "\n")
        if kind != "string" or shown != written.replace("\r\n", "\n").replace("\r", "\n"):
            return f"is {kind} {shown!r}"
    return None


def main():
    with open(sys.argv[1], encoding="utf-8-sig", newline="") as file:
        written = list(csv.reader(file, delimiter=";"))
    sheet = cells_of(sys.argv[2])
    faults = []
    if len(sheet) != len(written):
        faults.append(f"{len(written)} rows were written, {len(sheet)} are there")
    compared = 0
    for number, (row, cells) in enumerate(zip(written[1:], sheet[1:]), start=2):
        for heading, text, cell in zip(written[0], row, cells):
            compared += 1
            wrong = fault(heading, text, cell)
            if wrong:
                faults.append(f"row {number}, {heading}: {text!r} {wrong}")
    for line in faults:
        print(line)
    print(f"foglio di calcolo: {compared} celle confrontate, {len(faults)} diverse")
    return 1 if faults or compared < 100 else 0


sys.exit(main())
