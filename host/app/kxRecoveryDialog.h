#pragma once

#include "kxLeftover.h"

#include <QDialog>

#include <functional>

class QListWidget;
class QPushButton;

/// Offers what runs before this one left: to open it, to keep it for the next start, or to delete it.
class kxRecoveryDialog : public QDialog
{
    Q_OBJECT
public:
    /// `open` gives false where the leftover is to stay.
    kxRecoveryDialog(std::vector<kxLeftover> leftovers, std::function<bool(kxLeftover&)> open, QWidget* parent);

private:
    void openCurrent();
    void deleteCurrent();
    void showCurrent();

    std::vector<kxLeftover> _leftovers;
    std::function<bool(kxLeftover&)> _open;
    QListWidget* _list;
    QPushButton* _opens;
};
