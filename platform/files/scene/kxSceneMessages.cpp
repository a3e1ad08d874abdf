#include <files/scene/kxSceneMessages.h>

#include <kernel/kxModuleRegistry.h>
#include <kxMessage.h>
#include <kxMessageIds.h>

namespace
{
void deliver(kxMessageId::Id id)
{
    kxMessage message(id);
    kxModuleRegistry::the().deliver(message);
}
} // namespace

void kxSceneMessages::stopPlayback()
{
    deliver(kxMessageId::StopPlayback);
}

void kxSceneMessages::newScene()
{
    deliver(kxMessageId::NewScene);
}

void kxSceneMessages::contentChanged()
{
    deliver(kxMessageId::SceneChanged);
    deliver(kxMessageId::AnimationsLoaded);
}
