#include "kxPythonConsole.h"

#include "kxConsoleLook.h"
#include "kxPythonEditor.h"
#include "kxPythonPrompt.h"

#include <files/scene/kxFileReport.h>
#include <journal/kxHistory.h>
#include <kernel/kxHeldMessages.h>
#include <kxIconManager.h>
#include <kxLog.h>
#include <kxPlatform.h>
#include <python/kxInterpreter.h>

#include <QAction>
#include <QBoxLayout>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSplitter>
#include <QToolBar>

namespace
{
// Pixels. The prompt is under the editor where both have room for some lines that way, and little side by side.
constexpr int SideBySideWidth = 680;
constexpr int StackedHeight = 320;
const char Filter[] = "Python (*.py)";

/// The line, counted from 1, that the trace names last in the text called `name`; 0 where it names none.
int lineOfTrace(const std::string& trace, const QString& name)
{
    const QRegularExpression pattern(QStringLiteral("File \"%1\", line (\\d+)").arg(QRegularExpression::escape(name)));
    int line = 0;
    QRegularExpressionMatchIterator matches = pattern.globalMatch(QString::fromStdString(trace));
    while (matches.hasNext())
        line = matches.next().captured(1).toInt();
    return line;
}
} // namespace

kxPythonConsole::kxPythonConsole(QWidget* parent)
    : QWidget(parent), _bar(new QToolBar(this)), _splitter(new QSplitter(Qt::Horizontal, this)),
      _editor(new kxPythonEditor(this)), _prompt(new kxPythonPrompt(this)), _title(new QLabel(this))
{
    setObjectName(QStringLiteral("_pythonConsole"));
    setUpToolBar();
    _editor->setText(QStringLiteral("# Ctrl+Return runs this script.\n"
                                    "for node in selectedNodes():\n"
                                    "    print(node.name, channelNames(node))\n"));
    _editor->setModified(false);

    _splitter->addWidget(_editor);
    _splitter->addWidget(_prompt);
    _splitter->setHandleWidth(4);
    _splitter->setChildrenCollapsible(false);
    _splitter->setStretchFactor(0, 1);
    _splitter->setStretchFactor(1, 1);
    _splitter->setSizes({1000, 1000}); // equal shares

    QVBoxLayout* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(_bar);
    layout->addWidget(_splitter, 1);

    connect(_editor, &kxPythonEditor::runRequested, this, &kxPythonConsole::runScript);
    connect(_editor, &QsciScintilla::modificationChanged, this, &kxPythonConsole::updateTitle);
    setFocusProxy(_prompt);
    updateTitle();
}

void kxPythonConsole::setUpToolBar()
{
    const int size = kxPlatform::getSmallIconSize();
    _bar->setIconSize(QSize(size, size));
    QAction* const run = addAction(_bar, QStringLiteral("Play"), tr("Run"),
                                   tr("Runs the script in the editor (Ctrl+Return)"), &kxPythonConsole::runScript);
    run->setObjectName(QStringLiteral("_runScript"));
    _bar->addSeparator();
    addAction(_bar, QStringLiteral("New"), tr("New"), tr("Empties the editor"), &kxPythonConsole::newScript);
    addAction(_bar, QStringLiteral("Open"), tr("Open"), tr("Opens a script in the editor"),
              &kxPythonConsole::chooseScript);
    addAction(_bar, QStringLiteral("Save"), tr("Save"), tr("Saves the script"), &kxPythonConsole::saveToFile);
    _bar->addSeparator();

    QPalette colors = _title->palette();
    colors.setColor(QPalette::WindowText, kxColors::dimText());
    _title->setPalette(colors);
    _title->setContentsMargins(6, 0, 6, 0);
    _title->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    _bar->addWidget(_title);
    addAction(_bar, QStringLiteral("Delete"), tr("Clear Output"), tr("Clears the output"),
              &kxPythonConsole::clearOutput);
}

QAction* kxPythonConsole::addAction(QToolBar* bar, const QString& icon, const QString& text, const QString& tip,
                                    void (kxPythonConsole::*slot)())
{
    QAction* const action = bar->addAction(kxIconManager::getIcon(icon, QString()), text, this, slot);
    action->setToolTip(tip);
    return action;
}

void kxPythonConsole::runScript()
{
    const QString name = _file.isEmpty() ? QStringLiteral("<script>") : _file;
    _editor->clearErrors();
    _prompt->append(kxPythonPrompt::Note, tr("Run %1\n").arg(_file.isEmpty() ? tr("script") : _file));
    Q_EMIT aboutToRun(_file);
    const kxHeldMessages::Scope held;
    const kxHistory::Scope scope(_file.isEmpty() ? tr("Run the script of the console")
                                                 : tr("Run %1").arg(QFileInfo(_file).fileName()));
    const kxScriptResult result = kxInterpreter::run(_editor->text().toStdString(), name.toStdString());
    if (result.exited)
        _prompt->append(kxPythonPrompt::Note, tr("The script ended with code %1.\n").arg(result.exitCode));
    _prompt->flush();
    _editor->markError(lineOfTrace(result.trace, name));
}

bool kxPythonConsole::openScript(const QString& file)
{
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly))
    {
        kxLog::error(tr("%1 can't be read: %2").arg(file, source.errorString()));
        return false;
    }
    _editor->setText(QString::fromUtf8(source.readAll()));
    setFile(file);
    return true;
}

bool kxPythonConsole::saveScript(const QString& file)
{
    QString target = file.isEmpty() ? _file : file;
    if (target.isEmpty())
        target = QFileDialog::getSaveFileName(this, tr("Save Script"), QStringLiteral("script.py"), tr(Filter));
    if (target.isEmpty())
        return false;
    QSaveFile sink(target);
    const QByteArray text = _editor->text().toUtf8();
    // commit() doesn't see what fails when the last block goes out.
    if (!sink.open(QIODevice::WriteOnly) || sink.write(text) != text.size() || !sink.flush() || !sink.commit())
    {
        kxFileReport report(target);
        report.fail(sink);
        kxLog::error(tr("%1 can't be written: %2").arg(target, report.error()));
        return false;
    }
    setFile(target);
    return true;
}

bool kxPythonConsole::mayClose()
{
    if (!_editor->isModified())
        return true;
    const QMessageBox::StandardButton answer =
        QMessageBox::question(this, tr("Script"), tr("The script in the console has changes that are not saved."),
                              QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    return answer == QMessageBox::Discard || (answer == QMessageBox::Save && saveScript());
}

void kxPythonConsole::newScript()
{
    if (!mayClose())
        return;
    _editor->clear();
    setFile(QString());
}

void kxPythonConsole::chooseScript()
{
    if (!mayClose())
        return;
    const QString file = QFileDialog::getOpenFileName(this, tr("Open Script"), QFileInfo(_file).path(), tr(Filter));
    if (!file.isEmpty())
        openScript(file);
}

void kxPythonConsole::saveToFile()
{
    saveScript();
}

void kxPythonConsole::clearOutput()
{
    _prompt->clear();
}

void kxPythonConsole::setFile(const QString& file)
{
    _file = file;
    _editor->setModified(false);
    updateTitle();
}

void kxPythonConsole::updateTitle()
{
    const QString name = _file.isEmpty() ? tr("New script") : QFileInfo(_file).fileName();
    _title->setText(_editor->isModified() ? name + QStringLiteral(" *") : name);
    _title->setToolTip(_file);
}

void kxPythonConsole::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    const bool stacked = width() < SideBySideWidth && height() >= StackedHeight;
    _splitter->setOrientation(stacked ? Qt::Vertical : Qt::Horizontal);
}
