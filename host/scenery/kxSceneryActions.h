#pragma once

#include <QList>
#include <QObject>
#include <osg/FCPtr.h>

class QAction;
class kxSceneryStage;

/// The entries that make viewpoints, camera tracks, variant sets and sequences, for menus and the panel.
class kxSceneryActions : public QObject
{
    Q_OBJECT
public:
    /// `stage` outlives it.
    explicit kxSceneryActions(kxSceneryStage* stage, QObject* parent = nullptr);

    const QList<QAction*>& all() const { return _all; }

Q_SIGNALS:
    /// The user made something.
    void added(unsigned int nodeId);

private:
    QAction* add(const QString& text, const QString& icon, const QString& tip, void (kxSceneryActions::*slot)());
    void update();
    void addViewpoint();
    void addTrack();
    void addTurntable();
    void showTrack(const osg::NodePtr& track);
    void addVariantSet();
    void addSequence();

    kxSceneryStage* _stage;
    QList<QAction*> _all;
    QAction* _track;
};
