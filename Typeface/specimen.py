#!/usr/bin/python3
"""Draws the proof sheets.

    specimen.py FOLDER [FILE]

compiles Specimen.cpp into FOLDER and runs it without a display. Needs a C++ compiler, pkg-config
and Qt 6 Quick. FILE is the font file; the default is the committed one.
"""

import os
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
FACE = os.path.join(HERE, "..", "Resources", "MORLADisplay-Regular.otf")


def main():
    if len(sys.argv) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    folder, face = sys.argv[1], sys.argv[2] if len(sys.argv) > 2 else FACE
    os.makedirs(folder, exist_ok=True)
    program, source = os.path.join(folder, "specimen"), os.path.join(HERE, "Specimen.cpp")
    if not os.path.exists(program) or os.path.getmtime(program) < os.path.getmtime(source):
        flags = subprocess.check_output(
            ["pkg-config", "--cflags", "--libs", "Qt6Quick"], text=True
        ).split()
        subprocess.check_call(["c++", "-std=c++20", "-O1", "-fPIC", source, "-o", program, *flags])
    environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", QT_QUICK_BACKEND="software")
    return subprocess.call([program, face, folder], env=environment)


if __name__ == "__main__":
    sys.exit(main())
