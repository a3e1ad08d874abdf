#include <files/text/kxSceneDifference.h>

#include <files/scene/kxRestScope.h>
#include <files/text/kxDifferenceWords.h>
#include <files/text/kxFieldWords.h>
#include <files/text/kxSceneMatch.h>
#include <files/text/kxSceneText.h>
#include <files/text/kxValueText.h>
#include <osg/AnimCores.h>
#include <osg/AnimCurve.h>
#include <osg/Image.h>

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>

using namespace osg;
using kxDifferenceWords::holder;

namespace
{
constexpr std::size_t None = kxSceneOutline::None;
typedef kxSceneDifference::Entry Entry;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxSceneDifference", text);
}

class Comparison
{
public:
    Comparison(const kxSceneContent& before, const kxSceneContent& after)
        : _oldContent(before), _newContent(after), _old(before), _new(after), _oldRest(_old.containers()),
          _newRest(_new.containers()), _match(_old, _new)
    {
    }

    std::vector<Entry> run()
    {
        if (_old.isScene() && _new.isScene())
        {
            addSettings(_oldContent.animation, _newContent.animation);
            addSettings(_oldContent.settings, _newContent.settings);
        }
        for (const std::size_t b : _new.sorted())
        {
            const std::size_t a = _match.before(b);
            if (a != None)
                pair(a, b);
            else if (!_new.thing(b).gathersAnimations && _match.before(holder(_new, b)) != None)
                addLife(kxSceneDifference::Added, _new, b);
        }
        // What belongs to one thing stands together, at the first of it.
        const auto group = [](const Entry& entry) { return std::make_pair(entry.groupBefore, entry.groupAfter); };
        std::map<std::pair<UInt32, UInt32>, std::size_t> firsts;
        for (std::size_t i = 0; i < _entries.size(); ++i)
            firsts.emplace(group(_entries[i]), i);
        std::stable_sort(_entries.begin(), _entries.end(),
                         [&](const Entry& x, const Entry& y) { return firsts[group(x)] < firsts[group(y)]; });
        return std::move(_entries);
    }

private:
    template <class T>
    void addSettings(const std::map<std::string, T>& before, const std::map<std::string, T>& after)
    {
        std::map<std::string, T> all = before;
        all.insert(after.begin(), after.end());
        for (const auto& [name, either] : all)
        {
            const auto was = before.find(name), is = after.find(name);
            if (kxSceneText::isPassing(name) || (was != before.end() && is != after.end() && was->second == is->second))
                continue;
            Entry entry;
            entry.what = tr("scene");
            entry.group = tr("Scene");
            entry.field = QString::fromStdString(name);
            entry.path = QStringLiteral("%1/%2").arg(
                QLatin1String(std::is_same_v<T, double> ? "animation" : "settings"), entry.field);
            const kxFieldWords words = kxFieldWords::ofSetting(name);
            const QString then = was == before.end() ? tr("none") : settingText(words, was->second, entry.before);
            const QString now = is == after.end() ? tr("none") : settingText(words, is->second, entry.after);
            entry.isOfGroup = true;
            entry.detail = tr("%1 %2 (was %3)").arg(words.label, now, then);
            entry.words = tr("Scene: %1").arg(entry.detail);
            _entries.push_back(entry);
        }
    }

    static QString settingText(const kxFieldWords& words, double value, QJsonValue& json)
    {
        json = value;
        return words.choices.isEmpty() ? kxFieldWords::number(value) : words.value(FieldValue(float(value)));
    }
    static QString settingText(const kxFieldWords&, const std::string& value, QJsonValue& json)
    {
        json = text(value);
        return QStringLiteral("'%1'").arg(text(value));
    }

    Entry begin(const kxSceneOutline& outline, std::size_t index) const
    {
        Entry entry;
        entry.what = kxDifferenceWords::kind(outline, index);
        entry.path = QString::fromStdString(outline.path(index));
        const std::size_t group = kxDifferenceWords::group(outline, index);
        const bool isNew = &outline == &_new;
        const std::size_t a = isNew ? _match.before(group) : group, b = isNew ? group : _match.after(group);
        entry.group = b != None ? kxDifferenceWords::subject(_new, b, true) : kxDifferenceWords::subject(_old, a, true);
        entry.isOfGroup = group == index;
        entry.groupBefore = a == None ? 0 : _old.thing(a).container.getFieldContainerId();
        entry.groupAfter = b == None ? 0 : _new.thing(b).container.getFieldContainerId();
        return entry;
    }

