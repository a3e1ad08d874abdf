#pragma once

#include <QAbstractItemModel>
#include <scene/kxScenery.h>

#include <vector>

class kxSceneryStage;

/// Viewpoints, camera tracks, variant sets with their choices, and sequences of the scene, in a section for each kind
/// that has some.
class kxSceneryModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    /// `stage` outlives it.
    explicit kxSceneryModel(kxSceneryStage* stage, QObject* parent = nullptr);

    /// The thing of a row, or the set of a choice's row; null for a section.
    osg::NodePtr node(const QModelIndex& index) const;
    /// The number of a choice's row, -1 for others.
    int choice(const QModelIndex& index) const;
    QModelIndex indexOf(unsigned int nodeId) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& = {}) const override { return 1; }
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    struct Item
    {
        unsigned int id;
        QString name;
        QStringList choices;
        QString shown; // of the choices
        bool isRunning;
        bool isLooked; // the view looks through it
    };
    struct Section
    {
        kxScenery::Kind kind;
        std::vector<Item> items;
    };
    typedef std::vector<Section> Sections;
    Sections read() const;
    static bool haveSameRows(const Sections& a, const Sections& b);
    void sync();
    /// Frame after frame while something plays: looks at what sets show, and no further.
    void syncChoices();
    /// The same for the camera that is looked through.
    void syncLook();
    /// Null for a section.
    const Item* item(const QModelIndex& index) const;
    QVariant sectionData(const Section& section, int role) const;
    QVariant choiceData(const Item& set, int row, int role) const;

    kxSceneryStage* _stage;
    Sections _sections; // those that aren't empty
};
