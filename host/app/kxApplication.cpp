#include "kxApplication.h"

#include "kxBatch.h"
#include "kxRecoveryDialog.h"
#include "kxRenderJob.h"

#include <journal/kxJournal.h>
#include <journal/kxRecovery.h>
#include <kernel/kxHostHooks.h>
#include <kernel/kxLogModel.h>
#include <kernel/kxPreferencesStore.h>
#include <kxAnimManager.h>
#include <kxFramePlayer.h>
#include <kxLog.h>
#include <panels/kxSceneTreePanel.h>
#include <python/kxHostModule.h>
#include <python/kxInterpreter.h>
#include <scene/kxScene.h>
#include <view/kxView3D.h>
#include <widgets/kxStyle.h>

#include <QApplication>
#include <QDir>
#include <QTimer>

#include <csignal>

namespace
{
QtMessageHandler nextHandler = nullptr;

/// A window that nobody sees has no size hints; Qt's platform without a display says so for each.
void leaveOutSizeHints(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (!text.contains(QLatin1String("propagateSizeHints")))
        nextHandler(type, context, text);
}
} // namespace

bool kxApplication::hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

void kxApplication::prepare(const kxCommandLine& line)
{
    std::signal(SIGPIPE, SIG_IGN); // an error of the write that nobody reads; programs that start get it back
    if (line.headless)
        kxInterpreter::needStreams();
    if (line.headless || !hasDisplay())
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qgetenv("QT_QPA_PLATFORM") == "offscreen" && nextHandler == nullptr)
        nextHandler = qInstallMessageHandler(&leaveOutSizeHints);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
}

kxApplication::kxApplication(const kxCommandLine& line) : _line(line)
{
    kxStyle::apply(*qApp);
    if (!_line.headless)
        QDir().mkpath(kxPreferencesStore::settingsFolder());
    if (_line.quiet)
        kxLogModel::the().setQuiet();
    kxPreferencesStore::the().load();
    _session = std::make_unique<kxSession>(!_line.headless);

    _window = std::make_unique<kxMainWindow>();
    _window->setUnattended(_line.headless);
    kxMainWindow* const window = _window.get();
    _services = std::make_unique<kxHostServices>([window](const QString& page) { window->openPreferences(page); });
    QObject::connect(window->view(), &kxView3D::viewWentIdle, &_services->camera(), &kxCameraService::viewWentIdle);
    setHooks();
    startTools();
    window->finishLayout();
    if (_line.headless)
    {
        window->document().dialogs() = kxDocument::Dialogs();
        window->document().recentFiles().freeze();
    }
    if (_line.headless && _line.size)
        window->resize(*_line.size);
    window->document().newScene();
    _session->follow(window->document());
    QObject::connect(window->view(), &kxView3D::viewChanged, &kxJournal::the(), &kxJournal::noteCamera);
}

kxApplication::~kxApplication()
{
    kxFramePlayer::the()->stop(nullptr);
    kxHostHooks& hooks = kxHostHooks::the();
    hooks.render = nullptr;
    hooks.updateBehavior = nullptr;
    hooks.scrollToNode = nullptr;
    kxHostModule::hooks() = kxHostModule::Hooks();
}

