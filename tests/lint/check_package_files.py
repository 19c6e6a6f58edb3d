#!/usr/bin/env python3
"""Fails when what is installed beside the programs says something else than they do, or isn't well formed.

  check_package_files.py FOLDER VERSION PROGRAM…    exits with 1 and one line for each finding

FOLDER is packaging/. Every option that a program's --help names stands in its manual and in its completions, and no
other does. A validator that isn't installed is named on a line of its own, and its part is left out.
"""
import os
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as Xml
from pathlib import Path

ID = "ai.morvane.MorvaneGPT"
OPTION = re.compile(r"(?<![\w-])--[a-z][a-z0-9-]*")
FISH_OPTION = re.compile(r" -l ([a-z0-9-]+)")


def told_by(program):
    environment = os.environ | {"QT_QPA_PLATFORM": "offscreen"}
    said = subprocess.run([program, "--help"], env=environment, capture_output=True, text=True, check=True).stdout
    return set(OPTION.findall(said))


def documents(folder, name):
    manual = folder / "man" / f"{name}.1"
    yield manual, set(OPTION.findall(manual.read_text().replace("\\-", "-")))
    for shell in ("bash", "zsh"):
        completion = folder / "completions" / f"{name}.{shell}"
        yield completion, set(OPTION.findall(re.sub(r"[{}(),]", " ", completion.read_text())))
    completion = folder / "completions" / f"{name}.fish"
    yield completion, {f"--{option}" for option in FISH_OPTION.findall(completion.read_text())}


def differences(folder, programs):
    for program in programs:
        options = told_by(program)
        if len(options) < 2:
            yield f"{program} --help names no options"
        for file, named in documents(folder, Path(program).name):
            yield from (f"{file} lacks {option}" for option in sorted(options - named))
            yield from (f"{file} names {option}, which is no option" for option in sorted(named - options))


def metainfo(file, version):
    tree = Xml.parse(file)
    summary = tree.findtext("summary")
    if len(summary) > 35:
        yield f"{file}: the summary has {len(summary)} characters, and stores cut it at 35"
    if (newest := tree.find("releases/release").get("version")) != version:
        yield f"{file}: the newest release is {newest}, and the program's version is {version}"


def forgotten(folder):
    """What the build takes from script/packages without the package's knowing."""
    sections = re.split(r"^# (.+)\n", (folder.parent / "script/packages").read_text(), flags=re.MULTILINE)
    needed = dict(zip(sections[1::2], sections[2::2]))["Libraries"].split()
    build = (folder / "debian/control").read_text().split("\n\n")[0]
    named = re.findall(r"^ ([\w.+-]+)", build, flags=re.MULTILINE)
    yield from (f"debian/control builds without {package}" for package in sorted(set(needed) - set(named)))


def colourless(folder):
    """Plasma draws in the colour of its panel only what has this class; another drawing is dark on a dark one."""
    for file in sorted(folder.glob("icons/*-symbolic.svg")):
        style, *shapes = list(Xml.parse(file).getroot())
        painted = all(shape.get("class") == "ColorScheme-Text" and shape.get("fill") == "currentColor" for shape in shapes)
        if style.get("id") != "current-color-scheme" or not shapes or not painted:
            yield f"{file} isn't painted in the panel's colour"


def complaint(command):
    run = subprocess.run(command, capture_output=True, text=True)
    if command[0] == "appstreamcli":  # newer ones want a homepage, which there is not
        return "\n".join(line for line in run.stdout.splitlines()
                         if line.startswith(("E:", "W:")) and "url-homepage-missing" not in line)
    return run.stdout + run.stderr if run.returncode or run.stderr else ""


def validated(commands):
    for command in commands:
        if not shutil.which(command[0]):
            print(f"left out, not installed: {command[0]}")
        elif said := complaint(command):
            yield f"{' '.join(map(str, command))}: {said}"


def main(folder, version, programs):
    folder = Path(folder)
    commands = [["desktop-file-validate", folder / f"{ID}.desktop"],
                ["appstreamcli", "validate", "--no-net", folder / f"{ID}.metainfo.xml"]]
    commands += [["man", "--warnings", "-l", "-Tutf8", page] for page in sorted(folder.glob("man/*.1"))]
    commands += [[file.suffix[1:], "-n", file] for file in sorted(folder.glob("completions/*"))]
    findings = [*differences(folder, programs), *metainfo(folder / f"{ID}.metainfo.xml", version),
                *forgotten(folder), *colourless(folder), *validated(commands)]
    print("\n".join(findings), end="\n" if findings else "")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2], sys.argv[3:]))
