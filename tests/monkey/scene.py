"""A scene with something of each kind: nested clips, camera tracks, triggers, sequences, variants, materials, lights,
and animated models where the machine has them."""
import os

newScene()


def make_scene():
    paint = [addMaterial(name, color) for name, color in (("Red", (1, 0, 0)), ("Glass", (0.5, 0.8, 0.9)))]
    kinds = "box", "rounded box", "sphere", "cylinder", "cone", "torus", "plane", "point light", "spot light", "camera"
    parent = addObject("group", "All")
    made = []
    for i, kind in enumerate(kinds):
        made.append(addObject(kind, kind.title(), parent if i % 3 else made[0] if made else None,
                              paint[i % 2] if i < 7 else None))
        setChannelValue(made[-1], "translation.X", 1.5 * i - 6)
    for path in ("glTF2/simple_skin/simple_skin.gltf", "glTF2/AnimatedMorphCube/glTF/AnimatedMorphCube.gltf",
                 "FBX/animation_with_skeleton.fbx"):
        if os.path.exists("/usr/share/assimp/models/" + path):
            importScene("/usr/share/assimp/models/" + path)
    blocks = []
    for i, node in enumerate(made[:4]):
        addTranslationControlPoints(node, [0.0, 0.5, 1.0 + i], [(0, i, 0), (i, 2, 3), (1, 1, 1)], i % 2 == 0)
        addRotationControlPoints(node, [0.25, 2.0], [(0, 0, 0), (0, 90.0 * i, 45)])
        if i:
            createAnimationBlockForNode(node, i > 1)
            blocks.append(findAnimBlock(node.name))
    clips = [createAnimClip(name, kxNodePtr()) for name in ("Show", "Inner", "Deep")]
    for i, clip in enumerate(clips):
        for j, block in enumerate(blocks):
            addToAnimClip(clip, block, 10 * i + 30 * j)
    addToAnimClip(clips[1], clips[2], 70)
    addToAnimClip(clips[0], clips[1], 90)
    views = [addViewpoint(name) for name in ("Front", "Side")]
    addCameraTrack(views, 1.5, "Flight")
    addVariantSet([made[5], made[6]], "Shapes")
    steps = [("viewpoint", "Front"), ("variant", "Shapes"), ("wait", 0.2), ("clip", "Deep"), ("python", "print(1)")]
    addSequence(steps, "Tour")
    for i, what in enumerate((("viewpoint", "Side"), ("variant", "Shapes"), ("sequence", "Tour"))):
        addTrigger(clips[0], what[0], what[1], 7 + 20 * i)
    setFrameRange(0, 120)
    sendMessage("pastedAnimations")


make_scene()
