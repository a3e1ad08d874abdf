#pragma once

#include <osg/FieldContainer.h>

#include <utility>

/// A handle that owns: holds a share of its container, so that one that is on its way into a scene lives.
template <class T>
class kxShare
{
public:
    kxShare() = default;
    kxShare(const osg::FCPtr<T>& container) : _container(container) { take(); }
    kxShare(const kxShare& other) : _container(other._container) { take(); }
    kxShare(kxShare&& other) noexcept : _container(std::exchange(other._container, osg::FCPtr<T>())) {}
    ~kxShare() { release(); }
    kxShare& operator=(kxShare other) noexcept
    {
        std::swap(_container, other._container);
        return *this;
    }

    const osg::FCPtr<T>& get() const { return _container; }
    T* operator->() const { return _container.getCPtr(); }
    operator const osg::FCPtr<T>&() const { return _container; }
    explicit operator bool() const { return bool(_container); }

private:
    void take()
    {
        if (_container)
            _container->addRef();
    }
    void release()
    {
        if (_container)
            _container->subRef();
    }

    osg::FCPtr<T> _container;
};
