#pragma once

#include <QDialog>
#include <scene/kxSceneCode.h>

class QLabel;
class QListWidget;
class QPlainTextEdit;

/// Shows the code that the open scene carries, to be read and nothing else.
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
    std::vector<kxSceneCode> _code;
};
