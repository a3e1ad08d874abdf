#include <files/text/kxDifferenceWords.h>

#include <files/text/kxFieldWords.h>
#include <files/text/kxValueText.h>
#include <osg/AnimCores.h>
#include <osg/AnimCurve.h>
#include <scene/kxSequenceStep.h>

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>
#include <iterator>

using namespace osg;
using kxDifferenceWords::Side;

namespace
{
constexpr std::size_t MostNumbers = 16; ///< of a list in JSON

QString tr(const char* text)
{
    return QCoreApplication::translate("kxSceneDifference", text);
}

bool isAnimation(const kxSceneOutline& outline, std::size_t index)
{
    const AttachmentContainerPtr& container = outline.thing(index).container;
    return container != NullFC && container->getType().isDerivedFrom(AnimNodeBase::_type);
}

QString quoted(const kxSceneOutline& outline, std::size_t index)
{
    const kxSceneOutline::Thing& thing = outline.thing(index);
    const bool isNumbered = thing.segment != kxValueText::segment(thing.name);
    const std::string number = isNumbered ? thing.segment.substr(thing.segment.rfind('#')) : std::string();
    const std::string name = thing.name.empty() ? "(no name)" : thing.name;
    return QStringLiteral("'%1'").arg(QString::fromStdString(name + number));
}

/// The frame at which a bar starts; that of its time 0 where it has no extent.
QString start(const Side& side)
{
    const AnimNodePtr node = AnimNodePtr::dcast(side.outline.thing(side.index).container);
    float from = 0, to = 0;
    node->getBounds(from, to);
    return kxFieldWords::frames(double(from), side.outline.fps());
}

QString was(const QString& is, const QString& was)
{
    return tr("%1 (was %2)").arg(is, was);
}

QString offset(const Side& before, const Side& after)
{
    const Vec2f then = std::get<Vec2f>(before.value), now = std::get<Vec2f>(after.value);
    QStringList parts;
    if (then.x() != now.x())
    {
        if (start(before) != start(after))
            parts << tr("starts at frame %1").arg(was(start(after), start(before)));
        else // stretched, or other keys: its start stays
            parts << tr("is shifted by %1 frames")
                         .arg(was(kxFieldWords::frames(double(now.x()), after.outline.fps()),
                                  kxFieldWords::frames(double(then.x()), before.outline.fps())));
    }
    if (then.y() != now.y())
        parts << tr("is on track %1").arg(was(kxFieldWords::track(now.y()), kxFieldWords::track(then.y())));
    return parts.join(QStringLiteral(", "));
}

QString times(Int32 cycles)
{
    return cycles < 0 ? tr("without end") : cycles == 1 ? tr("once") : tr("%1 times").arg(cycles);
}

QString frameRange(const Side& side)
{
    const Vec2f range = std::get<Vec2f>(side.value);
    return tr("%1 to %2")
        .arg(kxFieldWords::frames(double(range.x()), side.outline.fps()),
             kxFieldWords::frames(double(range.y()), side.outline.fps()));
}

/// "wait 2" for a step of a sequence, other texts in quotes.
QString item(const std::string& text)
{
    kxSequenceStep step;
    if (!kxSequenceStep::fromText(text, step))
        return QStringLiteral("'%1'").arg(QString::fromStdString(text));
    const QString name = step.kind == kxSequenceStep::Kind::Wait
                             ? kxFieldWords::number(step.seconds)
                             : QStringLiteral("'%1'").arg(QString::fromStdString(step.name));
    const QString choice =
        step.choice.empty() ? QString() : QStringLiteral(" '%1'").arg(QString::fromStdString(step.choice));
    return QString::fromLatin1(kxSequenceStep::word(step.kind)) + QLatin1Char(' ') + name + choice;
}

/// What came into a list and what went.
QString ofList(const QString& label, std::vector<std::string> before, std::vector<std::string> after)
{
    const auto less = [](std::vector<std::string>& all, std::vector<std::string>& others)
    {
        std::sort(all.begin(), all.end());
        std::sort(others.begin(), others.end());
        std::vector<std::string> rest;
        std::set_difference(all.begin(), all.end(), others.begin(), others.end(), std::back_inserter(rest));
        QStringList texts;
        for (const std::string& text : rest)
            texts << item(text);
        return texts.join(QStringLiteral(", "));
    };
    const QString added = less(after, before), removed = less(before, after);
    QStringList parts;
    if (!added.isEmpty())
        parts << tr("%1 added").arg(added);
    if (!removed.isEmpty())
        parts << tr("%1 removed").arg(removed);
    return label + QStringLiteral(": ") +
           (parts.isEmpty() ? tr("the same in another order") : parts.join(QStringLiteral("; ")));
}

QString ofAnimation(const std::string& field, const Side& before, const Side& after)
{
    const auto onOff = [&](const QString& on, const QString& off) { return std::get<bool>(after.value) ? on : off; };
    if (field == "offset")
        return offset(before, after);
    if (field == "postCycles")
        return tr("repeats %1").arg(was(times(std::get<Int32>(after.value)), times(std::get<Int32>(before.value))));
    if (field == "flipped")
        return onOff(tr("is flipped"), tr("isn't flipped any more"));
    if (field == "locked")
        return onOff(tr("is locked"), tr("isn't locked any more"));
    if (field == "hidden")
        return onOff(tr("is hidden"), tr("isn't hidden any more"));
    if (field == "usePlayRange")
        return onOff(tr("plays a range only"), tr("plays whole"));
    if (field == "playRange")
        return tr("plays frames %1").arg(was(frameRange(after), frameRange(before)));
    return QString();
}
} // namespace

