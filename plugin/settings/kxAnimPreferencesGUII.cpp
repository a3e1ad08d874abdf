#include <settings/kxAnimPreferencesGUII.h>

#include <frame/kxMessageRead.h>
#include <frame/kxPlaybackSpeed.h>
#include <settings/kxAnimPreferencesGUIW.h>

#include <QKXSpiner.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxFrameRate.h>
#include <kxLog.h>
#include <kxMessageNames.h>
#include <kxPreferenceKeys.h>

#include <QCheckBox>
#include <QComboBox>

namespace Key = kxPreferenceKey;

namespace
{
struct Setting
{
    const char* key;
    boost::any defaultValue;
};

/// Never freed: the page, which takes its keys away when it dies, is older and goes after it.
const std::vector<Setting>& settings()
{
    static const std::vector<Setting>& table = *new std::vector<Setting>{
        {Key::PlaybackSpeed, int(kxPlaybackSpeed::Film)},
        {Key::PlaybackCustomSpeed, 24.0},
        {Key::Time, 24.0},
        {Key::LoopTimeline, true},
        {Key::EvaluateSubframes, true},
        {Key::KeepKeys, false},
        {Key::PlaybackRange, 0},
        {Key::PlaybackContext, 0},
        {Key::FullRangeStart, 0},
        {Key::FullRangeEnd, 50},
        {Key::DetailedRangeStart, 0},
        {Key::DetailedRangeEnd, 25},
        {Key::VerifyClipStructure, false},
        {Key::DontShowCreateCurveDialog, false},
    };
    return table;
}

/// Hands the stored value of `key`, where there is one, to `use`.
template <class T, class Use>
void withStored(const char* key, Use use)
{
    T value{};
    if (getFromMessage(kxPreferences::getData(), key, value))
        use(value);
}

template <class T>
void apply(const char* key, void (kxAnimManager::*setter)(T))
{
    withStored<T>(key, [setter](T value) { (kxAnimManager::the()->*setter)(value); });
}

void applySpeed()
{
    double customSpeed = 24.0;
    getFromMessage(kxPreferences::getData(), Key::PlaybackCustomSpeed, customSpeed);
    withStored<int>(Key::PlaybackSpeed, [customSpeed](int speed)
                    { kxAnimManager::the()->setPlaybackFPS(kxPlaybackRate(speed, customSpeed)); });
}

/// Stores `value` under `key`; false where it is there already, or where the key is there and `onlyIfDifferent` is
/// false.
template <class T>
bool updateIfChanged(kxMessage& data, const char* key, T value, bool onlyIfDifferent)
{
    const boost::any present = data.get(key);
    if (!present.empty())
    {
        if (!onlyIfDifferent)
            return false;
        const T* const same = boost::any_cast<T>(&present);
        if (same != nullptr && *same == value)
            return false;
    }
    data.set(key, value, true);
    return true;
}
} // namespace

kxAnimPreferencesGUII::kxAnimPreferencesGUII() : kxPreferences(QString(), "Animation"), _page(new kxAnimPreferencesGUIW)
{
    addPreferencesGUI(_page);
    connect(_page->_speed, SIGNAL(activated(int)), this, SLOT(changedSpeed(int)));
}

kxAnimPreferencesGUII::~kxAnimPreferencesGUII()
{
    for (const Setting& setting : settings())
        getData().remove(setting.key);
    subPreferencesGUI(_page);
    delete _page;
}

void kxAnimPreferencesGUII::preferencesSetDefaults(bool overwrite)
{
    for (const Setting& setting : settings())
        getData().set(setting.key, setting.defaultValue, overwrite);
}

void kxAnimPreferencesGUII::preferencesApply()
{
    const auto applyChanged = [this](const char* key, auto setter)
    {
        if (isChanged(key))
            apply(key, setter);
    };
    if (isChanged(Key::PlaybackSpeed) || isChanged(Key::PlaybackCustomSpeed))
        applySpeed();
    applyChanged(Key::PlaybackRange, &kxAnimManager::setPlaybackRangeHint);
    applyChanged(Key::PlaybackContext, &kxAnimManager::setPlaybackContextHint);
    applyChanged(Key::KeepKeys, &kxAnimManager::setKeepKeysAtFrame);
    applyChanged(Key::Time, &kxAnimManager::setFPS);
    applyChanged(Key::LoopTimeline, &kxAnimManager::setLoopTimeline);
    applyChanged(Key::EvaluateSubframes, &kxAnimManager::setEvaluateSubframes);
    applyChanged(Key::FullRangeStart, &kxAnimManager::setFullRangeStart);
    applyChanged(Key::FullRangeEnd, &kxAnimManager::setFullRangeEnd);
    applyChanged(Key::DetailedRangeStart, &kxAnimManager::setDetailedRangeStart);
    applyChanged(Key::DetailedRangeEnd, &kxAnimManager::setDetailedRangeEnd);
    applyChanged(Key::VerifyClipStructure, &kxAnimManager::setVerifyClipStructure);
    kxSend(kxMessageName::UpdateAnimControlGUI);
}

