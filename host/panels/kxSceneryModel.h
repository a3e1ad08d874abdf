#pragma once

#include <QAbstractItemModel>
#include <scene/kxScenery.h>

#include <vector>

class kxSceneryStage;

/// Viewpoints, camera tracks, variant sets with their choices, sequences, and clips with their triggers, in a section
/// for each that has some.
class kxSceneryModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    /// `stage` outlives it.
    explicit kxSceneryModel(kxSceneryStage* stage, QObject* parent = nullptr);

    /// The thing of a row, or what a choice's or a trigger's row belongs to; null for a section.
    osg::NodePtr node(const QModelIndex& index) const;
    /// The row below a thing's, -1 for others.
    static int rowBelow(const QModelIndex& index);
    /// The number of a choice's row, -1 for others.
    int choice(const QModelIndex& index) const;
    /// Null for what is no trigger's row.
    osg::AnimNodePtr trigger(const QModelIndex& index) const;
    /// What a trigger's row could name instead.
    QStringList targets(const QModelIndex& index) const;
    QModelIndex indexOf(unsigned int nodeId) const;
    /// On the ruler of the clip that a trigger is in.
    static double frameOf(const osg::AnimNodePtr& trigger);

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
        QStringList below;                  // the names of choices, the texts of triggers
        QString shown;                      // of the choices
        std::vector<unsigned int> triggers; // beside `below`
        bool isRunning;
        bool isLooked; // the view looks through it
    };
    static constexpr int Clips = kxScenery::KindCount;
    struct Section
    {
        int kind; // a kxScenery::Kind, or Clips
        std::vector<Item> items;
    };
    typedef std::vector<Section> Sections;
    Sections read() const;
    static Section readClips();
    static Item readClip(const osg::NodePtr& clip);
    static bool haveSameRows(const Sections& a, const Sections& b);
    void sync();
    void syncNames();
    void syncClips();
    void show(Sections&& sections);
    /// Frame after frame while something plays: looks at what sets show, and no further.
    void syncChoices();
    /// The same for the camera that is looked through.
    void syncLook();
    /// Null for a section.
    const Item* item(const QModelIndex& index) const;
    QVariant sectionData(const Section& section, int role) const;
    QVariant choiceData(const Item& set, int row, int role) const;
    QVariant triggerData(const Item& clip, int row, int role) const;
    int kindOf(const QModelIndex& index) const;

    kxSceneryStage* _stage;
    Sections _sections; // those that aren't empty
};
