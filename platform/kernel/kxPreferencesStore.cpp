#include <kernel/kxPreferencesStore.h>

#include <kxLog.h>
#include <kxPreferences.h>

#include <kernel/kxPreferencesValue.h>

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>

namespace
{
constexpr const char Application[] = "kxhost";

bool contains(const std::vector<kxPreferences*>& pages, const kxPreferences* page)
{
    return std::find(pages.begin(), pages.end(), page) != pages.end();
}

void warnAbout(const std::string& key)
{
    kxLog::warning("The stored setting '%s' can't be used; its default is taken", key.c_str());
}
} // namespace

kxPreferencesStore& kxPreferencesStore::the()
{
    // Never destroyed: pages leave while the process ends.
    static kxPreferencesStore* const store = new kxPreferencesStore;
    return *store;
}

QString kxPreferencesStore::settingsFolder()
{
    const QString folder = qEnvironmentVariable("KX_SETTINGS_DIR");
    if (!folder.isEmpty())
        return folder;
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QLatin1Char('/') +
           QLatin1String(Application);
}

QString kxPreferencesStore::fileName()
{
    return settingsFolder() + QStringLiteral("/preferences.ini");
}

QWidget* kxPreferencesStore::widget(const kxPreferences* page)
{
    return page->_page;
}

void kxPreferencesStore::load()
{
    QSettings file(fileName(), QSettings::IniFormat);
    file.setIniCodec("UTF-8");
    if (file.status() != QSettings::NoError)
        kxLog::warning("The settings in %s are damaged; what can be read is used", qUtf8Printable(fileName()));

    _stored.clear();
    for (const kxPreferencesValue::Type type : kxPreferencesValue::AllTypes)
    {
        file.beginGroup(kxPreferencesValue::section(type));
        const QStringList keys = file.allKeys();
        for (const QString& key : keys)
        {
            if (key.isEmpty())
                continue;
            const boost::any value = kxPreferencesValue::fromFile(file.value(key), type);
            if (value.empty())
                warnAbout(key.toStdString());
            else
                _stored[key.toStdString()] = value;
        }
        file.endGroup();
    }

    for (const auto& [key, value] : _stored)
        kxPreferences::getData().set(key, value, true);

    const std::vector<kxPreferences*> fresh = _newPages; // these are notified below
    initialisePages();
    forEachPage(
        [&](kxPreferences& page)
        {
            if (contains(fresh, &page))
                return;
            initialise(page);
            page.preferencesLoaded(kxPreferences::getData());
        });
}

bool kxPreferencesStore::save()
{
    initialisePages();
    QDir().mkpath(settingsFolder());
    QSettings file(fileName(), QSettings::IniFormat);
    file.setIniCodec("UTF-8");
    for (const auto& [key, value] : kxPreferences::getData().attributes())
    {
        const QVariant written = kxPreferencesValue::toFile(value);
        if (!written.isValid())
            continue;
        const kxPreferencesValue::Type type = kxPreferencesValue::typeOf(value);
        const QString name = QString::fromStdString(key);
        for (const kxPreferencesValue::Type other : kxPreferencesValue::AllTypes)
        {
            if (other != type)
                file.remove(kxPreferencesValue::section(other) + QLatin1Char('/') + name);
        }
        file.setValue(kxPreferencesValue::section(type) + QLatin1Char('/') + name, written);
        _stored[key] = value;
    }
    file.sync();
    if (file.status() == QSettings::NoError)
        return true;
    kxLog::error("The settings can't be written to %s", qUtf8Printable(fileName()));
    return false;
}

void kxPreferencesStore::initialisePages()
{
    while (!_newPages.empty())
    {
        kxPreferences* const page = _newPages.front();
        _newPages.erase(_newPages.begin());
        forEachPage(
            [&](kxPreferences& each)
            {
                if (&each != page)
                    return;
                initialise(each);
                each.preferencesLoaded(kxPreferences::getData());
                each.preferencesInitialApply(kxPreferences::getData());
            });
    }
}

void kxPreferencesStore::toGUI()
{
    initialisePages();
    forEachPage([](kxPreferences& page) { page.preferencesToGUI(); });
}

void kxPreferencesStore::apply()
{
    initialisePages();
    forEachPage(
        [](kxPreferences& page)
        {
            page._unchanged.clear();
            page.preferencesFromGUI();
        });
    forEachPage([](kxPreferences& page) { page.preferencesApply(); });
    save();
    Q_EMIT applied();
}

void kxPreferencesStore::restoreDefaults(kxPreferences* page)
{
    initialisePages();
    forEachPage(
        [&](kxPreferences& each)
        {
            if (&each != page)
                return;
            each._unchanged.clear();
            each.preferencesSetDefaults(true);
            each.preferencesToGUI();
            each.preferencesApply();
        });
    save();
    Q_EMIT applied();
}

void kxPreferencesStore::newScene()
{
    initialisePages();
    forEachPage([](kxPreferences& page) { page.preferencesNewScene(kxPreferences::getData()); });
}

void kxPreferencesStore::addPage(kxPreferences* page)
{
    _pages.push_back(page);
    _newPages.push_back(page);
    // The page's own class isn't there yet, so its defaults are asked for later.
    if (QCoreApplication::instance() != nullptr)
        QMetaObject::invokeMethod(
            this,
            [this]
            {
                initialisePages();
                announcePages();
            },
            Qt::QueuedConnection);
}

void kxPreferencesStore::removePage(kxPreferences* page)
{
    _pages.erase(std::remove(_pages.begin(), _pages.end(), page), _pages.end());
    _newPages.erase(std::remove(_newPages.begin(), _newPages.end(), page), _newPages.end());
    announcePages();
}

void kxPreferencesStore::announcePages()
{
    if (QCoreApplication::instance() != nullptr)
        Q_EMIT pagesChanged();
}

void kxPreferencesStore::forEachPage(const std::function<void(kxPreferences&)>& step)
{
    const std::vector<kxPreferences*> pages = _pages;
    for (kxPreferences* page : pages)
    {
        if (!contains(_pages, page))
            continue;
        const QString name = page->name();
        try
        {
            step(*page);
        }
        catch (const std::exception& e)
        {
            kxLog::error("The preferences page '%s' failed: %s", qUtf8Printable(name), e.what());
        }
        catch (...)
        {
            kxLog::error("The preferences page '%s' failed: unknown exception", qUtf8Printable(name));
        }
    }
}

void kxPreferencesStore::initialise(kxPreferences& page)
{
    kxMessage& data = kxPreferences::getData();
    for (const auto& [key, standard] : defaultsOf(page))
    {
        boost::any value = data.get(key);
        const auto stored = _stored.find(key);
        if (value.empty() && stored != _stored.end())
            value = stored->second;
        if (value.empty())
        {
            data.set(key, standard, true);
            continue;
        }
        value = kxPreferencesValue::adapted(value, standard);
        if (value.empty())
            warnAbout(key);
        data.set(key, value.empty() ? standard : value, true);
    }
    // Where a default hangs on other settings, the page fills in the rest.
    page.preferencesSetDefaults(false);
}

std::map<std::string, boost::any> kxPreferencesStore::defaultsOf(kxPreferences& page)
{
    // The page writes to the one shared message, so it gets an empty one for the time being.
    kxMessage& data = kxPreferences::getData();
    const kxMessage kept = data;
    data = kxMessage();
    try
    {
        page.preferencesSetDefaults(true);
    }
    catch (...)
    {
        data = kept;
        throw;
    }
    std::map<std::string, boost::any> defaults = data.attributes();
    data = kept;
    return defaults;
}
