#pragma once

#include "kxScintilla.h"

/// The text of a script, with colours, line numbers and marks on lines that raised.
class kxPythonEditor : public QsciScintilla
{
    Q_OBJECT
public:
    explicit kxPythonEditor(QWidget* parent = nullptr);

    /// Shows and marks a line, counted from 1; a line that isn't there does nothing. The mark goes with the next edit.
    void markError(int line);
    void clearErrors();

Q_SIGNALS:
    /// Ctrl+Return.
    void runRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void setUpLexer();
    void setUpMargins();
    void updateNumberMargin();
};
