"""One call of any function of the application's modules with values that fit, and with odd ones."""
import inspect
import os
import random
import re
import sys

import kxAnimWidgets
import kxHost

RARE = {"newScene", "openScene", "importScene", "goToVersion", "render", "renderMovie"}
FUNCTIONS = sorted({(module.__name__, name) for module in (kxHost, kxAnimWidgets) for name, thing in vars(module).items()
                    if callable(thing) and not inspect.isclass(thing) and not name.startswith("__")})
METHODS = sorted({("kxHost." + kind, name) for kind in ("Vec3f", "NodePtr", "AnimNodePtr", "MaterialPtr", "kxNodePtr")
                  for name in dir(getattr(kxHost, kind)) if name not in ("__class__", "__reduce__", "__reduce_ex__")})
NUMBERS = 0, 1, 2, 5.5, 0.25, 24, 90
ODD_NUMBERS = (-1, -7, 2 ** 31 - 1, -2 ** 31, 2 ** 32, 2 ** 63, 10 ** 30, 1e9, -1e30, 1e300, float("nan"), float("inf"),
               -float("inf"), True)
ODD_TEXTS = "", "x" * 100000, "a\0b", "\ud800", "\u202e\U0001f600", "../../x", "%s%n", "\n[x]\n= 1", " "
TEXTS = ("Box", "Sphere", "Show", "Inner", "Deep", "Tour", "Flight", "Front", "Shapes", "translation.X", "rotation.Y",
         "visible", "baseColor.R", "constant", "linear", "loop", "oscillate", "box", "group", "camera", "viewpoint",
         "variant", "sequence", "clips", "a.kxs", "a.glb", "a.png", "a.gif", "_view", "_play", "value", "keyAll")
handles = []


def begin(seed):
    random.seed(seed)


def number():
    return random.choice(NUMBERS if random.random() < 0.7 else ODD_NUMBERS)


def text():
    return random.choice(TEXTS if random.random() < 0.8 else ODD_TEXTS)


def handle():
    names = [lambda: kxHost.findNode(text()), lambda: kxAnimWidgets.findAnimClip(random.choice(TEXTS)),
             lambda: kxAnimWidgets.findAnimBlock(random.choice(TEXTS)), lambda: kxHost.findMaterial("Red")]
    if handles and random.random() < 0.5:
        return random.choice(handles)
    try:
        return random.choice(names)()
    except Exception:
        return kxHost.NodePtr()


def odd():
    knot = []
    knot.append(knot)
    return random.choice([lambda: None, number, text, handle, lambda: b"bytes\0", lambda: knot, lambda: {"a": knot},
                          lambda: [number()] * 100000, lambda: [[number()]] * 9, lambda: object(), lambda: (),
                          lambda: {text(): handle()}, lambda: {1: 2}, lambda: int, lambda: bytearray(3)])()


def step():
    return random.choice([("wait", number()), ("clip", text()), ("start", text()), ("viewpoint", text()), ("sequence", text()),
                          ("variant", text(), text()), ("python", "x = 1"), (text(), odd()), odd()])


def fitting(kind):
    if random.random() < 0.25:
        return odd()
    if "list" in kind or "sequence of" in kind or "tuple" in kind:
        inner = kind.split(" of ", 1)[1] if " of " in kind else random.choice(("float", "string", "steps"))
        return [fitting(inner) for _ in range(random.choice((0, 1, 2, 3, 3, 7)))]
    for words, make in ((("Vec3f", "vector"), lambda: random.choice((tuple, list))(number() for _ in range(3))),
                        (("step",), step), (("Ptr", "handle"), handle), (("str",), text), (("bool",), lambda: number() > 1),
                        (("dict",), lambda: {text(): odd() for _ in range(3)}), (("int", "float"), number)):
        if any(word in kind for word in words):
            return make()
    return random.choice((number, text, handle))()


def call(index):
    place, name = random.choice(FUNCTIONS if random.random() < 0.9 else METHODS)
    if name in RARE and random.random() < 0.9:
        return
    owner = kxHost if place.startswith("kxHost") else kxAnimWidgets
    function = getattr(getattr(owner, place.split(".")[1]) if "." in place else owner, name)
    kinds = re.findall(r"@type \w+: ([^\n]*)", getattr(function, "__doc__", None) or "")
    if "." in place:
        kinds = [place, random.choice(("float", "Vec3f", place))][:random.choice((1, 2))]
    arguments = [fitting(kind) for kind in kinds]
    if random.random() < 0.05:
        arguments = arguments[:-1] if random.random() < 0.5 else arguments + [odd()]
    print(index, place, name, ", ".join(repr(a)[:60] for a in arguments).encode("ascii", "replace").decode(), file=sys.stderr)
    if not callable(function):
        return
    try:
        result = function(*arguments)
    except Exception as error:
        print("  ", type(error).__name__, str(error)[:100].encode("ascii", "replace").decode(), file=sys.stderr)
        return
    for found in result if isinstance(result, (list, tuple)) else [result]:
        if "Ptr" in type(found).__name__:
            handles.append(found)
    del handles[:-200]
