#pragma once

#include <kxExport.h>

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

private:
    friend class kxModuleBase;
    struct Entry
    {
        kxModuleBase* module; // null once it died
    };

    kxModuleRegistry() = default;
    void add(kxModuleBase* module);
    void remove(kxModuleBase* module);

    std::vector<std::shared_ptr<Entry>> _entries;
};