    void addLife(kxSceneDifference::Kind kind, const kxSceneOutline& outline, std::size_t index)
    {
        Entry entry = begin(outline, index);
        entry.kind = kind;
        const QString below = kxDifferenceWords::below(
            outline, index,
            [this, kind](std::size_t i)
            { return (kind == kxSceneDifference::Added ? _match.before(i) : _match.after(i)) == None; });
        const QString act = kind == kxSceneDifference::Added ? tr("added") : tr("removed");
        entry.detail = below.isEmpty() ? act : tr("%1, with %2").arg(act, below);
        entry.words = kxDifferenceWords::subject(outline, index, true) + QStringLiteral(": ") + entry.detail;
        _entries.push_back(entry);
    }

    /// What stood in a thing of the first scene and is nowhere in the second.
    void addRemoved(std::size_t index)
    {
        for (const std::size_t child : _old.thing(index).children)
            if (_match.after(child) != None)
                continue;
            else if (_old.thing(child).gathersAnimations)
                addRemoved(child);
            else
                addLife(kxSceneDifference::Removed, _old, child);
    }

    void addChange(std::size_t b, const QString& field, const QJsonValue& before, const QJsonValue& after,
                   const QString& words)
    {
        Entry entry = begin(_new, b);
        entry.field = field;
        entry.before = before;
        entry.after = after;
        entry.detail = words;
        entry.words = kxDifferenceWords::subject(_new, b) + QStringLiteral(": ") + words;
        _entries.push_back(entry);
    }

    static QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

    void pair(std::size_t a, std::size_t b)
    {
        if (!_new.isTop(b))
            comparePlaces(a, b);
        if (_old.hasValues(a) && _new.hasValues(b))
        {
            compareNames(a, b);
            compareClass(a, b);
            compareSharing(a, b);
            compareValues(a, b);
        }
        compareOrder(a, b);
        addRemoved(a);
    }

    void comparePlaces(std::size_t a, std::size_t b)
    {
        const std::string &was = _old.thing(a).name, &is = _new.thing(b).name;
        if (was != is)
            addChange(b, QStringLiteral("name"), text(was), text(is), tr("renamed from '%1'").arg(text(was)));
        const std::size_t from = holder(_old, a), to = holder(_new, b);
        if (_match.after(from) == to)
            return;
        const auto place = [](const kxSceneOutline& outline, std::size_t index)
        { return index == None || outline.isTop(index) ? tr("the top") : kxDifferenceWords::subject(outline, index); };
        addChange(b, QStringLiteral("parent"), text(_old.path(from)), text(_new.path(to)),
                  tr("moved from %1 to %2").arg(place(_old, from), place(_new, to)));
    }

    void compareNames(std::size_t a, std::size_t b)
    {
        const auto was = _old.furtherNames(a), is = _new.furtherNames(b);
        if (was == is)
            return;
        const auto joined = [](const auto& names)
        {
            QStringList texts;
            for (const auto& entry : names)
                texts << text(entry.second);
            return texts.join(QStringLiteral(", "));
        };
        addChange(b, QStringLiteral("furtherNames"), joined(was), joined(is),
                  (AnimSequencePtr::dcast(_new.thing(b).core) != NullFC ? tr("fires '%1' (was '%2')")
                                                                        : tr("inner name '%1' (was '%2')"))
                      .arg(joined(is), joined(was)));
    }

    void compareClass(std::size_t a, std::size_t b)
    {
        const std::string was = _old.className(a), is = _new.className(b);
        if (was != is)
            addChange(b, QStringLiteral("class"), text(was), text(is),
                      tr("is of class %1 (was %2)").arg(text(is), text(was)));
    }

    /// A thing by which others of the same core go, None where it goes by itself.
    static std::size_t shown(const kxSceneOutline& outline, std::size_t index)
    {
        const std::size_t by = outline.thing(index).shownBy;
        return by == index ? None : by;
    }

