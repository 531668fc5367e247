#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Pavor Authors
# SPDX-License-Identifier: Apache-2.0

"""Compiles each header alone: the public ones as C++17 with both compilers, the library's own as
C++20, the platform's as C and C++ and for the device's processors."""

import argparse
import concurrent.futures
import pathlib
import subprocess
import sys

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror", "-fsyntax-only"]
DEVICES = ["armv7a-linux-gnueabi", "aarch64-linux-gnu"]


def jobs(args):
    """Pairs of a header and the command that compiles a file that includes nothing else."""
    root = args.root
    includes = [f"-I{root}/include", f"-I{root}/platform/include", f"-I{args.log_include}"]
    for header in sorted((root / "include").rglob("*.h")):
        for compiler in (args.gxx, args.clangxx):
            yield header, [compiler, "-xc++", "-std=c++17", *WARNINGS, *includes]
    for header in sorted((root / "src").rglob("*.h")):
        yield header, [args.gxx, "-xc++", "-std=c++20", *WARNINGS, *includes, f"-I{root}",
                       f"-I{root}/src"]
    for header in sorted((root / "platform/include").glob("*.h")):
        for language in (["-xc", "-std=c11"], ["-xc++", "-std=c++17"]):
            yield header, [args.gxx, *language, *WARNINGS, *includes]
            for device in DEVICES:
                # Freestanding: the device's C library is not here, and the structures need none.
                yield header, [args.clangxx, *language, *WARNINGS, "-nostdinc++",
                               f"--target={device}", "-ffreestanding", *includes]


def compile_alone(job):
    header, command = job
    # As a file of its own, so that the header is not the main file.
    result = subprocess.run([*command, "-"], input=f'#include "{header}"\n', text=True,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return None if result.returncode == 0 else f"{' '.join(command)} {header}\n{result.stdout}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("root", type=pathlib.Path)
    parser.add_argument("--gxx", default="g++")
    parser.add_argument("--clangxx", default="clang++")
    parser.add_argument("--log-include", required=True)
    args = parser.parse_args()
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        failures = [f for f in pool.map(compile_alone, list(jobs(args))) if f]
    print("\n".join(failures))
    return 1 if failures else 0


sys.exit(main())
