#pragma once

#include <trees/kxAnimTreeWidget.h>

/// The scene structure of the animations: nodes below the kernel's structure root, in groups of the user's own.
///
/// The order of the rows is that of the nodes; nothing is sorted.
class kxAnimStructureWidget : public kxAnimTreeWidget
{
    Q_OBJECT
public:
    /// Of the rows of this tree.
    static constexpr const char MimeType[] = "application/anim-structure-item";

    explicit kxAnimStructureWidget(QWidget* parent = nullptr);

    using kxAnimTreeWidget::rebuild;

    QStringList mimeTypes() const override;

public Q_SLOTS:
    void rebuild(bool saveStates = true) override;
    /// A new group below the root, with a name that no other animation node has.
    void createGroup();

protected:
    QMimeData* mimeData(const QList<QTreeWidgetItem*> items) const override;
    /// Takes animations of the library into a group, as clones.
    bool dropMimeData(QTreeWidgetItem* parent, int index, const QMimeData* mime, Qt::DropAction action) override;
    /// Moves nodes of the structure.
    void dropEvent(QDropEvent* event) override;

protected Q_SLOTS:
    void showContextMenu(QPoint p) override;
    void changedItem(QTreeWidgetItem* item, int column) override;
};
