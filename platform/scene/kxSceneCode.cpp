#include <scene/kxSceneCode.h>

#include <scene/kxScenery.h>

#include <QCoreApplication>
#include <QCryptographicHash>

#include <algorithm>
#include <iterator>

namespace
{
bool isHidden(uint character)
{
    // Letters and a symbol of Unicode that are drawn as nothing.
    constexpr uint Blanks[] = {0x115f, 0x1160, 0x2800, 0x3164, 0xffa0};
    switch (QChar::category(character))
    {
    case QChar::Other_Control:
    case QChar::Separator_Space:
        return character != '\n' && character != '\t' && character != ' ';
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return std::find(std::begin(Blanks), std::end(Blanks), character) != std::end(Blanks);
    }
}
} // namespace

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

QString kxSceneCode::readable(const std::string& text, bool& whole)
{
    QString shown;
    for (const uint character : QString::fromStdString(text).toUcs4())
    {
        if (shown.size() >= MostShown)
        {
            whole = false;
            return shown;
        }
        if (isHidden(character))
            shown += QStringLiteral("<U+%1>").arg(character, 4, 16, QLatin1Char('0'));
        else
            shown += QString::fromUcs4(&character, 1);
    }
    whole = true;
    return shown;
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
