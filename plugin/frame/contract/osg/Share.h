#pragma once

#include <osg/FieldContainer.h>

#include <utility>

namespace osg
{
/// A handle that owns: holds a share of its container, so that what is in no scene lives, under the same id.
template <class T>
class Share
{
public:
    Share() = default;
    Share(const FCPtr<T>& container) : _container(container) { take(); }
    Share(const Share& other) : Share(other._container) {}
    Share(Share&& other) noexcept : _container(std::exchange(other._container, FCPtr<T>())) {}
    ~Share() { release(); }
    Share& operator=(Share other) noexcept
    {
        std::swap(_container, other._container);
        return *this;
    }
    /// Gives the share back at once; null from here on.
    void release()
    {
        if (const FCPtr<T> container = std::exchange(_container, FCPtr<T>()))
            container->subRef();
    }

    const FCPtr<T>& get() const { return _container; }
    /// 0 for none.
    UInt32 id() const { return _container.getFieldContainerId(); }
    T* operator->() const { return _container.getCPtr(); }
    T& operator*() const { return *_container; }
    operator const FCPtr<T>&() const { return _container; }
    explicit operator bool() const { return bool(_container); }

private:
    void take()
    {
        if (_container)
            _container->addRef();
    }

    FCPtr<T> _container;
};
} // namespace osg
