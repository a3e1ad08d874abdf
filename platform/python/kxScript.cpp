#include <kxScript.h>

#include <kxLog.h>
#include <python/kxInterpreter.h>

#include <algorithm>
#include <exception>
#include <set>
#include <vector>

namespace
{
struct Entry
{
    kxPythonRegister* registration; // not owned; leaves the list in its destructor
    unsigned lastRun;               // the run that called it last
};

struct Registry
{
    std::vector<Entry> entries;
    std::set<kxPythonRegisterFactory::Level> passed; // ascending, as late registrations catch up
    unsigned runs = 0;
};

/// Not freed: registrations in statics of other libraries may be destroyed later than statics of this one.
Registry& registry()
{
    static Registry* const instance = new Registry;
    return *instance;
}

void callSafely(const std::function<void(kxPythonRegisterFactory::Level)>& function,
                kxPythonRegisterFactory::Level level)
{
    if (!function)
        return;
    const kxInterpreter::Lock lock;
    try
    {
        function(level);
    }
    catch (const std::exception& error)
    {
        kxLog::error("A script module could not be registered: %s", error.what());
    }
    catch (...)
    {
        kxLog::error(QStringLiteral("A script module could not be registered."));
    }
}
} // namespace

bool kxScript::run(const std::string& text)
{
    return kxInterpreter::run(text).ok;
}

void kxPythonRegisterFactory::run(Level level)
{
    Registry& all = registry();
    const unsigned thisRun = ++all.runs;
    // The search starts over after each call, because a function may add and remove registrations.
    for (;;)
    {
        const auto next = std::find_if(all.entries.begin(), all.entries.end(),
                                       [thisRun](const Entry& entry) { return entry.lastRun < thisRun; });
        if (next == all.entries.end())
            break;
        next->lastRun = thisRun;
        const std::function<void(Level)> function = next->registration->_function;
        callSafely(function, level);
    }
    all.passed.insert(level);
}

kxPythonRegister::kxPythonRegister(std::function<void(kxPythonRegisterFactory::Level)> function)
    : _function(std::move(function))
{
    Registry& all = registry();
    all.entries.push_back({this, 0});
    const std::set<kxPythonRegisterFactory::Level> passed = all.passed;
    for (const kxPythonRegisterFactory::Level level : passed)
    {
        callSafely(_function, level);
        kxInterpreter::adoptBuiltInModules();
    }
}

kxPythonRegister::~kxPythonRegister()
{
    std::vector<Entry>& entries = registry().entries;
    entries.erase(std::remove_if(entries.begin(), entries.end(),
                                 [this](const Entry& entry) { return entry.registration == this; }),
                  entries.end());
}
