#!/usr/bin/env python3
"""Writes the packages whose libraries the program is linked with and loads, a line each, for the page that tells
their licences. Where the machine has no dpkg the list is empty.

  list_packages.py LIST PACKAGES PROGRAM…    PACKAGES is script/packages
"""
import re
import subprocess
import sys
from pathlib import Path

# The headings of script/packages below which stands what is loaded and never linked.
LOADED = ("What the window loads at run time", "What recognises speech", "What reads the screen")


def said_by(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=False).stdout
    except OSError:
        return ""


def linked(program):
    """Where the loader finds what the program itself names."""
    names = set(re.findall(r"\(NEEDED\).*\[(.+)\]", said_by("readelf", "--dynamic", program)))
    places = dict(re.findall(r"^\s*(\S+) => (/\S+)", said_by("ldd", program), re.MULTILINE))
    return {str(Path(places[name]).resolve()) for name in names if name in places}


def owners(paths):
    # Older packages list their files below /lib, which is a link today.
    both = sorted(paths | {path.removeprefix("/usr") for path in paths})
    return set(re.findall(r"^([^:\s]+)(?::\w+)?: ", said_by("dpkg-query", "--search", *both), re.MULTILINE)) if both else set()


def loaded(packages):
    found, inside = set(), False
    for line in Path(packages).read_text().splitlines():
        if line.startswith("# "):
            inside = line[2:] in LOADED
        elif line and inside:
            found.add(line)
    return found


def main():
    target, packages, *programs = sys.argv[1:]
    names = owners(set().union(*map(linked, programs)))
    Path(target).write_text("".join(f"{name}\n" for name in sorted(names | loaded(packages) if names else [])))


main()
