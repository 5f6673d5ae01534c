#!/usr/bin/env python3
"""Zips a folder so that the same files always give the same bytes: entries sorted by
name, every time stamp the one given (the last commit's), fixed permissions, no extra
fields, one compression level.

usage: zip_folder.py FOLDER TOP_NAME OUTPUT.zip EPOCH
Each file of FOLDER is stored as TOP_NAME/its path in FOLDER."""

import os
import sys
import time
import zipfile


def entry(name, epoch, is_dir):
    # Zip times have no zone and start in 1980; they are read as UTC here.
    stamp = time.gmtime(max(epoch, 315532800))[:6]
    info = zipfile.ZipInfo(name, date_time=stamp)
    info.create_system = 3  # Unix, so that the permissions below are read
    mode = 0o40755 if is_dir else 0o100644
    if name.endswith(".exe"):
        mode = 0o100755
    info.external_attr = mode << 16
    if is_dir:
        info.external_attr |= 0x10  # the MS-DOS directory flag
    else:
        info.compress_type = zipfile.ZIP_DEFLATED
    return info


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    folder, top, output, epoch = sys.argv[1], sys.argv[2], sys.argv[3], int(sys.argv[4])
    paths = []
    for root, dirs, files in os.walk(folder):
        for name in dirs + files:
            paths.append(os.path.relpath(os.path.join(root, name), folder))
    with zipfile.ZipFile(output, "w") as archive:
        archive.writestr(entry(top + "/", epoch, True), b"")
        for path in sorted(paths, key=lambda p: p.replace(os.sep, "/")):
            full = os.path.join(folder, path)
            name = top + "/" + path.replace(os.sep, "/")
            if os.path.isdir(full):
                archive.writestr(entry(name + "/", epoch, True), b"")
            else:
                with open(full, "rb") as source:
                    archive.writestr(entry(name, epoch, False), source.read(),
                                     compress_type=zipfile.ZIP_DEFLATED, compresslevel=9)


if __name__ == "__main__":
    main()
