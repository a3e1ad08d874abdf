#pragma once

#include <QListView>
#include <QTimer>

class QUndoStack;

/// The steps of the one undo stack, the oldest first; a click on a step goes there.
class kxUndoPanel : public QListView
{
    Q_OBJECT
public:
    explicit kxUndoPanel(QWidget* parent = nullptr);

private:
    class Model;
    void follow();

    QUndoStack* _stack; // not owned
    Model* _model;
    QTimer _follow; // at the next turn of the event loop, however many steps there are by then
    bool _following = false;
};
