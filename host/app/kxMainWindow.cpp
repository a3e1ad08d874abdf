#include "kxMainWindow.h"

#include "kxCleanView.h"
#include "kxCompareDialog.h"
#include "kxDockState.h"
#include "kxFileBar.h"
#include "kxFileDialogs.h"
#include "kxFilmPanel.h"
#include "kxFinishedClips.h"
#include "kxGuideWindow.h"
#include "kxHostSettings.h"
#include "kxLogNotice.h"
#include "kxMainMenus.h"
#include "kxRenderDialog.h"
#include "kxRenderJob.h"
#include "kxRenderProgress.h"
#include "kxShortcutsDialog.h"
#include "kxTrustKeeper.h"
#include "kxTypedText.h"
#include "kxVersionKeeper.h"
#include "kxVersionsDialog.h"
#include "kxWelcome.h"

#include <journal/kxHistory.h>
#include <kernel/kxHeldMessages.h>
#include <kernel/kxHostHooks.h>
#include <kernel/kxSelection.h>
#include <kxAnimManager.h>
#include <kxIconManager.h>
#include <kxLog.h>
#include <kxPlatform.h>
#include <kxScenegraph.h>
#include <panels/kxLogPanel.h>
#include <panels/kxMaterialPanel.h>
#include <panels/kxPreferencesDialog.h>
#include <panels/kxPropertyPanel.h>
#include <panels/kxSceneTreePanel.h>
#include <panels/kxSceneryPanel.h>
#include <panels/kxUndoPanel.h>
#include <panels/kxVersionPanel.h>
#include <python/kxInterpreter.h>
#include <python/kxPythonConsole.h>
#include <scene/kxScene.h>
#include <scenery/kxSceneryActions.h>
#include <scenery/kxSceneryStage.h>
#include <trust/kxCodeTrust.h>
#include <view/kxView3D.h>
#include <view/kxViewActions.h>
#include <widgets/kxColors.h>

#include <QApplication>
#include <QCloseEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QScreen>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>
#include <memory>

namespace
{
constexpr int LayoutVersion = 2;
constexpr QSize FirstSize(1600, 950);
// Of the first layout, in pixels; between them, a share of the window.
constexpr int LeftWidth[] = {220, 290};
constexpr int SmallestLeft = 170; // names stay readable; docks that shrink with a narrow window don't grow back with it
constexpr int RightWidth[] = {280, 340};
constexpr int BottomHeight[] = {180, 250};
// For a tool that works in a dock: what it wants, within parts of the window's height.
constexpr int ToolHeight = 420;
constexpr int ToolHeightPercent[] = {40, 52};

QStringList localFiles(const QMimeData* data)
{
    QStringList files;
    for (const QUrl& url : data->urls())
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    return files;
}

/// Of the window within its frame.
QSize largestSize()
{
    const QSize room = QGuiApplication::primaryScreen()->availableSize();
    return {room.width() * 96 / 100, room.height() * 94 / 100};
}

/// Qt counts a window behind another tab, and what lies below the title of a minimized one, as visible.
bool isInSight(const QWidget* widget)
{
    const QWidget* above = widget;
    while (above != nullptr && qobject_cast<const QDockWidget*>(above) == nullptr)
        above = above->parentWidget();
    const auto* const dock = static_cast<const QDockWidget*>(above);
    if (dock == nullptr)
        return true;
    const QWidget* const part = dock->widget()->isAncestorOf(widget) ? dock->widget() : dock;
    // What is covered by parts of its own is seen by them.
    const auto isSeen = [](const QWidget* one) { return !one->visibleRegion().isEmpty(); };
    const QList<QWidget*> below = part->findChildren<QWidget*>();
    return isSeen(part) || std::any_of(below.begin(), below.end(), isSeen);
}
} // namespace

