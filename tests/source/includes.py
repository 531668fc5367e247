#!/usr/bin/env python3
"""Holds the includes of the sources against the layers of the house.

A file of src/ may include its own layer and those above it (smaller numbers); the platform's headers
are for the few files named below. The modem knows nothing of the library, the tool only its public
headers. A new file has to be given a layer here."""

import pathlib
import re
import sys

LAYERS = {
    0: "Fork ThreadChecker TurnQueue",
    1: "AddProfileParams DumpText ExpirationListener Export FilterProfileParams IProfileKey"
       " ModifyProfileParams"
       " NamedValue PDCRefreshStatus ProfileParams ProfileTypes",
    2: "AdbWriter DiagWriter LocalLogBuffer LogLevel LogWrapper LogWriter",
    3: "ClientRequest ClientResponse EventManager ProfileKey ReqRespType RequestFunction"
       " RequestPort WakeFd",
    4: "Conversions MessageFields Modem3gppProfile ModemProfile RecordAccess",
    5: "OvixWdsProxy ProfileChangedInd",
    6: "ProfileCache",
    7: "ClientRequestManager",
    8: "Manager",
    9: "Util",
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

# Util stands on the public headers and logging, not on what is between them.
UTIL_LAYERS = {0, 1, 2, 8, 9}

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
        target = pathlib.PurePath(included).stem
        if target not in LAYER_OF:
            problems.append(f"{file}: includes {included}, which has no layer")
        elif LAYER_OF[target] > layer:
            problems.append(f"{file}: layer {layer} includes {included} of layer {LAYER_OF[target]}")
        elif name == "Util" and LAYER_OF[target] not in UTIL_LAYERS:
            problems.append(f"{file}: includes {included}, which is neither public nor logging")


def check_stranger(root, folder, allow_public):
    """A folder that may not see src/, nor the platform's structures."""
    own = {p.name for p in sources(root / folder)}
    for file in sources(root / folder):
        for bracket, included in INCLUDE.findall(file.read_text()):
            if included.startswith("pavo/"):
                if not allow_public:
                    problems.append(f"{file}: includes {included}")
            elif included in PLATFORM or "src/" in included:
                problems.append(f"{file}: includes {included}")
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
    check_stranger(root, "modem", allow_public=False)
    check_modem_rooms(root)
    check_stranger(root, "tools/pavoctl", allow_public=True)
    for problem in problems:
        print(problem)
    return 1 if problems else 0


sys.exit(main())
