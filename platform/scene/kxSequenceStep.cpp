#include <scene/kxSequenceStep.h>

#include <QJsonArray>
#include <QJsonDocument>

namespace
{
/// In the order of the kinds.
const char* const Words[kxSequenceStep::KindCount] = {"clip", "start",    "viewpoint", "variant",
                                                      "wait", "sequence", "python"};

QJsonValue textValue(const std::string& text)
{
    return QString::fromStdString(text);
}
} // namespace

const char* kxSequenceStep::word(Kind kind)
{
    return Words[std::size_t(kind)];
}

bool kxSequenceStep::kindOf(const std::string& word, Kind& kind)
{
    for (int i = 0; i < KindCount; ++i)
        if (word == Words[i])
        {
            kind = Kind(i);
            return true;
        }
    return false;
}

std::string kxSequenceStep::toText() const
{
    QJsonArray values = {QString::fromLatin1(word(kind))};
    if (kind == Kind::Wait)
        values.append(seconds);
    else
        values.append(textValue(name));
    if (kind == Kind::SetVariant && !choice.empty())
        values.append(textValue(choice));
    return QJsonDocument(values).toJson(QJsonDocument::Compact).toStdString();
}

bool kxSequenceStep::fromText(const std::string& text, kxSequenceStep& step)
{
    const QJsonArray values = QJsonDocument::fromJson(QByteArray::fromStdString(text)).array();
    kxSequenceStep read;
    if (values.size() < 2 || !kindOf(values[0].toString().toStdString(), read.kind))
        return false;
    const bool hasChoice = read.kind == Kind::SetVariant && values.size() == 3 && values[2].isString();
    if (values.size() != (hasChoice ? 3 : 2))
        return false;
    if (read.kind == Kind::Wait)
    {
        read.seconds = values[1].toDouble(-1);
        if (!(read.seconds >= 0 && read.seconds <= LongestWait))
            return false;
    }
    else if (!values[1].isString())
        return false;
    read.name = values[1].toString().toStdString();
    read.choice = hasChoice ? values[2].toString().toStdString() : std::string();
    step = read;
    return true;
}
