#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Pavor Authors
# SPDX-License-Identifier: Apache-2.0

"""Checks that every source begins with its copyright and license.

The sources are all C and C++ files, CMake files and scripts of the folders that the project is made of.
A script has the notice after the line that names its interpreter."""

import pathlib
import sys

NOTICE = ["SPDX-FileCopyrightText: The Pavor Authors", "SPDX-License-Identifier: Apache-2.0"]
SLASHES = {".h", ".cpp", ".c"}
HASHES = {".py", ".cmake", ".map"}
# The inputs of the fuzz targets are not written by hand, and documents say their license in LICENSE.
LEFT_OUT = {"corpus", "docs"}


def is_source(path):
    if path.suffix in SLASHES | HASHES or path.name == "CMakeLists.txt":
        return True
    if path.suffix:
        return path.suffix == ".sh"
    with path.open("rb") as file:
        return file.read(2) == b"#!"


def folders(root):
    """The folders of the project; neither builds nor what tools keep beside it."""
    for path in sorted(root.iterdir()):
        is_hidden = path.name.startswith(".") and path.name != ".ci"
        if path.is_dir() and not is_hidden and not path.name.startswith("build"):
            yield path


def sources_in(folder):
    if folder.name in LEFT_OUT or (folder / "CMakeCache.txt").exists():
        return
    for path in sorted(folder.iterdir()):
        if path.is_symlink() or path.name == "__pycache__":
            continue
        if path.is_dir():
            yield from sources_in(path)
        elif is_source(path):
            yield path


def sources(root):
    yield root / "CMakeLists.txt"
    for folder in folders(root):
        yield from sources_in(folder)


def notice(path):
    mark = "//" if path.suffix in SLASHES else "#"
    return "".join(f"{mark} {line}\n" for line in NOTICE)


def has_notice(path, text):
    if text.startswith("#!"):
        text = text.partition("\n")[2]
    return text.startswith(notice(path))


def main():
    root = pathlib.Path(sys.argv[1])
    without = [path for path in sources(root) if not has_notice(path, path.read_text())]
    for path in without:
        print(f"{path}: does not begin with its license")
    return 1 if without else 0


if __name__ == "__main__":
    sys.exit(main())
