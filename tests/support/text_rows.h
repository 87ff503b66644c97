#pragma once

#include <QtTest>
#include <string>
#include <vector>

namespace panelry::test
{

/// A test's data in texts: the columns' names, parted by blanks, then rows of a name and a text a column; those
/// that a row lacks are empty.
inline void TextRows(const QByteArray& columns, const std::vector<std::vector<QByteArray>>& rows)
{
    static QByteArrayList names;  // the columns keep no copies
    names = columns.split(' ');
    for (const QByteArray& column : qAsConst(names)) {
        QTest::addColumn<QByteArray>(column.constData());
    }
    for (const std::vector<QByteArray>& row : rows) {
        QTestData& data = QTest::newRow(row.at(0).constData());
        for (std::size_t cell = 1; cell <= static_cast<std::size_t>(names.size()); ++cell) {
            data << (cell < row.size() ? row[cell] : QByteArray(""));
        }
    }
}

/// A text of the row under test, as bytes or as a string.
struct GivenText : QByteArray {
    operator std::string() const { return toStdString(); }
};

/// What the row under test has in `column`.
inline GivenText Given(const char* column)
{
    return {*static_cast<QByteArray*>(QTest::qData(column, qMetaTypeId<QByteArray>()))};
}

inline QString GivenString(const char* column)
{
    return QString::fromUtf8(Given(column));
}

}  // namespace panelry::test
