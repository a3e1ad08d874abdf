"""Makes an animation with the wizard as a user does: opens it from the clip maker, captures an object at two places, looks
at the preview, finishes, and finds the clip in the clip maker.

e2e_wizard.py <application> <folder for pictures of failures>
"""
import os
import sys

import cases
import desktop

HERE = os.path.dirname(os.path.abspath(__file__))
SCENE = os.path.join(HERE, "..", "..", "examples", "turntable.kxs")
WIZARD = "kxAnimWizardUI"
NEXT, FINISH = WIZARD + "/__qt__passive_wizardbutton1", WIZARD + "/qt_wizard_finish"
OBJECT = "Fan"
LIFT = 3.0  # how far the object is moved between the captures
PICTURES_OF_SUCCESS = os.environ.get("KX_E2E_PICTURES")  # a folder for pictures of what the wizard looks like
SEEN = {}


def height(application):
    return application.ask("channelValue(findNode(%r), 'translation.Y')" % OBJECT)


def move_to(application, value):
    application.run("setChannelValue(findNode(%r), 'translation.Y', %r)" % (OBJECT, value))


def keep_picture(display, name):
    if PICTURES_OF_SUCCESS:
        display.picture(os.path.join(PICTURES_OF_SUCCESS, name + ".png"))


def opens_it_from_the_clip_maker(application, display):
    application.keys("alt+v")
    application.click_entry("", "Clips")
    application.wait_for("widgetRect('_clipView')[3] > 80")
    application.click("AnimationWizardButton")
    display.wait_for_window("Animation Wizard")
    keep_picture(display, "choice")
    application.click(NEXT)  # nothing is selected
    display.wait_for_window("Animation Wizard...")
    application.keys("Return")
    application.run("selectNodes([findNode(%r)])" % OBJECT)
    application.click(NEXT)
    application.wait_for("widgetRect('_captureStart')[3] > 80")


def captures_two_states(application, display):
    SEEN["start"] = height(application)
    application.click("_captureStart")
    application.wait_for("widgetProperty('_captureStart', 'text') == ''")
    move_to(application, SEEN["start"] + LIFT)
    application.click("_captureEnd")
    application.wait_for("widgetProperty('_captureEnd', 'text') == ''")
    keep_picture(display, "captured")


def previews_it(application, display):
    application.click("_preview")
    application.wait_for("channelValue(findNode(%r), 'translation.Y') < %r" % (OBJECT, SEEN["start"] + LIFT))
    application.wait_for("not widgetProperty('_preview', 'checked')")
    assert abs(height(application) - SEEN["start"] - LIFT) < 1e-4, height(application)
    assert application.shown(WIZARD + "/_duration", "enabled")


def finishes_and_finds_the_clip(application, display):
    application.click(WIZARD + "/_name", count=3)
    application.type("Rise")
    application.keys("Return")
    application.click(FINISH)
    display.wait_for_window("kxhost")
    application.wait_for("widgetProperty('_statsFrame/_duration', 'value') == 48")  # the new clip is shown
    left, top, _, row_height = application.ask("rowRect('_clips', ['Clip'])")
    application.click_at((left - 10, top + row_height // 2))
    application.wait_for("['Clip', 'Rise'] in widgetRows('_clips')")
    application.run("sendMessage('framePlayerFrameChanged', {'frame': 24.0})")
    assert abs(height(application) - SEEN["start"] - LIFT / 2) < 1e-3, height(application)
    keep_picture(display, "finished")


def cancels_a_preview(application, display):
    application.run("sendMessage('showAnimationWizard', {})")
    display.wait_for_window("Animation Wizard")
    application.click(NEXT)
    application.wait_for("widgetRect('_captureStart')[3] > 80")
    application.click("_captureStart")
    before = height(application)
    move_to(application, before + LIFT)
    application.click("_captureEnd")
    application.click("_preview")
    application.wait_for("channelValue(findNode(%r), 'translation.Y') < %r" % (OBJECT, before + LIFT))
    application.keys("Escape")
    display.wait_for_window("kxhost")
    application.wait_for("abs(channelValue(findNode(%r), 'translation.Y') - %r) < 1e-4" % (OBJECT, before + LIFT))


HOST, PICTURES = sys.argv[1:]


def main(folder):
    display = desktop.Display(folder)
    application = None
    try:
        application = desktop.Application(HOST, display, folder, SCENE)
        tests = [opens_it_from_the_clip_maker, captures_two_states, previews_it, finishes_and_finds_the_clip,
                 cancels_a_preview]
        return cases.run(tests, application, display,
                         on_failure=lambda name: display.picture(os.path.join(PICTURES, name + ".png")))
    finally:
        if application:
            application.close()
        display.close()


cases.limited(main)
