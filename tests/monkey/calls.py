"""One call of any function of the application's modules, with values that fit and odd ones."""
import inspect
import random
import re
import sys

import kxAnimWidgets
import kxHost

RARE = {"newScene", "openScene", "importScene", "goToVersion", "render", "renderMovie"}
FUNCTIONS = sorted({(module.__name__, name) for module in (kxHost, kxAnimWidgets) for name, thing in vars(module).items()
                    if callable(thing) and not inspect.isclass(thing) and not name.startswith("__")})
METHODS = sorted({("kxHost." + kind, name) for kind in ("Vec3f", "NodePtr", "AnimNodePtr", "MaterialPtr", "kxNodePtr")
                  for name in dir(getattr(kxHost, kind)) if name != "__class__"})
NUMBERS = 0, 1, 2, 3, 5.5, 0.25, 24, 90
ODD_NUMBERS = (-1, -7, 2 ** 31 - 1, -2 ** 31, 2 ** 32, 2 ** 63, 10 ** 30, 1e9, -1e30, 1e300, float("nan"), float("inf"),
               -float("inf"), True)
ODD_TEXTS = "", "x" * 100000, "a\0b", "\ud800", "\u202e\U0001f600", "../../x", "%s%n", "\n[x]\n= 1", " "
OBJECTS, CLIPS, BLOCKS = ("Box", "Sphere", "Torus", "All"), ("Show", "Inner", "Deep"), ("Sphere", "Rounded Box")
TEXTS = {"kind": ("box", "group", "camera", "spot light", "viewpoint", "variant", "sequence"),
         "channel": ("translation.X", "translation.Y", "rotation.Y", "scale.Z", "visible", "baseColor.R"),
         "before|after": ("constant", "linear", "flat", "hermite", "loop", "loop with offset", "oscillate"),
         "sequence": ("Tour",), "animations": ("all", "clips", "timeline"), "choice": ("Torus", "Plane", "Cone", "Cylinder"),
         "viewpoint": ("Front", "Side"), "set": ("Shapes",), "track": ("Flight",),
         "clip": CLIPS, "path": ("a.kxs", "a.glb", "a.png", "a.gif"), "property": ("value", "text", "enabled"),
         "name": OBJECTS + CLIPS + ("Red", "Tour", "Front", "_play", "_objects", "_current", "keyAll", "New")}
ALL_TEXTS = sorted({str(one) for some in TEXTS.values() for one in some})
handles = []


def begin(seed):
    random.seed(seed)


def number():
    return random.choice(NUMBERS if random.random() < 0.85 else ODD_NUMBERS)


def text(name=""):
    fitting = [some for names, some in TEXTS.items() if re.search(names, name)]
    return random.choice(ODD_TEXTS if random.random() < 0.1 else fitting[0] if fitting else ALL_TEXTS)


def handle(name=""):
    if handles and random.random() < 0.25:
        return random.choice(handles)
    if "aterial" in name and ("NodePtr" not in name or random.random() < 0.2):
        return kxHost.findMaterial(random.choice(("Red", "Glass")))
    if re.search("clip|animation", name) and random.random() < 0.8:
        return kxAnimWidgets.findAnimClip(random.choice(CLIPS))
    if re.search("block", name) or random.random() < 0.3:
        return kxAnimWidgets.findAnimBlock(random.choice(BLOCKS))
    return kxHost.findNode(random.choice(OBJECTS))


def odd():
    knot = []
    knot.append(knot)
    return random.choice([lambda: None, number, text, handle, lambda: b"bytes\0", lambda: knot, lambda: {"a": knot},
                          lambda: [number()] * 100000, lambda: [[number()]] * 9, lambda: object(), lambda: (),
                          lambda: {text(): handle()}, lambda: {1: 2}, lambda: int, lambda: bytearray(3)])()


def step():
    return random.choice([("wait", number()), ("clip", text("clip")), ("viewpoint", text("viewpoint")), ("python", "x = 1"),
                          ("variant", text("set"), text()), ("sequence", text("sequence")), (text(), odd()), odd()])


def fitting(name, kind):
    if random.random() < 0.07:
        return odd()
    if kind == "(float, float)" or "(" in kind and random.random() < 0.5:
        return number(), number()
    if re.search("list|sequence of|vector", kind):
        inner = re.sub(".* of |.*<", "", kind)
        return [fitting(name, inner) for _ in range(random.choice((0, 1, 2, 3, 3, 3, 7)))]
    for words, make in (("Vec3f", lambda: tuple(number() for _ in range(3))), ("step|tuple", step),
                        ("str", lambda: text(name)), ("Ptr|handle", lambda: handle(name + kind)),
                        ("[bB]ool", lambda: number() > 1), ("dict", lambda: {text(): odd() for _ in range(3)})):
        if re.search(words, kind):
            return make()
    return number()


def call(index):
    place, name = random.choice(FUNCTIONS if random.random() < 0.9 else METHODS)
    if name in RARE and random.random() < 0.9:
        return
    owner = kxHost if place.startswith("kxHost") else kxAnimWidgets
    function = getattr(getattr(owner, place.split(".")[1]) if "." in place else owner, name)
    kinds = re.findall(r"@type (\w+): ([^\n]*)", getattr(function, "__doc__", None) or "")
    if not kinds and random.random() < 0.5:
        kinds = [("clip", "string"), ("", "float"), ("", "float")][:random.randrange(4)]
    if "." in place:
        kinds = [("", place), ("", random.choice(("float", "Vec3f", place)))][:random.choice((1, 2))]
    arguments = [fitting(*kind) for kind in kinds] + ([odd()] if random.random() < 0.02 else [])
    if "." in place and random.random() < 0.4:  # the method of another class, or of an object that nobody made
        arguments[0] = random.choice((odd, lambda: type(handle()).__new__(type(handle()))))()
    if name == "saveScene":  # not where pictures go: nothing is taken back after that
        arguments = ["a.kxs"]
    said = ", ".join(repr(a)[:60] for a in arguments)
    print(index, place, name, said.encode("ascii", "replace").decode(), file=sys.stderr)
    try:
        result = function(*arguments)
    except Exception as error:
        print("  ", type(error).__name__, str(error)[:100].encode("ascii", "replace").decode(), file=sys.stderr)
        return
    handles.extend(one for one in (result if isinstance(result, (list, tuple)) else [result])
                   if "Ptr" in type(one).__name__)
    del handles[:-200]
