#include "kxSettingCommand.h"

#include <scene/kxScene.h>

kxSettingCommand::kxSettingCommand(const std::string& key, const std::string& value, const QString& text)
    : kxMergingCommand(text), _key(key), _before(stored(key)), _after(value)
{
}

void kxSettingCommand::add(const std::string& key, const std::string& value, const QString& text)
{
    if (value != stored(key))
        kxUndoStack::get(0).add(new kxSettingCommand(key, value, text));
}

std::string kxSettingCommand::stored(const std::string& key)
{
    const auto& settings = kxScene::the()->settings();
    const auto found = settings.find(key);
    return found == settings.end() ? std::string() : found->second;
}

bool kxSettingCommand::mergeWith(const QUndoCommand* other)
{
    if (!canMergeWith(other) || static_cast<const kxSettingCommand*>(other)->_key != _key)
        return false;
    _after = static_cast<const kxSettingCommand*>(other)->_after;
    setObsolete(_after == _before);
    return true;
}

void kxSettingCommand::apply(bool forward)
{
    auto settings = kxScene::the()->settings();
    settings[_key] = forward ? _after : _before;
    if (settings[_key].empty())
        settings.erase(_key);
    kxScene::the()->setSettings(settings);
    kxScene::the()->markSettingsChanged();
}
