#!/usr/bin/env python3
"""Runs the blocks of docs/installazione.md in a bare root, in their order, as scripts/try_page.sh starts it: as root, in
namespaces of its own.

Of a block `on` says who runs it (root, persona), `file` and `append` where its text goes instead, `mode` the rights of that
file, `input` what is typed. The host and the database of the page are prepared here, as their own pages say.

Usage: run_page.py PAGE ROOT
"""
import os
import pathlib
import shutil
import subprocess
import sys
import time

sys.dont_write_bytecode = True
from page_blocks import blocks  # noqa: E402

PERSON = 12345
ENVIRONMENT = {"PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8",
               "DEBIAN_FRONTEND": "noninteractive"}
WORKS = "#!/bin/sh\necho '<PROVA/>'\n"
DATABASE = """
CREATE ROLE lumoscad LOGIN PASSWORD 'segreto';
CREATE DATABASE contabilita ENCODING 'UTF8' TEMPLATE template0;
\\c contabilita
CREATE SCHEMA contab;
SET search_path TO contab;
\\i /tmp/schema.sql
GRANT USAGE ON SCHEMA contab TO lumoscad;
GRANT SELECT ON ALL TABLES IN SCHEMA contab TO lumoscad;
GRANT UPDATE, DELETE ON contab.EVENTOCONTABILE TO lumoscad;
GRANT DELETE ON contab.MOVIMENTOCONTABILE TO lumoscad;
GRANT UPDATE ON contab.ERRORE TO lumoscad;
"""


class Machine:
    """The one machine that plays all."""

    def __init__(self, root):
        self.root = root

    def run(self, script, who="root", typed="", folder=None):
        """Runs a script as somebody; returns its status and what it said."""
        person = who == "persona"
        home = "/home/prova" if person else "/root"
        user = f"{PERSON}:{PERSON}" if person else "0:0"
        words = ["chroot", f"--userspec={user}", str(self.root), "/usr/bin/env", "-i", f"HOME={home}",
                 f"USER={'prova' if person else 'root'}", *(f"{k}={v}" for k, v in ENVIRONMENT.items()),
                 "sh", "-euc", f"cd {folder or home}\n{script}"]
        done = subprocess.run(words, input=typed, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        return done.returncode, done.stdout

    def must(self, script, **how):
        status, said = self.run(script, **how)
        if status != 0:
            sys.exit(f"preparation: status {status}\n{script}\n{said}")
        return said

    def write(self, path, text, mode=0o644, append=False):
        file = self.root / path.lstrip("/")
        file.parent.mkdir(parents=True, exist_ok=True)
        with file.open("a" if append else "w", encoding="utf-8") as stream:
            stream.write(text)
        file.chmod(mode)


def prepare(machine):
    root = machine.root
    for words in (["ip", "link", "set", "lo", "up"], ["ip", "addr", "add", "10.0.0.1/32", "dev", "lo"],
                  ["ip", "addr", "add", "10.0.0.2/32", "dev", "lo"], ["mount", "--bind", root, root],
                  ["mount", "-t", "proc", "proc", root / "proc"], ["mount", "-t", "tmpfs", "tmpfs", root / "dev/shm"],
                  ["mount", "-t", "devpts", "-o", "newinstance,ptmxmode=0666", "devpts", root / "dev/pts"]):
        subprocess.run([str(word) for word in words], check=True)
    # Nobody is there to be asked, and no archive but the page's.
    machine.write("/etc/apt/apt.conf.d/99prova", 'APT::Get::Assume-Yes "true";\n')
    machine.write("/etc/apt/sources.list", "")
    machine.must(f"useradd --create-home --shell /bin/sh --uid {PERSON} prova")
    machine.must("useradd --create-home --shell /bin/sh contabile && usermod -p '*' contabile && "
                 "install -d -o contabile -m 700 /home/contabile/.ssh && mkdir -p /run/sshd /root/chiavi")
    machine.write("/opt/contabile/programmi/VB0001", WORKS, 0o755)
    conf = "/etc/postgresql/15/main"
    machine.write(f"{conf}/conf.d/prova.conf", "listen_addresses = '10.0.0.2'\nfsync = off\n")
    machine.write(f"{conf}/pg_hba.conf", "local all all peer\nhost all all 10.0.0.0/24 scram-sha-256\n")
    shutil.copy(root / "root/schema.sql", root / "tmp/schema.sql")
    machine.must("pg_ctlcluster 15 main start && cd / && runuser -u postgres -- psql -v ON_ERROR_STOP=1 -q -f -",
                 typed=DATABASE)
    return start_host(machine)


def start_host(machine):
    server = subprocess.Popen(["chroot", str(machine.root), "/usr/sbin/sshd", "-D", "-o", "ListenAddress=10.0.0.1"])
    time.sleep(1)
    if server.poll() is not None:
        sys.exit("preparation: the SSH server has ended")
    return server


def main(page, root):
    machine = Machine(pathlib.Path(root))
    found = blocks(page)
    server = prepare(machine)
    failed = []
    for block in found:
        settings, status, said = block.settings, 0, ""
        where = settings.get("file") or settings.get("append")
        if where:
            machine.write(where, block.text, int(settings.get("mode", "644"), 8), "append" in settings)
        else:
            if block.name == "chiavi-host":  # gathered as the page's reader would
                machine.must("install -m 644 /home/prova/.ssh/lumoscad.pub /root/chiavi/prova.pub")
            folder = "/root/pacchetti" if block.name in ("pacchetti", "pubblica") else None
            status, said = machine.run(block.text, settings["on"], settings.get("input", "") + "\n", folder)
        print(f"{'riuscito' if status == 0 else 'FALLITO '}  {block.name}", flush=True)
        if status != 0:
            failed.append(block.name)
            print(f"--- {page}:{block.line}\n{block.text}--- stato {status}\n{said}")
        if where and "sshd_config" in where:
            server.terminate()
            server.wait()
            server = start_host(machine)
    server.terminate()
    machine.run("pg_ctlcluster -m immediate 15 main stop")
    print(f"{page}: {len(found)} blocchi, {len(failed)} falliti")
    return 1 if failed or not found else 0


if __name__ == "__main__":
    os.umask(0o022)
    sys.exit(main(*sys.argv[1:]))
