#include <files/scene/kxSceneMessages.h>

#include <kernel/kxModuleRegistry.h>
#include <kxMessageIds.h>

void kxSceneMessages::stopPlayback()
{
    kxModuleRegistry::the().deliver(kxMessageId::StopPlayback);
}

void kxSceneMessages::newScene()
{
    kxModuleRegistry::the().deliver(kxMessageId::NewScene);
}

void kxSceneMessages::contentChanged()
{
    kxModuleRegistry::the().deliver(kxMessageId::SceneChanged);
    kxModuleRegistry::the().deliver(kxMessageId::AnimationsLoaded);
}
