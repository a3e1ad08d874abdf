#include <frame/kxClipRefresh.h>

namespace
{
void (*theHandler)() = nullptr;
}

void kxClipRefresh::setHandler(void (*handler)())
{
    theHandler = handler;
}

void kxClipRefresh::run()
{
    if (theHandler != nullptr)
        theHandler();
}
