#include <kxAnimManager.h>
#include <kxMessageIds.h>
#include <kxServices.h>

#include <kernel/kxModuleRegistry.h>

#include <cstdio>
#include <map>
#include <string>

namespace
{
/// A null value: the class is known but nothing answers.
std::map<std::string, QObject*>& services()
{
    // Never destroyed: tools look services up while the process ends.
    static auto* const map = new std::map<std::string, QObject*>;
    return *map;
}
} // namespace

kxKernelServiceFactory& kxKernelServiceFactory::the()
{
    static kxKernelServiceFactory* const factory = []
    {
        qRegisterMetaType<kxdNode>();
        qRegisterMetaType<QList<kxdNode>>();
        auto* const made = new kxKernelServiceFactory;
        made->addService<kxAnimationService>(&kxAnimationService::the());
        return made;
    }();
    return *factory;
}

QObject* kxKernelServiceFactory::find(const char* className) const
{
    const auto found = services().find(className);
    if (found == services().end())
        std::fprintf(stderr, "kxKernelServiceFactory: couldn't find class '%s'!\n", className);
    else if (found->second == nullptr)
        std::fprintf(stderr, "kxKernelServiceFactory: service '%s' is NULL!\n", className);
    else
        return found->second;
    return nullptr;
}

void kxKernelServiceFactory::add(const char* className, QObject* service)
{
    const std::string name = className;
    services()[name] = service;
    if (service == nullptr)
        return;
    QObject::connect(service, &QObject::destroyed,
                     [name, service]
                     {
                         const auto found = services().find(name);
                         if (found != services().end() && found->second == service)
                             services().erase(found);
                     });
}

QList<kxdViewpointNode> kxCameraService::getViewpoints() const
{
    return {};
}

QList<kxdCameraTrackNode> kxCameraService::getCameraTracks() const
{
    return {};
}

void kxCameraService::requestGUIUpdate() {}

kxAnimationService& kxAnimationService::the()
{
    // Never destroyed: commands that die with the process announce their changes.
    static kxAnimationService* const service = new kxAnimationService;
    return *service;
}

void kxAnimationService::animationsChanged()
{
    static bool updating = false;
    static bool announcing = false;
    static bool again = false;

    if (updating)
        return;
    updating = true;
    kxAnimManager::the()->updateSceneAnimCurveData();
    updating = false;
    kxModuleRegistry::the().deliverLater(kxMessageId::AnimationsChanged);

    if (announcing)
    {
        again = true; // a listener changed animations
        return;
    }
    announcing = true;
    again = false;
    Q_EMIT changed();
    // Those who were notified already are notified once more; a listener that answers each time ends here.
    if (again)
        Q_EMIT changed();
    announcing = false;
}

void kxPreferencesService::openPreferences(const QString&) {}
