#include <files/text/kxSceneText.h>

#include <animation/kxFrameTime.h>
#include <files/scene/kxRestScope.h>
#include <files/text/kxFieldWords.h>
#include <files/text/kxSceneOutline.h>
#include <files/text/kxValueText.h>
#include <osg/AnimCurve.h>
#include <osg/Image.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
constexpr std::size_t PieceSize = 1u << 20;

class Writer
{
public:
    Writer(const kxSceneContent& content, const std::function<bool(const QByteArray&)>& take)
        : _content(content), _outline(content), _take(take)
    {
    }

    bool write()
    {
        const kxRestScope rest(_outline.containers());
        std::map<std::string, std::string> lines;
        for (const auto& [name, value] : _content.animation)
            if (!kxSceneText::isPassing(name))
                kxValueText::append(lines[name], value);
        section("animation", lines);
        for (const std::size_t index : _outline.sorted())
        {
            if (_ended)
                return false;
            thing(index);
        }
        lines.clear();
        for (const auto& [name, value] : _content.settings)
            lines[kxValueText::segment(name)] = kxValueText::quoted(value);
        section("settings", lines);
        return flush(0);
    }

private:
    void section(const std::string& title, const std::map<std::string, std::string>& lines)
    {
        if (lines.empty())
            return;
        head(title);
        for (const auto& [name, value] : lines)
            line(name, value);
    }
    void head(const std::string& title)
    {
        flush(PieceSize);
        _text += (_begun ? "\n[" : "[") + title + "]\n";
        _begun = true;
    }
    void line(const std::string& name, const std::string& value) { _text += name + " = " + value + "\n"; }

    bool flush(std::size_t limit)
    {
        if (_text.size() < std::max<std::size_t>(limit, 1) || _ended)
            return !_ended;
        _ended = !_take(QByteArray::fromRawData(_text.data(), int(_text.size())));
        _text.clear();
        return !_ended;
    }

    void thing(std::size_t index)
    {
        const kxSceneOutline::Thing& thing = _outline.thing(index);
        _lines.clear();
        if (_outline.hasValues(index))
            values(index);
        if (_outline.hasValues(index) && !thing.gathersAnimations)
            _lines.push_back("class = " + _outline.className(index));
        std::sort(_lines.begin(), _lines.end());
        for (const std::size_t child : thing.children)
            if (!_outline.thing(child).gathersAnimations)
                _lines.push_back("child = " + _outline.thing(child).segment);
        const AnimCurvePtr curve = thing.shownBy == index ? _outline.curve(index) : AnimCurvePtr();
        if (_lines.empty() && curve == NullFC)
            return;
        head(_outline.path(index));
        for (const std::string& text : _lines)
            _text += text + "\n";
        if (curve != NullFC)
            for (const CCPnt& point : curve->getControlPoints())
                key(point);
    }

    void values(std::size_t index)
    {
        const kxSceneOutline::Thing& thing = _outline.thing(index);
        if (thing.segment != thing.name && !thing.gathersAnimations)
            _lines.push_back("name = " + kxValueText::quoted(thing.name));
        for (const auto& [name, text] : _outline.furtherNames(index))
            _lines.push_back((name == "name" ? "core.name = " : name + " = ") + kxValueText::quoted(text));
        if (thing.shownBy != index)
            _lines.push_back("shared with = " + _outline.path(thing.shownBy));
        if (thing.animatedWith != kxSceneOutline::None)
            _lines.push_back("animated with = " + _outline.path(thing.animatedWith));
        for (const kxSceneOutline::Value& entry : _outline.values(index, thing.shownBy == index))
            value(entry.name, *entry.field, entry.container);
    }

