#pragma once

#include <QCoreApplication>
#include <QWidget>

/// What forms and menus are made with.
namespace kxForm
{
/// A widget, layout or button group of this object name.
template <class T>
T* named(const char* name, QWidget* parent = nullptr)
{
    T* const object = new T(parent);
    object->setObjectName(QString::fromLatin1(name));
    return object;
}

/// Translates the texts of one context.
class Texts
{
public:
    constexpr explicit Texts(const char* context) : _context(context) {}
    QString operator()(const char* source) const { return QCoreApplication::translate(_context, source); }

private:
    const char* _context; // a literal
};
} // namespace kxForm
