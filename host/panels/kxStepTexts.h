#pragma once

#include <QObject>
#include <QTimer>
#include <osg/AnimCurve.h>
#include <osg/ChangeList.h>

#include <map>
#include <optional>
#include <set>
#include <unordered_map>

class QUndoStack;
class kxMessage;
class kxUndoStep;

/// What each step of the undo stack did to what: "Move Control Points: Box, translation.X, frame 24".
///
/// The commands' texts name the act alone. Which keys a step wrote shows in the curves: those of the selected objects
/// and animations are remembered as they are, and so is every curve that a step has written. The first step on a
/// curve that was never shown, and each on one of more than 10,000 keys, names no frames.
class kxStepTexts : public QObject, private osg::ChangeListener
{
    Q_OBJECT
public:
    explicit kxStepTexts(QObject* parent = nullptr);
    ~kxStepTexts() override;

    /// Of the step at `index` of the stack.
    QString text(int index) const;

private:
    typedef osg::MField<osg::CCPnt, 0> Keys;
    void containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField) override;
    /// The stack moved: what was written since belongs to the step on its top, if that is new or grew by a merge.
    void settle();
    /// What was written beside the stack in this turn is how curves are now.
    void endTurn();
    void takeOver(std::set<unsigned int>& curves);
    void rememberSelection();
    void rememberBelow(const osg::NodePtr& root);
    QString detail() const;
    static void animationsSelected(kxMessage& message);

    QUndoStack* _stack;                                  // not owned
    std::unordered_map<unsigned int, Keys> _present;     // by curve, as they were before _written
    std::set<unsigned int> _written;                     // curves, by steps since the stack moved
    std::set<unsigned int> _beside;                      // curves, by no step in this turn: not in _present
    const kxUndoStep* _last = nullptr;                   // the newest step, null after undo and redo
    std::map<unsigned int, std::optional<Keys>> _before; // of the curves that _last wrote; none where not remembered
    std::size_t _firstNew = 0;                           // containers from this id on were made since
    std::size_t _keys = 0;                               // of curves remembered since _present was empty
    QTimer _turn;
};
