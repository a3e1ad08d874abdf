#include "kxPromptInput.h"

#include "kxConsoleLook.h"

#include <python/kxInterpreter.h>

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QScrollBar>
#include <QStringListModel>
#include <QTextBlock>

namespace
{
constexpr int LargestHeight = 10; // lines
const char Indent[] = "    ";

/// The longest beginning that all of `names` have; `names` isn't empty.
QString commonStart(const QStringList& names)
{
    QString start = names.first();
    for (const QString& name : names)
        while (!name.startsWith(start))
            start.chop(1);
    return start;
}
} // namespace

kxPromptInput::kxPromptInput(QWidget* parent)
    : QPlainTextEdit(parent), _names(nullptr), _completer(new QCompleter(this))
{
    setObjectName(QStringLiteral("_promptInput"));
    setAccessibleName(tr("Python prompt"));
    setFont(kxConsoleLook::font());
    setFrameShape(QFrame::NoFrame);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabStopDistance(4 * fontMetrics().horizontalAdvance(QLatin1Char(' ')));
    document()->setDocumentMargin(2);

    _names = new QStringListModel(_completer);
    _completer->setModel(_names);
    _completer->setWidget(this);
    _completer->setCompletionMode(QCompleter::PopupCompletion);
    _completer->popup()->setFont(font());
    connect(_completer, QOverload<const QString&>::of(&QCompleter::activated), this, &kxPromptInput::insertCompletion);
    connect(this, &QPlainTextEdit::textChanged, this, &kxPromptInput::fitHeight);
    fitHeight();
}

void kxPromptInput::accept()
{
    _history.add(toPlainText().trimmed());
    clear();
}

void kxPromptInput::addLine()
{
    QTextCursor cursor = textCursor();
    cursor.movePosition(QTextCursor::End);
    const QString last = cursor.block().text();
    QString indent = QRegularExpression(QStringLiteral("^\\s*")).match(last).captured();
    if (last.trimmed().endsWith(QLatin1Char(':')))
        indent += QLatin1String(Indent);
    cursor.insertText(QLatin1Char('\n') + indent);
    setTextCursor(cursor);
}

void kxPromptInput::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    const bool isReturn = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (_completer->popup()->isVisible() && (isReturn || key == Qt::Key_Tab || key == Qt::Key_Escape))
    {
        event->ignore(); // the list of names takes it
        return;
    }
    _completer->popup()->hide();
    if (isReturn && event->modifiers() == Qt::ShiftModifier)
        textCursor().insertText(QStringLiteral("\n"));
    else if (isReturn)
        Q_EMIT submitted(toPlainText());
    else if (key == Qt::Key_Tab)
        complete();
    else if ((key != Qt::Key_Up && key != Qt::Key_Down) || event->modifiers() != Qt::NoModifier || !walkHistory(key))
        QPlainTextEdit::keyPressEvent(event);
}

bool kxPromptInput::walkHistory(int key)
{
    const int line = textCursor().blockNumber();
    if (key == Qt::Key_Up ? line > 0 : line < blockCount() - 1)
        return false;
    replaceText(key == Qt::Key_Up ? _history.previous(toPlainText()) : _history.next(toPlainText()));
    return true;
}

QString kxPromptInput::nameBeforeCursor() const
{
    const QTextCursor cursor = textCursor();
    const QString before = cursor.block().text().left(cursor.positionInBlock());
    return QRegularExpression(QStringLiteral("[A-Za-z_][\\w.]*$")).match(before).captured();
}

void kxPromptInput::complete()
{
    const QString name = nameBeforeCursor();
    if (name.isEmpty())
    {
        textCursor().insertText(QLatin1String(Indent));
        return;
    }
    QStringList names;
    for (const std::string& found : kxInterpreter::complete(name.toStdString()))
        names.append(QString::fromStdString(found));
    if (names.isEmpty())
        return;
    insertCompletion(commonStart(names));
    if (names.size() == 1)
        return;
    names.sort();
    _names->setStringList(names);
    _completer->setCompletionPrefix(nameBeforeCursor());
    QRect place = cursorRect();
    place.setWidth(_completer->popup()->sizeHintForColumn(0) +
                   _completer->popup()->verticalScrollBar()->sizeHint().width() + 12);
    _completer->complete(place);
}

void kxPromptInput::insertCompletion(const QString& name)
{
    const QString present = nameBeforeCursor();
    if (name.startsWith(present))
        textCursor().insertText(name.mid(present.size()));
}

void kxPromptInput::fitHeight()
{
    const int shown = qBound(1, blockCount(), LargestHeight);
    setVerticalScrollBarPolicy(shown < blockCount() ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    const int margins = int(2 * document()->documentMargin()) + contentsMargins().top() + contentsMargins().bottom();
    setFixedHeight(shown * fontMetrics().lineSpacing() + margins + 2);
}

void kxPromptInput::replaceText(const QString& text)
{
    if (text == toPlainText())
        return;
    setPlainText(text);
    moveCursor(QTextCursor::End);
}
