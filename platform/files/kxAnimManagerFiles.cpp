#include <kxAnimManager.h>

#include <animation/kxAnimManagerPrivate.h>
#include <files/scene/kxAnimFile.h>
#include <kxLog.h>

using namespace osg;

bool kxAnimManager::saveAnimations(const std::string& fileName, const FieldContainerPtr& container)
{
    std::vector<AnimNodePtr> animations;
    if (const AnimNodePtr node = AnimNodePtr::dcast(container))
        animations.push_back(node);
    else if (const AnimAttachmentPtr attachment = getAnimAttachment(container))
        attachment->getTopLevelAnimations(animations, false);
    QString reason = QStringLiteral("the object has no animations.");
    const QString path = QString::fromStdString(fileName);
    if (!animations.empty() && kxAnimFile::write(path, animations, reason))
    {
        kxLog::info(QStringLiteral("Saved %1 to \"%2\"")
                        .arg(animations.size() == 1 ? QStringLiteral("1 animation")
                                                    : QStringLiteral("%1 animations").arg(animations.size()),
                             path));
        return true;
    }
    kxLog::error(QStringLiteral("Can't save animations to \"%1\": %2").arg(path, reason));
    return false;
}

int kxAnimManager::loadAnimations(const std::string& fileName, const FieldContainerPtr& container)
{
    const bool isObject = AttachmentContainerPtr::dcast(container) != NullFC && AnimNodePtr::dcast(container) == NullFC;
    std::vector<AnimNodePtr> animations;
    QString reason = QStringLiteral("only objects and materials take animations.");
    if (!isObject || !kxAnimFile::read(QString::fromStdString(fileName), animations, reason))
    {
        kxLog::error(
            QStringLiteral("Can't load animations from \"%1\": %2").arg(QString::fromStdString(fileName), reason));
        return -1;
    }
    for (const AnimNodePtr& animation : animations)
        addAnimation(container, animation);
    return int(animations.size());
}
