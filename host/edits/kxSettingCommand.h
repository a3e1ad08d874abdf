#pragma once

#include <kxCommand.h>

#include <string>

/// Gives a setting of the scene another text, empty for none. Those of one setting that a gesture gives are one step.
class kxSettingCommand : public kxMergingCommand<kxSettingCommand>
{
public:
    /// Adds it to the undo list where it changes anything.
    static void add(const std::string& key, const std::string& value, const QString& text);
    static std::string stored(const std::string& key);

    bool mergeWith(const QUndoCommand* other) override;

private:
    kxSettingCommand(const std::string& key, const std::string& value, const QString& text);
    void apply(bool forward) override;

    std::string _key, _before, _after;
};
