#include <trees/kxAnimInfoText.h>

#include <frame/kxForm.h>

#include <kxScenegraph.h>

#include <QMessageBox>
#include <QStringList>

namespace
{
constexpr kxForm::Texts text("kxAnimTreeWidget");

QString timeText(float seconds, double fps)
{
    return QString::number(double(seconds)) + text(" seconds (") + QString::number(double(seconds) * fps) +
           text(" frames)");
}
} // namespace

QString kxAnimInfoText(const kxAnimManager::kxAnimInfo& info, double fps)
{
    return QStringList{text("Curves:\t") + QString::number(info.curves),
                       text("Points:\t") + QString::number(info.points),
                       text("InTangents:\t") + QString::number(info.inTangents),
                       text("OutTangents:\t") + QString::number(info.outTangents),
                       text("ControlPoints:\t") + QString::number(info.controlPoints),
                       text("Start:\t") + timeText(info.start, fps),
                       text("End:\t") + timeText(info.end, fps),
                       text("Local Scale:\t") + QString::number(double(info.localScale)),
                       text("Global Scale:\t") + QString::number(double(info.globalScale)),
                       text("Local Offset:\t") + timeText(info.localOffset.x(), fps),
                       text("Global Offset:\t") + timeText(info.globalOffset.x(), fps)}
        .join(QLatin1Char('\n'));
}

void kxShowAnimInfo(const osg::AnimNodePtr& animation)
{
    if (animation == osg::NullFC)
        return;
    const kxAnimManager* const manager = kxAnimManager::the();
    QMessageBox box;
    box.setTextFormat(Qt::PlainText); // a name may look like markup
    box.setText(QString::fromStdString(kxNodeUtils::getName(animation)) + text(" Animation Information"));
    box.setInformativeText(kxAnimInfoText(manager->getInfo(animation), manager->fps()));
    box.setStandardButtons(QMessageBox::Close);
    box.setDefaultButton(QMessageBox::Close);
    box.exec();
}
