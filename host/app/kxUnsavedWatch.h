#pragma once

#include <QObject>
#include <osg/ChangeList.h>

#include <map>
#include <string>

class QUndoStack;

/// Knows whether the scene differs from its file.
///
/// Steps of the undo stack count but for mere selections; so do edits of animations that are no steps, such as bars
/// that were dragged, and the rates, ranges and ways of playing that a file holds. What a frame change writes into
/// objects doesn't count.
class kxUnsavedWatch : public QObject, public osg::ChangeListener
{
    Q_OBJECT
public:
    explicit kxUnsavedWatch(QObject* parent = nullptr);
    ~kxUnsavedWatch() override;

    bool isUnsaved() const;
    /// The scene is as its file from here on.
    void markSaved();
    /// As markSaved(), for a scene that was just read: its steps are gone.
    void startOver();

    void containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField) override;

Q_SIGNALS:
    void unsavedChanged(bool unsaved);

private:
    void stackMoved();
    void turnEnded();
    void update();
    bool hasSteps() const;
    bool differs() const;

    QUndoStack* _stack;                      // not owned
    std::map<std::string, double> _settings; // of the file
    bool _pending = false; // an animation was edited in this turn of the event loop, and by no step so far
    bool _editedBeside = false;
    bool _unsaved = false;
};