void kxAnimPreferencesGUII::preferencesToGUI()
{
    if (_page == nullptr)
        return;
    const auto choose = [](const char* key, QComboBox* box)
    { withStored<int>(key, [box](int value) { Ui::kxAnimSettingsFrames::choose(box, value); }); };
    const auto setNumber = [](const char* key, QKXDoubleSpiner* field)
    { withStored<double>(key, [field](double value) { field->setValue(value); }); };
    const auto setFrame = [](const char* key, QKXSpiner* field)
    { withStored<int>(key, [field](int value) { field->setValue(value); }); };
    const auto check = [](const char* key, QCheckBox* box)
    { withStored<bool>(key, [box](bool value) { box->setChecked(value); }); };
    choose(Key::PlaybackSpeed, _page->_speed);
    choose(Key::PlaybackRange, _page->_range);
    choose(Key::PlaybackContext, _page->_context);
    setNumber(Key::PlaybackCustomSpeed, _page->_customSpeed);
    setNumber(Key::Time, _page->_fps);
    check(Key::LoopTimeline, _page->_loop);
    check(Key::EvaluateSubframes, _page->_evaluate_subframes);
    check(Key::KeepKeys, _page->_keepFrames);
    setFrame(Key::FullRangeStart, _page->_fullRangeStart);
    setFrame(Key::FullRangeEnd, _page->_fullRangeEnd);
    setFrame(Key::DetailedRangeStart, _page->_detailedRangeStart);
    setFrame(Key::DetailedRangeEnd, _page->_detailedRangeEnd);
    check(Key::VerifyClipStructure, _page->_verifyClips);
    check(Key::DontShowCreateCurveDialog, _page->_dontShowCreateCurveDialog);
}

template <class T>
void kxAnimPreferencesGUII::takeFromGUI(const char* key, T value)
{
    if (!updateIfChanged(getData(), key, value, true))
        addUnchanged(key);
}

void kxAnimPreferencesGUII::takeChoice(const char* key, const QComboBox* box)
{
    int value = box->currentIndex();
    withStored<int>(key, [&](int stored) { value = Ui::kxAnimSettingsFrames::chosen(box, stored); });
    takeFromGUI(key, value);
}

void kxAnimPreferencesGUII::takeRate(const char* key, QKXDoubleSpiner* field)
{
    double value = field->value();
    withStored<double>(key, [&](double stored) { value = Ui::kxAnimSettingsFrames::rate(field, stored); });
    if (kxIsFrameRate(value))
    {
        takeFromGUI(key, value);
        return;
    }
    kxLog::warning("A frame rate has to be above 0, and at most a million; '%s' keeps its value.", key);
    withStored<double>(key, [field](double stored) { field->setValue(stored); });
    addUnchanged(key);
}

void kxAnimPreferencesGUII::preferencesFromGUI()
{
    if (_page == nullptr)
        return;
    takeChoice(Key::PlaybackSpeed, _page->_speed);
    takeChoice(Key::PlaybackRange, _page->_range);
    takeChoice(Key::PlaybackContext, _page->_context);
    takeRate(Key::PlaybackCustomSpeed, _page->_customSpeed);
    takeRate(Key::Time, _page->_fps);
    takeFromGUI(Key::LoopTimeline, _page->_loop->isChecked());
    takeFromGUI(Key::EvaluateSubframes, _page->_evaluate_subframes->isChecked());
    takeFromGUI(Key::KeepKeys, _page->_keepFrames->isChecked());
    takeFromGUI(Key::FullRangeStart, _page->_fullRangeStart->value());
    takeFromGUI(Key::FullRangeEnd, _page->_fullRangeEnd->value());
    takeFromGUI(Key::DetailedRangeStart, _page->_detailedRangeStart->value());
    takeFromGUI(Key::DetailedRangeEnd, _page->_detailedRangeEnd->value());
    takeFromGUI(Key::VerifyClipStructure, _page->_verifyClips->isChecked());
    takeFromGUI(Key::DontShowCreateCurveDialog, _page->_dontShowCreateCurveDialog->isChecked());
}

void kxAnimPreferencesGUII::changedSpeed(int index)
{
    _page->_customSpeed->setEnabled(index == int(kxPlaybackSpeed::Custom));
}
