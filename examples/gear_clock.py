"""A clock whose gears turn without end.

Each wheel has two keys only: a turn of one tooth's share. Behind the last key the curve goes on by its infinity mode,
so that the movement has no end and no seam: "loop with offset" for the hands, which tick, "linear" for the wheels, and
"oscillate" for the pendulum.
"""

from kxStage import *

begin((0.6, 3.0, 8.4), (0, 2.3, 0), lights=False, lastFrame=240)
brass = addMaterial("Brass", (0.86, 0.6, 0.24), 0.4, 0.75)
copper = addMaterial("Copper", (0.8, 0.36, 0.2), 0.4, 0.75)
steel = addMaterial("Steel", (0.55, 0.57, 0.6), 0.25, 1)
black = addMaterial("Black lacquer", (0.015, 0.016, 0.02), 0.18)
ivory = addMaterial("Ivory", (0.82, 0.78, 0.68), 0.45)

body("rounded box", "Base", black, (0, 0.15, -0.3), scale=(5.2, 0.3, 1.6))
for x in (-2.2, 2.2):
    body("cylinder", "Pillar", brass, (x, 2.2, -0.3), scale=(0.16, 3.9, 0.16))
body("rounded box", "Beam", black, (0, 4.2, -0.3), scale=(5.2, 0.24, 0.6))


def gear(name, material, teeth, at):
    """A wheel in x and y, its teeth one module of 0.11 wide."""
    radius = teeth * 0.055
    wheel = group(name, at)
    body("cylinder", "Disc", material, (0, 0, 0), (90, 0, 0), (2 * radius - 0.12, 0.12, 2 * radius - 0.12), wheel)
    body("cylinder", "Hub", steel, (0, 0, 0.08), (90, 0, 0), (0.22, 0.2, 0.22), wheel)
    for i in range(teeth):
        angle = 2 * math.pi * i / teeth
        body("box", "Tooth", material, (radius * math.cos(angle), radius * math.sin(angle), 0),
             (0, 0, math.degrees(angle)), (0.17, 0.085, 0.12), wheel)
    for i in range(5):
        angle = 2 * math.pi * (i + 0.5) / 5
        body("cylinder", "Hole", black, (0.55 * radius * math.cos(angle), 0.55 * radius * math.sin(angle), 0.005),
             (90, 0, 0), (0.34 * radius, 0.125, 0.34 * radius), wheel)
    return wheel


# Wheels that mesh: their distance is the sum of the radii, their speeds go as the teeth, the other way round.
DEGREES_A_SECOND = 24.0
train = (("First wheel", brass, 24, (-1.0, 2.05, 0), 0.0), ("Second wheel", copper, 12, (0.98, 2.05, 0), 15.0),
         ("Third wheel", brass, 18, (0.98 + 1.65 * math.cos(math.radians(70)),
                                     2.05 + 1.65 * math.sin(math.radians(70)), 0), 0.0))
speed = DEGREES_A_SECOND
teethBefore = None
for name, material, teeth, at, phase in train:
    wheel = gear(name, material, teeth, at)
    speed = speed if teethBefore is None else -speed * teethBefore / teeth
    teethBefore = teeth
    addRotationControlPoints(wheel, [0.0, 1.0], [(0, 0, phase), (0, 0, phase + speed)])
    setInfinity(wheel, "rotation.Z", "linear", "linear")

dial = group("Dial", (-1.0, 2.05, 0.16))
body("cylinder", "Rim", steel, (0, 0, -0.03), (90, 0, 0), (1.62, 0.06, 1.62), dial)
body("cylinder", "Face", ivory, (0, 0, 0), (90, 0, 0), (1.48, 0.03, 1.48), dial)
for hour in range(12):
    angle = math.radians(30 * hour)
    body("box", "Mark", black, (0.63 * math.sin(angle), 0.63 * math.cos(angle), 0.012), (0, 0, -30 * hour),
         (0.035, 0.13 if hour % 3 == 0 else 0.07, 0.02), dial)
for name, length, width, seconds in (("Second hand", 0.72, 0.02, 1.0), ("Minute hand", 0.58, 0.045, 60.0)):
    hand = group(name, (0, 0, 0.03), dial)
    body("box", "Blade", steel if width < 0.03 else black, (0, length / 2 - 0.08, 0), scale=(width, length, 0.015),
         parent=hand)
    # A tick: it stands still, jumps six degrees, and stands again.
    addRotationControlPoints(hand, [0.0, 0.9 * seconds, seconds], [(0, 0, 0), (0, 0, 0), (0, 0, -6)])
    setInfinity(hand, "rotation.Z", "loop with offset", "loop with offset")

pendulum = group("Pendulum", (2.0, 4.08, 0.1))
body("cylinder", "Rod", steel, (0, -1.3, 0), scale=(0.05, 2.6, 0.05), parent=pendulum)
body("sphere", "Bob", copper, (0, -2.6, 0), scale=(0.6, 0.6, 0.22), parent=pendulum)
# One swing from side to side, with the slow ends of a real one.
times = [i / 12 for i in range(13)]
addRotationControlPoints(pendulum, times, [(0, 0, 14 * math.cos(math.pi * t)) for t in times])
setInfinity(pendulum, "rotation.Z", "oscillate", "oscillate")
finish(36)
