#pragma once

#include <QString>
#include <QWidget>

class QAction;
class QLabel;
class QSplitter;
class QToolBar;
class kxPythonEditor;
class kxPythonPrompt;

/// The Python console: a script editor beside an interactive prompt, one above the other where there is little width.
class kxPythonConsole : public QWidget
{
    Q_OBJECT
public:
    explicit kxPythonConsole(QWidget* parent = nullptr);

    /// Runs the text of the editor. A trace shows in the prompt and marks its line.
    void runScript();
    /// Reads a file into the editor; false where it can't be read, with the reason in the log.
    bool openScript(const QString& file);
    /// Writes the editor's text to its file, or to `file`, which becomes its file; asks where there is none. False
    /// where the text isn't saved then.
    bool saveScript(const QString& file = QString());
    /// False where the user wants to keep an unsaved text and to go back.
    bool mayClose();

    kxPythonEditor* editor() const { return _editor; }
    kxPythonPrompt* prompt() const { return _prompt; }

Q_SIGNALS:
    /// A script of the editor; empty where it has no file.
    void aboutToRun(const QString& file);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void setUpToolBar();
    QAction* addAction(QToolBar* bar, const QString& icon, const QString& text, const QString& tip,
                       void (kxPythonConsole::*slot)());
    void newScript();
    void chooseScript();
    void saveToFile();
    void clearOutput();
    void setFile(const QString& file);
    void updateTitle();

    QString _file; // empty for a text without a file
    QToolBar* _bar;
    QSplitter* _splitter;
    kxPythonEditor* _editor;
    kxPythonPrompt* _prompt;
    QLabel* _title;
};
