"""Opens models that others made in the application's window, plays them by a click, and compares what the application
shows at each key time with what the file says.

e2e_models.py <application> <folder for pictures of failures>
"""
import os

import desktop
import fixtures
import models
import poses


def values_of(application, names):
    return application.ask("values(%r, %r)" % (names, poses.CHANNELS))


def plays(application, names):
    """Presses play, sees frames and values go on, and stops."""
    start = application.shown("_rangeStart")
    application.click("_gotoStart")
    desktop.until("the first frame", lambda: application.shown("_current") == start)
    frames, seen = [start], [values_of(application, names)]
    application.click("_play")

    def moves_on():
        frame = application.shown("_current")
        if frame != frames[-1]:
            frames.append(frame)
            seen.append(values_of(application, names))
        return len(frames) > 5
    desktop.until("five more frames after %s" % frames, moves_on)
    assert any(later > earlier for earlier, later in zip(frames[1:], frames[2:])), frames
    assert any(values != seen[0] for values in seen), "nothing moves at frames %s" % frames
    assert not application.shown("_gotoStart", "enabled"), "one can jump while it plays"
    application.click("_stop")
    desktop.until("the stop at the first frame", lambda: application.shown("_current") == start and
                  application.shown("_gotoStart", "enabled"))
    assert values_of(application, names) == seen[0], "stopping doesn't bring the first frame's values back"


def agrees(application, expected):
    """Sets each key time of the file and compares."""
    times = sorted({seconds for keys in expected.values() for seconds in keys})
    for seconds in times:
        application.set_frame(seconds * fixtures.FPS)
        names = [name for name in expected if seconds in expected[name]]
        for name, values in values_of(application, names).items():
            poses.check("%s at %g s" % (name, seconds), values, expected[name][seconds])


def try_model(application, path, expected):
    application.open_file(path)
    names = list(expected)
    missing = [name for name in names if not application.ask("bool(find(%r))" % name)]
    assert not missing, "objects %s of %s are missing" % (missing, path)
    last = max(seconds for keys in expected.values() for seconds in keys) * fixtures.FPS
    assert abs(application.shown("_end") - last) <= 1, "the range ends at %s, the file at %g" % (
        application.shown("_end"), last)
    plays(application, names)
    agrees(application, expected)


def gltf_skin(application, folder):
    path = os.path.join(models.folder(), "glTF2/simple_skin/simple_skin.gltf")
    # The file names nothing: each object is called by its index.
    try_model(application, path, models.read_gltf(path, lambda index, node: "Node %d" % index))


def gltf_interpolations(application, folder):
    path = os.path.join(folder, "movers.glb")
    fixtures.write_movers(path)
    try_model(application, path, models.read_gltf(path, between=("Mover", "Slider", "Pulser")))


def gltf_engine(application, folder):
    """Nothing moves in this file, and it stands as the file says, down to the last of its 82 objects."""
    path = os.path.join(models.folder(), "glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb")
    application.open_file(path)
    expected = models.read_gltf_tree(path, "Root")
    assert len(expected) == 82, len(expected)
    for name, values in values_of(application, list(expected)).items():
        poses.check(name, values, expected[name])


def collada_bones(application, folder):
    path = os.path.join(models.folder(), "Collada/box_nested_animation.dae")
    try_model(application, path, models.read_collada(path))


def x_joints(application, folder):
    path = os.path.join(models.folder(), "X/anim_test.x")
    try_model(application, path, models.read_x(path))


def fbx_skeleton(application, folder):
    path = os.path.join(models.folder(), "FBX/animation_with_skeleton.fbx")
    try_model(application, path, models.read_fbx(path))


def damaged_model_keeps_the_scene(application, folder):
    """The error dialog names the file, and the scene before it stays."""
    before = application.shown("_mainWindow", "windowTitle")
    path = os.path.join(folder, "cut.glb")
    fixtures.write_movers(path)
    with open(path, "r+b") as file:
        file.truncate(os.path.getsize(path) - 200)
    application.keys("ctrl+o")
    application.answer_file_dialog("Open", path, next_window="can't be opened")
    application.keys("Return")
    assert application.shown("_mainWindow", "windowTitle") == before


desktop.tell([gltf_skin, gltf_interpolations, gltf_engine, collada_bones, x_joints, fbx_skeleton,
              damaged_model_keeps_the_scene])
