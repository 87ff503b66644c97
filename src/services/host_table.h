#pragma once

#include <memory>
#include <string>

#include "services/records.h"

/// The two kinds of tables that a host gives to the library. A host derives from them; the library only
/// reads. Order of operations is binary contract; append nothing, reorder nothing.
///
/// Ownership: handed over as shared pointers and freed by whoever lets go last, on any thread. What an
///   operation returns by raw pointer belongs to the table and stays as it is for the table's whole life.
/// Threading: read from any thread, several at a time, without a lock. A host that has news publishes a new
///   table and leaves the old one alone.
/// Failures: rows and columns are only asked for inside their counts.

/// A table that the host publishes under a name ("account_table", "chedan_table"): one row a record, columns
/// addressed by the decimal ids of the column dictionary.
class HostTable
{
public:
    virtual ~HostTable() = default;

    /// The table's name; one of the margin account holds "rzrq".
    virtual const char* Name() const = 0;

    virtual int RowCount() const = 0;

    /// The text of a cell, NUL-terminated, in the host's code page; "" for an empty cell, never null.
    virtual const char* CellText(int row, int column) const = 0;

    /// The index of the column whose id is `columnId` ("2102"), -1 where the table has none.
    virtual int FindColumn(const char* columnId) const = 0;
};

/// The rows of an answer: it describes its columns by records and shares its cells.
class HostAnswerTable
{
public:
    virtual ~HostAnswerTable() = default;

    virtual int ColumnCount() const = 0;

    virtual int RowCount() const = 0;

    /// Sets `record` to the column's record, whose "id" is the column id in decimal; may leave it empty.
    virtual void ColumnInfo(int column, std::shared_ptr<StringMap>& record) const = 0;

    /// Sets `text` to the cell's text; may leave it empty, which reads as an empty text.
    virtual void CellValue(int row, int column, std::shared_ptr<std::string>& text) const = 0;
};
