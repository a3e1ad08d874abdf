#pragma once

#include <osg/ChangeList.h>

#include <QObject>

/// Gets every marked change of animation and every death, whoever caused it, and reports it once a turn of the
/// event loop.
///
/// What playback alone writes doesn't count. Main thread only.
class kxAnimationWatch : public QObject, public osg::ChangeListener
{
    Q_OBJECT
public:
    explicit kxAnimationWatch(QObject* parent);
    ~kxAnimationWatch() override;

    /// Emits animationsChanged() in the next turn of the event loop, as after a change.
    void tellLater();

    void containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField) override;
    void containerDestroyed(osg::UInt32 id) override;

Q_SIGNALS:
    void animationsChanged();

private:
    void tell();

    bool _isPending = false;
};