void kxApplication::setHooks()
{
    kxMainWindow* const window = _window.get();
    kxHostHooks& hooks = kxHostHooks::the();
    hooks.render = [window](bool now) { window->view()->redraw(now && window->isVisible()); };
    hooks.updateBehavior = [](bool force) { kxAnimManager::the()->reevaluateAnimations(force); };
    hooks.isSnapshotRendering = &kxRenderJob::isRunning;
    hooks.scrollToNode = [window](const osg::NodePtr& node) { window->sceneTree()->scrollToNode(node); };

    const auto prepare = [window, isHeadless = _line.headless](kxRenderJob& job, const QString& camera,
                                                               bool isTransparent, QString& reason)
    {
        job.transparent = isTransparent;
        job.camera.film = window->view()->isFilm();
        job.camera.chosen = kxRenderCamera::chosenIn(*window, isHeadless);
        return job.camera.setName(camera, reason);
    };
    kxHostModule::hooks().render = [prepare](const QString& file, int width, int height, const QString& camera,
                                             bool isTransparent, QString& reason)
    {
        kxRenderJob job;
        return prepare(job, camera, isTransparent, reason) && job.renderImage(file, QSize(width, height), reason);
    };
    kxHostModule::hooks().renderMovie = [prepare](const kxHostModule::Hooks::Movie& movie, int& frames, QString& reason)
    {
        kxRenderJob job;
        kxRenderSource source;
        if (!prepare(job, movie.camera, movie.isTransparent, reason) || !source.setName(movie.clip, reason))
            return false;
        const kxRenderSource::Range whole = source.range();
        const kxRenderSource::Range range = {movie.first.value_or(whole.first), movie.last.value_or(whole.last)};
        reason.clear();
        frames = job.renderMovie(movie.file, source, range, QSize(movie.width, movie.height), reason);
        return frames > 0;
    };
    kxHostModule::hooks().stage = window->stage();
    kxHostModule::hooks().document = &window->document();
    kxHostModule::hooks().screenshot = [window](const QString& file, QString& reason)
    { return window->saveScreenshot(file, reason); };
}

void kxApplication::startTools()
{
    const bool isLoaded = _plugin.load(_line.plugin.isEmpty() ? kxPluginLoader::defaultFile() : _line.plugin);
    kxHostModule::install();
    kxInterpreter::start();
    if (isLoaded && _plugin.start())
    {
        kxLog::info(QCoreApplication::translate("kxApplication", "Animation plug-in %1").arg(_plugin.version()));
        _window->setPluginVersion(_plugin.version());
        return;
    }
    kxLog::warning(_plugin.error());
    _window->showNotice(
        QCoreApplication::translate("kxApplication", "Animation tools are missing: see the log for the reason."));
}

void kxApplication::offerLeftovers()
{
    QStringList waiting;
    std::vector<kxLeftover> leftovers = kxLeftover::find(kxSession::folder(), &waiting);
    for (const QString& text : waiting)
        kxLog::warning(text);
    if (leftovers.empty())
        return;
    const auto open = [this](kxLeftover& leftover)
    {
        kxRecovery recovery(leftover.journal());
        if (!_window->document().openRecovered(recovery, leftover.path()))
            return false;
        const QString description = leftover.description();
        const QString text = _session->takeOver(leftover)
                                 ? QCoreApplication::translate("kxApplication", "Recovered: %1")
                                 : QCoreApplication::translate("kxApplication", "Recovered: %1. It is offered again "
                                                                                "until it is saved.");
        kxLog::info(text.arg(description));
        return true;
    };
    kxRecoveryDialog(std::move(leftovers), open, _window.get()).exec();
}

int kxApplication::run()
{
    _window->show();
    kxBatch batch(_window.get(), _line);
    if (_line.headless)
    {
        QApplication::processEvents();
        return batch.run();
    }
    QTimer::singleShot(0, _window.get(),
                       [this, &batch]
                       {
                           const bool opens = !_line.scene.isEmpty() || _line.frame || _line.hasWork();
                           if (opens)
                               batch.run();
                           // For the measurement of the start: the frame that shows what was opened is the last one.
                           const bool isMeasured = qEnvironmentVariableIsSet("KX_QUIT_AT_FIRST_FRAME");
                           if (opens && isMeasured)
                               QObject::connect(_window->view(), &kxView3D::frameDrawn, qApp, &QApplication::quit,
                                                Qt::QueuedConnection);
                           // Then, and not in the middle of the work: its dialog would stand in the way.
                           if (!_line.hasWork() && !isMeasured)
                               offerLeftovers();
                       });
    return QApplication::exec();
}
