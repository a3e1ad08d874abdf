#include <clipmaker/kxClipInfo.h>

#include <frame/kxForm.h>

#include <kxScenegraph.h>

#include <QMessageBox>

namespace
{
constexpr kxForm::Texts translated("kxAnimAbstractClipItem");

QString line(const char* title, const QString& value)
{
    return translated(title) + value + QLatin1Char('\n');
}

QString number(double value)
{
    return QString::number(value, 'g', 6);
}

QString time(double seconds, double fps)
{
    return number(seconds) + translated(" seconds (") + number(seconds * fps) + translated(" frames)");
}
} // namespace

QString kxClipInfo::text(const kxAnimManager::kxAnimInfo& info, double fps)
{
    return line("Curves:\t", QString::number(info.curves)) + line("Points:\t", QString::number(info.points)) +
           line("InTangents:\t", QString::number(info.inTangents)) +
           line("OutTangents:\t", QString::number(info.outTangents)) +
           line("ControlPoints:\t", QString::number(info.controlPoints)) +
           line("Start:\t", time(double(info.start), fps)) + line("End:\t", time(double(info.end), fps)) +
           line("Local Scale:\t", number(double(info.localScale))) +
           line("Global Scale:\t", number(double(info.globalScale))) +
           line("Local Offset:\t", time(double(info.localOffset.x()), fps)) +
           line("Global Offset:\t", time(double(info.globalOffset.x()), fps));
}

void kxClipInfo::show(const osg::AnimNodePtr& node)
{
    if (node == osg::NullFC)
        return;
    QMessageBox box;
    box.setText(QString::fromStdString(kxNodeUtils::getName(node)) + translated(" Animation Information"));
    box.setInformativeText(text(kxAnimManager::the()->getInfo(node), kxAnimManager::the()->fps()));
    box.setStandardButtons(QMessageBox::Close);
    box.setDefaultButton(QMessageBox::Close);
    box.exec();
}
