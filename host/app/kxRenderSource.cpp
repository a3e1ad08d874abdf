#include "kxRenderSource.h"

#include <animation/kxFrameTime.h>
#include <kxAnimManager.h>
#include <osg/AnimCores.h>

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace
{
bool isClip(const osg::NodePtr& node)
{
    return node != osg::NullFC && osg::AnimClipPtr::dcast(node->getCore()) != osg::NullFC;
}

int toFrame(double frame)
{
    return int(std::clamp(frame, -double(kxRenderSource::LargestFrame), double(kxRenderSource::LargestFrame)));
}
} // namespace

std::vector<kxRenderSource::Clip> kxRenderSource::clips()
{
    std::vector<Clip> clips;
    const osg::NodePtr root = kxAnimManager::the()->clipStructureRoot();
    osg::traverse(root,
                  [&](const osg::NodePtr& node)
                  {
                      if (!isClip(node) || node == root)
                          return osg::Action::Continue;
                      Clip clip = {osg::AnimNodePtr::dcast(node), QString::fromStdString(node->getNodeName()), 0};
                      for (osg::NodePtr above = node->getParent(); above != root && isClip(above);
                           above = above->getParent())
                          ++clip.depth;
                      clips.push_back(clip);
                      return osg::Action::Continue;
                  });
    return clips;
}

bool kxRenderSource::setName(const QString& name, QString& error)
{
    _clip = osg::AnimNodePtr();
    if (name.isEmpty())
        return true;
    QStringList names;
    for (const Clip& clip : clips())
    {
        if (clip.name == name)
        {
            _clip = clip.node;
            return true;
        }
        names << clip.name;
    }
    names.removeDuplicates();
    error = names.isEmpty()
                ? QCoreApplication::translate("kxRenderSource", "There is no clip '%1'; the scene has none.").arg(name)
                : QCoreApplication::translate("kxRenderSource", "There is no clip '%1'; there are: %2")
                      .arg(name, names.join(QStringLiteral(", ")));
    return false;
}

kxRenderSource::Range kxRenderSource::range() const
{
    const kxAnimManager* const manager = kxAnimManager::the();
    if (_clip == osg::NullFC)
        return {toFrame(manager->detailedRangeStart()), toFrame(manager->detailedRangeEnd())};
    const kxAnimManager::kxAnimInfo info = manager->getInfo(_clip);
    const auto frameOf = [manager](float seconds) { return kxFrameTime::frame(double(seconds), manager->fps()); };
    return {toFrame(std::floor(frameOf(info.start))), toFrame(std::ceil(frameOf(info.end)))};
}

void kxRenderSource::show(int frame) const
{
    if (_clip == osg::NullFC)
        kxAnimManager::the()->setCurrentFrame(frame, false, true);
    else
        kxAnimManager::the()->evaluateByFrame(_clip, frame, false, false, false);
}
