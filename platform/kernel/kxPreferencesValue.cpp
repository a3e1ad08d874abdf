#include <kernel/kxPreferencesValue.h>

#include <QLocale>
#include <QStringList>

#include <cmath>
#include <limits>
#include <string>

kxPreferencesValue::Type kxPreferencesValue::typeOf(const boost::any& value)
{
    if (value.type() == typeid(bool))
        return Bool;
    if (value.type() == typeid(int))
        return Int;
    if (value.type() == typeid(double))
        return Double;
    if (value.type() == typeid(std::string))
        return String;
    return None;
}

QString kxPreferencesValue::section(Type type)
{
    switch (type)
    {
    case Bool:
        return QStringLiteral("bool");
    case Int:
        return QStringLiteral("int");
    case Double:
        return QStringLiteral("double");
    case String:
        return QStringLiteral("string");
    case None:
        break;
    }
    return QString();
}

QVariant kxPreferencesValue::toFile(const boost::any& value)
{
    switch (typeOf(value))
    {
    case Bool:
        return boost::any_cast<bool>(value);
    case Int:
        return boost::any_cast<int>(value);
    case Double:
    {
        const double number = boost::any_cast<double>(value);
        if (std::isfinite(number))
            return QString::number(number, 'g', QLocale::FloatingPointShortest);
        break;
    }
    case String:
        return QString::fromStdString(boost::any_cast<std::string>(value));
    case None:
        break;
    }
    return QVariant();
}

boost::any kxPreferencesValue::fromFile(const QVariant& written, Type type)
{
    // An unquoted comma makes a list of what was written by hand.
    const bool isList = written.type() == QVariant::StringList;
    const QString text = isList ? written.toStringList().join(QStringLiteral(", ")) : written.toString();
    bool ok = false;
    switch (type)
    {
    case Bool:
        if (text == QLatin1String("true") || text == QLatin1String("1"))
            return true;
        if (text == QLatin1String("false") || text == QLatin1String("0"))
            return false;
        break;
    case Int:
    {
        const int number = text.toInt(&ok);
        if (ok)
            return number;
        break;
    }
    case Double:
    {
        const double number = text.toDouble(&ok);
        if (ok && std::isfinite(number))
            return number;
        break;
    }
    case String:
        if (isList || written.type() == QVariant::String)
            return text.toStdString();
        break;
    case None:
        break;
    }
    return boost::any();
}

boost::any kxPreferencesValue::adapted(const boost::any& value, const boost::any& model)
{
    if (value.type() == model.type())
        return value;
    const Type from = typeOf(value);
    const Type to = typeOf(model);
    if (from == Int && to == Double)
        return double(boost::any_cast<int>(value));
    if (from == Double && to == Int)
    {
        const double number = boost::any_cast<double>(value);
        if (number == std::floor(number) && std::fabs(number) <= std::numeric_limits<int>::max())
            return int(number);
    }
    return boost::any();
}
