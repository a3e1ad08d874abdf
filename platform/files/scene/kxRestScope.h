#pragma once

#include <scene/FieldDescription.h>

#include <vector>

/// While this lives, the given containers hold the values that they have of themselves in place of those that
/// animations give them. Nothing is marked: nobody sees the difference, and all is as it was afterwards.
class kxRestScope
{
public:
    explicit kxRestScope(const std::vector<osg::FieldContainerPtr>& containers);
    ~kxRestScope();
    kxRestScope(const kxRestScope&) = delete;
    kxRestScope& operator=(const kxRestScope&) = delete;

private:
    struct Animated
    {
        osg::FieldContainerPtr container;
        const osg::FieldDescription* field;
        osg::FieldValue value;
    };

    void keep(const osg::FieldContainerPtr& container, const osg::BitVector& mask);

    std::vector<Animated> _animated;
};
