#pragma once

#include <functional>
#include <type_traits>

/// An edit of a random walk that is made only where `any` finds something: room, which is true or false, or what is to
/// be edited, which the edit then gets.
template <class Any, class Edit>
std::function<void()> kxWhere(const Any& any, const Edit& edit)
{
    return [any, edit]
    {
        if (const auto found = any())
        {
            if constexpr (std::is_invocable_v<Edit, decltype(found)>)
                edit(found);
            else
                edit();
        }
    };
}
