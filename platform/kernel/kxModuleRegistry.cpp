#include <kernel/kxModuleRegistry.h>

#include <kxLog.h>
#include <kxMessage.h>
#include <kxMessageIds.h>
#include <kxModuleBase.h>

#include <QCoreApplication>

#include <algorithm>
#include <utility>

kxModuleRegistry& kxModuleRegistry::the()
{
    // Never destroyed: modules leave while the process ends.
    static kxModuleRegistry* const registry = new kxModuleRegistry;
    return *registry;
}

std::vector<kxModuleBase*> kxModuleRegistry::modules() const
{
    std::vector<kxModuleBase*> modules;
    for (const std::shared_ptr<Entry>& entry : _entries)
        modules.push_back(entry->module);
    return modules;
}

int kxModuleRegistry::deliver(kxMessage& message)
{
    const std::vector<std::shared_ptr<Entry>> entries = _entries; // a module may come or go
    int delivered = 0;
    for (const std::shared_ptr<Entry>& entry : entries)
    {
        if (entry->module == nullptr || (entry->module->messageMask() & message.id()) == 0)
            continue;
        ++delivered;
        const QString name = entry->module->name();
        try
        {
            entry->module->receivedMessage(message);
        }
        catch (const std::exception& e)
        {
            kxLog::error("The module '%s' failed on a message: %s", qUtf8Printable(name), e.what());
        }
        catch (...)
        {
            kxLog::error("The module '%s' failed on a message: unknown exception", qUtf8Printable(name));
        }
    }
    return delivered;
}

int kxModuleRegistry::deliver(std::uint64_t id)
{
    kxMessage message(id);
    return deliver(message);
}

void kxModuleRegistry::deliverLater(std::uint64_t id)
{
    QCoreApplication* const application = QCoreApplication::instance();
    if (application == nullptr)
        return;
    if (_waiting == 0)
        QMetaObject::invokeMethod(
            application, [this] { deliverWaiting(); }, Qt::QueuedConnection);
    _waiting |= id;
}

void kxModuleRegistry::deliverWaiting()
{
    std::uint64_t waiting = std::exchange(_waiting, 0);
    if ((waiting & kxMessageId::AnimationsChanged) != 0)
        waiting &= ~std::uint64_t(kxMessageId::ClipsChanged); // a part of it
    for (std::uint64_t id = 1; id != 0 && id <= waiting; id <<= 1)
        if ((waiting & id) != 0)
            deliver(id);
}

void kxModuleRegistry::add(kxModuleBase* module)
{
    _entries.push_back(std::make_shared<Entry>(Entry{module}));
}

void kxModuleRegistry::remove(kxModuleBase* module)
{
    const auto found = std::find_if(_entries.begin(), _entries.end(),
                                    [module](const std::shared_ptr<Entry>& e) { return e->module == module; });
    if (found == _entries.end())
        return;
    (*found)->module = nullptr;
    _entries.erase(found);
}
