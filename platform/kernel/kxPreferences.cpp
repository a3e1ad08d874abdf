#include <kxPreferences.h>

#include <kernel/kxPreferencesStore.h>

kxPreferences::kxPreferences(const QString& group, const QString& name) : _group(group), _name(name)
{
    kxPreferencesStore::the().addPage(this);
}

kxPreferences::~kxPreferences()
{
    kxPreferencesStore::the().removePage(this);
}

kxMessage& kxPreferences::getData()
{
    // Never destroyed: pages take their keys out while the process ends.
    static kxMessage* const data = new kxMessage;
    return *data;
}

void kxPreferences::preferencesSetDefaults(bool) {}

void kxPreferences::preferencesApply() {}

void kxPreferences::preferencesToGUI() {}

void kxPreferences::preferencesFromGUI() {}

void kxPreferences::preferencesNewScene(kxMessage&) {}

void kxPreferences::preferencesLoaded(kxMessage&) {}

void kxPreferences::preferencesInitialApply(kxMessage&)
{
    preferencesApply();
}

void kxPreferences::addPreferencesGUI(QWidget* page)
{
    _page = page;
}

void kxPreferences::subPreferencesGUI(QWidget* page)
{
    if (_page == page)
        _page = nullptr;
    kxPreferencesStore::the().announcePages();
}

bool kxPreferences::isChanged(const std::string& key) const
{
    return _unchanged.count(key) == 0;
}

void kxPreferences::addUnchanged(const std::string& key)
{
    _unchanged.insert(key);
}
