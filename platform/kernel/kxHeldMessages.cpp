#include <kernel/kxHeldMessages.h>

#include <kxController.h>
#include <kxMessageNames.h>

#include <QCoreApplication>

#include <utility>

namespace
{
bool isHolding = false;
bool isWaiting = false;
} // namespace

kxHeldMessages::Scope::Scope() : _before(std::exchange(isHolding, true)) {}

kxHeldMessages::Scope::~Scope()
{
    isHolding = _before;
    if (!isHolding)
        deliver();
}

kxHeldMessages::Pause::Pause() : _before(std::exchange(isHolding, false))
{
    deliver();
}

kxHeldMessages::Pause::~Pause()
{
    isHolding = _before;
}

void kxHeldMessages::deliver()
{
    if (!std::exchange(isWaiting, false))
        return;
    const bool before = std::exchange(isHolding, false);
    kxSend(kxMessageName::PastedAnimations);
    isHolding = before;
}

bool kxHeldMessages::takes(const std::string& name)
{
    if (!isHolding || name != kxMessageName::PastedAnimations)
        return false;
    // A script may turn the event loop by means that nobody here knows of.
    if (!std::exchange(isWaiting, true) && QCoreApplication::instance() != nullptr)
        QMetaObject::invokeMethod(QCoreApplication::instance(), &kxHeldMessages::deliver, Qt::QueuedConnection);
    return true;
}
