#include <kernel/kxHostHooks.h>

kxHostHooks& kxHostHooks::the()
{
    // Never destroyed: statics of loaded libraries ask for it while the process ends.
    static kxHostHooks* const hooks = new kxHostHooks;
    return *hooks;
}
