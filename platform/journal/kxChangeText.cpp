#include <journal/kxChangeText.h>

#include <animation/kxChannelTarget.h>
#include <files/scene/kxFieldCodec.h>
#include <files/text/kxChangeWords.h>
#include <files/text/kxFieldWords.h>
#include <files/text/kxKeyChange.h>
#include <journal/kxContainerRecord.h>
#include <kxAnimManager.h>
#include <osg/AnimAttachments.h>
#include <osg/FieldContainerFactory.h>

#include <QCoreApplication>

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>

using namespace osg;

namespace
{
constexpr qint64 MostBytes = 400000;  ///< of records of curves; where there is more, no frames are named
constexpr qint64 MostWords = 4000000; ///< of all records; of more a sentence isn't worth the time

typedef MField<CCPnt, 0> Keys;
typedef kxJournal::Change Change;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxChangeText", text);
}

kxChangeWords::State stateOf(const QByteArray& record)
{
    kxChangeWords::State state;
    if (record.isEmpty())
        return state;
    const kxContainerRecord::Content content = kxContainerRecord::read(record);
    state.type = content.type;
    state.core = content.structure.core;
    state.children.assign(content.structure.children.begin(), content.structure.children.end());
    state.attachments.assign(content.structure.attachments.begin(), content.structure.attachments.end());
    if (state.type == nullptr)
        return state;
    const std::vector<kxContainerForm::Field>& fields = kxContainerForm::fields(*state.type);
    for (std::size_t i = 0; i < std::min(fields.size(), content.values.size()); ++i)
        state.fields[fields[i].description->name()] = kxFieldCodec::isReference(fields[i].kind)
                                                          ? FieldValue(kxContainerRecord::ids(content.values[i]))
                                                          : kxContainerRecord::value(content.values[i], fields[i].kind);
    return state;
}

/// Of containers; of too many only the first.
std::vector<kxChangeWords::Change> statesOf(const std::vector<Change>& changes)
{
    std::vector<kxChangeWords::Change> stated;
    qint64 bytes = 0;
    for (const Change& change : changes)
    {
        bytes += change.before.size() + change.after.size();
        if (change.id != 0 && bytes <= MostWords)
            stated.push_back({change.id, stateOf(change.before), stateOf(change.after)});
    }
    return stated;
}
} // namespace

QString kxChangeText::act(const std::vector<Change>& changes)
{
    const std::vector<kxChangeWords::Change> stated = statesOf(changes);
    QString ofScene;
    for (const Change& change : changes)
        if (change.id == 0)
            ofScene = kxChangeWords::of(kxSceneRecord::read(change.before).animation,
                                        kxSceneRecord::read(change.after).animation);
    const bool hasMade = std::any_of(stated.begin(), stated.end(),
                                     [](const kxChangeWords::Change& change)
                                     { return change.before.type == nullptr || change.after.type == nullptr; });
    const QString ofThings = kxChangeWords::of(stated, kxAnimManager::the()->fps());
    // A new rate may move all keys; what came or went weighs more than a range.
    const QString words = ofScene.isEmpty() || (hasMade && !ofThings.isEmpty()) ? ofThings : ofScene;
    return words.isEmpty() ? tr("Change the scene") : words;
}

