"""As much of CBOR as our own files hold: numbers, texts, blocks of bytes, lists, tables, truth values."""
import struct

FLOATS = {25: ">e", 26: ">f", 27: ">d"}
SIMPLE = {20: False, 21: True, 22: None}


def decode(data):
    value, end = _decode(data, 0)
    assert end == len(data), "something stands behind the content"
    return value


def _decode(data, at):
    kind, short = data[at] >> 5, data[at] & 31
    at += 1
    number = short
    if short >= 24:
        size = 1 << (short - 24)
        number, at = int.from_bytes(data[at:at + size], "big"), at + size
        if kind == 7 and short in FLOATS:
            return struct.unpack(FLOATS[short], data[at - size:at])[0], at
    if kind == 7:
        return SIMPLE[number], at
    if kind < 2:
        return -1 - number if kind else number, at
    if kind < 4:
        text = data[at:at + number]
        return (text.decode() if kind == 3 else bytes(text)), at + number
    values = []
    for _ in range(number * (2 if kind == 5 else 1)):
        value, at = _decode(data, at)
        values.append(value)
    return (dict(zip(values[::2], values[1::2])) if kind == 5 else values), at


def _head(kind, number):
    for short, size in ((24, 1), (25, 2), (26, 4), (27, 8)):
        if number < 24:
            return bytes([kind << 5 | number])
        if number < 1 << 8 * size:
            return bytes([kind << 5 | short]) + number.to_bytes(size, "big")
    return _head(kind, number % (1 << 64))


def encode(value):
    if value is None or isinstance(value, bool):
        return b"\xf6" if value is None else b"\xf5" if value else b"\xf4"
    if isinstance(value, int):
        return _head(1, -1 - value) if value < 0 else _head(0, value)
    if isinstance(value, float):
        return b"\xfb" + struct.pack(">d", value)
    if isinstance(value, bytes):
        return _head(2, len(value)) + value
    if isinstance(value, str):
        return _head(3, len(value.encode())) + value.encode()
    if isinstance(value, list):
        return _head(4, len(value)) + b"".join(map(encode, value))
    return _head(5, len(value)) + b"".join(encode(key) + encode(entry) for key, entry in value.items())
