#include <files/scene/kxRestScope.h>

#include <animation/kxAnimEngine.h>
#include <kxAnimManager.h>

using namespace osg;

kxRestScope::kxRestScope(const std::vector<FieldContainerPtr>& containers)
{
    const kxRestValues& rest = kxAnimEngine::of(*kxAnimManager::the()).rest;
    if (rest.size() == 0)
        return;
    for (const FieldContainerPtr& container : containers)
        for (const FieldDescription& field : container->getType().fields())
        {
            if (!field.isAnimatable())
                continue;
            bool kept = false;
            for (unsigned component = 0; component < field.components(); ++component)
            {
                float value = 0;
                if (!rest.get(container->getId(), field.name(), component, value))
                    continue;
                if (!kept)
                    keep(container, field.mask());
                kept = true;
                field.setComponent(*container, component, value);
            }
        }
}

// A channel may be a view of a stored field: what is kept are the stored fields that it shows.
void kxRestScope::keep(const FieldContainerPtr& container, const BitVector& mask)
{
    for (const FieldDescription& field : container->getType().fields())
        if (!field.isTransient() && field.mask().intersects(mask))
            _animated.push_back(Animated{container, &field, field.value(*container)});
}

kxRestScope::~kxRestScope()
{
    for (auto entry = _animated.rbegin(); entry != _animated.rend(); ++entry)
        entry->field->setValue(*entry->container, entry->value);
}