kxMainWindow::kxMainWindow(QWidget* parent)
    : QMainWindow(parent), _document(new kxDocument(this)), _docks(new QKXDockWindowManager(this)),
      _selectionText(new QLabel(this)), _notice(new QLabel(this)), _hint(new QLabel(this))
{
    setObjectName(QStringLiteral("_mainWindow"));
    setAcceptDrops(true);
    setDockNestingEnabled(true);
    setDockOptions(AnimatedDocks | AllowNestedDocks | AllowTabbedDocks);
    setTabPosition(Qt::AllDockWidgetAreas, QTabWidget::North);
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    kxHostHooks::the().setMainWindow(this);
    kxHostHooks::the().setDockWindowManager(_docks);
    kxFileDialogs::install(*_document, this);

    _view = new kxView3D(this);
    _view->setObjectName(QStringLiteral("_view"));
    _stage = new kxSceneryStage(_view, this);
    _sceneryActions = new kxSceneryActions(_stage, this);
    new kxWelcome(this, _view);
    _menus = new kxMainMenus(this);
    createDocks();
    _versionKeeper = new kxVersionKeeper(this);
    _finishedClips = new kxFinishedClips(this);
    _cleanView = new kxCleanView(this, _view);
    _trust = new kxTrustKeeper(this, _view);
    connect(_film, &kxFilmPanel::fullScreenAsked, this, [this] { _cleanView->set(true); });
    new kxFileBar(*_document, _view);
    connect(&kxHistory::the(), &kxHistory::toBeWalked, this, &kxTypedText::finish);
    _view->addAction(_film->playAction());
    connect(_versions, &kxVersionPanel::goToAsked, _versionKeeper, &kxVersionKeeper::goTo);
    connect(_versions, &kxVersionPanel::saveAsAsked, _versionKeeper,
            [this](qint64 number) { _versionKeeper->saveAs(kxVersions::the().store(), number, _document->name()); });
    createToolBar();
    _menus->addObjectKeys(_view);
    _menus->addObjectKeys(_sceneTree);

    QPalette colors = _notice->palette();
    colors.setColor(QPalette::WindowText, kxColors::accent());
    _notice->setPalette(colors);
    colors.setColor(QPalette::WindowText, kxColors::disabledText());
    _hint->setPalette(colors);
    _hint->setContentsMargins(6, 0, 0, 0);
    statusBar()->addWidget(_hint);
    connect(_view, &kxView3D::toolChanged, this, &kxMainWindow::updateHint);
    statusBar()->addPermanentWidget(_notice);
    statusBar()->addPermanentWidget(_selectionText);
    connect(_document, &kxDocument::changed, this, &kxMainWindow::updateTitle);
    connect(_document, &kxDocument::saved, this,
            [this](const QString& file) { say(tr("Saved '%1'").arg(QFileInfo(file).fileName())); });
    _view->setPictureSize(kxRenderDialog::lastSize());
    connect(_document, &kxDocument::opened, _view, &kxView3D::showOpened);
    connect(_document, &kxDocument::opened, &_film->player(), &kxFilmPlayer::startOver);
    connect(&kxSelection::the(), &kxSelection::nodesChanged, this, &kxMainWindow::updateSelectionText);
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxMainWindow::updateSelectionText);
    updateTitle();
    updateSelectionText();
}

kxMainWindow::~kxMainWindow() = default;

void kxMainWindow::createToolBar()
{
    auto* const bar = new QToolBar(tr("Tools"), this);
    bar->setObjectName(QStringLiteral("Tools"));
    bar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    bar->setIconSize(QSize(kxPlatform::getMediumIconSize(), kxPlatform::getMediumIconSize()));
    bar->setMovable(false);
    bar->addActions(_menus->quickActions());
    bar->addSeparator();
    _view->actions3D()->addTo(bar);
    addToolBar(Qt::TopToolBarArea, bar);
}

