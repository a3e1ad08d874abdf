#pragma once

#include <QString>
#include <QWidget>

#include <string>
#include <vector>

class QLabel;
class QPlainTextEdit;
class kxPromptInput;
struct kxScriptResult;

/// The interactive half of the console: what was typed and what came out, above the line where one types.
///
/// Shows what any script of the application writes, and every trace.
class kxPythonPrompt : public QWidget
{
    Q_OBJECT
public:
    enum Kind
    {
        Echo, ///< what was typed
        Output,
        Error,
        Note ///< what the console itself says
    };

    explicit kxPythonPrompt(QWidget* parent = nullptr);
    ~kxPythonPrompt() override;

    /// Runs `text` as if it had been typed. False where it is an unfinished statement; nothing ran then.
    bool run(const QString& text);
    /// Appends text. It shows at the next turn of the event loop, or at flush(): a script may write much.
    void append(Kind kind, const QString& text);
    void flush();
    void clear();
    /// What the output shows.
    QString text() const;

private:
    void submit(const QString& text);
    void echo();
    void noteExit(const kxScriptResult& result);
    void showHint();

    struct Piece
    {
        Kind kind;
        QString text;
    };
    QPlainTextEdit* _output; // child
    QLabel* _sign;           // child; ">>>"
    kxPromptInput* _input;   // child
    std::vector<Piece> _pending;
    std::size_t _pendingSize = 0; // characters
    QString _echo;                // what runs and has not been shown yet
    int _listener;
    bool _running = false;
    bool _atEnd = true; // the end of the output shows, and stays in sight
};
