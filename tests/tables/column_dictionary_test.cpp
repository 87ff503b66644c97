#include <string>

#include "support/test.h"
#include "tables/column_dictionary.h"

using panelry::ColumnName;
using panelry::kColumnDictionary;

namespace
{

// A number that changes with any letter of any entry.
std::uint64_t Fingerprint()
{
    std::uint64_t hash = 14695981039346656037U;
    for (const panelry::ColumnEntry& column : kColumnDictionary) {
        for (const char byte : std::string(column.id) + '=' + std::string(column.name) + ';') {
            hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
        }
    }
    return hash;
}

}  // namespace

class ColumnDictionaryTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void NamesAreFoundById()
    {
        const std::pair<const char*, const char*> named[] = {
            {"1017", "可撤标志"}, {"2145", "借方(收入)"}, {"3916", "协议编号"},
            {"2306", ""},  // the host has such columns all the same
            {"32009", ""},        {"3917", ""},           {"", ""}};
        for (const auto& [id, name] : named) {
            QCOMPARE(std::string(ColumnName(id)), std::string(name));
        }
    }

    // Taken once from the list as it was agreed; a change of any entry is a change of the list.
    void TheListIsTheAgreedOne() { QCOMPARE(Fingerprint(), std::uint64_t{0xf4405a125fcc2d20U}); }
};

PANELRY_TEST(ColumnDictionaryTest)

#include "column_dictionary_test.moc"
