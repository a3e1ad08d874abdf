#pragma once

#include <QString>
#include <QStringList>

/// What was typed at a prompt, oldest first, and a place in it.
///
///     add("a"), add("b"):   a   b   draft
///     previous() moves to the left, next() to the right; the draft is what the prompt held before.
class kxConsoleHistory
{
public:
    static constexpr int Capacity = 200;

    /// Blank texts and repetitions of the last one are left out. The place is after the end then.
    void add(const QString& text);
    /// `present` is what the prompt holds; the result what it shall hold. At either end it stays.
    QString previous(const QString& present);
    QString next(const QString& present);

private:
    QStringList _texts;
    QString _draft;
    int _place = 0; // _texts.size() at the draft
};
