#include "kxPythonPrompt.h"

#include "kxConsoleLook.h"
#include "kxPromptInput.h"

#include <journal/kxHistory.h>
#include <kernel/kxHeldMessages.h>
#include <python/kxInterpreter.h>

#include <QBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTimer>

namespace
{
constexpr int LargestOutput = 5000;             // lines; the oldest go
constexpr std::size_t LargestPending = 1 << 16; // characters that wait to be shown

QColor colorOf(kxPythonPrompt::Kind kind)
{
    switch (kind)
    {
    case kxPythonPrompt::Echo:
        return kxConsoleLook::definition();
    case kxPythonPrompt::Error:
        return kxConsoleLook::error();
    case kxPythonPrompt::Note:
        return kxColors::dimText();
    case kxPythonPrompt::Output:
        break;
    }
    return kxColors::text();
}

/// Of code, so that what it did has room beside it.
QString beginning(const QString& code)
{
    constexpr int MostLetters = 24;
    const QString line = code.section(QLatin1Char('\n'), 0, 0);
    return line.size() <= MostLetters && line.size() == code.size() ? line : line.left(MostLetters) + QChar(0x2026);
}
} // namespace

kxPythonPrompt::kxPythonPrompt(QWidget* parent)
    : QWidget(parent), _output(new QPlainTextEdit(this)), _sign(new QLabel(QStringLiteral(">>>"), this)),
      _input(new kxPromptInput(this))
{
    setAutoFillBackground(true);
    QPalette colors = palette();
    colors.setColor(QPalette::Window, kxConsoleLook::background());
    setPalette(colors);

    _output->setObjectName(QStringLiteral("_promptOutput"));
    _output->setAccessibleName(tr("Output"));
    _output->setReadOnly(true);
    _output->setUndoRedoEnabled(false);
    _output->setFont(kxConsoleLook::font());
    _output->setFrameShape(QFrame::NoFrame);
    _output->setMaximumBlockCount(LargestOutput);
    _output->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    _output->document()->setDocumentMargin(6);
    setStyleSheet(QStringLiteral("QPlainTextEdit { border: none; border-radius: 0px; padding: 0px; background: %1; }")
                      .arg(kxConsoleLook::background().name()));

    _sign->setFont(kxConsoleLook::font());
    QPalette signColors = _sign->palette();
    signColors.setColor(QPalette::WindowText, kxColors::accent());
    _sign->setPalette(signColors);

    QHBoxLayout* const line = new QHBoxLayout;
    line->setContentsMargins(6, 3, 2, 3);
    line->setSpacing(6);
    line->addWidget(_sign, 0, Qt::AlignTop);
    line->addWidget(_input, 1);
    _sign->setContentsMargins(0, 3, 0, 0);

    QFrame* const rule = new QFrame(this);
    rule->setFixedHeight(1);
    rule->setStyleSheet(QStringLiteral("background: %1;").arg(kxConsoleLook::guide().name()));

    QVBoxLayout* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(_output, 1);
    layout->addWidget(rule);
    layout->addLayout(line);

    QScrollBar* const bar = _output->verticalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this, [this, bar](int value) { _atEnd = value >= bar->maximum(); });
    connect(bar, &QScrollBar::rangeChanged, this,
            [this, bar](int, int maximum)
            {
                if (_atEnd)
                    bar->setValue(maximum);
            });
    connect(_input, &kxPromptInput::submitted, this, &kxPythonPrompt::submit);
    _listener = kxInterpreter::addListener(
        [this](kxInterpreter::Stream stream, const std::string& written)
        {
            echo();
            append(stream == kxInterpreter::Error ? Error : Output, QString::fromStdString(written));
        });
    setFocusProxy(_input);
    showHint();
}

kxPythonPrompt::~kxPythonPrompt()
{
    kxInterpreter::removeListener(_listener);
}

void kxPythonPrompt::showHint()
{
    append(Note, tr("Type Python below, or write a script in the editor and press Ctrl+Return. Try:\n"));
    append(Note, QStringLiteral("    help(kxHost)\n"
                                "    [node.name for node in selectedNodes()]\n"
                                "    setChannelValue(selectedNodes()[0], \"translation.Y\", 1.5)\n"));
    flush();
}

void kxPythonPrompt::submit(const QString& typed)
{
    if (_running)
        return;
    // An empty last line ends a block, as at any prompt of Python.
    const bool endsBlock =
        typed.contains(QLatin1Char('\n')) && typed.mid(typed.lastIndexOf(QLatin1Char('\n'))).trimmed().isEmpty();
    QString text = typed;
    if (endsBlock)
        text = typed.left(typed.lastIndexOf(QLatin1Char('\n'))) + QLatin1Char('\n');
    if (text.trimmed().isEmpty())
        _input->clear();
    else if (run(text))
        _input->accept();
    else
        _input->addLine();
}

bool kxPythonPrompt::run(const QString& text)
{
    _echo = text;
    _running = true;
    bool needsMore = false;
    const kxHeldMessages::Scope held;
    const kxHistory::Scope scope(tr("Console: %1").arg(beginning(text.trimmed())));
    const kxScriptResult result = kxInterpreter::runInteractive(text.toStdString(), &needsMore);
    _running = false;
    if (needsMore)
    {
        _echo.clear();
        return false;
    }
    echo();
    append(Error, QString::fromStdString(result.trace));
    noteExit(result);
    flush();
    return true;
}

void kxPythonPrompt::noteExit(const kxScriptResult& result)
{
    if (result.exited)
        append(Note, tr("The script ended with code %1.\n").arg(result.exitCode));
}

void kxPythonPrompt::echo()
{
    if (_echo.isEmpty())
        return;
    const QStringList lines = _echo.trimmed().split(QLatin1Char('\n'));
    _echo.clear();
    append(Echo, QStringLiteral(">>> ") + lines.join(QStringLiteral("\n... ")) + QLatin1Char('\n'));
}

void kxPythonPrompt::append(Kind kind, const QString& text)
{
    if (text.isEmpty())
        return;
    if (_pending.empty())
        QTimer::singleShot(0, this, &kxPythonPrompt::flush);
    if (!_pending.empty() && _pending.back().kind == kind)
        _pending.back().text += text;
    else
        _pending.push_back({kind, text});
    _pendingSize += std::size_t(text.size());
    if (_pendingSize > LargestPending)
        flush();
}

void kxPythonPrompt::flush()
{
    if (_pending.empty())
        return;
    QTextCursor cursor(_output->document());
    cursor.movePosition(QTextCursor::End);
    cursor.beginEditBlock();
    for (const Piece& piece : _pending)
    {
        QTextCharFormat format;
        format.setForeground(colorOf(piece.kind));
        cursor.insertText(piece.text, format);
    }
    cursor.endEditBlock();
    _pending.clear();
    _pendingSize = 0;
}

void kxPythonPrompt::clear()
{
    _pending.clear();
    _pendingSize = 0;
    _output->clear();
}

QString kxPythonPrompt::text() const
{
    return _output->toPlainText();
}
