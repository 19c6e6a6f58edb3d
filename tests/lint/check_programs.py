#!/usr/bin/env python3
"""Fails when a program holds a value of another program's deployment, in any form in which it could be used.

  check_programs.py PROGRAM=DEPLOYMENT.json …    exits with 1 and one line for each finding

Words that two deployments have in common say nothing, and neither do words that are too short to be told from
others. A digest, key or address that they have in common is found as any other.
"""
import base64
import json
import re
import sys
from pathlib import Path

SHORTEST = 14
DIGEST = re.compile(r"(?:[0-9a-f]{64}|[0-9a-f]{96})")
KEY = re.compile(r"[A-Za-z0-9+/]{43}=")
ADDRESS = re.compile(r"https?://([^/]+).*")


def values(node):
    if isinstance(node, dict):
        node = list(node.values())
    if isinstance(node, list):
        return set().union(*map(values, node)) if node else set()
    if not isinstance(node, str):
        return set()
    address = ADDRESS.fullmatch(node)
    return {text for text in (node, address and address[1]) if text and len(text) >= SHORTEST}


def forms(value):
    """The value as text of both kinds, and the bytes that it stands for where it is a digest or a key."""
    found = [value.encode(), value.encode("utf-16-le")]
    if DIGEST.fullmatch(value):
        found.append(bytes.fromhex(value))
    if KEY.fullmatch(value):
        found.append(base64.b64decode(value))
    return found


def words(found):
    return {value for value in found if not any(kind.fullmatch(value) for kind in (DIGEST, KEY, ADDRESS))}


def main(pairs):
    programs = [(Path(program), values(json.loads(Path(deployment).read_text())))
                for program, deployment in (pair.split("=") for pair in pairs)]
    findings = []
    for program, own in programs:
        contents = program.read_bytes()
        findings += [f"{program.name} lacks its own {value}" for value in sorted(own)
                     if value.encode() not in contents]
        for other, theirs in programs:
            findings += [f"{program.name} holds {value} of {other.name}" for value in sorted(theirs - words(own))
                         if other != program and any(form in contents for form in forms(value))]
    print("\n".join(findings), end="\n" if findings else "")
    return 1 if findings or len(programs) < 2 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
