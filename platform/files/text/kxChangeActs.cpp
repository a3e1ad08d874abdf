#include <files/text/kxChangeActs.h>

#include <files/text/kxFieldWords.h>
#include <files/text/kxKeyChange.h>
#include <osg/AnimCores.h>
#include <osg/AnimCurve.h>
#include <osg/AnimNode.h>

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <map>
#include <optional>
#include <set>

using namespace osg;
using kxChangeActs::Act;
using kxChangeWords::Change;
using kxChangeWords::Finder;
using kxChangeWords::Thing;

namespace
{
/// `words` stand in `text`, and not within a longer word. No pattern, which may not be as long as a name.
bool hasWords(const QString& text, const QString& words)
{
    const auto isWord = [&text](int at)
    { return at >= 0 && at < text.size() && (text[at].isLetterOrNumber() || text[at] == QLatin1Char('_')); };
    for (int at = text.indexOf(words); at >= 0; at = text.indexOf(words, at + 1))
        if (!isWord(at - 1) && !isWord(at + words.size()))
            return true;
    return false;
}

QString tr(const char* text)
{
    return QCoreApplication::translate("kxChangeWords", text);
}

/// The fields of one container that are another now.
class Fields
{
public:
    Fields(std::vector<Act>& acts, const Change& change, const Thing& thing, double fps, const Finder& finder)
        : _acts(acts), _change(change), _thing(thing), _fps(fps), _finder(finder)
    {
    }

    void add()
    {
        const FieldContainerType& type = *_change.after.type;
        addName(type);
        if (type.isDerivedFrom(AnimNodeBase::_type))
            addTimes();
        for (const FieldDescription& field : type.fields())
            if (isChanged(field.name()) && _told.count(field.name()) == 0)
                addField(type, field.name());
    }

private:
    const FieldValue* value(const kxChangeWords::State& state, const std::string& name) const
    {
        const auto found = state.fields.find(name);
        return found == state.fields.end() ? nullptr : &found->second;
    }
    template <class T>
    T before(const char* name) const
    {
        return std::get<T>(*value(_change.before, name));
    }
    template <class T>
    T after(const char* name) const
    {
        return std::get<T>(*value(_change.after, name));
    }
    /// Changed, and of one type on both sides.
    bool isChanged(const std::string& name) const
    {
        const FieldValue* const was = value(_change.before, name);
        const FieldValue* const is = value(_change.after, name);
        return was != nullptr && is != nullptr && was->index() == is->index() && !(*was == *is);
    }
    Act& push(Act::Rank rank, const QString& verb, const QString& detail = QString())
    {
        _acts.push_back(kxChangeActs::act(rank, verb, _thing, detail));
        return _acts.back();
    }
    void told(std::initializer_list<const char*> names) { _told.insert(names.begin(), names.end()); }

    void addName(const FieldContainerType& type)
    {
        const char* const field = type.isDerivedFrom(AnimObject::_type) ? "name" : "nodeName";
        if (!isChanged(field))
            return;
        told({field});
        Act& act =
            push(Act::Rename, tr("Rename"), tr(" to '%1'").arg(QString::fromStdString(after<std::string>(field))));
        act.thing.name = QString::fromStdString(before<std::string>(field));
        act.place.clear();
    }

    void addTimes()
    {
        told({"offset", "scale", "usePlayRange", "playRange"});
        if (isChanged("scale"))
            push(Act::Move, tr("Stretch"), stretch());
        else if (isChanged("offset"))
        {
            const Vec2f was = before<Vec2f>("offset"), is = after<Vec2f>("offset");
            QString detail;
            if (is.x() != was.x())
                detail += tr(" by %1 frames").arg(kxFieldWords::frames(double(is.x()) - double(was.x()), _fps));
            if (is.y() != was.y())
                detail += tr(" to track %1").arg(kxFieldWords::track(is.y()));
            push(Act::Move, tr("Move"), detail);
        }
        if (isChanged("usePlayRange") || isChanged("playRange"))
        {
            const Pnt2f range = Pnt2f() + after<Vec2f>("playRange");
            push(Act::Change, tr("Play"),
                 after<bool>("usePlayRange") ? tr(" from frame %1 to %2")
                                                   .arg(kxFieldWords::frames(double(range.x()), _fps),
                                                        kxFieldWords::frames(double(range.y()), _fps))
                                             : tr(" whole"));
        }
    }

