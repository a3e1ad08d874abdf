"""A camera circles a group of bodies, and triggers in a clip jump to close views.

The camera's turn is one rotation of the node that it hangs on. Its clip repeats without end; beside it stand triggers
that show viewpoints when playing passes over them.
"""

from kxStage import *

SECONDS = 8.0
BODIES = (("sphere", (0.95, 0.93, 0.88), 0.08, 1.0), ("rounded box", (0.03, 0.25, 0.28), 0.2, 0.0),
          ("torus", (0.85, 0.55, 0.2), 0.18, 1.0), ("cone", (0.6, 0.08, 0.06), 0.3, 0.0),
          ("cylinder", (0.12, 0.13, 0.16), 0.25, 0.0))

camera = begin((0, 2.6, 8.2), (0, 0.75, 0), lights=False, lastFrame=int(SECONDS * 24))
setChannelValue(camera, "visible", 0)  # the one that turns is looked through
white = addMaterial("Pedestal", (0.75, 0.74, 0.71), 0.6)
body("cylinder", "Pedestal", white, (0, 0.1, 0), scale=(6.4, 0.2, 6.4))
names = []
for i, (kind, color, roughness, metallic) in enumerate(BODIES):
    angle = 2 * math.pi * i / len(BODIES)
    material = addMaterial(kind.title(), color, roughness, metallic)
    x, z = 1.9 * math.sin(angle), 1.9 * math.cos(angle)
    rotation = (90, 0, math.degrees(-angle)) if kind == "torus" else (0, math.degrees(angle), 0)
    shape = body(kind, kind.title(), material, (x, 0.78 if kind == "torus" else 0.75, z), rotation, (1.1, 1.1, 1.1))
    names.append(shape.name)
    close = addViewpoint("Close to " + shape.name)
    look(close, (x * 2.3, 1.6, z * 2.3), (x, 0.7, z))
glass = addMaterial("Glass", (0.5, 0.75, 0.85), 0.05)
setChannelValue(glass, "opacity", 0.35)
body("sphere", "Glass ball", glass, (0, 0.95, 0), scale=(1.5, 1.5, 1.5))

arm = group("Arm", (0, 0, 0))
turning = addObject("camera", "Turning camera", arm)
look(turning, (0, 2.9, 7.6), (0, 0.6, 0))
addRotationControlPoints(arm, [0.0, SECONDS], [(0, 0, 0), (0, 360, 0)])

tour = createAnimClip("Tour", kxNodePtr())
addToAnimClip(tour, blockOf(arm), 0)
for i, name in enumerate(names):
    addTrigger(tour, "viewpoint", "Close to " + name, (i + 0.5) * SECONDS * 24 / len(names))
setCycles(tour, -1)
finish(20, tour)
