#pragma once

#include <kxAnimManager.h>

#include <QTreeWidgetItem>

/// One row of an animation tree: an object, a material, an animation, a channel or a group of the library.
///
/// Keeps field container ids and no handles: a row may outlive what it shows. Each use resolves the id again, and a row
/// whose container died shows its last text and answers null. Reading gives the scene's present state; writing a check
/// state or an edited text writes into the scene.
class kxAnimTreeWidgetItem : public QTreeWidgetItem
{
public:
    /// `checkable`: the user may switch what the row shows on and off.
    explicit kxAnimTreeWidgetItem(bool checkable);
    kxAnimTreeWidgetItem(QTreeWidgetItem* parent, bool checkable);
    ~kxAnimTreeWidgetItem() override;

    /// Binds the row to a node; one that is null or has no core changes nothing. A row of a scene node can neither be
    /// renamed nor checked.
    void setNode(const osg::NodePtr& node, bool setName, bool setIcon);
    /// Binds the row to no node.
    void clearNode();
    /// Binds the row to a material; null changes nothing.
    void setMaterial(const osg::MaterialPtr& material, bool setName, bool setIcon);

    // Null where the row has none, where the container died, and where it is of another class.
    osg::NodePtr node() const;
    /// As node(), null too for a node of the scene.
    osg::AnimNodePtr animNode() const;
    osg::MaterialPtr material() const;
    osg::AnimCurvePtr curve() const;
    osg::AnimObjectPtr animObject() const;

    // 0 where there is none; kept when the container dies.
    unsigned int nodeId() const { return _nodeId; }
    unsigned int materialId() const { return _materialId; }
    unsigned int coreId() const { return _coreId; }

    /// True for a group that the user made and that isn't built from tags.
    bool isGroup() const { return _isGroup; }
    void setGroup(bool value) { _isGroup = value; }

    /// A row with channel data shows the text that it was given, whatever its curve's node is called.
    bool isChannel() const { return _channelContainerId != 0; }
    void setChannelData(const kxAnimManager::kxOSGChannelData& data);
    /// Its container is null, so that the record is empty, once the object died.
    kxAnimManager::kxOSGChannelData channelData() const;

    QVariant data(int column, int role) const override;
    void setData(int column, int role, const QVariant& value) override;

private:
    void writeLocked(bool locked);
    void writeActive(bool active);
    void writeValue(const QString& text);
    /// True where the edit is done with and the text is not to be stored.
    bool editName(const QVariant& value);
    /// Names a group: the tag of each child.
    void renameGroup(const QString& text);

    unsigned int _coreId = 0;
    unsigned int _nodeId = 0;
    unsigned int _materialId = 0;
    bool _isGroup = false;
    kxAnimManager::kxOSGChannelData _channelData; // its container stays null: it is resolved from the id
    unsigned int _channelContainerId = 0;
};