    /// The new length as the clip maker shows it, and the start where the bar was taken by that.
    QString stretch() const
    {
        const double is = double(after<float>("scale")), was = double(before<float>("scale"));
        const double length = double(_thing.end - _thing.start);
        if (length <= 0)
            return tr(" by %1").arg(kxFieldWords::number(is / was));
        const auto start = [this](const Vec2f& offset, double scale)
        { return kxFieldWords::frames(double(offset.x()) + double(_thing.start) * scale, _fps); };
        const QString from = start(after<Vec2f>("offset"), is);
        return tr(" to %1 frames (was %2)")
                   .arg(kxFieldWords::frames(length * is, _fps), kxFieldWords::frames(length * was, _fps)) +
               (from == start(before<Vec2f>("offset"), was) ? QString() : tr(" from frame %1").arg(from));
    }

    void addField(const FieldContainerType& type, const std::string& name)
    {
        const bool isAnimation = type.isDerivedFrom(AnimNodeBase::_type);
        if (name == "controlPoints")
            return addKeys();
        if (name == "material")
            return addMaterial();
        if (name == "travMask")
        {
            const bool on = after<UInt32>("travMask") == Node::Active;
            push(Act::Change, isAnimation ? on ? tr("Switch on") : tr("Switch off") : on ? tr("Show") : tr("Hide"));
        }
        else if (name == "postCycles")
        {
            const Int32 cycles = after<Int32>("postCycles");
            push(Act::Change, tr("Repeat"),
                 cycles < 0    ? tr(" without end")
                 : cycles == 1 ? tr(" once")
                               : tr(" %1 times").arg(cycles));
        }
        else if (name == "flipped" || name == "locked" || name == "motionBlur")
        {
            const bool on = after<bool>(name.c_str());
            push(Act::Change, name == "flipped"  ? tr("Flip")
                              : name == "locked" ? on ? tr("Lock") : tr("Unlock")
                              : on ? tr("Blur the motion of")
                                                 : tr("Show without motion blur"));
        }
        else if (name == "translation")
            addNumber(type, name, push(Act::Change, tr("Move")));
        else if (name == "eulerRotation" || name == "eulerRotationOrientation")
            addNumber(type, name, push(Act::Change, tr("Rotate")));
        else if (name == "scale")
            addNumber(type, name, push(Act::Change, tr("Scale")));
        else if (name == "animations")
            push(Act::Change, tr("Change the groups of"));
        else
            addValue(type, name);
    }

    void addMaterial()
    {
        const auto ids = after<std::vector<UInt32>>("material");
        if (ids.empty() || ids.front() == 0)
            push(Act::Change, tr("Take the material from"));
        else
            push(Act::Change, tr("Give"), tr(" the material '%1'").arg(_finder(ids.front()).name));
    }

    void addValue(const FieldContainerType& type, const std::string& name)
    {
        const kxFieldWords words = kxFieldWords::of(type, name);
        const FieldValue& value = *this->value(_change.after, name);
        const bool isShort = value.index() <= 3 || value.index() == 7; // a number, a text
        Act& act = push(Act::Change, tr("Change %1 of").arg(words.label));
        if (isShort)
        {
            act.value = words.value(value);
            act.detail = tr(" to %1").arg(act.value);
        }
        else
            addNumber(type, name, act);
    }

