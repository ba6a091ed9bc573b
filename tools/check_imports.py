#!/usr/bin/env python3
"""Checks what the programs for macOS import, before the linker removes what nobody calls.

usage: check_imports.py BUILD...

BUILD is a folder of the cross-build, as build/macos-arm64. Every symbol that its objects leave open must be in a
library of cmake/macos/sdk or in the compiler's libSystem; must have a row in cmake/macos/imports.tsv, which names that
library; and must not be newer than the oldest system of that build. Every row must be of something that is imported.
Prints what is wrong and exits with 1, or prints one line. WAKERLY_ZIG names the compiler.
"""

import os
import pathlib
import re
import subprocess
import sys

import yaml

PROGRAMS = ["wakerly", "wakerlyctl"]
SDK = pathlib.Path("cmake/macos/sdk")
ROWS = pathlib.Path("cmake/macos/imports.tsv")
ROW = re.compile(r"(?P<symbol>\S+)\t(?P<library>\S+)\t(?P<oldest>[0-9]+(\.[0-9]+)+|any|not known)\t(?P<source>\S+)")
LINKERS_OWN = {"___dso_handle"}


class TbdLoader(yaml.CSafeLoader):
    """Reads text-based stubs, whose documents have a tag of their own."""


TbdLoader.add_constructor("!tapi-tbd", lambda loader, node: loader.construct_mapping(node, deep=True))


def stub_symbols(file, architecture):
    """The symbols of a stub, each with the name of the library that a program asks for it."""
    documents = list(yaml.load_all(file.read_text(), TbdLoader))
    library = pathlib.Path(documents[0]["install-name"]).name.removesuffix(".dylib")
    symbols = {}
    for document in documents:
        for entry in document.get("exports", []) + document.get("reexports", []):
            if f"{architecture}-macos" in entry["targets"]:
                names = entry.get("symbols", []) + entry.get("weak-symbols", [])
                names += ["_OBJC_CLASS_$_" + name for name in entry.get("objc-classes", [])]
                symbols.update(dict.fromkeys(names, library))
    return symbols


def all_stubs(architecture):
    system = pathlib.Path(os.environ["WAKERLY_ZIG"]).parent / "lib/libc/darwin/libSystem.tbd"
    symbols = {}
    for file in [system, *SDK.rglob("*.tbd")]:
        symbols |= stub_symbols(file, architecture)
    return symbols


def output_lines(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.splitlines()


def open_symbols(build):
    """The symbols that the objects of the programs leave open, each with an object that asks for it."""
    inputs = output_lines("ninja", "-C", build, "-t", "inputs", *PROGRAMS)
    objects = [build / line for line in inputs if line.endswith(".o")]
    wanted, defined = {}, set()
    for line in output_lines("llvm-nm", "-A", "-g", "-P", *objects):
        file, symbol, kind = line.split()[:3]
        if kind in "Uw":
            wanted[symbol] = pathlib.Path(file.rstrip(":")).name
        else:
            defined.add(symbol)
    return {symbol: file for symbol, file in wanted.items() if symbol not in defined | LINKERS_OWN}


def read_rows():
    """The rows by their symbols: library, and the oldest system as the row gives it."""
    rows = {}
    for line in ROWS.read_text().splitlines():
        if line.startswith("#"):
            continue
        row = ROW.fullmatch(line)
        if not row or row["symbol"] in rows:
            raise SystemExit(f"{ROWS}: no row, or a second one for its symbol: {line}")
        rows[row["symbol"]] = (row["library"], row["oldest"])
    return rows


def version(text):
    return [int(number) for number in text.split(".")]


def oldest_system(build):
    for line in (build / "CMakeCache.txt").read_text().splitlines():
        if line.startswith("WAKERLY_TARGET:"):
            return line.partition("-macos.")[2]
    raise SystemExit(f"{build}: not of the cross-build")


def faults(build, rows, imports):
    architecture, system = build.name.removeprefix("macos-"), oldest_system(build)
    stubs = all_stubs(architecture)
    for symbol, file in sorted(imports.items()):
        library, oldest = rows.get(symbol, (None, "any"))
        if symbol not in stubs:
            yield f"{build}: {symbol}, which {file} asks for, is in no library"
        elif library is None:
            yield f"{build}: {symbol} of {stubs[symbol]}, which {file} asks for, has no row in {ROWS}"
        elif library != stubs[symbol]:
            yield f"{build}: {symbol} is of {stubs[symbol]}, and {ROWS} says {library}"
        if oldest not in ("any", "not known") and version(oldest) > version(system):
            yield f"{build}: {symbol}, which {file} asks for, is of macOS {oldest}, and the program for {system}"


def main():
    rows, found, imported, systems = read_rows(), [], set(), []
    for build in map(pathlib.Path, sys.argv[1:]):
        imports = open_symbols(build)
        found += faults(build, rows, imports)
        imported |= imports.keys()
        systems.append(oldest_system(build))
    found += [f"{ROWS}: {symbol}: nothing imports it" for symbol in rows if symbol not in imported]
    if found:
        raise SystemExit("\n".join(found))
    unknown = sum(rows[symbol][1] == "not known" for symbol in imported)
    print(f"{len(imported)} imported symbols, none newer than macOS {' and '.join(systems)};",
          f"of {unknown} it is not known how old they are")


main()
