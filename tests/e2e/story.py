"""The film that a test makes of a model."""

MODEL = "glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb"
RIGHT, LEFT = PARTS = "Node 66", "Node 58"  # the covers of its cylinders
LENGTH = 48  # frames that taking them off lasts
TRIGGER = 60  # the frame at which the view jumps
AGAIN = 72  # the frame at which they are taken off once more
END = AGAIN + LENGTH
FRAMES = (0, 12, 24, 36, 48, 60, 71, 72, 84, 96, 108, 119)


def check(frame, seen, start, end):
    """Straight ways from `start` to `end`, where the parts wait until the second clip begins."""
    part = min((frame - (AGAIN if frame >= AGAIN else 0)) / LENGTH, 1.0)
    for name in PARTS:
        place = [a + (b - a) * part for a, b in zip(start[name], end[name])]
        worst = max(abs(a - b) for a, b in zip(seen[name], place))
        assert worst < 0.02, "%s stands at %s at frame %g, not at %s" % (name, seen[name], frame, place)