std::size_t kxDifferenceWords::holder(const kxSceneOutline& outline, std::size_t index)
{
    const std::size_t parent = outline.thing(index).parent;
    return parent != kxSceneOutline::None && outline.thing(parent).gathersAnimations ? outline.thing(parent).parent
                                                                                     : parent;
}

QString kxDifferenceWords::kind(const kxSceneOutline& outline, std::size_t index)
{
    const kxSceneOutline::Thing& thing = outline.thing(index);
    if (thing.container == NullFC || outline.isTop(index))
        return tr("scene");
    return kxFieldWords::kind(thing.container->getType(), thing.core == NullFC ? nullptr : &thing.core->getType());
}

QString kxDifferenceWords::subject(const kxSceneOutline& outline, std::size_t index, bool withKind)
{
    if (outline.isTop(index))
        return tr("The scene's %1").arg(QString::fromStdString(outline.thing(index).segment));
    const QString name = quoted(outline, index), word = kind(outline, index);
    const bool isPlain =
        word == tr("object") || word == tr("block") || word == tr("channel") || word == tr("animation");
    QString text = isPlain && !withKind ? name : word + QLatin1Char(' ') + name;
    text[0] = text[0].toUpper();
    const std::size_t above = holder(outline, index);
    if (above == kxSceneOutline::None || outline.isTop(above))
        return text;
    if (!isAnimation(outline, index))
        return outline.isNameUnique(index) ? text : tr("%1 in %2").arg(text, quoted(outline, above));
    if (!isAnimation(outline, above))
        return tr("%1 of %2").arg(text, quoted(outline, above));
    const QString place = subject(outline, above);
    // "'Spin' in clip 'Show'": the place in the middle of a sentence.
    return tr("%1 in %2").arg(text, place.at(0) == QLatin1Char('\'') ? place : place.at(0).toLower() + place.mid(1));
}

std::size_t kxDifferenceWords::group(const kxSceneOutline& outline, std::size_t index)
{
    std::size_t group = index;
    while (isAnimation(outline, group) && !outline.isTop(group))
    {
        const std::size_t above = holder(outline, group);
        const bool isClip = AnimClipPtr::dcast(outline.thing(group).core) != NullFC;
        if (above == kxSceneOutline::None || outline.isTop(above) || isClip)
            break;
        group = above;
    }
    return group;
}

QString kxDifferenceWords::below(const kxSceneOutline& outline, std::size_t index,
                                 const std::function<bool(std::size_t)>& counts)
{
    std::map<QString, std::size_t> found;
    std::vector<std::size_t> open = outline.thing(index).children;
    while (!open.empty())
    {
        const std::size_t next = open.back();
        open.pop_back();
        const kxSceneOutline::Thing& thing = outline.thing(next);
        if (!counts(next))
            continue;
        if (!thing.gathersAnimations)
            ++found[kind(outline, next)];
        open.insert(open.end(), thing.children.begin(), thing.children.end());
    }
    QStringList parts;
    for (const auto& [word, count] : found)
        parts << kxFieldWords::counted(count, word);
    if (const AnimCurvePtr curve = outline.curve(index); curve != NullFC)
        parts << kxFieldWords::counted(curve->getControlPoints().size(), tr("key"));
    return parts.join(QStringLiteral(", "));
}

QString kxDifferenceWords::changed(const FieldContainerType& type, const std::string& field, const Side& before,
                                   const Side& after)
{
    const bool isNode = type.isDerivedFrom(AnimNodeBase::_type);
    if (before.value.index() != after.value.index())
        return tr("%1 is another").arg(kxFieldWords::of(type, field).label);
    if (field == "travMask")
    {
        const bool is = std::get<UInt32>(after.value) == Node::Active,
                   did = std::get<UInt32>(before.value) == Node::Active;
        if (is != did)
            return isNode ? is ? tr("is on") : tr("is off") : is ? tr("is shown") : tr("is hidden");
    }
    if (const auto* const list = std::get_if<std::vector<std::string>>(&before.value))
        return ofList(kxFieldWords::of(type, field).label, *list, std::get<std::vector<std::string>>(after.value));
    const QString special = isNode ? ofAnimation(field, before, after) : QString();
    return special.isEmpty() ? kxFieldWords::of(type, field).changed(before.value, after.value) : special;
}

QJsonValue kxDifferenceWords::json(const FieldValue& value)
{
    const auto number = [](float single)
    {
        std::string text;
        kxValueText::append(text, single);
        return QJsonValue(QString::fromStdString(text).toDouble()); // 0.1, not 0.10000000149
    };
    const auto list = [&number](const float* values, std::size_t count)
    {
        QJsonArray array;
        for (std::size_t i = 0; i < count; ++i)
            array.append(number(values[i]));
        return QJsonValue(array);
    };
    return std::visit(
        [&](const auto& held) -> QJsonValue
        {
            typedef std::decay_t<decltype(held)> T;
            if constexpr (std::is_same_v<T, bool>)
                return held;
            else if constexpr (std::is_same_v<T, Int32> || std::is_same_v<T, UInt32>)
                return double(held);
            else if constexpr (std::is_same_v<T, float>)
                return number(held);
            else if constexpr (std::is_same_v<T, Vec2f> || std::is_same_v<T, Vec3f> || std::is_same_v<T, Vec4f>)
                return list(held.data(), T::size());
            else if constexpr (std::is_same_v<T, std::string>)
                return QString::fromStdString(held);
            else if constexpr (std::is_same_v<T, std::vector<std::string>>)
            {
                QJsonArray array;
                for (const std::string& text : held)
                    array.append(QString::fromStdString(text));
                return array;
            }
            else
            {
                if constexpr (std::is_same_v<T, std::vector<float>>)
                    if (held.size() <= MostNumbers)
                        return list(held.data(), held.size());
                return QString::fromStdString(kxValueText::of(FieldValue(held)));
            }
        },
        value);
}