void kxMainWindow::createDocks()
{
    _sceneTree = new kxSceneTreePanel(_menus->objectMenu());
    _properties = new kxPropertyPanel;
    _materials = new kxMaterialPanel;
    _scenery = new kxSceneryPanel(_stage, _sceneryActions);
    _film = new kxFilmPanel(_stage);
    _undo = new kxUndoPanel;
    _versions = new kxVersionPanel;
    _log = new kxLogPanel;
    _console = new kxPythonConsole;
    const auto add = [this](const char* name, QWidget* widget, const char* icon, const QString& title, int area)
    {
        _docks->add(QString::fromLatin1(name), QStringLiteral("Scene"), widget, QString(),
                    kxIconManager::getIcon(QString::fromLatin1(icon), QString()), title, area, false, nullptr);
    };
    add("Scene", _sceneTree, "SceneTree", tr("Scene"), Qt::LeftDockWidgetArea);
    add("Materials", _materials, "Materials", tr("Materials"), Qt::LeftDockWidgetArea);
    add("Properties", _properties, "Properties", tr("Properties"), Qt::RightDockWidgetArea);
    add("Scenery", _scenery, "scenegraph/Viewpoint", tr("Scenery"), Qt::RightDockWidgetArea);
    add("Film", _film, "Film", tr("Film"), Qt::RightDockWidgetArea);
    add("History", _undo, "History", tr("History"), Qt::RightDockWidgetArea);
    add("Versions", _versions, "Versions", tr("Versions"), Qt::RightDockWidgetArea);
    add("Log", _log, "Log", tr("Log"), Qt::BottomDockWidgetArea);
    add("Console", _console, "Console", tr("Python Console"), Qt::BottomDockWidgetArea);
    _sceneTree->setMinimumWidth(SmallestLeft);
    tabifyDockWidget(_docks->getDockWidget(QStringLiteral("Properties")),
                     _docks->getDockWidget(QStringLiteral("Scenery")));
    tabifyDockWidget(_docks->getDockWidget(QStringLiteral("Scenery")), _docks->getDockWidget(QStringLiteral("Film")));
    tabifyDockWidget(_docks->getDockWidget(QStringLiteral("History")),
                     _docks->getDockWidget(QStringLiteral("Versions")));
    tabifyDockWidget(_docks->getDockWidget(QStringLiteral("Log")), _docks->getDockWidget(QStringLiteral("Console")));
    QDockWidget* const log = _docks->getDockWidget(QStringLiteral("Log"));
    log->raise();
    new kxLogNotice(log, statusBar());
}

void kxMainWindow::arrange()
{
    const auto dock = [this](const char* name) { return _docks->getDockWidget(QString::fromLatin1(name)); };
    const int width = this->width(), height = this->height();
    const auto within = [](int size, const int(&limits)[2]) { return std::clamp(size, limits[0], limits[1]); };
    resizeDocks({dock("Scene"), dock("Properties")},
                {within(width * 19 / 100, LeftWidth), within(width * 23 / 100, RightWidth)}, Qt::Horizontal);
    resizeDocks({dock("Scene"), dock("Materials")}, {height * 58 / 100, height * 42 / 100}, Qt::Vertical);
    resizeDocks({dock("Properties"), dock("History")}, {height * 70 / 100, height * 30 / 100}, Qt::Vertical);
    resizeDocks({dock("Log")}, {within(height * 28 / 100, BottomHeight)}, Qt::Vertical);
    dock("Log")->raise();
    dock("Properties")->raise();
    dock("History")->raise();
}

void kxMainWindow::addTools()
{
    auto* const bar = findChild<QToolBar*>(QStringLiteral("Tools"));
    auto* const room = new QWidget;
    room->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(room);
    for (QKXDockWidget* const dock : _docks->dockWidgets())
    {
        if (dock->property("category").toString() != QStringLiteral("Animation"))
            continue;
        QAction* const action = bar->addAction(dock->windowIcon(), dock->windowTitle());
        action->setToolTip(tr("Show the window \"%1\"").arg(dock->windowTitle()));
        connect(action, &QAction::triggered, this, [this, dock] { _docks->show(dock->objectName()); });
        static_cast<QToolButton*>(bar->widgetForAction(action))->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        // Afterwards: Qt's layout, which says so in the middle of its work, doesn't bear another size there. What comes
        // back with a layout has its size from there.
        connect(dock, &QDockWidget::visibilityChanged, this,
                [this, dock](bool isVisible)
                {
                    if (isVisible && !_isRestoring && !_cleanView->isLeaving())
                        QMetaObject::invokeMethod(
                            dock, [this, dock] { giveRoom(dock); }, Qt::QueuedConnection);
                });
    }
}

