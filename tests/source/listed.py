#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Pavor Authors
# SPDX-License-Identifier: Apache-2.0

"""Checks that every C++ file is named by a CMakeLists.txt, so that it is compiled and its tests run."""

import pathlib
import re
import sys

import licenses

WORD = re.compile(r"[\w./-]+")


def is_named(path, root):
    """Whether the list of its folder or of one above has the path, or its stem for a loop to use."""
    for folder in path.parents:
        lists = folder / "CMakeLists.txt"
        if lists.exists():
            words = WORD.findall(lists.read_text())
            if str(path.relative_to(folder)) in words or path.stem in words:
                return True
        if folder == root:
            return False
    return False


def main():
    root = pathlib.Path(sys.argv[1])
    files = [path for path in licenses.sources(root) if path.suffix == ".cpp"]
    unnamed = [path for path in files if not is_named(path, root)]
    for path in unnamed:
        print(f"{path}: no CMakeLists.txt names it")
    return 1 if unnamed else 0


sys.exit(main())
