#pragma once

#include <scene/FieldDescription.h>

#include <vector>

/// Brings every animatable value of the open scene, and its frames, back to what they were when this was made. What was
/// written in between is marked.
class kxStateScope
{
public:
    kxStateScope();
    ~kxStateScope();
    kxStateScope(const kxStateScope&) = delete;
    kxStateScope& operator=(const kxStateScope&) = delete;

private:
    struct Value
    {
        osg::FieldContainerPtr container;
        const osg::FieldDescription* field;
        osg::FieldValue value;
        std::vector<float> components;
    };

    void keep(const osg::FieldContainerPtr& container);

    std::vector<Value> _values;
    double _sceneFrame; // of the timeline
    double _frame;      // the current one, which may be a clip's
};