void kxMainWindow::giveRoom(QKXDockWidget* tool)
{
    if (!tool->isVisible() || tool->isFloating())
        return;
    const int least =
        std::clamp(ToolHeight, height() * ToolHeightPercent[0] / 100, height() * ToolHeightPercent[1] / 100);
    if (tool->height() < least)
        resizeDocks({tool}, {least}, Qt::Vertical);
    // The windows at the sides give way, as far as they can.
    const int missing = tool->content()->minimumSizeHint().width() - tool->width();
    if (missing <= 0)
        return;
    QList<QDockWidget*> sides;
    QList<int> widths;
    for (const char* const name : {"Scene", "Properties"})
    {
        QDockWidget* const side = _docks->getDockWidget(QString::fromLatin1(name));
        if (!side->isVisible() || side->isFloating())
            continue;
        sides.append(side);
        widths.append(std::max(1, side->width() - (missing + 1) / 2));
    }
    resizeDocks(sides, widths, Qt::Horizontal);
}

void kxMainWindow::finishLayout()
{
    _menus->fillViewMenu();
    addTools();
    resize(largestSize().boundedTo(FirstSize));
    arrange();
    _initialState = saveState(LayoutVersion);
    if (!_unattended)
        restoreLayout();
}

void kxMainWindow::restoreLayout()
{
    kxHostSettings settings;
    restoreGeometry(settings.value(QStringLiteral("geometry")).toByteArray());
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (!isMaximized() && !isFullScreen() && !screen->availableVirtualGeometry().contains(geometry()))
    {
        // It was remembered on a larger screen, or on one that is gone.
        resize(size().boundedTo(largestSize()));
        move(screen->availableGeometry().center() - rect().center());
    }
    restoreDocks(settings.value(QStringLiteral("layout")).toByteArray());
}

void kxMainWindow::restoreDocks(const QByteArray& state)
{
    const QScopedValueRollback<bool> restoring(_isRestoring, true);
    kxDockState::restore(*this, state, LayoutVersion);
}

void kxMainWindow::saveLayout()
{
    _cleanView->set(false);
    kxHostSettings settings;
    settings.setValue(QStringLiteral("geometry"), saveGeometry());
    settings.setValue(QStringLiteral("layout"), saveState(LayoutVersion));
}

void kxMainWindow::setCleanView(bool on)
{
    _cleanView->set(on);
}

bool kxMainWindow::isCleanView() const
{
    return _cleanView->isOn();
}

void kxMainWindow::resetLayout()
{
    restoreDocks(_initialState);
    arrange();
}

void kxMainWindow::updateHint()
{
    const QString view = tr("Drag: turn \u00b7 Middle button: pan \u00b7 Wheel: zoom \u00b7 F: frame the selection");
    const auto nodes = kxSelection::the().nodes();
    if (nodes.empty())
        _hint->setText(tr("Click selects \u00b7 ") + view);
    else if (_view->tool() == kxGizmo::SelectTool)
        _hint->setText(tr("W moves, E rotates, R scales the selection \u00b7 ") + view);
    else
        _hint->setText(tr("Drag a handle, Ctrl in steps, Esc takes it back \u00b7 Q: select only"));
}

void kxMainWindow::updateTitle()
{
    setWindowTitle(QStringLiteral("%1[*] - kxhost").arg(_document->name()));
    setWindowModified(_document->isUnsaved());
    setWindowFilePath(_document->path());
}

void kxMainWindow::updateSelectionText()
{
    const auto nodes = kxSelection::the().nodes();
    updateHint();
    _selectionText->setText(nodes.empty()       ? QString()
                            : nodes.size() == 1 ? QString::fromStdString(kxNodeUtils::getName(nodes.front()))
                                                : tr("%n objects selected", nullptr, int(nodes.size())));
}

void kxMainWindow::showNotice(const QString& text)
{
    _notice->setText(text);
    _notice->setVisible(!text.isEmpty());
}

