#include <files/assimp/kxColladaNames.h>

#include <QFile>
#include <QXmlStreamReader>

#include <assimp/scene.h>
#include <cmath>
#include <vector>

namespace
{
constexpr double Radians = 0.01745329251994329577;
constexpr double Aspect = 4.0 / 3.0; ///< of a lens whose file doesn't say
constexpr double Widest = 177;

struct Optics
{
    bool isOrthographic = false;
    double x = 0, y = 0, aspect = 0; ///< angles in degrees; 0 for what isn't given

    double height() const
    {
        const double wide = x > 0 && x < Widest ? std::tan(x / 2 * Radians) / (aspect > 0 ? aspect : Aspect) : 0;
        return y > 0 && y < Widest ? y : 2 * std::atan(wide) / Radians;
    }
};

/// A node, as an element of the file, with the camera that it shows.
struct Eye
{
    std::string id, name;
    QString camera;
};

std::string text(const QXmlStreamReader& xml, const char* attribute)
{
    return xml.attributes().value(QLatin1String(attribute)).toString().toStdString();
}

/// From the element of a camera to its end.
Optics opticsOf(QXmlStreamReader& xml)
{
    Optics optics;
    bool isPerspective = false; // programs say more in words of their own
    while (!xml.atEnd() && !(xml.readNext() == QXmlStreamReader::EndElement && xml.name() == QLatin1String("camera")))
    {
        optics.isOrthographic = optics.isOrthographic || xml.name() == QLatin1String("orthographic");
        if (xml.name() == QLatin1String("perspective"))
            isPerspective = xml.isStartElement();
        if (!isPerspective || !xml.isStartElement())
            continue;
        double* const value = xml.name() == QLatin1String("xfov")           ? &optics.x
                              : xml.name() == QLatin1String("yfov")         ? &optics.y
                              : xml.name() == QLatin1String("aspect_ratio") ? &optics.aspect
                                                                            : nullptr;
        if (value != nullptr)
            *value = xml.readElementText().toDouble();
    }
    return optics;
}
} // namespace

void kxColladaNames::mend(aiScene& scene) const
{
    for (unsigned i = 0; i < scene.mNumCameras; ++i)
    {
        const auto lens = lenses.find(scene.mCameras[i]->mName.C_Str());
        if (lens == lenses.end())
            continue;
        scene.mCameras[i]->mHorizontalFOV = float(lens->second * Radians);
        scene.mCameras[i]->mAspect = 1;
    }
}

kxColladaNames kxColladaNames::of(const QString& path)
{
    QFile file(path);
    if (!path.endsWith(QLatin1String(".dae"), Qt::CaseInsensitive) || !file.open(QIODevice::ReadOnly))
        return {};
    kxColladaNames names;
    bool allHaveIds = true;
    std::map<QString, Optics> cameras; // by id
    std::vector<Eye> eyes, open;       // of all, and of the nodes around the element at hand
    QXmlStreamReader xml(&file);
    while (!xml.atEnd())
    {
        xml.readNext();
        const bool isNode = xml.name() == QLatin1String("node");
        if (xml.isEndElement() && isNode && !open.empty())
            open.pop_back();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("camera"))
        {
            const QString id = xml.attributes().value(QLatin1String("id")).toString();
            names.hasOrthographic = (cameras[id] = opticsOf(xml)).isOrthographic || names.hasOrthographic;
        }
        if (xml.name() == QLatin1String("instance_camera") && !open.empty())
        {
            eyes.push_back(open.back());
            eyes.back().camera = xml.attributes().value(QLatin1String("url")).toString().mid(1); // without "#"
        }
        if (!isNode)
            continue;
        open.push_back({text(xml, "id"), text(xml, "name"), QString()});
        const Eye& node = open.back();
        allHaveIds = allHaveIds && !node.id.empty();
        names.byId[node.id] = node.name.empty() ? node.id : node.name;
    }
    if (xml.hasError() || !allHaveIds)
        names.byId.clear();
    for (const Eye& eye : eyes)
        names.lenses.emplace(names.byId.empty() ? eye.name : eye.id, cameras[eye.camera].height());
    return names;
}