    /// Of a vector of which one number was changed, that one.
    void addNumber(const FieldContainerType& type, const std::string& name, Act& act)
    {
        const auto* const was = std::get_if<Vec3f>(value(_change.before, name));
        const auto* const is = std::get_if<Vec3f>(value(_change.after, name));
        const FieldDescription* const field = type.field(name);
        if (was == nullptr || is == nullptr || field == nullptr || field->components() != 3)
            return;
        for (unsigned i = 0; i < 3; ++i)
        {
            if ((*was)[i] == (*is)[i])
                continue;
            const bool isFirst = act.component.isEmpty();
            act.component = QString::fromStdString(field->suffixes()[i]);
            act.value = isFirst ? kxFieldWords::of(type, name).value(FieldValue((*is)[i])) : QString();
        }
    }

    void addKeys()
    {
        typedef MField<CCPnt, 0> Keys;
        const auto change = kxKeyChange::between(std::get<Keys>(*value(_change.before, "controlPoints")),
                                                 std::get<Keys>(*value(_change.after, "controlPoints")));
        const auto add = [this](std::size_t count, Act::Rank rank, const QString& verb, const QString& detail)
        {
            if (count == 0)
                return;
            Act& act = push(rank, verb, detail);
            act.count = count;
            act.counted = tr("key");
        };
        add(change.added, Act::Make, tr("Add %1 to"), QString());
        add(change.removed, Act::Delete, tr("Delete %1 of"), QString());
        add(change.moved, Act::Move, tr("Move %1 of"),
            change.shift ? tr(" by %1 frames").arg(kxFieldWords::frames(double(*change.shift), _fps)) : QString());
        add(change.changed, Act::Change, tr("Change %1 of"), QString());
        add(change.tangents,
            change.moved + change.added + change.removed + change.changed > 0 ? Act::Follow : Act::Change,
            tr("Change tangents of %1 of"), QString());
    }

    std::vector<Act>& _acts;
    const Change& _change;
    const Thing& _thing;
    double _fps;
    const Finder& _finder;
    std::set<std::string> _told;
};

/// All acts of one verb.
struct Gathered
{
    explicit Gathered(const Act& act) : first(act) {}

    Act first;
    std::map<std::pair<UInt32, QString>, Thing> things; // by id, those without one by name
    bool sameDetail = true, sameValue = true, samePlace = true, sameName = true;
    int owns = 0;
    std::optional<Act> own; // the only one under an object: the others are its clones in clips

    void add(const Act& act)
    {
        if (act.thing.isOf)
            own = ++owns == 1 ? std::optional<Act>(act) : std::nullopt;
        if (!things.emplace(std::make_pair(act.thing.id, act.thing.id == 0 ? act.thing.name : QString()), act.thing)
                 .second)
            return;
        first.count += things.size() > 1 ? act.count : 0;
        sameDetail = sameDetail && act.detail == first.detail;
        sameValue = sameValue && act.value == first.value;
        samePlace = samePlace && act.place == first.place;
        sameName = sameName && act.thing.name == first.thing.name;
    }

    QString phrase() const
    {
        const QString verb =
            first.counted.isEmpty() ? first.verb : first.verb.arg(kxFieldWords::counted(first.count, first.counted));
        const QString detail = sameDetail ? first.detail : QString();
        return verb + QLatin1Char(' ') + named() +
               (first.thing.isOf ? placeText() + detail : detail + placeText()); // of comes first
    }

    /// By their names, without a verb.
    QString subject(const QString& title) const
    {
        constexpr std::size_t MostNames = 3;
        QStringList names;
        bool isNamed = first.rank != Act::Make; // a copy's title names what it was copied from
        for (const auto& entry : things)
        {
            const QString& name = entry.second.name;
            isNamed = isNamed && hasWords(title, name);
            if (!name.isEmpty() && !names.contains(QStringLiteral("'%1'").arg(name)))
                names << QStringLiteral("'%1'").arg(name);
        }
        QStringList parts;
        if (!isNamed && !names.isEmpty())
            parts << (things.size() > MostNames ? counted() : names.join(QStringLiteral(", "))) + placeText();
        const bool isSaid = first.component.isEmpty() || title.contains(QLatin1Char('.') + first.component);
        if (sameDetail && sameValue && isSaid && !first.value.isEmpty())
            parts << first.value;
        return parts.join(QStringLiteral(", "));
    }

private:
    bool isOne() const
    {
        const bool isCloned = (first.rank == Act::Rename && sameDetail) || (first.rank == Act::Delete && own);
        return things.size() == 1 || (sameName && isCloned);
    }

