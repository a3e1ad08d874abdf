#pragma once

#include <kxMessage.h>

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <string>
#include <vector>

class QWidget;
class kxPreferences;

/// The pages of the preferences dialog, and the file that keeps kxPreferences::getData() between two starts.
///
/// The host calls load() at the start. A page that comes later, from a library that is loaded then, is taken in by
/// initialisePages(), which every operation below runs first, and the event loop too.
class KX_API kxPreferencesStore : public QObject
{
    Q_OBJECT
public:
    static kxPreferencesStore& the();

    /// Where the application keeps its settings: KX_SETTINGS_DIR of the environment, else the user's standard place.
    static QString settingsFolder();
    static QString fileName();

    /// In the order of their construction.
    const std::vector<kxPreferences*>& pages() const { return _pages; }
    /// The widget of a page, null where it has none.
    static QWidget* widget(const kxPreferences* page);

    /// Reads the file into getData(): what it doesn't say, and what it says in a wrong way, gets its default.
    void load();
    /// Writes getData(). Keys of pages that aren't there this time stay in the file. False, and a line in the log,
    /// where it can't be written.
    bool save();

    /// Pages that are new get their stored values or defaults, and then their two calls.
    void initialisePages();

    /// The dialog opens: every page fills its widgets.
    void toGUI();
    /// The user accepts: every page reads its widgets, every page applies what changed, and the file is written.
    void apply();
    /// Everything of this page gets its default, in the data, in the widgets and in the application.
    void restoreDefaults(kxPreferences* page);
    /// A new scene: handed on to every page.
    void newScene();

Q_SIGNALS:
    /// A page or its widget came or went.
    void pagesChanged();
    void applied();

private:
    friend class kxPreferences;
    kxPreferencesStore() = default;
    void addPage(kxPreferences* page);
    void removePage(kxPreferences* page);
    void announcePages();
    /// Runs `step` for each page that lives on; what a page throws is logged.
    void forEachPage(const std::function<void(kxPreferences&)>& step);
    void initialise(kxPreferences& page);
    static std::map<std::string, boost::any> defaultsOf(kxPreferences& page);

    std::vector<kxPreferences*> _pages;        // not owned
    std::vector<kxPreferences*> _newPages;     // those of _pages that initialisePages() hasn't seen
    std::map<std::string, boost::any> _stored; // what the file holds
};
