#pragma once

#include <kxLog.h>
#include <kxModuleBase.h>

/// What receivedMessage() of a module gives: runs `handle`, and logs in the module's name where it throws anything.
template <class Handle>
int kxReceive(const kxModuleBase& module, Handle handle)
{
    try
    {
        handle();
    }
    catch (...)
    {
        kxLog::error("%s::receivedMessage : An unknown exception occurred!", module.metaObject()->className());
    }
    return 0;
}
