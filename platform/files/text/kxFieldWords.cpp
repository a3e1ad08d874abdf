#include <files/text/kxFieldWords.h>

#include <animation/kxFrameTime.h>
#include <files/text/kxValueText.h>
#include <osg/AnimCores.h>
#include <osg/AnimCurve.h>
#include <osg/AnimNode.h>
#include <scene/CameraLight.h>
#include <scene/Scenery.h>

#include <QCoreApplication>
#include <QHash>

#include <cmath>

using namespace osg;

namespace
{
typedef QHash<QString, kxFieldWords> Table;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxFieldWords", text);
}

const QStringList& infinityModes()
{
    static const QStringList modes = {tr("Constant"), tr("Linear"), tr("Loop"), tr("Loop with Offset"),
                                      tr("Oscillate")};
    return modes;
}

Table makeObjectTable()
{
    const QString degrees = QStringLiteral("\u00b0");
    return {{"nodeName", {tr("name"), {}, {}}},
            {"translation", {tr("position"), {}, {}}},
            {"eulerRotation", {tr("rotation"), degrees, {}}},
            {"eulerRotationOrientation", {tr("orientation"), degrees, {}}},
            {"scale", {tr("scale"), {}, {}}},
            {"visible", {tr("visible"), {}, {}}},
            {"choice", {tr("shown child"), {}, {}}},
            {"fieldOfView", {tr("field of view"), degrees, {}}},
            {"focalLength", {tr("focal length"), tr(" mm"), {}}},
            {"kind", {tr("kind"), {}, {tr("Directional"), tr("Point"), tr("Spot")}}},
            {"color", {tr("colour"), {}, {}}},
            {"coneAngle", {tr("cone angle"), degrees, {}}},
            {"baseColor", {tr("base colour"), {}, {}}},
            {"baseColorImage", {tr("texture"), {}, {}}},
            {"normalImage", {tr("normal texture"), {}, {}}},
            {"normalScale", {tr("strength of normals"), {}, {}}},
            {"roughnessImage", {tr("roughness texture"), {}, {}}},
            {"occlusionImage", {tr("occlusion texture"), {}, {}}},
            {"occlusionStrength", {tr("strength of occlusion"), {}, {}}},
            {"emissiveImage", {tr("emissive texture"), {}, {}}},
            {"mesh", {tr("shape"), {}, {}}},
            {"doubleSided", {tr("double-sided"), {}, {}}},
            {"alphaCutoff", {tr("cut-out below"), {}, {}}}};
}

Table makeAnimationTable()
{
    return {{"scale", {tr("time scale"), {}, {}}},
            {"postCycles", {tr("repeats"), {}, {}}},
            {"name", {tr("name"), {}, {}}},
            {"color", {tr("colour of the curve"), {}, {}}},
            {"preInfinityMode", {tr("pre infinity mode"), {}, infinityModes()}},
            {"postInfinityMode", {tr("post infinity mode"), {}, infinityModes()}},
            {"controlPoints", {tr("keys"), {}, {}}}};
}

Table makeSettingTable()
{
    return {{"fps", {tr("frame rate"), {}, {}}},
            {"playbackFPS", {tr("playback speed"), {}, {}}},
            {"fullRangeStart", {tr("start of the full range"), {}, {}}},
            {"fullRangeEnd", {tr("end of the full range"), {}, {}}},
            {"detailedRangeStart", {tr("start of the detailed range"), {}, {}}},
            {"detailedRangeEnd", {tr("end of the detailed range"), {}, {}}},
            {"loopTimeline", {tr("loop of the timeline"), {}, {tr("off"), tr("on")}}},
            {"evaluateSubframes", {tr("evaluation between frames"), {}, {tr("off"), tr("on")}}},
            {"keepKeysAtFrame", {tr("keeping keys at current frames"), {}, {tr("off"), tr("on")}}}};
}

kxFieldWords found(const Table& table, const std::string& name)
{
    const auto entry = table.constFind(QString::fromStdString(name));
    return entry != table.constEnd() ? *entry : kxFieldWords{kxFieldWords::words(name), {}, {}};
}

struct Words
{
    const kxFieldWords& field;

    template <class T>
    QString choice(T value) const
    {
        return value >= T(0) && std::size_t(value) < std::size_t(field.choices.size())
                   ? field.choices.at(int(value))
                   : kxFieldWords::number(double(value));
    }
    QString numbers(const float* values, std::size_t count) const
    {
        QStringList texts;
        for (std::size_t i = 0; i < count; ++i)
            texts << kxFieldWords::number(double(values[i]));
        return texts.join(QStringLiteral(", "));
    }
    QString operator()(bool value) const { return value ? tr("on") : tr("off"); }
    QString operator()(Int32 value) const { return choice(value); }
    QString operator()(UInt32 value) const { return choice(value); }
    QString operator()(float value) const
    {
        return !field.choices.isEmpty() && value == std::floor(value) ? choice(value) : numbers(&value, 1);
    }
    template <std::size_t N>
    QString operator()(const Vector<float, N>& value) const
    {
        return numbers(value.data(), N);
    }
    QString operator()(const std::string& value) const
    {
        return QStringLiteral("'%1'").arg(QString::fromStdString(value));
    }
    template <class T>
    QString operator()(const T& value) const
    {
        return QString::fromStdString(kxValueText::of(FieldValue(value)));
    }
};
} // namespace