bool kxMainWindow::focusNextPrevChild(bool next)
{
    QWidget* const before = focusWidget() != nullptr ? focusWidget() : this;
    const auto after = [next](const QWidget* widget)
    { return next ? widget->nextInFocusChain() : widget->previousInFocusChain(); };
    for (QWidget* widget = after(before); widget != before; widget = after(widget))
    {
        const bool takesTab = (widget->focusPolicy() & Qt::TabFocus) != 0 && widget->focusProxy() == nullptr &&
                              widget->isEnabled() && widget->isVisible() && widget->window() == this;
        if (!takesTab || !isInSight(widget))
            continue;
        widget->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }
    return false;
}

void kxMainWindow::closeEvent(QCloseEvent* event)
{
    if (!_unattended && (!_document->mayLeave() || !_console->mayClose()))
        return event->ignore();
    if (!_unattended)
        saveLayout();
    event->accept();
}

void kxMainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (localFiles(event->mimeData()).isEmpty())
        return;
    event->acceptProposedAction();
    statusBar()->showMessage(tr("Drop to open; hold Shift to add to the scene"), 5000);
}

void kxMainWindow::dropEvent(QDropEvent* event)
{
    const QStringList files = localFiles(event->mimeData());
    const bool adds = (event->keyboardModifiers() & Qt::ShiftModifier) != 0;
    event->acceptProposedAction();
    // The other program waits for the drop to end: questions come after it.
    QMetaObject::invokeMethod(
        this,
        [this, files, adds]
        {
            bool open = !adds;
            for (const QString& file : files)
            {
                const bool isScript = QFileInfo(file).suffix() == QLatin1String("py");
                if (isScript && files.size() == 1)
                    runScript(file);
                else if (isScript) // maybe nothing that the user looked at
                    kxLog::warning(tr("'%1' came among other files and wasn't run.").arg(QFileInfo(file).fileName()));
                else if (open ? !_document->openFile(file) : !_document->importFile(file))
                    return;
                else
                    open = false; // several files: the others join the first
            }
        },
        Qt::QueuedConnection);
}

QMenu* kxMainWindow::createPopupMenu()
{
    return nullptr; // docks have title bars of their own, and the View menu lists them
}

void kxMainWindow::openPreferences(const QString& page)
{
    if (_preferences == nullptr)
        _preferences = new kxPreferencesDialog(this);
    _preferences->openPage(page);
}

kxScriptResult kxMainWindow::runScript(const QString& file)
{
    Q_EMIT aboutToRunScript(file);
    const kxHeldMessages::Scope held;
    const kxHistory::Scope scope(tr("Run %1").arg(QFileInfo(file).fileName()));
    const kxScriptResult result = kxInterpreter::runFile(file.toStdString());
    if (!result.ok)
        _docks->show(QStringLiteral("Log"));
    return result;
}

void kxMainWindow::setUnattended(bool unattended)
{
    _unattended = unattended;
    _view->setUpdatesEnabled(!unattended);
    _versionKeeper->setUnattended(unattended);
    kxCodeTrust::the().setUnattended(unattended);
    _finishedClips->setUnattended(unattended);
}

bool kxMainWindow::saveScreenshot(const QString& file, QString& error)
{
    _view->setUpdatesEnabled(true);
    const QImage picture = grab().toImage();
    _view->setUpdatesEnabled(!_unattended);
    return kxRenderJob::save(picture, file, error);
}

QString kxMainWindow::lastFolder() const
{
    const QStringList recent = _document->recentFiles().files();
    return !_document->folder().isEmpty() || recent.isEmpty() ? _document->folder()
                                                              : QFileInfo(recent.front()).absolutePath();
}

void kxMainWindow::say(const QString& text)
{
    kxLog::info(text);
    statusBar()->showMessage(text, 6000);
}

void kxMainWindow::openWithDialog()
{
    const QString file = kxFileDialogs::askForScene(this, lastFolder());
    if (!file.isEmpty())
        _document->openFile(file);
}

void kxMainWindow::importWithDialog()
{
    const QString file = kxFileDialogs::askForModel(this, lastFolder());
    if (!file.isEmpty() && _document->importFile(file))
        _view->frameAll();
}

