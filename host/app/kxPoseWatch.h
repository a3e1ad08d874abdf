#pragma once

#include <QObject>
#include <animation/kxPoses.h>

#include <set>

/// Says of an animated object that is posed that the pose doesn't last, whoever poses it: once for each object until
/// the selection or the frame is another.
class kxPoseWatch : public QObject
{
    Q_OBJECT
public:
    explicit kxPoseWatch(QObject* parent);

    /// A scene was saved: names those that were left out.
    static void warnOfFile();

private:
    void look();

    std::vector<kxScenePlan::Pose> _poses; // at the last look
    std::set<QString> _said;               // objects
    double _time = 0;                      // of the last look
};
