#include <files/assimp/kxColladaNames.h>

#include <QFile>
#include <QXmlStreamReader>

kxColladaNames kxColladaNames::of(const QString& path)
{
    QFile file(path);
    if (!path.endsWith(QLatin1String(".dae"), Qt::CaseInsensitive) || !file.open(QIODevice::ReadOnly))
        return {};
    kxColladaNames names;
    bool allHaveIds = true;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd())
    {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        names.hasOrthographic = names.hasOrthographic || xml.name() == QLatin1String("orthographic");
        if (xml.name() != QLatin1String("node"))
            continue;
        const std::string id = xml.attributes().value(QLatin1String("id")).toString().toStdString();
        const std::string name = xml.attributes().value(QLatin1String("name")).toString().toStdString();
        allHaveIds = allHaveIds && !id.empty();
        names.byId[id] = name.empty() ? id : name;
    }
    if (xml.hasError() || !allHaveIds)
        names.byId.clear();
    return names;
}
