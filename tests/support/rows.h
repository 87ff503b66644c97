#pragma once

#include <QtTest>
#include <type_traits>

namespace panelry::test
{

/// A test's data: the columns' names, parted by blanks, then a call a row. A column of literals is read as a
/// QString.
template <class... Cells>
class Rows
{
public:
    explicit Rows(const QByteArray& columns)
    {
        static QByteArrayList names;  // the columns keep no copies
        names = columns.split(' ');
        int next = 0;
        (QTest::addColumn<Column<Cells>>(names[next++].constData()), ...);
    }

    void operator()(const char* name, const Cells&... cells) const { (QTest::newRow(name) << ... << cells); }

private:
    template <class Cell>
    using Column = std::conditional_t<std::is_same_v<Cell, const char*>, QString, Cell>;
};

}  // namespace panelry::test
