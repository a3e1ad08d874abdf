#include "kxBatch.h"

#include "kxApplication.h"
#include "kxInterrupt.h"
#include "kxLeftover.h"
#include "kxMainWindow.h"
#include "kxRenderJob.h"
#include "kxRenderProgress.h"
#include "kxSession.h"

#include <journal/kxHistory.h>
#include <kernel/kxHeldMessages.h>
#include <kernel/kxPreferencesStore.h>
#include <kxAnimManager.h>
#include <kxLog.h>
#include <python/kxInterpreter.h>
#include <trust/kxCodeTrust.h>

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <optional>
#include <string>
#include <vector>

namespace
{
constexpr QSize PictureSize(1280, 720);
}

int kxBatch::run()
{
    std::optional<kxInterrupt> interrupt;
    if (_line.headless)
        interrupt.emplace();
    kxCodeTrust::the().setTrusting(_line.trust);
    const int code = work();
    kxCodeTrust::the().setTrusting(false);
    return code;
}

int kxBatch::work()
{
    if (_line.headless || _line.hasWork())
        tellOfLeftovers();
    if (!_line.scene.isEmpty() && !_window->document().openFile(_line.scene))
        return kxApplication::Failure;
    if (const int code = kxInterrupt::isWanted() ? kxApplication::Failure : runScripts())
        return code;
    if (_line.frame)
        kxAnimManager::the()->setCurrentFrame(*_line.frame, true, true);
    return exportScene() && render() && takeScreenshot() ? kxApplication::Success : kxApplication::Failure;
}

void kxBatch::tellOfLeftovers() const
{
    for (const kxLeftover& leftover : kxLeftover::find(kxSession::folder()))
        if (!_line.scene.isEmpty() && leftover.path() == QFileInfo(_line.scene).absoluteFilePath())
            kxLog::warning(QCoreApplication::translate("kxBatch", "There are changes of '%1' that weren't saved: %2. "
                                                                  "They can be recovered in a window.")
                               .arg(_line.scene, leftover.description()));
}

bool kxBatch::failed(const QString& reason)
{
    kxLog::error(reason);
    return false;
}

void kxBatch::wrote(const QString& file) const
{
    if (!_line.quiet)
        QTextStream(stdout) << "wrote " << file << Qt::endl;
}

int kxBatch::runScripts()
{
    std::vector<std::string> arguments;
    for (const QString& argument : _line.scriptArguments)
        arguments.push_back(argument.toLocal8Bit().toStdString());
    kxInterpreter::setArguments(arguments);
    int code = kxApplication::Success;
    for (int i = 0; i < _line.scripts.size() && code == kxApplication::Success; ++i)
    {
        const QString script = _line.scripts[i];
        code = codeOf(script == QLatin1String("-") ? runAs(script, [] { return kxInterpreter::runFile("-"); })
                                                   : _window->runScript(script),
                      script);
    }
    if (!_line.command.isEmpty() && code == kxApplication::Success)
        code = codeOf(
            runAs(QStringLiteral("-c"), [this] { return kxInterpreter::runCommand(_line.command.toStdString()); }),
            QStringLiteral("-c"));
    const QString history = kxPreferencesStore::settingsFolder() + QStringLiteral("/prompt-history");
    if (_line.prompt && code == kxApplication::Success)
        code = codeOf(runAs(QStringLiteral("-"),
                            [&] { return kxInterpreter::runPrompt(QFile::encodeName(history).toStdString()); }),
                      QStringLiteral("-"));
    return code;
}

kxScriptResult kxBatch::runAs(const QString& name, const std::function<kxScriptResult()>& run)
{
    Q_EMIT _window->aboutToRunScript(name);
    const kxHeldMessages::Scope held;
    const kxHistory::Scope scope(QCoreApplication::translate("kxBatch", "Run %1").arg(name));
    return run();
}

int kxBatch::codeOf(const kxScriptResult& result, const QString& script)
{
    // Unread: as when the signal ended it; who closed the pipe knows.
    if (!result.ok && result.exitCode != kxInterpreter::Unread)
        failed(result.exited ? QCoreApplication::translate("kxBatch", "The script '%1' ended with code %2.")
                                   .arg(script)
                                   .arg(result.exitCode)
                             : QCoreApplication::translate("kxBatch", "The script '%1' failed.").arg(script));
    return result.ok ? kxApplication::Success : result.exitCode;
}

bool kxBatch::exportScene()
{
    if (_line.exportFile.isEmpty())
        return true;
    if (!_window->document().exportTo(_line.exportFile, _line.exported))
        return false;
    wrote(_line.exportFile);
    return true;
}

bool kxBatch::render()
{
    if (!_line.writesFilms())
        return true;
    kxRenderSource source;
    kxRenderJob job;
    QString error;
    if (!source.setName(_line.clip, error) || !job.camera.setName(_line.camera, error))
        return failed(error);
    job.camera.chosen = kxRenderCamera::chosenIn(*_window, _line.headless);
    job.transparent = _line.transparent;
    return (_line.render.isEmpty() || renderPictures(job, source)) &&
           (_line.movie.isEmpty() || renderMovie(job, source));
}

bool kxBatch::renderPictures(kxRenderJob& job, const kxRenderSource& source)
{
    QString error;
    job.progress = [this](int, const QString& file)
    {
        wrote(file);
        return !kxInterrupt::isWanted();
    };
    const QSize size = _line.size.value_or(PictureSize);
    if (_line.frames)
        job.renderFrames(_line.render, source, {_line.frames->first, _line.frames->last}, size, error);
    else if (_line.allFrames || !_line.clip.isEmpty())
        job.renderFrames(_line.render, source, source.range(), size, error);
    else
    {
        const QString file = kxFramePattern::fileName(_line.render, int(kxAnimManager::the()->currentFrame()));
        if (job.renderImage(file, size, error))
            wrote(file);
    }
    return error.isEmpty() || failed(error);
}

bool kxBatch::renderMovie(kxRenderJob& job, const kxRenderSource& source)
{
    const kxRenderSource::Range range =
        _line.frames ? kxRenderSource::Range{_line.frames->first, _line.frames->last} : source.range();
    kxRenderLines lines(range);
    job.progress = [&](int frame, const QString&)
    {
        if (!_line.quiet)
            lines.show(frame);
        return true;
    };
    QString error;
    const QSize size = _line.size.value_or(PictureSize);
    if (job.renderMovie(_line.movie, source, range, size, error) > 0)
        wrote(_line.movie);
    return error.isEmpty() || failed(error);
}

bool kxBatch::takeScreenshot()
{
    if (_line.screenshot.isEmpty())
        return true;
    QApplication::processEvents(); // panels follow the scene at the next turn
    QString error;
    if (!_window->saveScreenshot(_line.screenshot, error))
        return failed(error);
    wrote(_line.screenshot);
    return true;
}
