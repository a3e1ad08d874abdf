#include <files/assimp/kxPlyHeader.h>

#include <QByteArrayList>
#include <QFile>

#include <algorithm>

namespace
{
constexpr int MostLines = 10000, LongestLine = 4096;
}

QString kxPlyHeader::refusal(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString(); // the reader tells why
    double least = 0;     // bytes: each property of each element takes one, in any form
    double count = 0;
    for (int i = 0; i < MostLines && !file.atEnd(); ++i)
    {
        const QByteArrayList words = file.readLine(LongestLine).simplified().split(' ');
        if (i == 0 && words.front().toLower() != "ply")
            return QString();
        if (words.front() == "end_header")
            return least <= double(file.size()) ? QString() : QStringLiteral("the file claims more than it can hold");
        if (words.front() == "element")
            count = words.size() < 3 ? 0 : words[2].toDouble();
        else if (words.front() == "property")
            least += std::max(count, 0.0);
    }
    return QStringLiteral("the file is cut off: its head has no end");
}
