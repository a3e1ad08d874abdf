#pragma once

#include <wizard/kxCaptureTable.h>

#include <osg/AnimCores.h>

#include <QString>

/// What the fields of the wizard say about the clip that it makes.
struct kxWizardClip
{
    QString name;
    double start = 0;    ///< seconds of the time of the tree's root
    double duration = 0; ///< seconds
    int interpolation = 0;
    osg::ImagePtr startImage;
    osg::ImagePtr endImage;

    /// Attaches the blocks of `table` to their objects for good, under names of their own, and gives a clip with clones
    /// of them. It is in no tree: it dies unless it is given a parent.
    osg::AnimNodePtr make(const kxCaptureTable& table) const;
    /// Keeps in the core of such a clip what the fields say, but for the name.
    void write(const osg::AnimWizClipPtr& core) const;
};
