#include <kxAnimManager.h>
#include <kxController.h>
#include <kxLog.h>

#include <kernel/kxHeldMessages.h>
#include <kernel/kxHostHooks.h>

#include <algorithm>
#include <memory>
#include <unordered_map>
#include <vector>

namespace
{
struct Handler
{
    kxController::Callback function;
    bool removed = false; // seen by the deliveries that still hold it
};
typedef std::vector<std::shared_ptr<Handler>> Handlers;
typedef std::unordered_map<std::string, Handlers> HandlersByName;

HandlersByName& registry()
{
    // Never destroyed: modules remove their handlers while the process ends.
    static HandlersByName* const handlers = new HandlersByName;
    return *handlers;
}

Handlers::iterator findHandler(Handlers& handlers, kxController::Callback function)
{
    return std::find_if(handlers.begin(), handlers.end(),
                        [function](const std::shared_ptr<Handler>& h) { return h->function == function; });
}

void logFailure(const std::string& name, const char* reason)
{
    kxLog::error("A handler of the message '%s' failed: %s", name.c_str(), reason);
}
} // namespace

void kxController::addCB(const std::string& name, Callback function)
{
    if (function == nullptr)
        return;
    Handlers& handlers = registry()[name];
    if (findHandler(handlers, function) == handlers.end())
        handlers.push_back(std::make_shared<Handler>(Handler{function}));
}

void kxController::subCB(const std::string& name, Callback function)
{
    const auto entry = registry().find(name);
    if (entry == registry().end())
        return;
    const auto handler = findHandler(entry->second, function);
    if (handler == entry->second.end())
        return;
    (*handler)->removed = true;
    entry->second.erase(handler);
    if (entry->second.empty())
        registry().erase(entry);
}

int kxController::call(const std::string& name, kxMessage& message, int)
{
    const auto entry = registry().find(name);
    if (entry == registry().end())
        return 0;
    if (kxHeldMessages::takes(name))
        return int(entry->second.size());

    const Handlers handlers = entry->second; // a handler may change the list
    int ran = 0;
    for (const std::shared_ptr<Handler>& handler : handlers)
    {
        if (handler->removed)
            continue;
        ++ran;
        try
        {
            handler->function(message);
        }
        catch (const std::exception& e)
        {
            logFailure(name, e.what());
        }
        catch (...)
        {
            logFailure(name, "unknown exception");
        }
    }
    return ran;
}

QMainWindow* kxController::getMainWindow()
{
    return kxHostHooks::the().mainWindow();
}

QKXDockWindowManager* kxController::getDockWindowManager()
{
    return kxHostHooks::the().dockWindowManager();
}

void kxController::updateRender(bool now)
{
    if (const auto render = kxHostHooks::the().render)
        render(now);
}

void kxController::updateBehavior(bool force)
{
    if (const auto update = kxHostHooks::the().updateBehavior)
        update(force);
}

bool kxController::isSnapshotRendering()
{
    const auto isRendering = kxHostHooks::the().isSnapshotRendering;
    return isRendering && isRendering();
}

void kxController::playAnimation(const osg::AnimNodePtr& animation)
{
    if (animation != osg::NullFC)
        kxAnimManager::the()->enqueue(animation, true);
}
