#pragma once

#include <QListView>
#include <QTimer>

/// The history of all changes, the oldest first; a click on an entry goes there.
class kxUndoPanel : public QListView
{
    Q_OBJECT
public:
    /// What an entry was made to, without its title.
    static constexpr int DetailRole = Qt::UserRole;

    explicit kxUndoPanel(QWidget* parent = nullptr);

    /// A row where there is room for `width` pixels: its title gives way to the detail at its end; without one, and
    /// where the detail is too long, the middle does.
    static QString fitted(const QString& text, const QString& detail, const QFontMetrics& metrics, int width);

private:
    class Model;
    void follow();

    Model* _model;
    QTimer _follow; // at the next turn of the event loop, however many entries there are by then
    bool _following = false;
};