    QString placeText() const
    {
        const Act& act = isOne() && own ? *own : first;
        if ((!samePlace && !isOne()) || act.place.isEmpty())
            return QString();
        return (act.thing.isOf ? tr(" of '%1'") : tr(" in '%1'")).arg(act.place);
    }

    QString named() const
    {
        if (!isOne())
            return counted();
        const QString kind = first.thing.kind;
        if (first.thing.name.isEmpty())
            return tr("the %1").arg(kind.isEmpty() ? tr("scene") : kind);
        return (first.namesKind ? kind + QLatin1Char(' ') : QString()) + QStringLiteral("'%1'").arg(first.thing.name);
    }

    /// "clip 'Show' with 12 animations", "3 objects and 2 materials".
    QString counted() const
    {
        std::map<std::pair<int, QString>, std::vector<const Thing*>> byKind;
        for (const auto& entry : things)
        {
            const QString kind = entry.second.kind.isEmpty() ? tr("thing") : entry.second.kind;
            byKind[{kxFieldWords::order(kind), kind}].push_back(&entry.second);
        }
        QStringList parts;
        for (const auto& [kind, some] : byKind)
            parts << (some.size() == 1 && byKind.size() > 1 && !some.front()->name.isEmpty()
                          ? QStringLiteral("%1 '%2'").arg(kind.second, some.front()->name)
                          : kxFieldWords::counted(some.size(), kind.second));
        const bool isLed = parts.size() > 1 && first.namesKind && byKind.begin()->second.size() == 1;
        return isLed ? tr("%1 with %2").arg(parts.first(), kxFieldWords::joined(parts.mid(1)))
                     : kxFieldWords::joined(parts);
    }
};
} // namespace

Act kxChangeActs::act(Act::Rank rank, const QString& verb, const Thing& thing, const QString& detail)
{
    Act act;
    act.rank = rank;
    act.verb = verb;
    act.detail = detail;
    act.place = thing.place;
    act.thing = thing;
    return act;
}

void kxChangeActs::addFields(std::vector<Act>& acts, const Change& change, const Thing& thing, double fps,
                             const Finder& finder)
{
    Fields(acts, change, thing, fps, finder).add();
}

namespace
{
/// The weightiest first.
std::vector<Gathered> gather(const std::vector<Act>& acts)
{
    std::vector<Gathered> gathered;
    for (const Act& act : acts)
    {
        const auto same = std::find_if(gathered.begin(), gathered.end(),
                                       [&act](const Gathered& entry)
                                       { return entry.first.rank == act.rank && entry.first.verb == act.verb; });
        Gathered& entry = same != gathered.end() ? *same : gathered.emplace_back(act);
        entry.add(act);
    }
    std::stable_sort(gathered.begin(), gathered.end(),
                     [](const Gathered& a, const Gathered& b) { return a.first.rank < b.first.rank; });
    return gathered;
}
} // namespace

QString kxChangeActs::subject(const std::vector<Act>& acts, const QString& title)
{
    const std::vector<Gathered> gathered = gather(acts);
    return gathered.empty() || gathered.front().first.rank == Act::Rename ? QString() : gathered.front().subject(title);
}

QString kxChangeActs::sentence(const std::vector<Act>& acts)
{
    const std::vector<Gathered> gathered = gather(acts);
    if (gathered.empty())
        return QString();
    const auto further = std::count_if(gathered.begin() + 1, gathered.end(),
                                       [](const Gathered& entry) { return entry.first.rank != Act::Follow; });
    return gathered.front().phrase() + (further > 0 ? tr(" and more") : QString());
}
