#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace panelry::desk
{

/// One SQLite file, held by this process alone.
///
/// Ownership: owns the connection; statements and transactions on it must die first. Threading: one at a
/// time.
/// Failures: std::runtime_error with the file's name and SQLite's words, here and in the two classes below.
class Database
{
public:
    /// Opens the file, or makes an empty one; an empty path is a database in memory.
    explicit Database(const std::filesystem::path& file);

    /// Runs statements that give no rows and take no values.
    void Run(const char* sql);
    /// The whole number in the first column of the first row.
    [[nodiscard]] std::int64_t Number(const char* sql);

    [[nodiscard]] bool IsReadOnly() const;
    [[nodiscard]] const std::string& Name() const { return m_name; }
    [[nodiscard]] sqlite3* Handle() const { return m_handle.get(); }
    /// Throws what SQLite says about its last failure.
    [[noreturn]] void Fail() const;

private:
    struct Close {
        void operator()(sqlite3* handle) const;
    };
    std::string m_name;
    std::unique_ptr<sqlite3, Close> m_handle;
};

/// A prepared statement, kept for as often as it is needed.
class Statement
{
public:
    Statement(Database& database, const char* sql);

    /// Runs a statement without rows.
    template <class... Values>
    void Run(const Values&... values)
    {
        Ask(values...);
        while (Next()) {
        }
    }
    /// Starts a query; Next() then goes to its rows one by one, and is asked until it says that there are no
    /// more.
    template <class... Values>
    void Ask(const Values&... values)
    {
        Reset();
        int place = 0;
        (Bind(++place, values), ...);
    }
    bool Next();
    [[nodiscard]] std::int64_t Number(int column) const;
    [[nodiscard]] std::string Text(int column) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt* handle) const;
    };
    void Reset();
    void Bind(int place, std::int64_t value);
    void Bind(int place, const std::string& value);

    Database& m_database;
    std::unique_ptr<sqlite3_stmt, Finalize> m_handle;
};

/// All or nothing: what isn't committed when it dies is taken back.
class Transaction
{
public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void Commit();

private:
    Database& m_database;
};

}  // namespace panelry::desk
