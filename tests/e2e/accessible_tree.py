#!/usr/bin/python3
"""accessible_tree.py APPLICATION_NAME: what a screen reader finds of the application over AT-SPI,
one object a line (role, name, showing or hidden; tab-separated, indented by depth), or exit 1.
accessible_tree.py APPLICATION_NAME --where NAME: the screen rectangle ("x y width height") of the
first showing object with that name, or exit 1."""
import sys

import pyatspi


def walk(node, depth=0):
    showing = node.getState().contains(pyatspi.STATE_SHOWING)
    print("  " * depth + f"{node.getRoleName()}\t{node.name}\t{'showing' if showing else 'hidden'}")
    for child in filter(None, (node.getChildAtIndex(i) for i in range(node.childCount))):
        walk(child, depth + 1)


def find(node, name):
    if node.name == name and node.getState().contains(pyatspi.STATE_SHOWING):
        return node
    for child in filter(None, (node.getChildAtIndex(i) for i in range(node.childCount))):
        found = find(child, name)
        if found:
            return found
    return None


applications = pyatspi.Registry.getDesktop(0)
matches = [app for app in applications if app is not None and app.name == sys.argv[1]]
if len(sys.argv) > 3 and sys.argv[2] == "--where":
    for application in matches:
        found = find(application, sys.argv[3])
        if found:
            box = found.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
            print(box.x, box.y, box.width, box.height)
            sys.exit(0)
    sys.exit(1)
for application in matches:
    walk(application)
sys.exit(0 if matches else 1)
