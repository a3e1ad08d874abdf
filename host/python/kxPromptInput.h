#pragma once

#include "kxConsoleHistory.h"

#include <QPlainTextEdit>

class QCompleter;
class QStringListModel;

/// Where a statement is typed: as high as its lines, with history and completion.
///
/// Return submits, Shift+Return starts a line, Up and Down walk through the history at the first and last line, Tab
/// completes a name or indents.
class kxPromptInput : public QPlainTextEdit
{
    Q_OBJECT
public:
    explicit kxPromptInput(QWidget* parent = nullptr);

    /// Takes the text into the history and empties the field.
    void accept();
    /// Goes on with another line, indented as the last one or deeper after a colon.
    void addLine();

Q_SIGNALS:
    /// The text, with an empty line at its end where the user ended a block so.
    void submitted(const QString& text);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool walkHistory(int key);
    /// The dotted name that ends at the cursor.
    QString nameBeforeCursor() const;
    void complete();
    void insertCompletion(const QString& name);
    void fitHeight();
    void replaceText(const QString& text);

    kxConsoleHistory _history;
    QStringListModel* _names; // owned by the completer
    QCompleter* _completer;   // child
};
