#pragma once

#include <QTimer>
#include <QWidget>
#include <kernel/kxSelection.h>
#include <osg/SceneCores.h>

#include <set>
#include <vector>

class QLabel;
class QLineEdit;
class QScrollArea;
class kxPropertyRow;

/// The values of what was selected last, objects or materials, as the table of fields of their classes gives them.
///
/// Several selected: the fields that all have; an edit goes to all of them.
class kxPropertyPanel : public QWidget
{
    Q_OBJECT
public:
    explicit kxPropertyPanel(QWidget* parent = nullptr);
    ~kxPropertyPanel() override;

    QSize sizeHint() const override { return QSize(300, 400); }

protected:
    void showEvent(QShowEvent* event) override;

private:
    typedef std::vector<osg::FieldContainerPtr> Containers;
    void showKind(kxSelection::Kind kind);
    void rebuild();
    void rebuildLater();
    /// Rebuilds where the selection is made of other parts than the rows show; else refreshes.
    void follow();
    void refresh();
    void markDriven();
    void fillNodes(const std::vector<osg::NodePtr>& nodes, QWidget* page);
    void addHead(const Containers& named, const QString& kind, const QIcon& icon, QWidget* page);
    void addSections(const Containers& containers, const QString& suffix, QWidget* page);
    void addSection(const Containers& containers, const osg::FieldContainerType& type, const QString& title,
                    QWidget* page);
    std::vector<unsigned int> parts() const;

    QScrollArea* _scroll;
    QLabel* _hint;
    QLineEdit* _name = nullptr;        // of the page; null where several are selected
    std::vector<unsigned int> _named;  // whose name _name shows
    std::vector<kxPropertyRow*> _rows; // of the page
    std::vector<unsigned int> _parts;  // ids of what the page was made for
    kxSelection::Kind _kind = kxSelection::Nodes;
    bool _stale = true;
    QTimer _rebuild; // at the next turn of the event loop
};
