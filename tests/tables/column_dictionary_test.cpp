#include <algorithm>
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
        for (const std::string_view text :
             {column.id, std::string_view("="), column.name, std::string_view(";")}) {
            for (const char byte : text) {
                hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
            }
        }
    }
    return hash;
}

}  // namespace

class ColumnDictionaryTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void NamesAreFoundById_data()
    {
        QTest::addColumn<QByteArray>("id");
        QTest::addColumn<QString>("name");
        const auto row = [](const char* id, const char* name) {
            QTest::newRow(id) << QByteArray(id) << QString::fromUtf8(name);
        };
        row("1017", "可撤标志");
        row("2102", "证券代码");
        row("2125", "市值");
        row("2145", "借方(收入)");
        row("2293", "all_data");
        row("3616", "盈亏比例(%)");
        row("3807", "MAC地址");
        row("3885", "尚欠总金额2");
        row("3916", "协议编号");
        // The host has these columns; the dictionary doesn't.
        row("2306", "");
        row("2971", "");
        row("32009", "");
        row("1016", "");
        row("3917", "");
        row("", "");
        row("21", "");
    }

    void NamesAreFoundById()
    {
        QFETCH(const QByteArray, id);
        QFETCH(const QString, name);
        const std::string_view found = ColumnName(id.toStdString());
        QCOMPARE(QString::fromUtf8(found.data(), static_cast<int>(found.size())), name);
    }

    // Taken once from the list as it was agreed; a change of any entry is a change of the list.
    void TheListIsTheAgreedOne()
    {
        QCOMPARE(kColumnDictionary.size(), std::size_t{532});
        QCOMPARE(Fingerprint(), std::uint64_t{0xf4405a125fcc2d20U});
    }
};

PANELRY_TEST(ColumnDictionaryTest)

#include "column_dictionary_test.moc"
