#include "desk/accounts/database.h"

#include <sqlite3.h>

#include <stdexcept>

namespace panelry::desk
{

Database::Database(const std::filesystem::path& file) : m_name(file.empty() ? "accounts" : file.string())
{
    sqlite3* handle = nullptr;
    const int status = sqlite3_open_v2(file.empty() ? ":memory:" : m_name.c_str(), &handle,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    m_handle.reset(handle);
    if (status != SQLITE_OK) {
        Fail();
    }
    sqlite3_extended_result_codes(handle, 1);
    // Kept from the first access to the end: a second process is turned away at its first.
    Run("PRAGMA locking_mode = EXCLUSIVE");
}

void Database::Run(const char* sql)
{
    if (sqlite3_exec(Handle(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        Fail();
    }
}

std::int64_t Database::Number(const char* sql)
{
    Statement query(*this, sql);
    query.Ask();
    const std::int64_t number = query.Next() ? query.Number(0) : 0;
    return number;
}

bool Database::IsReadOnly() const
{
    return sqlite3_db_readonly(Handle(), "main") == 1;
}

void Database::Fail() const
{
    const int status = m_handle ? sqlite3_errcode(Handle()) : SQLITE_NOMEM;
    if (status == SQLITE_BUSY) {
        throw std::runtime_error(m_name + ": is in use by another program");
    }
    throw std::runtime_error(m_name + ": " + (m_handle ? sqlite3_errmsg(Handle()) : sqlite3_errstr(status)));
}

void Database::Close::operator()(sqlite3* handle) const
{
    sqlite3_close(handle);
}

Statement::Statement(Database& database, const char* sql) : m_database(database)
{
    sqlite3_stmt* handle = nullptr;
    if (sqlite3_prepare_v3(database.Handle(), sql, -1, SQLITE_PREPARE_PERSISTENT, &handle, nullptr) !=
        SQLITE_OK) {
        database.Fail();
    }
    m_handle.reset(handle);
}

bool Statement::Next()
{
    const int status = sqlite3_step(m_handle.get());
    if (status == SQLITE_ROW) {
        return true;
    }
    if (status != SQLITE_DONE) {
        m_database.Fail();  // the next Ask() resets it
    }
    Reset();
    return false;
}

std::int64_t Statement::Number(int column) const
{
    return sqlite3_column_int64(m_handle.get(), column);
}

std::string Statement::Text(int column) const
{
    const unsigned char* const text = sqlite3_column_text(m_handle.get(), column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_handle.get(), column));
    return text == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(text), size);
}

void Statement::Reset()
{
    sqlite3_reset(m_handle.get());  // its status is the last step's, which was told then
}

void Statement::Bind(int place, std::int64_t value)
{
    if (sqlite3_bind_int64(m_handle.get(), place, value) != SQLITE_OK) {
        m_database.Fail();
    }
}

void Statement::Bind(int place, const std::string& value)
{
    if (sqlite3_bind_text(m_handle.get(), place, value.data(), static_cast<int>(value.size()),
                          SQLITE_TRANSIENT) != SQLITE_OK) {
        m_database.Fail();
    }
}

void Statement::Finalize::operator()(sqlite3_stmt* handle) const
{
    sqlite3_finalize(handle);
}

Transaction::Transaction(Database& database) : m_database(database)
{
    m_database.Run("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    // A failure may have taken it back already.
    if (sqlite3_get_autocommit(m_database.Handle()) == 0) {
        sqlite3_exec(m_database.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::Commit()
{
    m_database.Run("COMMIT");
}

}  // namespace panelry::desk
