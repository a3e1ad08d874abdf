#include <QKXDockWindowManager.h>
#include <widgets/kxDockContent.h>
#include <widgets/kxDockTitleBar.h>

#include <QAction>
#include <QApplication>
#include <QChildEvent>
#include <QLayout>
#include <QMainWindow>
#include <QMenu>
#include <QPointer>
#include <QTabBar>
#include <QToolBar>

namespace
{
/// What a minimized dock window gets back: properties of the window.
constexpr char FullHeight[] = "fullHeight";
constexpr char ContentHeights[] = "contentHeights"; // a size: minimum and maximum height

bool isOneArea(int area)
{
    return area == Qt::LeftDockWidgetArea || area == Qt::RightDockWidgetArea || area == Qt::TopDockWidgetArea ||
           area == Qt::BottomDockWidgetArea;
}

/// What is below the view is wide, and asks for more than a small screen has beside the other windows.
bool isWide(int area)
{
    return !isOneArea(area) || area == Qt::BottomDockWidgetArea;
}

/// The field that had it last goes on.
void giveFocus(QKXDockWidget* dock)
{
    QWidget* const content = dock->content();
    if (content == nullptr || !dock->isVisible())
        return;
    QWidget* const last = content->focusWidget();
    (last != nullptr ? last : content)->setFocus();
}

/// Lets what is dragged over a tab of dock windows open it, so that it can be dropped into a window behind another.
class TabsOpenToDrags : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        // Qt makes the bars when windows come together.
        if (event->type() == QEvent::ChildPolished)
            if (auto* const bar = qobject_cast<QTabBar*>(static_cast<QChildEvent*>(event)->child()))
            {
                bar->setAcceptDrops(true);
                bar->setChangeCurrentOnDrag(true);
            }
        return QObject::eventFilter(watched, event);
    }
};
} // namespace

QWidget* QKXDockWidget::content() const
{
    const auto* const room = qobject_cast<kxDockContent*>(widget());
    return room != nullptr ? room->widget() : widget();
}

void QKXDockWidget::setMinimized(bool minimized)
{
    if (!widget() || !titleBarWidget() || property(ContentHeights).isValid() == minimized)
        return;
    const QSize before = size();
    const int bar = titleBarWidget()->sizeHint().height();
    // The content stays shown without any height: the layout would take the width from the title bar of a hidden one.
    if (minimized)
    {
        setProperty(FullHeight, before.height());
        setProperty(ContentHeights, QSize(widget()->minimumHeight(), widget()->maximumHeight()));
        widget()->setFixedHeight(0);
    }
    else
    {
        const QSize heights = property(ContentHeights).toSize();
        setProperty(ContentHeights, QVariant());
        widget()->setMinimumHeight(heights.width());
        widget()->setMaximumHeight(heights.height());
    }
    // A docked one gets its size from the main window's layout.
    if (!isFloating())
        return;
    layout()->activate();
    resize(before.width(), minimized ? bar : property(FullHeight).toInt());
}

struct QKXDockWindowManager::Private
{
    QPointer<QMainWindow> mainWindow;
    QList<QPointer<QKXDockWidget>> docks;
    QList<QPointer<QToolBar>> toolBars;

    /// Puts a dock at `area`. Without one it goes to the bottom, into one set of tabs with what is there.
    void place(QKXDockWidget* dock, int area)
    {
        if (isOneArea(area))
            return mainWindow->addDockWidget(Qt::DockWidgetArea(area), dock);
        mainWindow->addDockWidget(Qt::BottomDockWidgetArea, dock);
        for (const QPointer<QKXDockWidget>& other : qAsConst(docks))
            if (other && !other->isFloating() && mainWindow->dockWidgetArea(other) == Qt::BottomDockWidgetArea)
                return mainWindow->tabifyDockWidget(other, dock);
    }
};

QKXDockWindowManager::QKXDockWindowManager(QMainWindow* mainWindow) : QObject(mainWindow), _p(new Private)
{
    _p->mainWindow = mainWindow;
    if (mainWindow != nullptr)
        mainWindow->installEventFilter(new TabsOpenToDrags(this));
}

QKXDockWindowManager::~QKXDockWindowManager()
{
    delete _p;
}

