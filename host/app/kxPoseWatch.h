#pragma once

#include <QObject>
#include <animation/kxPoses.h>

#include <set>
#include <utility>

/// Says of an animated object that is posed that the pose doesn't last, whoever poses it and whether the timeline or a
/// clip is shown: once for each object until the selection or what is shown is another.
class kxPoseWatch : public QObject
{
    Q_OBJECT
public:
    explicit kxPoseWatch(QObject* parent);

    /// A scene was saved: names those that were left out.
    static void warnOfFile();

private:
    /// The animation that is shown instead of the timeline, 0 for none, and its time or the timeline's.
    typedef std::pair<unsigned int, double> Moment;
    static Moment moment();
    void look();

    std::vector<kxScenePlan::Pose> _poses; // at the last look
    std::set<QString> _said;               // objects
    Moment _moment;                        // of the last look
};
