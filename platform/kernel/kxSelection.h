#pragma once

#include <osg/SceneCores.h>

#include <QObject>

#include <functional>
#include <vector>

/// What is selected in the scene: nodes and, apart from them, materials. Both in the order of selection.
///
/// Held by ids, so that what dies drops out of nodes() and materials() by itself. Whoever takes nodes out of the tree
/// deselects them in the same step.
class KX_API kxSelection : public QObject
{
    Q_OBJECT
public:
    enum Kind
    {
        Nodes,
        Materials
    };

    static kxSelection& the();

    std::vector<osg::NodePtr> nodes() const;
    std::vector<osg::MaterialPtr> materials() const;
    bool contains(unsigned int id) const;

    /// A step on the undo stack, but where this is selected already, or a step would cost too much. Null handles and
    /// repetitions are left out.
    void selectNodes(const std::vector<osg::NodePtr>& nodes);
    void selectMaterials(const std::vector<osg::MaterialPtr>& materials);

    /// Asked before each: true where what was taken back would be gone for a mere selection.
    void setIsStepless(std::function<bool()> isStepless) { _isStepless = std::move(isStepless); }

    /// Selects nothing, without a step: for a scene that is closed.
    void clear();

    /// Selects and announces without a step; what doesn't live is left out. For the command.
    void setIds(Kind kind, const std::vector<unsigned int>& ids);
    /// Those that live.
    std::vector<unsigned int> ids(Kind kind) const;

Q_SIGNALS:
    void nodesChanged();
    void materialsChanged();
    /// What was selected is what is selected already: whoever shows one kind at a time may show this one again.
    void selectedAgain(kxSelection::Kind kind);

private:
    kxSelection() = default;
    void select(Kind kind, const std::vector<unsigned int>& ids);
    void announceNodes();
    void announceMaterials();

    std::function<bool()> _isStepless;
    std::vector<unsigned int> _nodes;
    std::vector<unsigned int> _materials;
};
