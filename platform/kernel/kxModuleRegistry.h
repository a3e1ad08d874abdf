#pragma once

#include <kxExport.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class kxMessage;
class kxModuleBase;

/// The living modules, in the order of their construction.
class KX_API kxModuleRegistry
{
public:
    static kxModuleRegistry& the();

    std::vector<kxModuleBase*> modules() const;

    /// Hands a numbered message to each module whose mask holds its id, and gives how many got it. A module that dies
    /// meanwhile is left out, one that is made meanwhile gets the next message. An exception is logged and ends only
    /// the work of the module that it came from.
    int deliver(kxMessage& message);
    /// A message without attributes.
    int deliver(std::uint64_t id);
    /// Delivers such a message in the next turn of the event loop: once, however often it is asked for,
    /// so that a script's thousand edits rebuild what they concern one time. Nothing where there is no event loop.
    void deliverLater(std::uint64_t id);

private:
    friend class kxModuleBase;
    struct Entry
    {
        kxModuleBase* module; // null once it died
    };

    kxModuleRegistry() = default;
    void add(kxModuleBase* module);
    void remove(kxModuleBase* module);

    void deliverWaiting();

    std::vector<std::shared_ptr<Entry>> _entries;
    std::uint64_t _waiting = 0; // the ids, which are single bits, of deliverLater()
};