    void compareSharing(std::size_t a, std::size_t b)
    {
        const std::size_t was = shown(_old, a), is = shown(_new, b);
        // Who of several stands for them depends on their paths; what counts is that they still share.
        const auto stillShares = [&]
        {
            const std::size_t thenNow = _match.after(was), nowThen = _match.before(is);
            return (was == None && is == None) || (thenNow != None && _new.thing(thenNow).core == _new.thing(b).core) ||
                   (nowThen != None && _old.thing(nowThen).core == _old.thing(a).core);
        };
        if (!stillShares())
            addReference(b, QStringLiteral("sharing"), was, is, tr("shares its content with %1"),
                         tr("shares its content with nothing any more"));
        const std::size_t with = _old.thing(a).animatedWith, now = _new.thing(b).animatedWith;
        if (_match.after(with) != now || (with == None) != (now == None))
            addReference(b, QStringLiteral("animatedWith"), with, now, tr("has the animations of %1"),
                         tr("has its own animations"));
    }

    void addReference(std::size_t b, const QString& field, std::size_t was, std::size_t is, const QString& some,
                      const QString& none)
    {
        const auto path = [](const kxSceneOutline& outline, std::size_t index)
        { return index == None ? QJsonValue() : QJsonValue(text(outline.path(index))); };
        addChange(b, field, path(_old, was), path(_new, is),
                  is == None ? none : some.arg(kxDifferenceWords::subject(_new, is)));
    }

    void compareOrder(std::size_t a, std::size_t b)
    {
        std::vector<std::size_t> then, now;
        for (const std::size_t child : _old.thing(a).children)
            if (const std::size_t partner = _match.after(child); partner != None && _new.thing(partner).parent == b)
                then.push_back(partner);
        for (const std::size_t child : _new.thing(b).children)
            if (const std::size_t partner = _match.before(child); partner != None && _old.thing(partner).parent == a)
                now.push_back(child);
        if (then == now)
            return;
        const auto moved = std::mismatch(then.begin(), then.end(), now.begin());
        const auto name = [this](std::size_t index) { return text(_new.thing(index).segment); };
        const std::size_t shownAt = _new.thing(b).gathersAnimations ? _new.thing(b).parent : b;
        addChange(shownAt, QStringLiteral("order"), name(*moved.first), name(*moved.second),
                  tr("what stands in it is in another order, from '%1' on").arg(name(*moved.second)));
    }

    void compareValues(std::size_t a, std::size_t b)
    {
        // A core that several share is told of once, where it is shown.
        const std::size_t by = _match.before(_new.thing(b).shownBy);
        const bool core = _new.thing(b).shownBy == b || by == None || _old.thing(by).core != _old.thing(a).core;
        std::map<std::string, kxSceneOutline::Value> before;
        for (const kxSceneOutline::Value& value : _old.values(a, core))
            before.emplace(value.name, value);
        for (const kxSceneOutline::Value& value : _new.values(b, core))
        {
            const auto was = before.find(value.name);
            if (was != before.end())
                compareValue(a, b, was->second, value);
            else if (value.name.find('.') != std::string::npos) // of an attachment: that came
                addOneSided(b, value, false);
            before.erase(value.name);
        }
        for (const auto& [name, value] : before)
            if (name.find('.') != std::string::npos)
                addOneSided(b, value, true);
    }

    void addOneSided(std::size_t b, const kxSceneOutline::Value& value, bool isGone)
    {
        const QJsonValue held = kxDifferenceWords::json(value.field->value(*value.container));
        const QString label = kxFieldWords::words(value.name.substr(value.name.find('.') + 1));
        addChange(b, text(value.name), isGone ? held : QJsonValue(), isGone ? QJsonValue() : held,
                  isGone ? tr("%1 removed").arg(label) : tr("%1 added").arg(label));
    }

    void compareValue(std::size_t a, std::size_t b, const kxSceneOutline::Value& was, const kxSceneOutline::Value& is)
    {
        const AnimCurvePtr oldCurve = AnimCurvePtr::dcast(was.container), newCurve = AnimCurvePtr::dcast(is.container);
        if (is.name == "controlPoints" && oldCurve != NullFC && newCurve != NullFC)
            return compareKeys(*oldCurve, *newCurve, b);
        const FieldValue before = was.field->value(*was.container), after = is.field->value(*is.container);
        if (_match.isSame(before, after))
            return;
        const auto* const oldReference = std::get_if<FieldContainerPtr>(&before);
        const auto* const newReference = std::get_if<FieldContainerPtr>(&after);
        if (oldReference != nullptr && newReference != nullptr)
            compareReference(b, text(is.name), kxFieldWords::of(is.container->getType(), is.field->name()).label,
                             *oldReference, *newReference);
        else
            addChange(b, text(is.name), kxDifferenceWords::json(before), kxDifferenceWords::json(after),
                      kxDifferenceWords::changed(is.container->getType(), is.field->name(), {_old, a, before},
                                                 {_new, b, after}));
    }

