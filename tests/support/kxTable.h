#pragma once

#include <QtTest>

/// Short words for the table of a test.

/// The columns, with the type of each: kxColumns<double, int>("width", "step").
template <class... Types, class... Names>
void kxColumns(const Names*... names)
{
    (QTest::addColumn<Types>(names), ...);
}

/// A row: its name and the value of each column.
template <class... Values>
void kxRow(const char* name, const Values&... values)
{
    (QTest::newRow(name) << ... << values);
}
