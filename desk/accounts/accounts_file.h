#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "desk/accounts/books.h"
#include "desk/accounts/database.h"
#include "desk/accounts/opening.h"

namespace panelry::desk
{

/// The broker's file: the opening, the day, cash and holdings as they stand, and all orders and deals ever.
/// Securities are filed by market and code, so that the listing may change between two runs.
///
/// Changes belong into a transaction on Base(). They survive the end of the process at any moment after its
/// commit; the end of the machine may cost the last ones.
///
/// Ownership: owns the file; refers to the listing. Threading: one at a time.
/// Failures: std::runtime_error for a file that is none of ours, of a newer make, in use, damaged or not to
///   be written, or that knows a security which isn't listed any more. Such a file isn't touched.
class AccountsFile
{
public:
    AccountsFile(const std::filesystem::path& file, const Listing& listing);

    /// Nothing was begun yet.
    [[nodiscard]] bool IsNew();
    /// Forgets everything and begins on day 1. This or Continue() comes before all that follows.
    void Begin(const Opening& opening);
    /// Goes on with what is filed.
    void Continue();

    [[nodiscard]] Opening ReadOpening();
    /// What is frozen is left to the caller.
    [[nodiscard]] Books ReadBooks();
    /// Both bounds included; null: of all accounts.
    [[nodiscard]] std::vector<Deal> DealsBetween(std::optional<AccountKind> account, int firstDay,
                                                 int lastDay);
    void ForEachOrder(const std::function<void(const Order&)>& action);
    void ForEachDeal(const std::function<void(const Deal&)>& action);

    Database& Base() { return m_database; }
    void Add(const Order& order);
    /// What can change of an order.
    void Save(const Order& order);
    void Add(std::int64_t number, const Deal& deal);
    void Save(AccountKind account, const Cash& cash);
    /// An empty position leaves the file.
    void Save(AccountKind account, std::size_t security, const Position& position);
    /// Begins a day: nothing is of today any more.
    void SaveDay(int day);

private:
    // In a transaction of the caller's.
    void MapSecurities();
    [[nodiscard]] bool IsUsed(std::int64_t filed);
    [[noreturn]] void FailAsDamaged(const std::string& how) const;
    /// The listing's index.
    [[nodiscard]] std::size_t Listed(std::int64_t filed) const;
    /// `last` is the last of its enumeration.
    template <class Enumerator>
    [[nodiscard]] Enumerator Known(std::int64_t filed, Enumerator last) const;
    [[nodiscard]] Order OrderOf(const Statement& row) const;
    [[nodiscard]] Deal DealOf(const Statement& row) const;

    Database m_database;
    const Listing& m_listing;
    std::vector<std::int64_t> m_filed;                           // by the listing's index
    std::unordered_map<std::int64_t, std::size_t> m_securities;  // and back
    Statement m_addOrder, m_saveOrder, m_addDeal, m_saveCash, m_savePosition, m_removePosition;
};

}  // namespace panelry::desk
