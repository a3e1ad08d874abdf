#include <kxIconManager.h>
#include <kxPlatform.h>
#include <widgets/kxColors.h>
#include <widgets/kxDockTitleBar.h>

#include <QDockWidget>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QToolButton>

kxDockTitleBar::kxDockTitleBar(QDockWidget* dock, const QIcon& icon, QMenu* menu)
    : QWidget(dock), _dock(dock), _picture(new QLabel(this)), _title(new QLabel(this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(7, 2, 3, 2);
    layout->setSpacing(3);
    const int size = kxPlatform::getSmallIconSize();
    _picture->setPixmap(icon.pixmap(size, size));
    _picture->setVisible(!icon.isNull());
    _title->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->addWidget(_picture);
    layout->addWidget(_title, 1);
    if (menu)
    {
        QToolButton* button = addButton(QStringLiteral("Menu"), tr("Menu"));
        button->setMenu(menu);
        button->setPopupMode(QToolButton::InstantPopup);
    }
    _float = addButton(QStringLiteral("Float"), tr("Float or dock"));
    _close = addButton(QStringLiteral("Close"), tr("Close"));
    connect(_float, &QToolButton::clicked, dock, [dock] { dock->setFloating(!dock->isFloating()); });
    connect(_close, &QToolButton::clicked, dock, &QDockWidget::close);
    connect(dock, &QWidget::windowTitleChanged, this, &kxDockTitleBar::updateTitle);
    connect(dock, &QDockWidget::featuresChanged, this, &kxDockTitleBar::updateButtons);
    updateTitle();
    updateButtons();
}

QSize kxDockTitleBar::minimumSizeHint() const
{
    return {80, layout()->sizeHint().height()};
}

QToolButton* kxDockTitleBar::addButton(const QString& icon, const QString& toolTip)
{
    auto* button = new QToolButton(this);
    button->setObjectName(QStringLiteral("DockTitleButton"));
    button->setIcon(kxIconManager::getIcon(icon, {}));
    button->setIconSize(QSize(14, 14));
    button->setFixedSize(20, 20);
    button->setAutoRaise(true);
    button->setToolTip(toolTip);
    button->setAccessibleName(toolTip);
    button->setFocusPolicy(Qt::TabFocus);
    layout()->addWidget(button);
    return button;
}

void kxDockTitleBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), kxColors::bar());
    painter.fillRect(QRect(0, height() - 1, width(), 1), kxColors::border());
}

void kxDockTitleBar::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    updateTitle();
}

void kxDockTitleBar::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange)
        updateTitle();
    QWidget::changeEvent(event);
}

void kxDockTitleBar::updateTitle()
{
    layout()->activate();
    const QString title = _dock->windowTitle();
    const QString shown = _title->fontMetrics().elidedText(title, Qt::ElideRight, _title->width());
    if (_title->text() != shown)
        _title->setText(shown);
}

void kxDockTitleBar::updateButtons()
{
    _float->setVisible(_dock->features() & QDockWidget::DockWidgetFloatable);
    _close->setVisible(_dock->features() & QDockWidget::DockWidgetClosable);
}
