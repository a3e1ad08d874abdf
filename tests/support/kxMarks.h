#pragma once

#include <osg/ChangeList.h>

#include <set>

/// The containers of which a field was marked since it was made, how often, and those that died.
class kxMarks : public osg::ChangeListener
{
public:
    kxMarks() { osg::WinThreadBase::getCurrentChangeList()->addListener(this); }
    ~kxMarks() override { osg::WinThreadBase::getCurrentChangeList()->subListener(this); }

    int times(const osg::FieldContainerPtr& marked) const { return int(_ids.count(marked.getFieldContainerId())); }
    bool has(const osg::FieldContainerPtr& container) const { return times(container) != 0; }
    void containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector&) override
    {
        _ids.insert(container.getFieldContainerId());
    }
    void containerDestroyed(osg::UInt32 id) override { gone.insert(id); }

    std::set<osg::UInt32> gone;

private:
    std::multiset<osg::UInt32> _ids;
};