void kxMainWindow::exportWithDialog()
{
    kxExportedAnimations wanted = kxExportedAnimations::All;
    const QString file = kxFileDialogs::askForExport(this, _document->folder(), _document->name(), wanted);
    if (!file.isEmpty() && _document->exportTo(file, wanted))
        say(tr("Exported '%1'").arg(QFileInfo(file).fileName()));
}

void kxMainWindow::compareWithDialog()
{
    const QString source = _document->source();
    const QString file = kxFileDialogs::askForComparison(this, source.isEmpty() ? lastFolder() : source);
    if (file.isEmpty())
        return;
    auto dialog = std::make_unique<kxCompareDialog>(file, *_document, this);
    if (dialog->compare())
        dialog.release()->show(); // and goes when it is closed
}

void kxMainWindow::renderImage()
{
    renderWithDialog(kxRenderDialog::Image);
}

void kxMainWindow::renderFrames()
{
    renderWithDialog(kxRenderDialog::Frames);
}

void kxMainWindow::renderMovie()
{
    renderWithDialog(kxRenderDialog::Movie);
}

void kxMainWindow::renderWithDialog(int mode)
{
    kxRenderDialog dialog(kxRenderDialog::Mode(mode), _document->folder(),
                          QFileInfo(_document->name()).completeBaseName(), _view->isFilm(), this);
    kxFilmPlayer& film = _film->player();
    film.refresh();
    dialog.propose(film.clip(), film.range());
    if (dialog.exec() != QDialog::Accepted)
        return;
    _view->setPictureSize(kxRenderDialog::lastSize());
    film.stop(); // what plays would show other frames in between
    kxRenderJob job;
    job.camera = dialog.camera();
    job.camera.chosen = kxRenderCamera::chosenIn(*this, false);
    job.transparent = dialog.isTransparent();
    QString error;
    const QString done = renderAs(dialog, job, error);
    if (error.isEmpty())
        return say(done);
    kxLog::error(error);
    QMessageBox::critical(this, tr("Render"), error);
}

QString kxMainWindow::renderAs(const kxRenderDialog& dialog, kxRenderJob& job, QString& error)
{
    const QString file = dialog.file();
    if (dialog.mode() == kxRenderDialog::Image)
        return job.renderImage(file, dialog.size(), error) ? tr("%1 written").arg(file) : QString();
    const bool isMovie = dialog.mode() == kxRenderDialog::Movie;
    const kxRenderSource::Range range = dialog.range();
    kxRenderProgress progress(file, range, this);
    job.progress = [&progress](int frame, const QString&) { return progress.show(frame); };
    job.waiting = [&progress] { return progress.wait(); };
    if (!isMovie)
        return tr("%n pictures written to %1", nullptr,
                  job.renderFrames(file, dialog.source(), range, dialog.size(), error))
            .arg(QFileInfo(file).path());
    const int frames = job.renderMovie(file, dialog.source(), range, dialog.size(), error);
    return frames == 0 ? tr("Cancelled: no movie was written")
                       : tr("%n frames written to %1", nullptr, frames).arg(file);
}

void kxMainWindow::runScriptWithDialog()
{
    const QString file = kxFileDialogs::askForScript(this);
    if (!file.isEmpty())
        runScript(file);
}

void kxMainWindow::showVersionsOfFile()
{
    (new kxVersionsDialog(_versionKeeper, this))->show(); // and goes when it is closed
}

void kxMainWindow::showCode()
{
    _trust->showCode();
}

void kxMainWindow::showShortcuts()
{
    (new kxShortcutsDialog(_menus->menus(), this))->show();
}

void kxMainWindow::showGuide()
{
    (new kxGuideWindow(this))->show();
}

void kxMainWindow::showAbout()
{
    QMessageBox::about(this, tr("About kxhost"),
                       tr("<b>kxhost %1</b><p>Open a model, animate it, play it, render it, hand it on.</p>"
                          "<p>%2</p>")
                           .arg(QCoreApplication::applicationVersion(),
                                _pluginVersion.isEmpty() ? tr("Without the animation plug-in.")
                                                         : tr("Animation plug-in %1.").arg(_pluginVersion)));
}
