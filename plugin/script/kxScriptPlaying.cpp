#include <boost/python.hpp>

#include <script/kxScriptPlaying.h>

#include <script/kxScriptDoc.h>

#include <kxAnimManager.h>
#include <kxController.h>
#include <osg/ChangeList.h>
#include <osg/Finite.h>

namespace bp = boost::python;

namespace
{
osg::AnimNodePtr targetOf(const std::string& name)
{
    return name.empty() ? osg::AnimNodePtr() : kxAnimManager::the()->find(name);
}

/// Start and end of 0 leave an earlier range in force; a range that isn't finite is none.
void setRange(const osg::AnimNodePtr& animation, float start, float end)
{
    if ((start == 0 && end == 0) || !osg::isFinite(start, end))
        return;
    const double fps = kxAnimManager::the()->fps();
    animation->setUsePlayRange(true);
    animation->setPlayRange(osg::Pnt2f(float(start / fps), float(end / fps)));
    osg::markChanged(animation, osg::AnimNodeBase::UsePlayRangeFieldMask);
}
} // namespace

void kxScriptPlaying::play(const std::string& name)
{
    if (!name.empty())
        kxController::playAnimation(targetOf(name));
}

void kxScriptPlaying::playRange(const std::string& name, float start, float end)
{
    const osg::AnimNodePtr animation = targetOf(name);
    if (animation == osg::NullFC)
        return;
    setRange(animation, start, end);
    play(name);
}

void kxScriptPlaying::stop(const std::string& name)
{
    const osg::AnimNodePtr animation = targetOf(name);
    if (animation == osg::NullFC)
        return;
    animation->setPlaying(false);
    animation->setUsePlayRange(false);
    osg::markChanged(animation, osg::AnimNodeBase::UsePlayRangeFieldMask | osg::AnimNodeBase::PlayingFieldMask);
}

void kxScriptPlaying::reset(const std::string& name)
{
    const osg::AnimNodePtr animation = targetOf(name);
    if (animation != osg::NullFC)
        kxAnimManager::the()->reset(animation, false);
}

void kxScriptPlaying::enqueue(const std::string& name)
{
    const osg::AnimNodePtr animation = targetOf(name);
    if (animation != osg::NullFC)
        kxAnimManager::the()->enqueue(animation, true);
}

void kxScriptPlaying::enqueueRange(const std::string& name, float start, float end)
{
    const osg::AnimNodePtr animation = targetOf(name);
    if (animation == osg::NullFC)
        return;
    setRange(animation, start, end);
    kxAnimManager::the()->enqueue(animation, true);
}

void kxScriptPlaying::pause(const std::string& name, bool pause)
{
    const osg::AnimNodePtr animation = targetOf(name);
    if (animation != osg::NullFC)
        kxAnimManager::the()->pause(animation, pause);
}

bool kxScriptPlaying::isPlaying(const std::string& name)
{
    return !name.empty() && kxAnimManager::the()->isPlaying(name);
}

void kxScriptPlaying::define()
{
    const kxScriptDoc::Parameter name = {"name", "name of the animation object", "string"};
    bp::def("playAnim", play);
    bp::def("playAnim", playRange);
    kxScriptDoc::define(
        "stopAnim", stop, bp::args("name"),
        kxScriptDoc("Stops the animation evaluation of an animation block or animation clip via name.", {name}));
    kxScriptDoc::define("resetAnim", reset, bp::args("name"),
                        kxScriptDoc("Resets the animation block or clip via name.", {name}));
    kxScriptDoc::define(
        "playCAnimation", enqueue, bp::args("name"),
        kxScriptDoc("Plays an animation block or animation clip via name. This function returns immediatly.", {name}));
    bp::def("playCAnimation", enqueueRange);
    bp::scope().attr("playCAnimation").attr("__doc__") = bp::object(); // else it repeats that of the first
    bp::def("pauseCAnimation", pause);
    kxScriptDoc::define("resetCAnimation", reset, bp::args("name"),
                        kxScriptDoc("Resets the animation block or clip via name.", {name}));
    kxScriptDoc::define("isPlaying", isPlaying,
                        kxScriptDoc("Returns if object with given name is playing.", {name})
                            .returns("True if playing, false otherwise", "bool"));
}
