#pragma once

#include <QtTest>

/// Short words for the table of a test.

/// The columns, with the type of each: kxColumns<double, int>("width", "step").
template <class... Types, class... Names>
void kxColumns(const Names*... names)
{
    (QTest::addColumn<Types>(names), ...);
}

/// A row: its name and the value of each column; a literal is a QString.
template <class... Values>
void kxRow(const char* name, const Values&... values)
{
    const auto cell = [](const auto& value)
    {
        if constexpr (std::is_convertible_v<decltype(value), const char*>)
            return QString::fromUtf8(value);
        else
            return value;
    };
    (QTest::newRow(name) << ... << cell(values));
}
