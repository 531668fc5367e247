#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Pavor Authors
# SPDX-License-Identifier: Apache-2.0

"""Compares what libpavor.so exports and needs with the lists beside this file.

--update writes exports.txt from the library instead."""

import argparse
import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).parent
# Symbols of the C and C++ runtime carry their version; those of the platform's libraries none.
VERSIONED = re.compile(r"@")
# Weak references that the compiler's start-up files make.
START_UP = {"__cxa_finalize", "__gmon_start__", "_ITM_deregisterTMCloneTable",
            "_ITM_registerTMCloneTable"}
OURS = re.compile(r"^((vtable|typeinfo|typeinfo name|guard variable) for )?pavo::")


def run(*command):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout


def exported(library):
    """One line for all that demangle alike: constructors and destructors come in variants."""
    lines = run("nm", "-D", "--defined-only", "-C", library).splitlines()
    return sorted({line.split(maxsplit=2)[2].split("@@")[0] for line in lines})


def undefined(library):
    names = {line.split()[-1] for line in run("nm", "-D", "--undefined-only", library).splitlines()}
    return {name for name in names if not VERSIONED.search(name)} - START_UP


def needed(library):
    return set(re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-d", library)))


def defined_by_needed(library):
    """The functions that the directly needed libraries define."""
    paths = dict(re.findall(r"(\S+) => (\S+)", run("ldd", library)))
    names = set()
    for name in needed(library):
        if name in paths:
            lines = run("nm", "-D", "--defined-only", paths[name]).splitlines()
            names |= {line.split()[-1].split("@")[0] for line in lines}
    return names


def difference(what, expected, found):
    return ([f"{what}: {name} is missing" for name in sorted(set(expected) - set(found))] +
            [f"{what}: {name} is not in the list" for name in sorted(set(found) - set(expected))])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("library")
    parser.add_argument("--update", action="store_true")
    args = parser.parse_args()

    exports = exported(args.library)
    if args.update:
        (HERE / "exports.txt").write_text("".join(f"{name}\n" for name in exports))
        return 0
    platform = [line.split()[0] for line in (HERE / "platform-functions.txt").read_text().splitlines()
                if not line.startswith("#")]
    problems = difference("exported", (HERE / "exports.txt").read_text().splitlines(), exports)
    problems += [f"exported: {name} is not of pavo" for name in exports if not OURS.match(name)]
    problems += difference("needed", platform, undefined(args.library))
    # A listener or key that outlives its code would run what is not there any more.
    if not re.search(r"\(FLAGS_1\).*NODELETE", run("readelf", "-d", args.library)):
        problems.append("flags: the library can be unloaded")
    problems += [f"needed: no library that libpavor.so names has {name}"
                 for name in sorted(set(platform) - defined_by_needed(args.library))]
    print("\n".join(problems))
    return 1 if problems else 0


sys.exit(main())
