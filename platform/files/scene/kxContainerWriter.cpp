#include <files/scene/kxContainerWriter.h>

#include <files/scene/kxProgress.h>

#include <algorithm>

using namespace osg;

void kxContainerWriter::appendKey(QCborStreamWriter& out, const char* key)
{
    out.appendTextString(key, qsizetype(std::char_traits<char>::length(key)));
}

void kxContainerWriter::appendText(QCborStreamWriter& out, const std::string& text)
{
    out.appendTextString(text.data(), qsizetype(text.size()));
}

void kxContainerWriter::writeMap(QCborStreamWriter& out, const std::map<std::string, std::string>& values)
{
    out.startMap(quint64(values.size()));
    for (const auto& [name, value] : values)
    {
        appendText(out, name);
        appendText(out, value);
    }
    out.endMap();
}

void kxContainerWriter::writeMap(QCborStreamWriter& out, const std::map<std::string, double>& values)
{
    out.startMap(quint64(values.size()));
    for (const auto& [name, value] : values)
    {
        appendText(out, name);
        out.append(value);
    }
    out.endMap();
}

quint64 kxContainerWriter::number(const FieldContainerPtr& container) const
{
    const auto found = _numbers.find(container.getFieldContainerId());
    return found == _numbers.end() ? 0 : found->second;
}

std::size_t kxContainerWriter::classOf(const FieldContainerPtr& container)
{
    const FieldContainerType& type = container->getType();
    const auto found = _classByType.find(type.getId());
    if (found != _classByType.end())
        return found->second;
    _classes.push_back(Class{&type, &kxContainerForm::fields(*container)});
    return _classByType[type.getId()] = _classes.size() - 1;
}

void kxContainerWriter::appendNumbers(const FieldDescription& field, const FieldContainer& container,
                                      std::vector<quint64>& numbers) const
{
    const std::size_t start = numbers.size();
    Names::appendNumbers(field, container, numbers);
    _isIncomplete =
        _isIncomplete || std::find(numbers.begin() + std::ptrdiff_t(start), numbers.end(), quint64(0)) != numbers.end();
}

bool kxContainerWriter::collect(const FieldContainerPtr& container)
{
    std::vector<std::pair<FieldContainerPtr, unsigned>> open = {{container, 1u}};
    std::vector<FieldContainerPtr> owned;
    bool flat = true;
    while (!open.empty())
    {
        const auto [next, depth] = open.back();
        open.pop_back();
        if (next == NullFC || !_numbers.emplace(next->getId(), quint32(_containers.size() + 1)).second)
            continue;
        flat = flat && depth <= DeepestNesting;
        const std::size_t classIndex = classOf(next);
        _containers.push_back(next);
        _classOfContainer.push_back(classIndex);
        owned.clear();
        kxContainerForm::ownedBy(next, owned);
        for (auto below = owned.rbegin(); below != owned.rend(); ++below)
            open.emplace_back(*below, depth + 1);
    }
    return flat;
}

bool kxContainerWriter::write(QCborStreamWriter& out, const std::function<quint64()>& position)
{
    appendKey(out, "classes");
    out.startArray(quint64(_classes.size()));
    for (const Class& entry : _classes)
    {
        out.startArray(2);
        appendKey(out, entry.type->getName());
        out.startArray(quint64(entry.fields->size()));
        for (const kxContainerForm::Field& field : *entry.fields)
        {
            out.startArray(2);
            appendKey(out, field.description->name().c_str());
            out.append(quint64(field.kind));
            out.endArray();
        }
        out.endArray();
        out.endArray();
    }
    out.endArray();

    appendKey(out, "containers");
    out.startArray(quint64(_containers.size()));
    for (std::size_t i = 0; i < _containers.size(); ++i)
    {
        if (position)
            _origin.containers.push_back({_containers[i]->getId(), position()});
        writeContainer(out, i);
        if (!kxProgress::goesOn(double(i) / double(_containers.size())))
            return false;
    }
    _origin.end = position ? position() : 0;
    out.endArray();
    return true;
}

void kxContainerWriter::writeContainer(QCborStreamWriter& out, std::size_t index)
{
    const FieldContainerPtr& container = _containers[index];
    out.startArray(3);
    out.append(quint64(_classOfContainer[index]));
    _isIncomplete = false;
    kxContainerForm::writeValues(out, container, *this, _isPacked);
    if (_isIncomplete)
        _origin.incomplete.push_back(container->getId());
    kxContainerForm::writeStructure(out, kxContainerForm::structure(container, *this));
    out.endArray();
}
