#include "services/resource_manager.h"

#include <QTemporaryDir>
#include <nlohmann/json.hpp>
#include <optional>

#include "bridge/config_store.h"
#include "support/test.h"
#include "support/text_rows.h"

using namespace panelry::test;

class ResourceManagerTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // The same settings through both reads: the tables let a user blank a value, the store doesn't.
    void BothReads_data()
    {
        const QByteArray value = R"({"general": {"language": "system"}})";
        const QByteArray other = R"({"general": {"language": "user"}})";
        const QByteArray blank = R"({"general": {"language": ""}})";
        const QByteArray keyMissing = R"({"general": {"x": "y"}})";
        const QByteArray swapped = R"({"language": {"general": "swapped"}})";
        TextRows("system user fromTables fromStore",
                 {{"user wins", value, other, "user", "user"},
                  {"user blanks it", value, blank, "", "system"},
                  {"user has the section alone", value, keyMissing, "system", "system"},
                  {"user has other sections", value, swapped, "system", "system"},
                  {"no system settings", "", other, "user", "user"},
                  {"blank on both sides", blank, blank, "", ""},
                  {"key and section change places", swapped, swapped, "", ""}});
    }

    void BothReads()
    {
        const QTemporaryDir folder;
        std::optional<ConfigTable> tables[2];
        std::string paths[2];
        for (int i = 0; i < 2; ++i) {
            const QByteArray text = Given(i == 0 ? "system" : "user");
            QFile file(folder.filePath(QString::number(i)));
            paths[i] = file.fileName().toStdString();
            if (!text.isEmpty()) {
                tables[i] = nlohmann::json::parse(text.toStdString()).get<ConfigTable>();
                QVERIFY(file.open(QFile::WriteOnly) && file.write(text) == text.size());
            }
        }
        ResourceManager resources;
        resources.SetConfigTables(tables[0] ? &*tables[0] : nullptr, tables[1] ? &*tables[1] : nullptr);
        const ConfigStore store(paths[0].c_str(), paths[1].c_str());
        QTEST(QByteArray::fromStdString(resources.ReadConfig("general", "language")), "fromTables");
        QTEST(QByteArray::fromStdString(store.Read("language", "general")), "fromStore");
    }

    void TheFirstTableOfEachKindStays()
    {
        ConfigTable first{{"s", {{"system", "1"}}}};
        ConfigTable second{{"s", {{"user", "1"}}}};
        ConfigTable late{{"s", {{"system", "late"}, {"user", "late"}, {"late", "late"}}}};
        ResourceManager resources;
        resources.SetConfigTables(nullptr, &second);
        QCOMPARE(resources.ReadConfig("s", "user"), "1");
        resources.SetConfigTables(&first, &late);
        resources.SetConfigTables(&late, nullptr);
        QCOMPARE(resources.ReadConfig("s", "system"), "1");
        QCOMPARE(resources.ReadConfig("s", "user"), "1");
        QCOMPARE(resources.ReadConfig("s", "late"), "");
        first["s"]["new"] = "read live";
        QCOMPARE(resources.ReadConfig("s", "new"), "read live");

        QVERIFY(!resources.ColorTable());
        resources.SetColorTable(nullptr);
        resources.SetColorTable(&first);
        resources.SetColorTable(&late);
        resources.SetColorTable(nullptr);
        QCOMPARE(resources.ColorTable(), &first);
    }
};

PANELRY_TEST(ResourceManagerTest)
#include "resource_manager_test.moc"
