#include "kxPythonEditor.h"

#include "kxConsoleLook.h"

#include <QKeyEvent>

namespace
{
enum Margin
{
    NumberMargin = 0,
    FoldMargin = 1 // QScintilla's place for symbols; unused
};
constexpr int ErrorMarker = 1;
} // namespace

kxPythonEditor::kxPythonEditor(QWidget* parent) : QsciScintilla(parent)
{
    setObjectName(QStringLiteral("_scriptEditor"));
    setAccessibleName(tr("Script"));
    setFrameShape(QFrame::NoFrame);
    setUtf8(true);
    setUpLexer();
    setUpMargins();

    setAutoIndent(true);
    setIndentationsUseTabs(false);
    setIndentationWidth(4);
    setTabWidth(4);
    setTabIndents(true);
    setBackspaceUnindents(true);
    setIndentationGuides(true);
    setIndentationGuidesForegroundColor(kxConsoleLook::guide());
    setIndentationGuidesBackgroundColor(kxConsoleLook::background());
    setBraceMatching(QsciScintilla::SloppyBraceMatch);
    setMatchedBraceBackgroundColor(kxColors::outline());
    setMatchedBraceForegroundColor(kxColors::selectionText());
    setUnmatchedBraceBackgroundColor(kxConsoleLook::background());
    setUnmatchedBraceForegroundColor(kxConsoleLook::error());

    setCaretForegroundColor(kxColors::accent());
    setCaretLineVisible(true);
    setCaretLineBackgroundColor(kxConsoleLook::caretLine());
    setCaretWidth(2);
    setSelectionBackgroundColor(kxColors::selection());
    resetSelectionForegroundColor();

    markerDefine(QsciScintilla::Background, ErrorMarker);
    setMarkerBackgroundColor(kxConsoleLook::errorLine(), ErrorMarker);

    // The bar appears only for lines that don't fit, and as wide as those.
    SendScintilla(SCI_SETSCROLLWIDTH, 1L);
    SendScintilla(SCI_SETSCROLLWIDTHTRACKING, 1L);

    connect(this, &QsciScintilla::textChanged, this, &kxPythonEditor::clearErrors);
    connect(this, &QsciScintilla::linesChanged, this, &kxPythonEditor::updateNumberMargin);
}

void kxPythonEditor::setUpLexer()
{
    QsciLexerPython* const lexer = new QsciLexerPython(this);
    lexer->setDefaultFont(kxConsoleLook::font());
    lexer->setDefaultColor(kxColors::text());
    lexer->setDefaultPaper(kxConsoleLook::background());
    lexer->setFont(kxConsoleLook::font());
    lexer->setPaper(kxConsoleLook::background());
    lexer->setColor(kxColors::text());
    for (const int style : {QsciLexerPython::Comment, QsciLexerPython::CommentBlock})
        lexer->setColor(kxConsoleLook::comment(), style);
    for (const int style : {QsciLexerPython::SingleQuotedString, QsciLexerPython::DoubleQuotedString,
                            QsciLexerPython::TripleSingleQuotedString, QsciLexerPython::TripleDoubleQuotedString,
                            QsciLexerPython::SingleQuotedFString, QsciLexerPython::DoubleQuotedFString,
                            QsciLexerPython::TripleSingleQuotedFString, QsciLexerPython::TripleDoubleQuotedFString})
        lexer->setColor(kxConsoleLook::string(), style);
    for (const int style : {QsciLexerPython::ClassName, QsciLexerPython::FunctionMethodName})
        lexer->setColor(kxConsoleLook::definition(), style);
    lexer->setColor(kxConsoleLook::keyword(), QsciLexerPython::Keyword);
    lexer->setColor(kxConsoleLook::number(), QsciLexerPython::Number);
    lexer->setColor(kxConsoleLook::decorator(), QsciLexerPython::Decorator);
    lexer->setColor(kxConsoleLook::error(), QsciLexerPython::UnclosedString);
    setLexer(lexer);
}

void kxPythonEditor::setUpMargins()
{
    setMarginType(NumberMargin, QsciScintilla::NumberMargin);
    setMarginWidth(FoldMargin, 0);
    setMarginsFont(kxConsoleLook::font());
    setMarginsBackgroundColor(kxColors::trough());
    setMarginsForegroundColor(kxColors::disabledText());
    SendScintilla(SCI_SETMARGINLEFT, 0UL, 6L); // pixels between the margin and the text
    updateNumberMargin();
}

void kxPythonEditor::updateNumberMargin()
{
    setMarginWidth(NumberMargin, QStringLiteral(" %1 ").arg(qMax(lines(), 10)));
}

void kxPythonEditor::markError(int line)
{
    if (line < 1 || line > lines())
        return;
    markerAdd(line - 1, ErrorMarker);
    setCursorPosition(line - 1, 0);
}

void kxPythonEditor::clearErrors()
{
    markerDeleteAll(ErrorMarker);
}

void kxPythonEditor::keyPressEvent(QKeyEvent* event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && event->modifiers().testFlag(Qt::ControlModifier))
        Q_EMIT runRequested();
    else
        QsciScintilla::keyPressEvent(event);
}