kxFieldWords kxFieldWords::of(const std::string& field)
{
    static const Table table = makeObjectTable();
    return found(table, field);
}

kxFieldWords kxFieldWords::of(const FieldContainerType& type, const std::string& field)
{
    static const Table table = makeAnimationTable();
    const bool isAnimation = type.isDerivedFrom(AnimNodeBase::_type) || type.isDerivedFrom(AnimObject::_type);
    return isAnimation && table.contains(QString::fromStdString(field)) ? found(table, field) : of(field);
}

kxFieldWords kxFieldWords::ofSetting(const std::string& name)
{
    static const Table table = makeSettingTable();
    return found(table, name);
}

QString kxFieldWords::words(const std::string& name)
{
    QString text;
    for (const QChar letter : QString::fromStdString(name))
        text += letter.isUpper() && !text.isEmpty() ? QStringLiteral(" ") + letter.toLower() : QString(letter);
    return text;
}

QString kxFieldWords::value(const FieldValue& value) const
{
    return std::visit(Words{*this}, value) + unit;
}

QString kxFieldWords::changed(const FieldValue& before, const FieldValue& after) const
{
    QString was = value(before), is = value(after);
    const bool isNumbers = before.index() >= 3 && before.index() <= 6; // one float, or several
    if (was == is && isNumbers)
    {
        const QString space = QStringLiteral(" "), comma = QStringLiteral(", ");
        was = QString::fromStdString(kxValueText::of(before)).replace(space, comma) + unit;
        is = QString::fromStdString(kxValueText::of(after)).replace(space, comma) + unit;
    }
    return tr("%1 %2 (was %3)").arg(label, is, was);
}

QString kxFieldWords::number(double value)
{
    const bool isWhole = value == std::floor(value) && std::abs(value) < 1e9;
    return value == 0 ? QStringLiteral("0") : QString::number(value, isWhole ? 'f' : 'g', isWhole ? 0 : 6);
}

QString kxFieldWords::frames(double seconds, double fps)
{
    return number(std::round(kxFrameTime::frame(seconds, fps) * 1000) / 1000);
}

QString kxFieldWords::track(float y)
{
    constexpr float UnitsATrack = 50;
    return number(double(y / UnitsATrack));
}

QString kxFieldWords::tangent(UInt32 type)
{
    static const char* const names[] = {"constant", "linear", "flat", "hermite", "following", "free"};
    return type < std::size(names) ? QString::fromLatin1(names[type]) : QString::number(type);
}

QString kxFieldWords::infinity(UInt32 mode)
{
    return int(mode) < infinityModes().size() ? infinityModes().at(int(mode)) : QString::number(mode);
}

QString kxFieldWords::kind(const FieldContainerType& type, const FieldContainerType* core)
{
    struct Kind
    {
        const FieldContainerType* type;
        const char* word;
    };
    // Derived classes first.
    static const Kind cores[] = {
        {&AnimCurveBase::_type, "channel"},    {&AnimBlockBase::_type, "block"},   {&AnimClipBase::_type, "clip"},
        {&AnimSequenceBase::_type, "trigger"}, {&AnimShotBase::_type, "shot"},     {&AnimObject::_type, "animation"},
        {&Viewpoint::_type, "viewpoint"},      {&Camera::_type, "camera"},         {&Light::_type, "light"},
        {&Switch::_type, "variant set"},       {&SceneSequence::_type, "sequence"}};
    if (type.isDerivedFrom(MaterialBase::_type))
        return tr("material");
    if (!type.isDerivedFrom(Node::_type))
        return QString();
    for (const Kind& entry : cores)
        if (core != nullptr && core->isDerivedFrom(*entry.type))
            return tr(entry.word);
    return type.isDerivedFrom(AnimNodeBase::_type) ? tr("group of animations") : tr("object");
}

int kxFieldWords::order(const QString& kind)
{
    static const QStringList kinds = {tr("clip"),      tr("sequence"), tr("object"),    tr("variant set"),
                                      tr("camera"),    tr("light"),    tr("viewpoint"), tr("group of animations"),
                                      tr("animation"), tr("shot"),     tr("block"),     tr("trigger"),
                                      tr("channel"),   tr("material")};
    const int at = kinds.indexOf(kind);
    return at < 0 ? kinds.size() : at;
}

QString kxFieldWords::joined(const QStringList& texts)
{
    return texts.size() < 2
               ? texts.value(0)
               : tr("%1 and %2").arg(texts.mid(0, texts.size() - 1).join(QStringLiteral(", ")), texts.last());
}

QString kxFieldWords::counted(std::size_t count, const QString& kind)
{
    if (count == 1)
        return QStringLiteral("1 %1").arg(kind);
    const QString plural = kind.contains(QStringLiteral(" of "))
                               ? QString(kind).replace(QStringLiteral(" of "), QStringLiteral("s of "))
                               : kind + QLatin1Char('s');
    return QStringLiteral("%1 %2").arg(count).arg(plural);
}
