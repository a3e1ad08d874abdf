#include <kxShortcut.h>

#include <algorithm>

namespace
{
QList<kxShortcut::Entry>& list()
{
    static auto* const entries = new QList<kxShortcut::Entry>;
    return *entries;
}
} // namespace

void kxShortcut::addKey(const QString& group, int key, Qt::KeyboardModifiers modifiers, const QString& text)
{
    // A tool that is made a second time lists its keys again.
    const bool listed = std::any_of(
        list().cbegin(), list().cend(),
        [&](const Entry& e) { return e.group == group && e.key == key && e.modifiers == modifiers && e.text == text; });
    if (!listed)
        list().append({group, key, modifiers, text});
}

const QList<kxShortcut::Entry>& kxShortcut::entries()
{
    return list();
}