QKXDockWidget* QKXDockWindowManager::add(const QString& name, const QString& category, QWidget* widget,
                                         const QString& toolclip, const QIcon& icon, const QString& title, int area,
                                         bool hidden, QMenu* menu)
{
    QKXDockWidget* const present = getDockWidget(name);
    if (!_p->mainWindow || !widget || (present && present->content()))
        return nullptr;
    delete present;
    auto* dock = new QKXDockWidget(title, _p->mainWindow);
    dock->setObjectName(name); // the key of the remembered layout
    dock->setWindowIcon(icon);
    dock->setProperty("category", category);
    dock->setProperty("toolclip", toolclip);
    dock->setTitleBarWidget(new kxDockTitleBar(dock, icon, menu));
    dock->hide();
    dock->setWidget(isWide(area) ? new kxDockContent(widget) : widget);
    widget->show(); // a former window counts as hidden by its owner; it appears together with the dock
    if (!_p->mainWindow->restoreDockWidget(dock))
    {
        _p->place(dock, area);
        dock->setVisible(!hidden);
    }
    connect(dock->toggleViewAction(), &QAction::triggered, dock,
            [dock](bool isShown)
            {
                if (isShown)
                    dock->raise(); // it may be behind other tabs
            });
    // Without this the field that follows in the main window gets the keys, and what is docked stays behind a tab.
    connect(
        dock, &QDockWidget::topLevelChanged, dock,
        [dock]
        {
            dock->raise();
            giveFocus(dock);
        },
        Qt::QueuedConnection);
    // Nor may what comes to be behind a tab go on taking the keys, unseen.
    connect(
        dock, &QDockWidget::visibilityChanged, dock,
        [this, dock](bool isInFront)
        {
            const QWidget* const focused = QApplication::focusWidget();
            for (const QDockWidget* const behind : _p->mainWindow->tabifiedDockWidgets(dock))
                if (isInFront && focused != nullptr && behind->isAncestorOf(focused))
                    return giveFocus(dock);
        },
        Qt::QueuedConnection);
    _p->docks.append(dock);
    Q_EMIT added(name);
    return dock;
}

QToolBar* QKXDockWindowManager::addToolbar(const QString& name, const QString& category, QWidget* widget, bool visible,
                                           QMenu* menu)
{
    if (!_p->mainWindow || !widget || getToolbar(name))
        return nullptr;
    auto* bar = new QToolBar(name, _p->mainWindow);
    bar->setObjectName(name);
    bar->setProperty("category", category);
    bar->setAllowedAreas(Qt::TopToolBarArea | Qt::BottomToolBarArea);
    bar->setFloatable(false);
    widget->setSizePolicy(QSizePolicy::Expanding, widget->sizePolicy().verticalPolicy());
    bar->addWidget(widget);
    widget->show();
    if (menu)
    {
        bar->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(bar, &QWidget::customContextMenuRequested, menu,
                [bar, menu](const QPoint& place) { menu->popup(bar->mapToGlobal(place)); });
    }
    // A line of its own, so that the widget spans the window.
    _p->mainWindow->addToolBarBreak(Qt::BottomToolBarArea);
    _p->mainWindow->addToolBar(Qt::BottomToolBarArea, bar);
    bar->setVisible(visible);
    _p->toolBars.append(bar);
    Q_EMIT added(name);
    return bar;
}

QToolBar* QKXDockWindowManager::getToolbar(const QString& name) const
{
    for (QToolBar* bar : toolBars())
    {
        if (bar->objectName() == name)
            return bar;
    }
    return nullptr;
}

QKXDockWidget* QKXDockWindowManager::getDockWidget(const QString& name) const
{
    for (QKXDockWidget* dock : dockWidgets())
    {
        if (dock->objectName() == name)
            return dock;
    }
    return nullptr;
}

void QKXDockWindowManager::show(const QString& name)
{
    QKXDockWidget* dock = getDockWidget(name);
    if (!dock)
        return;
    dock->show();
    dock->raise();
    if (dock->isFloating())
        dock->activateWindow();
}

QList<QKXDockWidget*> QKXDockWindowManager::dockWidgets() const
{
    QList<QKXDockWidget*> found;
    for (const QPointer<QKXDockWidget>& dock : qAsConst(_p->docks))
        if (dock)
            found.append(dock);
    return found;
}

QList<QToolBar*> QKXDockWindowManager::toolBars() const
{
    QList<QToolBar*> found;
    for (const QPointer<QToolBar>& bar : qAsConst(_p->toolBars))
    {
        if (bar)
            found.append(bar);
    }
    return found;
}
