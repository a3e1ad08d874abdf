#pragma once

#include <kxMessage.h>

#include <QString>

#include <set>

class QWidget;

/// One page of the preferences dialog: what it stores, shows and applies.
///
/// All settings of all pages live in getData(). The host calls the operations below: defaults at the start, to the
/// widgets when the dialog opens, from the widgets and apply when the user accepts.
class KX_API kxPreferences
{
public:
    /// `group` may be null: a page of its own.
    kxPreferences(const QString& group, const QString& name);
    kxPreferences(const kxPreferences&) = delete;
    kxPreferences& operator=(const kxPreferences&) = delete;
    virtual ~kxPreferences();

    static kxMessage& getData();

    const QString& group() const { return _group; }
    const QString& name() const { return _name; }

    /// `overwrite` goes on as the third argument of kxMessage::set: false keeps what is stored.
    virtual void preferencesSetDefaults(bool overwrite);
    virtual void preferencesApply();
    virtual void preferencesToGUI();
    virtual void preferencesFromGUI();
    virtual void preferencesNewScene(kxMessage& message);
    virtual void preferencesLoaded(kxMessage& message);
    virtual void preferencesInitialApply(kxMessage& message); ///< at the start, all is new: preferencesApply()

protected:
    /// Shows `page` under the name of this page; not owned.
    void addPreferencesGUI(QWidget* page);
    void subPreferencesGUI(QWidget* page);

    /// True unless addUnchanged() named the key since the last round of preferencesFromGUI().
    bool isChanged(const std::string& key) const;
    void addUnchanged(const std::string& key);

private:
    friend class kxPreferencesStore;
    QString _group;
    QString _name;
    QWidget* _page = nullptr; // not owned
    std::set<std::string> _unchanged;
};
