#pragma once

#include <osg/FieldContainerFactory.h>

#include <array>
#include <memory>
#include <vector>

/// What is known of containers by their ids; T() where nothing is. Ids only grow, and are never given again: what was
/// known of those that are gone takes no room once it is set back.
template <class T>
class kxIdTable
{
public:
    T get(osg::UInt32 id) const
    {
        const std::size_t page = id / PageSize;
        return page < _pages.size() && _pages[page] != nullptr ? _pages[page]->values[id % PageSize] : T();
    }
    void set(osg::UInt32 id, T value)
    {
        const std::size_t number = id / PageSize;
        if (value == get(id))
            return;
        if (number >= _pages.size())
            _pages.resize(number + 1);
        std::unique_ptr<Page>& page = _pages[number];
        if (page == nullptr)
            page = std::make_unique<Page>();
        T& held = page->values[id % PageSize];
        page->known += int(value != T()) - int(held != T());
        held = value;
        if (page->known == 0)
            page.reset();
    }
    void clear() { _pages.clear(); }
    /// Of what is known, ascending.
    std::vector<osg::UInt32> ids() const
    {
        std::vector<osg::UInt32> found;
        for (std::size_t page = 0; page < _pages.size(); ++page)
            for (osg::UInt32 i = 0; _pages[page] != nullptr && i < PageSize; ++i)
                if (_pages[page]->values[i] != T())
                    found.push_back(osg::UInt32(page * PageSize + i));
        return found;
    }
    /// How many ids it has room for.
    std::size_t room() const
    {
        std::size_t pages = 0;
        for (const std::unique_ptr<Page>& page : _pages)
            pages += page == nullptr ? 0 : 1;
        return pages * PageSize;
    }

private:
    static constexpr osg::UInt32 PageSize = 512;
    struct Page
    {
        std::array<T, PageSize> values{};
        int known = 0;
    };
    std::vector<std::unique_ptr<Page>> _pages;
};
