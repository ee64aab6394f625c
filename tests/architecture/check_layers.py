#!/usr/bin/env python3
"""Fails when knowledge points the wrong way in the source tree.

Each folder belongs to a layer; a file may include files of its own layer or of lower ones,
never of a higher one, and no two folders may include each other. Includes resolve as the
compiler resolves them (the file's folder, then src/CMakeLists.txt's include directories); a
bare name reaching another folder fails: across folders, write it from src/. Usage:
check_layers.py SRC
"""
import os
import re
import sys

# Lowest first. A folder not listed is an error: every folder must have its place.
LAYERS = [
    ("base",),
    ("model",),
    ("infrastructure/preferences", "infrastructure/persistence", "infrastructure/system",
     "infrastructure/keybinding", "infrastructure/mpv"),
    ("features/bookmark", "features/filter", "features/hdr", "features/osd", "features/playback",
     "features/playlist", "features/thumbnail", "features/track", "features/window",
     "features/pip"),
    ("engine",),
    # The video item draws what the decoder renders; nothing below it knows it exists.
    ("core/renderer",),
    ("app",),
    ("ui",),
]
RANK = {folder: rank for rank, folders in enumerate(LAYERS) for folder in folders}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
INCLUDE_DIRECTORIES = re.compile(r"target_include_directories\(\s*velmar_core\s+(.*?)\)", re.S)


def folder_of(path):
    """The layer folder a source path (relative to src) belongs to."""
    parts = path.split("/")
    for depth in (2, 1):
        candidate = "/".join(parts[:depth])
        if candidate in RANK:
            return candidate
    return None


def include_directories(src):
    """The include directories of the core library, relative to src, in the compiler's order."""
    with open(os.path.join(src, "CMakeLists.txt"), encoding="utf-8") as text:
        words = " ".join(INCLUDE_DIRECTORIES.findall(text.read())).split()
    return ["" if word == "${CMAKE_CURRENT_SOURCE_DIR}" else word for word in words
            if word not in ("PUBLIC", "PRIVATE", "INTERFACE", "BEFORE", "SYSTEM")]


def resolve(src, path, included, directories):
    """Where the compiler finds the include: (path relative to src, the directory searched),
    or None when it lies outside the tree (generated files, other libraries)."""
    for directory in [os.path.dirname(path)] + directories:
        candidate = os.path.normpath(os.path.join(directory, included))
        if os.path.isfile(os.path.join(src, candidate)):
            return candidate, directory
    return None


def main(src):
    directories = include_directories(src)
    problems = []
    edges = set()
    for directory, _, files in os.walk(src):
        for name in files:
            if not name.endswith((".h", ".cpp", ".c")):
                continue
            path = os.path.relpath(os.path.join(directory, name), src)
            source = folder_of(path)
            if source is None:
                if path != "app/main.cpp":
                    problems.append(f"{path}: not in any layer")
                continue
            with open(os.path.join(src, path), encoding="utf-8") as text:
                for included in INCLUDE.findall(text.read()):
                    found = resolve(src, path, included, directories)
                    if found is None:
                        continue
                    target_path, searched = found
                    target = folder_of(target_path)
                    if target is None or target == source:
                        continue
                    if searched not in ("", os.path.dirname(path)):
                        problems.append(f"{path} includes {included} from {target}: "
                                        f"write it as \"{target_path}\"")
                    edges.add((source, target))
                    if RANK[target] > RANK[source]:
                        problems.append(f"{path} includes {included}: {source} sits below {target}")
    for source, target in sorted(edges):
        if (target, source) in edges and source < target:
            problems.append(f"{source} and {target} include each other")
    for problem in problems:
        print(problem)
    print(f"{len(edges)} folder dependencies checked, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
