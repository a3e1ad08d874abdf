#include <scene/kxSceneCode.h>

#include <scene/kxScenery.h>

#include <QCoreApplication>
#include <QCryptographicHash>

std::vector<kxSceneCode> kxSceneCode::of(const osg::NodePtr& scenery)
{
    std::vector<kxSceneCode> all;
    osg::traverse(scenery,
                  [&all](const osg::NodePtr& node)
                  {
                      for (kxSceneCode& piece : of(kxScenery::steps(node)))
                      {
                          piece.sequence = node->getNodeName();
                          all.push_back(std::move(piece));
                      }
                      return osg::Action::Continue;
                  });
    return all;
}

std::vector<kxSceneCode> kxSceneCode::of(const std::vector<kxSequenceStep>& steps)
{
    std::vector<kxSceneCode> all;
    for (std::size_t i = 0; i < steps.size(); ++i)
        if (steps[i].kind == kxSequenceStep::Kind::RunPython)
            all.push_back({std::string(), int(i) + 1, steps[i].name});
    return all;
}

QByteArray kxSceneCode::digest(const std::string& text)
{
    return QCryptographicHash::hash(QByteArray::fromRawData(text.data(), int(text.size())), QCryptographicHash::Sha256);
}

QString kxSceneCode::summary(std::size_t count)
{
    return count == 1 ? QCoreApplication::translate("kxSceneCode", "1 sequence step in Python")
                      : QCoreApplication::translate("kxSceneCode", "%1 sequence steps in Python").arg(count);
}
