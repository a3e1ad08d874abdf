"""What can be wrong with a file: bytes, lengths, cuts, pieces of another file, and fields of what can be decoded."""
import json
import math
import re
import struct
import zlib

import cbor

SCENE, ANIMATIONS = b"\x89KXS\r\n\x1a\n", b"\x89KXA\r\n\x1a\n"
WHOLES = [0, 1, 2, 255, 65535, 1 << 24, 10 ** 9, (1 << 31) - 1, 1 << 31, (1 << 32) - 1, (1 << 63) - 1, (1 << 64) - 1]
REALS = [0.0, -1.0, 1e-45, -1e-40, 3.4e38, -3.4e38, 1e9, 1e30, -1e12, -0.5, 1e-20, 16777217.0, 0.04, 1e5, -1e6]
NO_REALS = [math.inf, -math.inf, math.nan, 1e300]
NUMBER = re.compile(rb"[-+]?\d[\d.eE+-]*")
WORDS = b"nan -inf 1e39 -1 0 999999999 4294967295 18446744073709551616 1e-45 x".split() + [b""]


def seal(magic, payload):
    head = magic + struct.pack("<IIQII", 1, 0, len(payload), zlib.crc32(payload), 0)
    return head[:12] + struct.pack("<I", zlib.crc32(head)) + head[16:] + payload


def number_text(random, data):
    """A number of a text, or where there are none, as of `bytes_`."""
    found = list(NUMBER.finditer(data[:1 << 20]))
    if not found:
        return bytes_(random, data)
    for match in sorted(random.sample(found, min(len(found), random.choice((1, 1, 2, 5)))), key=lambda m: -m.start()):
        data = data[:match.start()] + random.choice(WORDS) + data[match.end():]
    return data


def bytes_(random, data):
    data = bytearray(data)
    for _ in range(random.choice((1, 2, 4, 16, 64))):
        data[random.randrange(len(data))] = random.choice((0, 0xff, 0x7f, 0x80, random.randrange(256)))
    return bytes(data)


def lengths(random, data):
    data = bytearray(data)
    for _ in range(random.choice((1, 1, 3))):
        size, order = random.choice((2, 4, 4, 4, 8)), random.choice(("little", "little", "big"))
        at = random.randrange(max(1, min(len(data), random.choice((64, 1024, 1 << 30))) - size))
        data[at:at + size] = (random.choice(WHOLES) % (1 << 8 * size)).to_bytes(size, order)
    return bytes(data)


def reals(random, data):
    data = bytearray(data)
    for _ in range(random.choice((1, 4, 32))):
        at = random.randrange(max(1, len(data) // 4)) * 4
        data[at:at + 4] = struct.pack("<f", random.choice(REALS if random.random() < 0.95 else NO_REALS[:3]))
    return bytes(data)


def cut(random, data):
    return data[:random.randrange(len(data))]


def repeat(random, data):
    """A piece once more, or not at all."""
    start = random.randrange(len(data))
    end = min(len(data), start + random.choice((1, 4, 40, 1000)))
    return data[:start] + data[start:end] * random.choice((0, 2, 2, 200)) + data[end:]


BLUNT = [bytes_, lengths, reals, cut, repeat, number_text]


def value(random, old):
    if isinstance(old, bytes) and old and random.random() < 0.95:
        return random.choice([reals, reals, reals, lengths] + BLUNT[:5])(random, old)
    if isinstance(old, (int, float)) and not isinstance(old, bool) and random.random() < 0.95:
        sharp = random.random() < 0.9
        return random.choice((REALS if sharp else NO_REALS) if isinstance(old, float) else
                             [0, 1, 2, old - 1, old + 1, old * 2, random.randrange(300)] if sharp else WHOLES + [-1])
    if isinstance(old, bool):
        return not old
    return random.choice([0, -1, 2.5, "", "x" * 3000, "\0\u20ac", b"", [], {}, [[]], True, None, random.choice(WHOLES)])


def field(random, tree):
    """Changes, takes out, doubles, retypes or swaps one value somewhere in lists and tables."""
    place = tree
    while True:
        keys = list(place) if isinstance(place, dict) else list(range(len(place)))
        if not keys:
            return
        key = random.choice(keys)
        if isinstance(place[key], (list, dict)) and place[key] and random.random() < 0.985:
            place = place[key]
            continue
        break
    kind = random.randrange(30)
    if kind == 0:
        del place[key]
    elif kind == 1 and isinstance(place, list):
        place.insert(random.randrange(len(place) + 1), place[key])
    elif kind == 2:
        place[key] = place[random.choice(keys)]
    else:
        place[key] = value(random, place[key])


def fields(random, decoded):
    for _ in range(random.choice((1, 1, 1, 2, 4))):
        field(random, decoded)
    return decoded


def in_payload(random, data):
    """Of our own files: what the checksums say of the content is true."""
    try:
        content = cbor.decode(data[32:])
    except Exception:
        return bytes_(random, data)
    # Most of a file are its containers.
    fields(random, content["containers"] if random.random() < 0.8 else content)
    payload = cbor.encode(content)
    return seal(data[:8], random.choice(BLUNT)(random, payload) if random.random() < 0.1 else payload)


def in_json(random, data):
    """Of a glTF file, or of the description in a binary one."""
    start, end = 0, len(data)
    if data[:4] == b"glTF":
        start, end = 20, 20 + struct.unpack_from("<I", data, 12)[0]
    try:
        text = json.dumps(fields(random, json.loads(data[start:end])), default=lambda _: "bytes").encode()
    except ValueError:
        return bytes_(random, data)
    if start == 0:
        return text
    text += b" " * (-len(text) % 4)
    return (data[:8] + struct.pack("<II", len(data) - (end - start) + len(text), len(text)) + data[16:20] + text +
            data[end:])


SHARP = {"kxs": in_payload, "osb": in_payload, "gltf": in_json, "glb": in_json}


def damaged(random, suffix, data, other):
    """`data` with one kind of damage; `other` is the content of another file of this format."""
    if not data:
        return b"\0"
    sharp = SHARP.get(suffix)
    if sharp and random.random() < 0.9:
        return sharp(random, data)
    if random.random() < 0.12:
        return data[:random.randrange(len(data))] + other[random.randrange(len(other) or 1):]
    is_text = b"\0" not in data[:4096]
    return random.choice([number_text, repeat, cut, bytes_] if is_text else BLUNT[:5])(random, data)
