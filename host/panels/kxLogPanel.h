#pragma once

#include <QWidget>
#include <kernel/kxLogModel.h>

class QComboBox;
class QLineEdit;
class QListView;
class QSortFilterProxyModel;
class kxLogListModel;

/// What the application reported: by level, by a word, to copy.
class kxLogPanel : public QWidget
{
    Q_OBJECT
public:
    explicit kxLogPanel(QWidget* parent = nullptr);

private:
    void filter();
    void copy();

    kxLogListModel* _model;
    QSortFilterProxyModel* _levels; // the least level
    QSortFilterProxyModel* _words;
    QListView* _view;
    QComboBox* _level;
    QLineEdit* _search;
};
