#pragma once

#include <QUndoView>

/// The steps of the one undo stack; a click on a step goes there.
class kxUndoPanel : public QUndoView
{
    Q_OBJECT
public:
    explicit kxUndoPanel(QWidget* parent = nullptr);
};
