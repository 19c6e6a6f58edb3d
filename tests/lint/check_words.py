#!/usr/bin/env python3
"""Fails when a text of the program names another desktop than the one a person sits at, or a page of the
settings that isn't there.

Texts are the string literals of src/, joined where they stand side by side. Log lines aren't read by people in
the window and keep one wording everywhere; DesktopWords.cpp is where the words of each desktop stand.

  check_words.py REPOSITORY    exits with 1 and one line for each finding
"""
import re
import sys
from pathlib import Path

FOREIGN = re.compile(r"\b(Macs?|macOS|Finder|Touch ID|Apple|iCloud|System Settings|System Preferences|Terminal|"
                     r"menu bar|Dock|Spotlight|AirDrop|Time Machine|Keychain Access|the Keychain)\b|[⌘⌥⌃]")
PAGE = re.compile(r"(?<!own )Settings (?:→|>|›) ?(\w+)")
# What a server is told of the program, the same for every person.
NOT_READ_IN_THE_WINDOW = {"Mozilla/5.0 (Macintosh; Intel Mac OS X) MorvaneGPT/1.0"}

TOKEN = re.compile(r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<raw>R"(?P<mark>[^(\s]*)\((?P<rawtext>.*?)\)(?P=mark)")
  | (?P<string>"(?:[^"\\\n]|\\.)*")
  | (?P<char>'(?:[^'\\\n]|\\.)')
  | (?P<log>\bLog::\w+\()
  | (?P<open>\() | (?P<close>\))
  | (?P<include>^\#include[^\n]*)
  | (?P<glue>\s+|\b(?:u8?|U|L|_s|_L1)\b|(?<=")_(?:s|L1)\b)
  | (?P<other>\w+|.)""", re.VERBOSE | re.DOTALL | re.MULTILINE)


def texts(source):
    """(line, text) of each run of literals outside log calls."""
    text, start, depth, log_depth = "", 0, 0, None
    for token in TOKEN.finditer(source):
        kind = token.lastgroup
        if kind in ("string", "raw", "rawtext", "mark"):
            literal = token["rawtext"] if token["raw"] else token["string"][1:-1]
            start = start if text else token.start()
            text += literal if log_depth is None else ""
            continue
        if kind in ("glue", "comment"):
            continue
        if text:
            yield source.count("\n", 0, start) + 1, text
            text = ""
        if kind in ("log", "open"):
            depth += 1
            if kind == "log" and log_depth is None:
                log_depth = depth
        elif kind == "close":
            if depth == log_depth:
                log_depth = None
            depth -= 1


def findings(root):
    pages = set(re.findall(r'title: qsTr\("(\w+)"\)', (root / "src/views/settings/SettingsMenu.qml").read_text()))
    for path in sorted((root / "src").rglob("*")):
        if path.suffix not in (".cpp", ".h", ".qml") or path.name == "DesktopWords.cpp":
            continue
        source = path.read_text()
        later = {page for page in ("Privacy", "Voice") if f"Product::has{page}Page" in source}
        for line, text in texts(source):
            if text in NOT_READ_IN_THE_WINDOW:
                continue
            where = f"{path.relative_to(root)}:{line}"
            for word in FOREIGN.finditer(text):
                yield f"{where}: “{word[0]}” belongs to another desktop; take it from DesktopWords"
            for page in PAGE.finditer(text):
                if page[1] not in pages | later:
                    yield f"{where}: “{page[0]}”: the settings have no such page"


def main():
    found = list(findings(Path(sys.argv[1])))
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
