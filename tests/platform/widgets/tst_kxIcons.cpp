#include <QKXToolBar.h>
#include <kxCapturedStderr.h>
#include <kxIconManager.h>
#include <kxPlatform.h>
#include <widgets/kxColors.h>
#include <widgets/kxStyle.h>

#include <QDialogButtonBox>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>

namespace
{
/// Opaque enough pixels of a picture, and whether any of them is coloured.
struct Ink
{
    int pixels = 0;
    bool coloured = false;
};

Ink inkOf(const QImage& image)
{
    Ink ink;
    for (int y = 0; y < image.height(); ++y)
    {
        for (int x = 0; x < image.width(); ++x)
        {
            const QColor color = image.pixelColor(x, y);
            if (color.alpha() < 24)
                continue;
            ++ink.pixels;
            ink.coloured = ink.coloured || (color.alpha() > 80 && color.saturation() > 60);
        }
    }
    return ink;
}
} // namespace

class tst_kxIcons : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void namesOfTheToolsLoad()
    {
        const QString names =
            QStringLiteral("KeyAll KeySelected CenterCurves Close Optimize JumpStart OneFrameBack PlayBackSpecial Stop "
                           "PlaySpecial OneFrameForward JumpEnd CreateAnimationBlock FrameCurves ConstantTangents "
                           "LinearTangents FlatTangents HermiteTangents FollowingTangents BreakTangents "
                           "HorizontalGridSnapping VerticalGridSnapping ModuleCurveEditor ModuleClipMaker "
                           "ModulePostProcessing Reload CreateNew FrameClip RemoveUnused Delete Search Open Save Undo "
                           "Redo Import Export New Render FrameAll Move Rotate Scale Select Play Console Log Help "
                           "Visible Hidden Warning Error Info AppIcon Menu Float");
        QList<QImage> seen;
        for (const QString& name : names.split(' '))
        {
            const QIcon icon = kxIconManager::getIcon(name, {});
            for (const int side : {16, 24, 32, 48})
            {
                const QImage image = icon.pixmap(side, side).toImage();
                QVERIFY2(image.size() == QSize(side, side), qPrintable(name));
                const int ink = inkOf(image).pixels;
                QVERIFY2(ink > side * side / 16, qPrintable(name));
                // At a pixel ratio of 2 it is drawn at twice the size, not stretched to it.
                QImage fine(2 * side, 2 * side, QImage::Format_ARGB32_Premultiplied);
                fine.setDevicePixelRatio(2);
                fine.fill(Qt::transparent);
                QPainter painter(&fine);
                icon.paint(&painter, 0, 0, side, side);
                QVERIFY2(fine == icon.pixmap(2 * side, 2 * side).toImage(), qPrintable(name));
            }
            // No two tools look the same.
            const QImage image = icon.pixmap(48, 48).toImage();
            QVERIFY2(!seen.contains(image), qPrintable(name));
            seen.append(image);
        }
        QVERIFY(!kxIconCache::General::getSearchIcon().isNull());
    }

    void picturesLoad()
    {
        for (const char* name :
             {"GroupNode",     "Node",         "TransformNode", "GeometryNode", "SwitchNode",   "CameraNode",
              "LightNode",     "AnimBlock",    "AnimClip",      "AnimCurve",    "AnimSequence", "AnimShot",
              "AnimWizClip",   "Material",     "lockTrack",     "unlockTrack",  "lockTrackOff", "lockTrackOn",
              "unlockTrackOn", "showTrackOff", "showTrackOn",   "hideTrackOff", "hideTrackOn"})
        {
            const QPixmap picture = kxIconManager::get(QStringLiteral("scenegraph/%1.svg").arg(name));
            QCOMPARE(kxIconManager::get(QStringLiteral("scenegraph/%1.svg").arg(name)).cacheKey(),
                     picture.cacheKey()); // drawn once for thousands of rows
            QVERIFY2(!picture.isNull() && picture.width() >= 20, name);
            QVERIFY2(inkOf(picture.toImage()).pixels > 30, name);
            const bool hot = QByteArray(name).endsWith("On");
            QVERIFY2(!hot || inkOf(picture.toImage()).coloured, name);
        }
        QVERIFY(!QIcon(":/style/intermediate.png").pixmap(16, 16).isNull());
    }

    void unknownNamesAreEmpty()
    {
        for (const char* name : {"", "NoSuchIcon", "../style/check", "scenegraph"})
        {
            QVERIFY(kxIconManager::getIcon(name, {}).isNull());
            QVERIFY(kxIconManager::get(name).isNull());
        }
        kxCapturedStderr said;
        for (int i = 0; i < 2; ++i)
            kxIconManager::getIcon("NotThereEither", {});
        QCOMPARE(said.text().count("There is no icon named \"NotThereEither\""), 1);
        // A theme without its own picture takes the standard one.
        QVERIFY(!kxIconManager::getIcon("Stop", "NoSuchTheme").isNull());
    }

    void styleKnowsItsColours()
    {
        kxStyle::apply(*qApp);
        QVERIFY(!qApp->styleSheet().isEmpty());
        const QDialogButtonBox box(QDialogButtonBox::Ok);
        QVERIFY(box.buttons().first()->icon().isNull());
        QKXToolBar bar("Tools");
        bar.addAction("Key");
        const auto* const tool = qobject_cast<QToolButton*>(bar.widgetForAction(bar.actions().first()));
        QCOMPARE(tool->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
        QCOMPARE(tool->iconSize(), QSize(kxPlatform::getSmallIconSize(), kxPlatform::getSmallIconSize()));
        const QPalette palette = qApp->palette();
        const std::tuple<QPalette::ColorGroup, QPalette::ColorRole, QColor> roles[] = {
            {QPalette::Active, QPalette::Window, kxColors::window()},
            {QPalette::Active, QPalette::Text, kxColors::text()},
            {QPalette::Inactive, QPalette::Text, kxColors::text()},
            {QPalette::Disabled, QPalette::Text, kxColors::disabledText()},
            {QPalette::Disabled, QPalette::ButtonText, kxColors::disabledText()},
            {QPalette::Active, QPalette::LinkVisited, kxColors::accent().darker(130)}};
        for (const auto& [group, role, color] : roles)
            QCOMPARE(palette.color(group, role), color);
        QVERIFY2(!qApp->styleSheet().contains('@'), "a colour of the sheet has no value");
        const QRegularExpression urls(QStringLiteral("url\\(([^)]*)\\)"));
        auto matches = urls.globalMatch(qApp->styleSheet());
        QVERIFY(matches.hasNext());
        while (matches.hasNext())
        {
            const QString file = matches.next().captured(1);
            QVERIFY2(QFile::exists(file), qPrintable(file));
        }
    }
};

QTEST_MAIN(tst_kxIcons)
#include "tst_kxIcons.moc"
