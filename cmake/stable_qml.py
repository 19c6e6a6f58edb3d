#!/usr/bin/env python3
"""Runs Qt's compiler for QML, and puts what it writes in an order that is the same in every run.

  stable_qml.py COMPILER ARGUMENT…

It declares the registers of a function in the order in which they lie in a table of addresses, which no two runs have
alike. A register is declared before the first statement and depends on no other, so the order is free.
"""
import re
import subprocess
import sys
from itertools import groupby
from pathlib import Path

REGISTER = re.compile(r"[A-Za-z_].* \*?r\d+_\d+;")


def ordered(text):
    for are_registers, lines in groupby(text.split("\n"), lambda line: bool(REGISTER.fullmatch(line))):
        yield from sorted(lines) if are_registers else lines


def main(command):
    status = subprocess.run(command).returncode
    if status == 0 and "-o" in command:
        written = Path(command[command.index("-o") + 1])
        if written.suffix == ".cpp":
            written.write_text("\n".join(ordered(written.read_text())))
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
