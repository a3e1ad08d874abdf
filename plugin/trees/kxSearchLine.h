#pragma once

#include <QLineEdit>

/// The line that searches a tree. While it is empty it leaves undo and redo to the scene: a search that was cleared is
/// nothing that anyone wants to take back.
class kxSearchLine : public QLineEdit
{
    Q_OBJECT
public:
    using QLineEdit::QLineEdit;

    bool event(QEvent* event) override;
};
