"""A bearing comes apart and together again; a clipping plane opens it.

Each part has a block. One clip moves them apart one after the other, a second one, the same flipped, puts them
together. A trigger switches the look of the case while the parts are apart.
"""

from kxStage import *

STEP = 6  # frames from one part to the next
APART = 24  # frames that one part moves

begin((3.1, 3.0, 5.9), (0.55, 1.45, 0), floor=None, lights=False, lastFrame=144)
steel = addMaterial("Steel", (0.62, 0.64, 0.67), 0.22, 1)
dark = addMaterial("Burnished steel", (0.16, 0.17, 0.2), 0.3, 1)
brass = addMaterial("Brass", (0.83, 0.6, 0.26), 0.25, 1)
red = addMaterial("Red enamel", (0.55, 0.03, 0.02), 0.25)
blue = addMaterial("Blue enamel", (0.02, 0.09, 0.35), 0.25)

whole = group("Bearing", (0, 1.6, 0))
parts = [
    # name, kind, material, place, scale, way apart
    ("Back plate", "cylinder", dark, (-0.62, 0, 0), (1.9, 0.14, 1.9), -1.7),
    ("Outer ring", "torus", steel, (0, 0, 0), (1.5, 3.0, 1.5), -0.75),
    ("Cage", "torus", brass, (0, 0, 0), (1.05, 1.2, 1.05), 0.35),
    ("Inner ring", "torus", steel, (0, 0, 0), (0.72, 2.6, 0.72), 1.1),
    ("Shaft", "cylinder", steel, (0.1, 0, 0), (0.5, 2.4, 0.5), 2.6),
]
moving = []
for name, kind, material, at, scale, way in parts:
    moving.append((body(kind, name, material, at, (0, 0, 90), scale, whole), at, way))
balls = group("Balls", (0, 0, 0), whole)
for i in range(10):
    angle = 2 * math.pi * i / 10
    body("sphere", "Ball", brass, (0, 0.62 * math.cos(angle), 0.62 * math.sin(angle)), scale=(0.27, 0.27, 0.27),
         parent=balls)
moving.insert(3, (balls, (0, 0, 0), 0.72))
case = [body("cylinder", "Red cap", red, (0.58, 0, 0), (0, 0, 90), (1.85, 0.16, 1.85), whole),
        body("cylinder", "Blue cap", blue, (0.58, 0, 0), (0, 0, 90), (1.85, 0.16, 1.85), whole)]
cap = addVariantSet(case, "Cap")
moving.append((cap, (0, 0, 0), 3.1))

apart = createAnimClip("Come apart", kxNodePtr())
together = createAnimClip("Come together", kxNodePtr())
for i, (node, at, way) in enumerate(reversed(moving)):
    x, y, z = at
    addTranslationControlPoints(node, [0.0, APART / 24], [at, (x + way, y, z)], False)
    block = blockOf(node)
    addToAnimClip(apart, block, i * STEP)
    addToAnimClip(together, block, i * STEP)
setAnimClipFlipped(together, True)
show = createAnimClip("Show", kxNodePtr())
addToAnimClip(show, apart, 0)
addToAnimClip(show, together, 0)
setAnimClipStart(together, 84, False)
addTrigger(show, "variant", "Cap/Blue cap", 72)

plane = clippingPlane(True)
place(plane, (0.6, 1.6, 2), scale=(7, 3, 3))
# It comes in while the parts are apart, and leaves before they are together again.
addTranslationControlPoints(plane, [1.5, 2.5, 3.5, 4.5],
                            [(0.6, 1.6, z) for z in (2.0, 0.02, 0.02, 2.0)], False)
finish(66, show)
