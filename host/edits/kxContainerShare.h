#pragma once

#include <osg/FieldContainerFactory.h>

/// A share of a container held by its id: what a step of the undo list took out of the scene lives on, under the same
/// id, for as long as the step can bring it back.
class kxContainerShare
{
public:
    kxContainerShare() = default;
    explicit kxContainerShare(const osg::FieldContainerPtr& container) : _id(container.getFieldContainerId())
    {
        if (container != osg::NullFC)
            container->addRef();
    }
    kxContainerShare(const kxContainerShare& other) : kxContainerShare(other.container()) {}
    kxContainerShare& operator=(const kxContainerShare& other)
    {
        kxContainerShare copy(other);
        std::swap(_id, copy._id);
        return *this;
    }
    ~kxContainerShare()
    {
        const osg::FieldContainerPtr held = container();
        if (held != osg::NullFC)
            held->subRef();
    }

    unsigned int id() const { return _id; }
    osg::FieldContainerPtr container() const { return osg::FieldContainerFactory::the()->getContainer(_id); }
    template <class T>
    osg::FCPtr<T> get() const
    {
        return osg::FCPtr<T>::dcast(container());
    }

private:
    unsigned int _id = 0; // 0 for none
};