    void value(const std::string& name, const FieldDescription& field, const FieldContainerPtr& container)
    {
        const FieldValue value = field.value(*container);
        if (const auto* const reference = std::get_if<FieldContainerPtr>(&value))
            return this->reference(name, *reference);
        if (const auto* const list = std::get_if<std::vector<FieldContainerPtr>>(&value))
        {
            for (const FieldContainerPtr& each : *list)
                reference(name, each);
            return;
        }
        if (std::holds_alternative<MField<CCPnt, 0>>(value))
            return;
        if (const auto* const texts = std::get_if<std::vector<std::string>>(&value))
        {
            std::size_t number = 0;
            for (const std::string& text : *texts)
                _lines.push_back(name + " " + padded(++number) + " = " + kxValueText::quoted(text));
            return;
        }
        if (field.isAnimatable() || !(value == initial(container->getType(), field)))
            _lines.push_back(name + " = " + kxValueText::of(value));
    }

    /// Sorted as text, numbers of a list keep their order.
    static std::string padded(std::size_t number)
    {
        const std::string text = std::to_string(number);
        return std::string(text.size() < 4 ? 4 - text.size() : 0, '0') + text;
    }

    void reference(const std::string& name, const FieldContainerPtr& container)
    {
        if (container == NullFC)
            return;
        if (const std::size_t index = _outline.find(container); index != kxSceneOutline::None)
            _lines.push_back(name + " = " + _outline.path(index));
        else if (const ImagePtr image = ImagePtr::dcast(container); image != NullFC)
            _lines.push_back(name + " = " + kxSceneOutline::imageText(*image));
        else
            for (const FieldDescription& field : container->getType().fields())
                if (!field.isTransient())
                    value(name + "." + field.name(), field, container);
    }

    /// What a new container of the class has.
    const FieldValue& initial(const FieldContainerType& type, const FieldDescription& field)
    {
        const auto found = _initial.find(&field);
        if (found != _initial.end())
            return found->second;
        FieldValue value = false;
        if (type.isCreatable())
        {
            const osg::Share<FieldContainer> container(FCPtr<FieldContainer>(type.create()));
            value = field.value(*container);
        }
        return _initial[&field] = value;
    }

    void key(const CCPnt& key)
    {
        _text += "key ";
        kxValueText::append(_text, key.x());
        _text += " (frame ";
        kxValueText::append(_text, std::round(kxFrameTime::frame(double(key.x()), _outline.fps()) * 1000) / 1000);
        _text += ") = ";
        kxValueText::append(_text, key.y());
        side(", in ", key.inType, key.intangent());
        side(", out ", key.outType, key.outtangent());
        _text += '\n';
        if (_text.size() >= PieceSize)
            flush(PieceSize);
    }
    void side(const char* word, UInt32 type, const Vec2f& vector)
    {
        static const std::vector<std::string> names = []
        {
            std::vector<std::string> texts;
            for (UInt32 i = 0; i <= UInt32(TangentType::Free); ++i)
                texts.push_back(kxFieldWords::tangent(i).toStdString());
            return texts;
        }();
        _text += word + (type < names.size() ? names[type] : std::to_string(type)) + ' ';
        kxValueText::append(_text, vector.x());
        _text += ' ';
        kxValueText::append(_text, vector.y());
    }

    const kxSceneContent& _content;
    const kxSceneOutline _outline;
    const std::function<bool(const QByteArray&)>& _take;
    std::string _text;
    std::vector<std::string> _lines; // of a section
    std::unordered_map<const FieldDescription*, FieldValue> _initial;
    bool _begun = false;
    bool _ended = false;
};
} // namespace

bool kxSceneText::write(const kxSceneContent& content, const std::function<bool(const QByteArray& piece)>& take)
{
    return Writer(content, take).write();
}

QByteArray kxSceneText::of(const kxSceneContent& content)
{
    QByteArray text;
    write(content,
          [&text](const QByteArray& piece)
          {
              text += piece;
              return true;
          });
    return text;
}

bool kxSceneText::isPassing(const std::string& setting)
{
    return setting == "currentFrame";
}
