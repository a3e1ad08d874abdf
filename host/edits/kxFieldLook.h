#pragma once

#include <QString>
#include <QStringList>

#include <string>

/// How a field is shown in the property panel: what its description doesn't say.
struct kxFieldLook
{
    QString label;
    QString unit; // after the number
    double step = 0.1;
    int decimals = 3;
    QStringList choices; // texts of the values 0, 1, 2 ...
    bool shown = true;

    /// The look of a field of any class. A field without an entry gets its name in words.
    static kxFieldLook of(const std::string& field);
    /// "eulerRotation" is "Euler rotation".
    static QString words(const std::string& name);
};
