#pragma once

#include <journal/kxVersionStore.h>

#include <QDialog>

#include <memory>
#include <vector>

class QLabel;
class QListWidget;
class QPushButton;
class kxVersionKeeper;
class kxVersionView;

/// The versions of any scene that has some: also of one whose file is gone, or that was never saved.
class kxVersionsDialog : public QDialog
{
    Q_OBJECT
public:
    kxVersionsDialog(kxVersionKeeper* keeper, QWidget* parent);

    /// Shows those of this file.
    void showFile(const QString& path);

private:
    void fill();
    void showDocument(int row);
    void choose();
    void openVersion(qint64 number);
    void saveAs();
    void update();

    kxVersionKeeper* _keeper;
    std::vector<kxVersionStore::Document> _documents;
    std::unique_ptr<kxVersionStore> _store;
    QListWidget* _list;
    QLabel* _path;
    kxVersionView* _view;
    QPushButton* _open;
    QPushButton* _saveAs;
};
