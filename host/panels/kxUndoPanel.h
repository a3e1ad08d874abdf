#pragma once

#include <QListView>
#include <QTimer>

/// The history of all changes, the oldest first; a click on an entry goes there.
class kxUndoPanel : public QListView
{
    Q_OBJECT
public:
    explicit kxUndoPanel(QWidget* parent = nullptr);

private:
    class Model;
    void follow();

    Model* _model;
    QTimer _follow; // at the next turn of the event loop, however many entries there are by then
    bool _following = false;
};
