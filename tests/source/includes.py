#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Pavor Authors
# SPDX-License-Identifier: Apache-2.0

"""Holds the includes of the sources against the layers of the house.

The ground floor includes nothing of ours, the wire only the ground floor, the platform's host build
both of them. A file of src/ may include the ground floor, its own layer and those above it (smaller
numbers); the platform's headers are for the few files named below. The rules of matching and the
policies stand on the public headers, the ground floor and themselves. The modem knows nothing of the
library, the tool its public headers, the rules and the policies. A new file has to be given a layer
here."""

import pathlib
import re
import sys

LAYERS = {
    0: "ThreadChecker TurnQueue",
    1: "AddProfileParams DumpText ExpirationListener Export FilterProfileParams IProfileKey"
       " ModifyProfileParams"
       " NamedValue PDCRefreshStatus ProfileParams ProfileTypes",
    2: "AdbWriter DiagWriter LocalLogBuffer LogLevel LogWrapper LogWriter",
    3: "ClientRequest ClientResponse EventManager ProfileKey ReqRespType RequestFunction"
       " RequestPort WakeFd",
    4: "ApnName ApnTypeBits Changes Criterion Matching ProfileSettings RecordAccess",
    5: "Conversions MessageFields Modem3gppProfile ModemProfile",
    6: "OvixWdsProxy ProfileChangedInd",
    7: "ProfileCache",
    8: "ClientRequestManager",
    9: "Manager",
    10: "AttachPolicies CallPolicies ListPolicies ManagerOperations Policies PolicyObserver"
        " PolicyParts PolicyRun ProfileOperations",
    11: "Util",
}
LAYER_OF = {name: layer for layer, names in LAYERS.items() for name in names.split()}

# Who may include a header of the platform.
PLATFORM = {
    "android/log.h": {"AdbWriter"},
    "diag_lsm.h": {"DiagWriter"},
    "ovix_client.h": {"OvixWdsProxy"},
    "wds_v01.h": {"Conversions", "MessageFields", "Modem3gppProfile", "ModemProfile",
                  "OvixWdsProxy"},
}

# The rooms below the library and the modem, and the rooms that each may include besides itself.
ROOMS = {
    "base": set(),
    "wire": {"base"},
    "platform/host": {"base", "wire", "platform/include"},
}
# The one include beside these: the modem that serves a process when no other is named.
EMBEDDED = ("ModemConnection.cpp", "EmbeddedModem.h")

# Util stands on the public headers, logging and the policies, not on what is between them.
UTIL_LAYERS = {0, 1, 2, 9, 10, 11}

# Folders of src/ that stand on the public headers and themselves. The tool compiles them, too.
SHARED_FOLDERS = ("matching", "policy")

# The rooms of modem/: each may include itself and those before it.
MODEM_ROOMS = ["common", "client", "server", "core", "trace", "faults", "service", "program"]

# Headers without a folder that are no part of C++ and yet everywhere.
POSIX_HEADERS = {"errno.h", "fcntl.h", "pthread.h", "signal.h", "time.h", "unistd.h"}

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)

problems = []


def sources(folder):
    return sorted(p for p in folder.rglob("*") if p.suffix in (".h", ".cpp"))


def check_library(file):
    name = file.stem
    if name not in LAYER_OF:
        problems.append(f"{file}: has no layer")
        return
    layer = LAYER_OF[name]
    is_public = file.parent.name == "pavo"
    for bracket, included in INCLUDE.findall(file.read_text()):
        if included in PLATFORM:
            if name not in PLATFORM[included]:
                problems.append(f"{file}: {included} is not for this file")
            continue
        if included.startswith("base/"):
            continue
        is_ours = included.startswith("pavo/") or bracket == '"'
        if not is_ours:
            if included.endswith(".h") and "/" not in included and included not in POSIX_HEADERS:
                problems.append(f"{file}: <{included}> is not a header of the standard library")
            continue
        if is_public and not included.startswith("pavo/"):
            problems.append(f"{file}: a public header includes {included}")
        if file.parent.name in SHARED_FOLDERS and not (
                included.startswith("pavo/") or "/" not in included
                and (file.parent / included).exists()):
            problems.append(f"{file}: includes {included}, which is neither public nor beside it")
        target = pathlib.PurePath(included).stem
        if target not in LAYER_OF:
            problems.append(f"{file}: includes {included}, which has no layer")
        elif LAYER_OF[target] > layer:
            problems.append(f"{file}: layer {layer} includes {included} of layer {LAYER_OF[target]}")
        elif name == "Util" and LAYER_OF[target] not in UTIL_LAYERS:
            problems.append(f"{file}: includes {included}, which is not for it")


def room_of(root, file, included):
    """The folder of what a file includes in quotes, or None when that is no file of this project."""
    for folder in (file.parent, root, root / "platform/include", root / "include", root / "src"):
        if (folder / included).exists():
            return (folder / included).parent.relative_to(root).as_posix()
    return None


def check_room(root, folder, below):
    for file in sources(root / folder):
        for _, included in INCLUDE.findall(file.read_text()):
            room = room_of(root, file, included)
            is_embedded = (file.name, pathlib.PurePath(included).name) == EMBEDDED
            if room is not None and room != folder and room not in below and not is_embedded:
                problems.append(f"{file}: includes {included} of {room}")


def check_stranger(root, folder, allow_public):
    """A folder that may not see src/, nor the platform's structures; of src/, one that sees the public
    headers sees the shared folders, too."""
    own = {p.name for p in sources(root / folder)}
    for file in sources(root / folder):
        for bracket, included in INCLUDE.findall(file.read_text()):
            if included.startswith("pavo/"):
                if not allow_public:
                    problems.append(f"{file}: includes {included}")
            elif included in PLATFORM or "src/" in included:
                problems.append(f"{file}: includes {included}")
            elif allow_public and included.split("/")[0] in SHARED_FOLDERS:
                continue
            elif bracket == '"' and included not in own and (root / "src" / included).exists():
                problems.append(f"{file}: includes src/{included}")


def check_modem_rooms(root):
    for file in sources(root / "modem"):
        parts = file.relative_to(root / "modem").parts
        if len(parts) == 1:
            continue
        if parts[0] not in MODEM_ROOMS:
            problems.append(f"{file}: is in no room of the modem")
            continue
        allowed = MODEM_ROOMS[:MODEM_ROOMS.index(parts[0]) + 1]
        for _, included in INCLUDE.findall(file.read_text()):
            path = pathlib.PurePath(included).parts
            if path[0] == "modem" and len(path) > 2 and path[1] not in allowed:
                problems.append(f"{file}: the room {parts[0]} includes {included}")


def main():
    root = pathlib.Path(sys.argv[1])
    for file in sources(root / "include" / "pavo") + sources(root / "src"):
        check_library(file)
    for folder, below in ROOMS.items():
        check_room(root, folder, below)
    check_stranger(root, "modem", allow_public=False)
    check_modem_rooms(root)
    check_stranger(root, "tools/pavoctl", allow_public=True)
    for problem in problems:
        print(problem)
    return 1 if problems else 0


sys.exit(main())
