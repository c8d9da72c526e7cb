#!/usr/bin/env python3
"""Measures what terminals cost a database and a host (crescita_test, at full size), and writes the measured table and what
follows from it for one desk, forty and four hundred into docs/crescita.md.

Usage: growth.py [--leggi LOG] [--self-test]
  --leggi LOG  takes the figures of a run that is over
  LUMOSCAD_COSTRUZIONE          directory of the build (build)
  LUMOSCAD_CRESCITA_TERMINALI   the most terminals in the place of 64
"""
import datetime
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/crescita.md"
BEGIN, END = "<!-- growth.py writes from here -->", "<!-- end of what growth.py writes -->"
LINE = re.compile(r"(?:^|\s)crescita: (\w+) (byte )?(.*=.*)$")
DESKS = (1, 40, 400)

# What a desk does, for what cannot be measured: commands an hour, and lists among them with the minutes that each is open.
COMMANDS_AN_HOUR = 30
LISTS_AN_HOUR = 6
MINUTES_A_LIST = 4
LISTS = 3


def read(text):
    """The figures of a run by database: {"byte": {...}, "rows": [{...}, ...]}."""
    found = {}
    for line in text.splitlines():
        match = LINE.search(line)
        if not match:
            continue
        base = found.setdefault(match[1], {"byte": None, "rows": []})
        values = {key: float(value) for key, value in (pair.split("=") for pair in match[3].split())}
        if match[2]:
            base["byte"] = values
        else:
            base["rows"].append(values)
    for name, base in found.items():
        if not base["byte"] or not base["rows"]:
            raise ValueError(f"figures of {name} are missing")
    if not found:
        raise ValueError("no figures")
    return found


def measured(found):
    yield ("| database | terminals | commands | a second | ms each | 95 of 100 below | list was taken | sessions a command "
           "| at once | waiting for a row, ms a command | refused | database, CPU ms a command | host, CPU ms a command |")
    yield "|" + "---|" * 13
    for name, base in found.items():
        for row in base["rows"]:
            yield (f"| {name} | {row['terminali']:.0f} | {row['comandi']:.0f} | {row['alsecondo']:.1f} | {row['medio']:.0f} "
                   f"| {row['quasitutti']:.0f} | {row['listeprese']:.0f} | {row['sessioni']:.2f} | {row['aperte']:.0f} "
                   f"| {row['attesarighe']:.2f} | {row['rifiuti']:.0f} | {row['processorebase']:.1f} "
                   f"| {row['processorehost']:.1f} |")


def byte_table(found):
    yield "| database | to the database | from it | to the host | from it |"
    yield "|---|---|---|---|---|"
    for name, base in found.items():
        byte = base["byte"]
        yield (f"| {name} | {byte['versobase']:,.0f} | {byte['dallabase']:,.0f} | {byte['versohost']:,.0f} "
               f"| {byte['dallhost']:,.0f} |")


def extrapolated(found):
    yield ("| database | desks | commands a second | database, processors | host, processors | sessions at once | kB a second, "
           "database | kB a second, host | connections of SSH | a list is taken |")
    yield "|" + "---|" * 10
    for name, base in found.items():
        alone, byte = base["rows"][0], base["byte"]
        database = max(row["processorebase"] for row in base["rows"])
        host = max(row["processorehost"] for row in base["rows"])
        for desks in DESKS:
            rate = desks * COMMANDS_AN_HOUR / 3600
            taken = desks * LISTS_AN_HOUR * MINUTES_A_LIST / 60 / LISTS
            yield (f"| {name} | {desks} | {rate:.2f} | {rate * database / 1000:.3f} | {rate * host / 1000:.3f} "
                   f"| {rate * alone['medio'] / 1000:.2f} | {rate * (byte['versobase'] + byte['dallabase']) / 1000:.1f} "
                   f"| {rate * (byte['versohost'] + byte['dallhost']) / 1000:.1f} | {desks} "
                   f"| {'always, and others wait' if taken >= 1 else f'{100 * taken:.0f} % of the time'} |")


def machine():
    cpu = re.search(r"^model name\s*: (.*)$", pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8"), re.M)
    # Of a busy machine the times say little; processor time and bytes stay what they are.
    return (f"{datetime.date.today().isoformat()}, {os.cpu_count()} processors ({cpu[1] if cpu else '?'}) for all together: "
            f"terminals, database and host; load before the run {os.getloadavg()[0]:.1f}.")


def written(found, where):
    return "\n".join(["", where, "", *measured(found), "", "Bytes a command, of one terminal, logins included:", "",
                      *byte_table(found), "", "**Extrapolated**, by the formulas below:", "", *extrapolated(found), ""])


def put(text, part):
    before, rest = text.split(BEGIN)
    return before + BEGIN + "\n" + part + "\n" + END + rest.split(END)[1]


def self_test():
    log = ("7: crescita: X byte comandi=2 versobase=1000 dallabase=2000 versohost=30 dallhost=70\n"
           "crescita: X terminali=1 comandi=2 accettati=1 listeprese=0 alsecondo=4 medio=250 quasitutti=300 attesarighe=0 "
           "rifiuti=0 sessioni=2 aperte=1 processorebase=30 processorehost=10\n")
    found = read(log)
    last = list(extrapolated(found))[-1].split("|")
    # 400 desks, 30 commands an hour: 3.33 a second; 30 ms each are a tenth of a processor.
    if [cell.strip() for cell in last[2:7]] != ["400", "3.33", "0.100", "0.033", "0.83"] or "always" not in last[10]:
        print(f"self-test failed: {last}")
        return 1
    for bad in ("", "crescita: X byte comandi=2 versobase=1\n"):
        try:
            read(bad)
        except ValueError:
            continue
        print("self-test failed: figures that are missing have passed")
        return 1
    if put(f"a\n{BEGIN}\nold\n{END}\nb\n", "new") != f"a\n{BEGIN}\nnew\n{END}\nb\n":
        print("self-test failed: the page")
        return 1
    print("self-test: figures, formulas and page as they should be")
    return 0


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    where = machine()
    if len(arguments) == 2 and arguments[0] == "--leggi":
        log = pathlib.Path(arguments[1]).read_text(encoding="utf-8")
    elif not arguments:
        build = pathlib.Path(os.environ.get("LUMOSCAD_COSTRUZIONE", ROOT / "build"))
        run = subprocess.run([build / "bin/crescita_test"], env=dict(os.environ, LUMOSCAD_PER_INTERO="1"), text=True,
                             stdout=subprocess.PIPE, check=False)
        log = run.stdout
        sys.stdout.write(log)
        if run.returncode != 0:
            return 1
    else:
        print(__doc__, file=sys.stderr)
        return 2
    PAGE.write_text(put(PAGE.read_text(encoding="utf-8"), written(read(log), where)), encoding="utf-8")
    print(f"scritto: {PAGE.relative_to(ROOT)}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
