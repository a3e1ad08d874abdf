#pragma once

#include <wizard/kxCaptureTable.h>

#include <vector>

class QWidget;

/// Animations that the same objects already have in a clip while a new one is to run.
struct kxWizardInterference
{
    /// How the user goes on.
    enum Answer
    {
        Cancel = 0,
        Nothing = 1, ///< OK with none of the three chosen
        MoveAnimation = 2,
        DiscardExisting = 3,
        NewClip = 4
    };
    /// Shows the question over `parent` and waits; one of the answers.
    typedef int (*Question)(QWidget* parent);

    std::vector<osg::AnimNodePtr> nodes; ///< the bars in the way, each once
    float end = 0;                       ///< seconds: where the last of them ends

    /// What the blocks of `table`, begun at `start` seconds, meet in the clip `target` or below it.
    static kxWizardInterference find(const kxCaptureTable& table, double start, const osg::AnimNodePtr& target);
};
