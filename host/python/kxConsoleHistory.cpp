#include "kxConsoleHistory.h"

void kxConsoleHistory::add(const QString& text)
{
    if (!text.trimmed().isEmpty() && (_texts.isEmpty() || _texts.last() != text))
        _texts.append(text);
    if (_texts.size() > Capacity)
        _texts.removeFirst();
    _place = _texts.size();
    _draft.clear();
}

QString kxConsoleHistory::previous(const QString& present)
{
    if (_place == 0)
        return present;
    if (_place == _texts.size())
        _draft = present;
    return _texts.at(--_place);
}

QString kxConsoleHistory::next(const QString& present)
{
    if (_place == _texts.size())
        return present;
    ++_place;
    return _place == _texts.size() ? _draft : _texts.at(_place);
}
