#include "kxVersionPreferences.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFormLayout>
#include <QLabel>
#include <QSpinBox>

namespace
{
constexpr const char OnKey[] = "versions.on", MinutesKey[] = "versions.minutes", DaysKey[] = "versions.days",
                     MegabytesKey[] = "versions.megabytes";
constexpr int LongestMinutes = 240, LongestDays = 3650, MostMegabytes = 1 << 20;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxVersionPreferences", text);
}

/// A stored value that can't be is left out.
int number(const char* key, int least, int most, int other)
{
    const boost::any value = kxPreferences::getData().get(key);
    const int* const stored = boost::any_cast<int>(&value);
    return stored == nullptr || *stored < least || *stored > most ? other : *stored;
}

QSpinBox* addField(QFormLayout* form, const QString& label, const QString& name, int least, int most,
                   const QString& unit)
{
    auto* const field = new QSpinBox;
    field->setObjectName(name);
    field->setRange(least, most);
    field->setSuffix(unit);
    form->addRow(label, field);
    return field;
}
} // namespace

kxVersionPreferences::kxVersionPreferences() : kxPreferences(QString(), tr("Versions"))
{
    makePage();
    addPreferencesGUI(_page);
}

kxVersionPreferences::~kxVersionPreferences()
{
    for (const char* const key : {OnKey, MinutesKey, DaysKey, MegabytesKey})
        getData().remove(key);
    subPreferencesGUI(_page);
    delete _page;
}

void kxVersionPreferences::makePage()
{
    _page = new QWidget;
    auto* const form = new QFormLayout(_page);
    _isOn = new QCheckBox(tr("Keep versions automatically"));
    _isOn->setObjectName(QStringLiteral("_keepVersions"));
    form->addRow(_isOn);
    _minutes = addField(form, tr("While working, every"), QStringLiteral("_versionMinutes"), 1, LongestMinutes,
                        tr(" minutes"));
    _days = addField(form, tr("Those without a name go after"), QStringLiteral("_versionDays"), 1, LongestDays,
                     tr(" days"));
    _megabytes = addField(form, tr("All scenes together take at most"), QStringLiteral("_versionMegabytes"), 10,
                          MostMegabytes, tr(" MB"));
    auto* const note =
        new QLabel(tr("Versions are kept when a scene file is opened or saved, before scripts, "
                      "imports and the animation wizard, and while you work. They lie beside the settings. Beyond the "
                      "size the oldest go first, and those with a name last."));
    note->setWordWrap(true);
    form->addRow(note);
    QObject::connect(_isOn, &QCheckBox::toggled, _minutes, &QWidget::setEnabled);
}

void kxVersionPreferences::preferencesSetDefaults(bool overwrite)
{
    const kxVersions::Settings defaults;
    getData().set(OnKey, true, overwrite);
    getData().set(MinutesKey, defaults.minutes, overwrite);
    getData().set(DaysKey, defaults.bounds.days, overwrite);
    getData().set(MegabytesKey, int(defaults.bounds.bytes >> 20), overwrite);
}

void kxVersionPreferences::preferencesApply()
{
    kxVersions::Settings settings;
    const boost::any isOn = getData().get(OnKey);
    settings.isOn = !_isUnattended && (boost::any_cast<bool>(&isOn) == nullptr || boost::any_cast<bool>(isOn));
    settings.minutes = number(MinutesKey, 1, LongestMinutes, settings.minutes);
    settings.bounds.days = number(DaysKey, 1, LongestDays, settings.bounds.days);
    settings.bounds.bytes = qint64(number(MegabytesKey, 10, MostMegabytes, int(settings.bounds.bytes >> 20))) << 20;
    kxVersions::the().setSettings(settings);
}

void kxVersionPreferences::preferencesToGUI()
{
    if (_page == nullptr)
        return;
    const kxVersions::Settings defaults;
    const boost::any isOn = getData().get(OnKey);
    _isOn->setChecked(boost::any_cast<bool>(&isOn) == nullptr || boost::any_cast<bool>(isOn));
    _minutes->setEnabled(_isOn->isChecked());
    _minutes->setValue(number(MinutesKey, 1, LongestMinutes, defaults.minutes));
    _days->setValue(number(DaysKey, 1, LongestDays, defaults.bounds.days));
    _megabytes->setValue(number(MegabytesKey, 10, MostMegabytes, int(defaults.bounds.bytes >> 20)));
}

void kxVersionPreferences::preferencesFromGUI()
{
    if (_page == nullptr)
        return;
    getData().set(OnKey, _isOn->isChecked());
    getData().set(MinutesKey, _minutes->value());
    getData().set(DaysKey, _days->value());
    getData().set(MegabytesKey, _megabytes->value());
}
