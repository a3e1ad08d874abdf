#pragma once

#include <kxPreferences.h>

#include <QObject>
#include <QPointer>

class QComboBox;
class QKXDoubleSpiner;
class kxAnimPreferencesGUIW;

/// The animation settings: their defaults, their page, and how they reach the kernel.
///
/// The values live in kxPreferences::getData(); this object keeps none of them.
class kxAnimPreferencesGUII : public QObject, public kxPreferences
{
    Q_OBJECT
public:
    kxAnimPreferencesGUII();
    ~kxAnimPreferencesGUII() override;

    void preferencesSetDefaults(bool overwrite) override;
    void preferencesApply() override;
    void preferencesToGUI() override;
    void preferencesFromGUI() override;

private Q_SLOTS:
    void changedSpeed(int index);

private:
    template <class T>
    void takeFromGUI(const char* key, T value);
    void takeChoice(const char* key, const QComboBox* box);
    /// Refuses what is no frame rate: what is stored stays.
    void takeRate(const char* key, QKXDoubleSpiner* field);

    QPointer<kxAnimPreferencesGUIW> _page; // owned, unless a dialog that showed it has taken it along
};
