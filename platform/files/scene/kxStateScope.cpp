#include <files/scene/kxStateScope.h>

#include <animation/kxAnimScene.h>
#include <kxAnimManager.h>
#include <scene/kxScene.h>

using namespace osg;

namespace
{
std::vector<float> componentsOf(const FieldDescription& field, const FieldContainer& container)
{
    std::vector<float> components;
    for (unsigned i = 0; i < field.components(); ++i)
        components.push_back(field.component(container, i));
    return components;
}
} // namespace

kxStateScope::kxStateScope() : _sceneFrame(kxAnimScene::frame()), _frame(kxAnimManager::the()->currentFrame())
{
    traverse(kxScene::the()->superRoot(),
             [this](const NodePtr& node)
             {
                 keep(node);
                 keep(node->getCore());
                 return Action::Continue;
             });
    for (const MaterialPtr& material : kxScene::the()->materials())
        keep(material);
}

void kxStateScope::keep(const FieldContainerPtr& container)
{
    if (container == NullFC)
        return;
    for (const FieldDescription& field : container->getType().fields())
        if (field.isAnimatable())
            _values.push_back(Value{container, &field, field.value(*container), componentsOf(field, *container)});
}

kxStateScope::~kxStateScope()
{
    kxAnimManager::the()->setCurrentFrame(_sceneFrame, true, false);
    if (_frame != _sceneFrame)
        kxAnimManager::the()->setCurrentFrameNoEvaluation(_frame, false);
    for (auto entry = _values.rbegin(); entry != _values.rend(); ++entry)
    {
        if (componentsOf(*entry->field, *entry->container) == entry->components)
            continue;
        entry->field->setValue(*entry->container, entry->value);
        markChanged(entry->container, entry->field->mask());
    }
}
