#include <kxIconManager.h>
#include <widgets/kxColors.h>
#include <widgets/kxStyle.h>

#include <QApplication>
#include <QFile>
#include <QPair>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>
#include <QToolTip>

#include <algorithm>

namespace
{
constexpr double FontSize = 9.5; // points

/// A picture (Format_ARGB32) of what can't be pressed: grey and faint.
QImage faint(QImage image)
{
    constexpr double Opacity = 0.38;
    for (int y = 0; y < image.height(); ++y)
    {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        std::for_each_n(line, image.width(),
                        [](QRgb& pixel)
                        { pixel = qRgba(qGray(pixel), qGray(pixel), qGray(pixel), int(qAlpha(pixel) * Opacity)); });
    }
    return image;
}

/// Metrics that a style sheet can't give: row heights, delays, sizes of marks. And the look of disabled icons.
class ProxyStyle : public QProxyStyle
{
public:
    ProxyStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
    {
        switch (metric)
        {
        case PM_SmallIconSize:
            return 16;
        case PM_ToolBarIconSize:
            return 20;
        case PM_LayoutHorizontalSpacing:
        case PM_LayoutVerticalSpacing:
            return 6;
        case PM_LayoutLeftMargin:
        case PM_LayoutTopMargin:
        case PM_LayoutRightMargin:
        case PM_LayoutBottomMargin:
            return 8;
        case PM_ToolBarItemSpacing:
            return 2;
        case PM_ToolBarFrameWidth:
            return 1;
        case PM_ToolBarExtensionExtent:
            return 18; // what doesn't fit is behind it, so it has to be seen
        case PM_DockWidgetSeparatorExtent:
        case PM_SplitterWidth:
            return 5;
        case PM_TreeViewIndentation:
            return 16;
        case PM_MenuPanelWidth:
            return 1;
        default:
            return QProxyStyle::pixelMetric(metric, option, widget);
        }
    }

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override
    {
        switch (hint)
        {
        case SH_ToolTip_WakeUpDelay:
            return 450;
        case SH_DialogButtonBox_ButtonsHaveIcons:
        case SH_EtchDisabledText:
            return 0;
        case SH_ItemView_ShowDecorationSelected:
            return 1;
        case SH_Slider_AbsoluteSetButtons: // a click on the groove of a slider goes there
            return int(Qt::LeftButton);
        default:
            return QProxyStyle::styleHint(hint, option, widget, data);
        }
    }

    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override
    {
        QSize needed = QProxyStyle::sizeFromContents(type, option, size, widget);
        if (type == CT_ItemViewItem)
            needed.setHeight(qMax(needed.height(), 22));
        return needed;
    }

    /// The icons are drawn for dark ground, that of a selected row too: mixed with its colour they would fade.
    QPixmap generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap, const QStyleOption* option) const override
    {
        if (mode == QIcon::Disabled)
        {
            QPixmap shown = QPixmap::fromImage(faint(pixmap.toImage().convertToFormat(QImage::Format_ARGB32)));
            shown.setDevicePixelRatio(pixmap.devicePixelRatio());
            return shown;
        }
        return mode == QIcon::Selected ? pixmap : QProxyStyle::generatedIconPixmap(mode, pixmap, option);
    }
};

QPalette palette()
{
    QPalette colors;
    const auto all = [&colors](QPalette::ColorRole role, const QColor& color) { colors.setColor(role, color); };
    all(QPalette::Window, kxColors::window());
    all(QPalette::WindowText, kxColors::text());
    all(QPalette::Base, kxColors::base());
    all(QPalette::AlternateBase, kxColors::alternateBase());
    all(QPalette::Text, kxColors::text());
    all(QPalette::Button, kxColors::bar());
    all(QPalette::ButtonText, kxColors::text());
    all(QPalette::BrightText, Qt::white);
    all(QPalette::ToolTipBase, kxColors::border());
    all(QPalette::ToolTipText, kxColors::text());
    all(QPalette::PlaceholderText, kxColors::disabledText());
    all(QPalette::Highlight, kxColors::selection());
    all(QPalette::HighlightedText, kxColors::selectionText());
    all(QPalette::Link, kxColors::accent());
    all(QPalette::LinkVisited, kxColors::accent().darker(130));
    all(QPalette::Light, kxColors::outline());
    all(QPalette::Midlight, kxColors::hover());
    all(QPalette::Mid, kxColors::base());
    all(QPalette::Dark, kxColors::trough());
    all(QPalette::Shadow, kxColors::border());
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        colors.setColor(QPalette::Disabled, role, kxColors::disabledText());
    colors.setColor(QPalette::Disabled, QPalette::Highlight, kxColors::bar());
    colors.setColor(QPalette::Disabled, QPalette::HighlightedText, kxColors::disabledText());
    return colors;
}

/// The sheet of the resources with the colours in the places of their names: "@accent;".
QString styleSheet()
{
    QFile file(QStringLiteral(":/style/kxStyle.qss"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QString sheet = QString::fromUtf8(file.readAll());
    const QPair<const char*, QColor> names[] = {
        {"window", kxColors::window()},
        {"bar", kxColors::bar()},
        {"base", kxColors::base()},
        {"trough", kxColors::trough()},
        {"border", kxColors::border()},
        {"outline", kxColors::outline()},
        {"hover", kxColors::hover()},
        {"pressed", kxColors::pressed()},
        {"text", kxColors::text()},
        {"dimText", kxColors::dimText()},
        {"disabledText", kxColors::disabledText()},
        {"accent", kxColors::accent()},
        {"accentText", kxColors::accentText()},
        {"selection", kxColors::selection()},
        {"selectionText", kxColors::selectionText()},
    };
    for (const auto& name : names)
        sheet.replace(QLatin1Char('@') + QLatin1String(name.first) + QLatin1Char(';'),
                      name.second.name() + QLatin1Char(';'));
    return sheet;
}
} // namespace

void kxStyle::apply(QApplication& application)
{
    application.setStyle(new ProxyStyle);
    QFont font = application.font();
    font.setPointSizeF(FontSize);
    application.setFont(font);
    application.setPalette(palette());
    QToolTip::setPalette(palette());
    application.setStyleSheet(styleSheet());
    application.setWindowIcon(kxIconManager::getIcon(QStringLiteral("AppIcon"), {}));
}
