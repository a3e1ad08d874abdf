#include <files/scene/kxUniqueNames.h>

std::string kxUniqueNames::take(const std::string& proposal)
{
    if (_taken.insert(proposal).second)
        return proposal;
    unsigned& number = _next[proposal];
    for (;;)
    {
        const std::string name = proposal + '_' + std::to_string(++number);
        if (_taken.insert(name).second)
            return name;
    }
}
