#pragma once

#include <QMenu>

#include <array>

class QActionGroup;

/// The modes that a curve can have outside its keys, as entries of which at most one is checked.
class kxAnimInfinityMenu : public QMenu
{
    Q_OBJECT
public:
    static constexpr int NoMode = -1;

    kxAnimInfinityMenu(const QString& title, QWidget* parent);

    /// Emits triggered() for an entry that the user chose.
    QActionGroup* group() const { return _group; }
    /// The number of the mode as curves hold it; NoMode for null and for any other action.
    int modeOf(const QAction* action) const;
    /// Checks the entry of the mode; none for NoMode and for a number that is no mode.
    void setMode(int mode);

private:
    QActionGroup* _group;
    std::array<QAction*, 5> _actions; // by the number of the mode; owned by the menu
};