namespace
{
Keys keysOf(const QByteArray& record)
{
    const kxChangeWords::State state = stateOf(record);
    const auto found = state.fields.find("controlPoints");
    return found == state.fields.end() ? Keys() : std::get<Keys>(found->second);
}

bool isBefore(const CCPnt& a, const CCPnt& b)
{
    return a.x() != b.x() ? a.x() < b.x() : a.y() < b.y();
}

/// Keys that stand elsewhere, or else those with other tangents; of keys that came or went, those.
std::vector<CCPnt> changedKeys(const Keys& before, const Keys& now)
{
    std::vector<CCPnt> changed;
    if (before.size() != now.size())
    {
        const Keys& more = now.size() > before.size() ? now : before;
        const Keys& fewer = now.size() > before.size() ? before : now;
        std::set_difference(more.begin(), more.end(), fewer.begin(), fewer.end(), std::back_inserter(changed),
                            isBefore);
        return changed;
    }
    for (const bool places : {true, false})
    {
        for (std::size_t i = 0; i < now.size(); ++i)
            if (places ? before[i].point() != now[i].point()
                       : before[i] != now[i] &&
                             (i == 0 || !kxKeyChange::follows(before[i - 1], now[i - 1], before[i], now[i])))
                changed.push_back(now[i]);
        if (!changed.empty())
            break;
    }
    return changed;
}

/// The objects that a curve drives, but for those that came with it: their keys are no edit of keys.
std::set<QString> oldAims(const AnimCurvePtr& curve, const std::vector<Change>& changes)
{
    std::set<QString> names;
    for (const FieldContainerPtr& aim : kxAims::inScene(curve))
        if (std::none_of(changes.begin(), changes.end(),
                         [&aim](const Change& change) { return change.id == aim->getId() && change.before.isEmpty(); }))
            names.insert(QString::fromStdString(AttachmentContainerPtr::dcast(aim)->getNodeName()));
    return names;
}

/// Of keys whose tangents alone were changed, to one type: its word.
QString tangentText(const Keys& before, const Keys& now)
{
    std::set<UInt32> types;
    for (std::size_t i = 0; i < now.size(); ++i)
    {
        if (before.size() != now.size() || before[i].point() != now[i].point())
            return QString();
        if (before[i].outType != now[i].outType)
            types.insert(now[i].outType);
    }
    return types.size() == 1 ? kxFieldWords::tangent(*types.begin()) : QString();
}

QString channelOf(const AnimCurve& curve)
{
    const std::string& suffix = curve.getSuffix();
    return QString::fromStdString(curve.getChannelName() + (suffix.empty() ? "" : "." + suffix));
}

QString frameText(float seconds)
{
    return kxFieldWords::frames(double(seconds), kxAnimManager::the()->fps());
}

/// `one` where there is one, else the count with `several`.
QString nameOrCount(const std::set<QString>& names, const QString& several)
{
    return names.size() == 1 ? *names.begin() : QStringLiteral("%1 %2").arg(names.size()).arg(several);
}

} // namespace

QString kxChangeText::detail(const std::vector<Change>& changes)
{
    std::set<QString> objects, channels, tangents;
    std::optional<std::pair<float, float>> span;
    qint64 bytes = 0;
    for (const Change& change : changes)
    {
        const AnimCurvePtr curve =
            AnimCurvePtr::dcast(change.id == 0 ? FieldContainerPtr() : living<FieldContainer>(change.id));
        if (curve == NullFC || change.after.isEmpty())
            continue;
        const std::set<QString> aims = oldAims(curve, changes);
        if (aims.empty())
            continue;
        bytes += change.before.size() + change.after.size();
        if (bytes <= MostBytes)
        {
            const Keys before = keysOf(change.before), now = keysOf(change.after);
            const std::vector<CCPnt> changed = changedKeys(before, now);
            if (changed.empty())
                continue;
            tangents.insert(tangentText(before, now));
            for (const CCPnt& key : changed)
                span = span ? std::make_pair(std::min(span->first, key.x()), std::max(span->second, key.x()))
                            : std::make_pair(key.x(), key.x());
        }
        objects.insert(aims.begin(), aims.end());
        channels.insert(channelOf(*curve));
    }
    QStringList parts;
    if (!objects.empty())
        parts << nameOrCount(objects, tr("objects"));
    if (objects.size() == 1)
        parts << nameOrCount(channels, tr("channels"));
    if (span && bytes <= MostBytes && !parts.isEmpty())
        parts << (span->first == span->second
                      ? tr("frame %1").arg(frameText(span->first))
                      : tr("frames %1 to %2").arg(frameText(span->first), frameText(span->second)));
    if (tangents.size() == 1 && !tangents.begin()->isEmpty() && bytes <= MostBytes)
        parts << *tangents.begin();
    return parts.join(QStringLiteral(", "));
}

QString kxChangeText::subject(const std::vector<Change>& changes, const QString& title)
{
    const QString keys = detail(changes);
    return keys.isEmpty() ? kxChangeWords::subject(statesOf(changes), title, kxAnimManager::the()->fps()) : keys;
}
