#include <kxModuleBase.h>

#include <kernel/kxModuleRegistry.h>

kxModuleBase::kxModuleBase(const QString& name, const QString& category, std::uint64_t messageMask, QPixmap*)
    : _name(name), _category(category), _messageMask(messageMask)
{
    kxModuleRegistry::the().add(this);
}

kxModuleBase::~kxModuleBase()
{
    kxModuleRegistry::the().remove(this);
}

QWidget* kxModuleBase::moduleWidget()
{
    return nullptr;
}

void kxModuleBase::init() {}

void kxModuleBase::update() {}

void kxModuleBase::loop() {}

int kxModuleBase::receivedMessage(kxMessage&)
{
    return 0;
}
