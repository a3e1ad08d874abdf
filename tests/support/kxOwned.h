#pragma once

#include <osg/FieldContainer.h>

/// Holds a share of a container for as long as it lives.
template <class T>
class kxOwned
{
public:
    explicit kxOwned(const osg::FCPtr<T>& container) : _container(container) { _container->addRef(); }
    ~kxOwned() { release(); }
    kxOwned(const kxOwned&) = delete;
    kxOwned& operator=(const kxOwned&) = delete;
    void release()
    {
        if (_container)
            _container->subRef();
        _container = osg::FCPtr<T>();
    }
    T* operator->() const { return _container.getCPtr(); }
    T& operator*() const { return *_container; }
    operator osg::FCPtr<T>() const { return _container; }
    osg::FCPtr<T> get() const { return _container; }

private:
    osg::FCPtr<T> _container;
};
