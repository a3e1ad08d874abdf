#include <files/assimp/kxColladaNames.h>

#include <QFile>
#include <QXmlStreamReader>

std::map<std::string, std::string> kxColladaNames::byId(const QString& path)
{
    QFile file(path);
    if (!path.endsWith(QLatin1String(".dae"), Qt::CaseInsensitive) || !file.open(QIODevice::ReadOnly))
        return {};
    std::map<std::string, std::string> names;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd())
    {
        if (xml.readNext() != QXmlStreamReader::StartElement || xml.name() != QLatin1String("node"))
            continue;
        const std::string id = xml.attributes().value(QLatin1String("id")).toString().toStdString();
        const std::string name = xml.attributes().value(QLatin1String("name")).toString().toStdString();
        if (id.empty())
            return {};
        names[id] = name.empty() ? id : name;
    }
    return xml.hasError() ? std::map<std::string, std::string>() : names;
}
