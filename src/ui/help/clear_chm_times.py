#!/usr/bin/env python3
"""Clears the two compile times that chmcmd writes into a help file, so that the same
sources always give the same bytes: the archive header's time stamp and the time record
(code 10) of the #SYSTEM file, which chmcmd keeps uncompressed. Anything it does not
recognise is an error: a help file that cannot be made reproducible must not ship."""

import struct
import sys


def read_encint(data, pos):
    value = 0
    while True:
        byte = data[pos]
        pos += 1
        value = (value << 7) | (byte & 0x7F)
        if byte < 0x80:
            return value, pos


def find_system_file(data):
    """Offset and length of #SYSTEM in the file, from the archive's directory."""
    if data[:4] != b"ITSF" or struct.unpack_from("<I", data, 4)[0] != 3:
        raise ValueError("not a version 3 ITSF archive")
    directory_offset = struct.unpack_from("<Q", data, 0x48)[0]
    content_offset = struct.unpack_from("<Q", data, 0x58)[0]
    if data[directory_offset:directory_offset + 4] != b"ITSP":
        raise ValueError("no ITSP directory")
    header_length = struct.unpack_from("<I", data, directory_offset + 8)[0]
    chunk_size = struct.unpack_from("<I", data, directory_offset + 0x10)[0]
    chunk_count = struct.unpack_from("<I", data, directory_offset + 0x2C)[0]
    for index in range(chunk_count):
        chunk = directory_offset + header_length + index * chunk_size
        if data[chunk:chunk + 4] != b"PMGL":
            continue
        free_space = struct.unpack_from("<I", data, chunk + 4)[0]
        pos, end = chunk + 0x14, chunk + chunk_size - free_space
        while pos < end:
            name_length, pos = read_encint(data, pos)
            name = data[pos:pos + name_length]
            pos += name_length
            section, pos = read_encint(data, pos)
            offset, pos = read_encint(data, pos)
            length, pos = read_encint(data, pos)
            if name == b"/#SYSTEM":
                if section != 0:
                    raise ValueError("#SYSTEM is compressed")
                return content_offset + offset, length
    raise ValueError("no #SYSTEM file")


def clear_times(data):
    struct.pack_into("<I", data, 0x10, 0)
    start, length = find_system_file(data)
    pos, end = start + 4, start + length  # after the version number
    while pos + 4 <= end:
        code, size = struct.unpack_from("<HH", data, pos)
        if code == 10 and size >= 4:
            struct.pack_into("<I", data, pos + 4, 0)
            return
        pos += 4 + size
    raise ValueError("#SYSTEM holds no time record")


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: clear_chm_times.py FILE.chm")
    path = sys.argv[1]
    with open(path, "rb") as source:
        data = bytearray(source.read())
    try:
        clear_times(data)
    except (ValueError, IndexError, struct.error) as error:
        sys.exit(f"{path}: cannot clear the compile times: {error}")
    with open(path, "wb") as target:
        target.write(data)


if __name__ == "__main__":
    main()