    void compareReference(std::size_t b, const QString& field, const QString& label, const FieldContainerPtr& was,
                          const FieldContainerPtr& is)
    {
        const std::size_t from = _old.find(was), to = _new.find(is);
        const bool isPart = from == None && to == None;
        const auto name = [](const kxSceneOutline& outline, std::size_t index)
        { return index == None ? tr("none") : QStringLiteral("'%1'").arg(text(outline.thing(index).name)); };
        const QString words = !isPart         ? tr("%1 %2 (was %3)").arg(label, name(_new, to), name(_old, from))
                              : is == NullFC  ? tr("%1 removed").arg(label)
                              : was == NullFC ? tr("%1 added").arg(label)
                                              : tr("%1 is another").arg(label);
        addChange(b, field, referenceText(_old, was), referenceText(_new, is), words);
    }

    /// A thing by its path, a part by what is in it.
    static QJsonValue referenceText(const kxSceneOutline& outline, const FieldContainerPtr& container)
    {
        if (container == NullFC)
            return QJsonValue();
        if (const std::size_t index = outline.find(container); index != None)
            return text(outline.path(index));
        if (const ImagePtr image = ImagePtr::dcast(container); image != NullFC)
            return text(kxSceneOutline::imageText(*image));
        std::string result = container->getType().getName();
        for (const FieldDescription& field : container->getType().fields())
            if (const std::string held = kxValueText::of(field.value(*container)); !held.empty())
                result += "; " + field.name() + " " + held;
        return text(result);
    }

    void compareKeys(const AnimCurve& was, const AnimCurve& is, std::size_t b)
    {
        const kxKeyChange change = kxKeyChange::between(was.getControlPoints(), is.getControlPoints());
        if (change.isNone())
            return;
        addChange(b, QStringLiteral("keys"), double(was.getControlPoints().size()),
                  double(is.getControlPoints().size()), change.words(_new.fps()));
        QJsonObject& facts = _entries.back().keys;
        for (const auto& [name, count] :
             {std::make_pair("moved", change.moved), std::make_pair("changed", change.changed),
              std::make_pair("added", change.added), std::make_pair("removed", change.removed),
              std::make_pair("tangents", change.tangents)})
            facts[QLatin1String(name)] = double(count);
        if (change.shift)
            facts[QStringLiteral("shift")] = kxDifferenceWords::json(FieldValue(*change.shift));
    }

    const kxSceneContent &_oldContent, &_newContent;
    const kxSceneOutline _old, _new;
    const kxRestScope _oldRest, _newRest;
    const kxSceneMatch _match;
    std::vector<Entry> _entries;
};
} // namespace

kxSceneDifference kxSceneDifference::between(const kxSceneContent& before, const kxSceneContent& after)
{
    return {Comparison(before, after).run()};
}

QString kxSceneDifference::word(Kind kind)
{
    return QString::fromLatin1(kind == Added ? "added" : kind == Removed ? "removed" : "changed");
}

QString kxSceneDifference::toText() const
{
    QString text;
    for (const Entry& entry : entries)
        text += entry.words + QLatin1Char('\n');
    return text;
}

QJsonObject kxSceneDifference::toJson() const
{
    QJsonArray list;
    for (const Entry& entry : entries)
    {
        QJsonObject object = {{QStringLiteral("kind"), word(entry.kind)},
                              {QStringLiteral("what"), entry.what},
                              {QStringLiteral("path"), entry.path},
                              {QStringLiteral("words"), entry.words}};
        if (entry.kind == Changed)
        {
            object[QStringLiteral("field")] = entry.field;
            object[QStringLiteral("before")] = entry.before;
            object[QStringLiteral("after")] = entry.after;
            if (!entry.keys.isEmpty())
                object[QStringLiteral("keys")] = entry.keys;
        }
        list.append(object);
    }
    return {{QStringLiteral("equal"), isEmpty()}, {QStringLiteral("differences"), list}};
}
