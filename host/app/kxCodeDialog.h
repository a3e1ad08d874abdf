#pragma once

#include <QDialog>
#include <scene/kxSceneCode.h>

class QLabel;
class QListWidget;
class QPlainTextEdit;
class QPushButton;

/// Shows the code that the open scene carries, to be read, and to be answered for.
class kxCodeDialog : public QDialog
{
    Q_OBJECT
public:
    explicit kxCodeDialog(QWidget* parent = nullptr);

    /// With everything in sight: what would be drawn as nothing, or out of its order, becomes its number.
    static QString readable(const std::string& text);

private:
    void follow();
    void showPiece();

    QLabel* _summary;
    QListWidget* _list;
    QPlainTextEdit* _text;
    QList<QPushButton*> _answers; ///< as long as there is code that doesn't run
    std::vector<kxSceneCode> _code;
};
