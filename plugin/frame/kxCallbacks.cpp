#include <frame/kxCallbacks.h>

void kxCallbacks::add(const std::string& name, kxController::Callback function)
{
    _entries.emplace_back(name, function);
    kxController::addCB(name, function);
}

kxCallbacks::~kxCallbacks()
{
    for (const auto& [name, function] : _entries)
        kxController::subCB(name, function);
}
