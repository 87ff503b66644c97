#include "base/host_text.h"

#include <QRandomGenerator>
#include <atomic>
#include <thread>

#include "services/module_base.h"
#include "services/records.h"
#include "support/test.h"
#include "support/text_rows.h"

using panelry::HostTextToUtf8;
using panelry::test::Given;
using panelry::test::TextRows;

namespace
{

std::string Decoded(const QByteArray& bytes)
{
    return HostTextToUtf8({bytes.data(), static_cast<std::size_t>(bytes.size())});
}

}  // namespace

class HostTextTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        QVERIFY(panelry::SetHostEncoding(panelry::kDefaultHostEncoding));
        Test::cleanup();
    }

    void AHostsText_data()
    {
        TextRows("bytes text", {{"empty", "", ""},
                                {"ASCII", "600000 A\t~", "600000 A\t~"},
                                {"a name", "\xc6\xd6\xb7\xa2\xd2\xf8\xd0\xd0", "浦发银行"},
                                {"a letter of four bytes", "\x82\x35\x8f\x33 x", "\xe9\xbe\xa6 x"},
                                {"cut in a letter", "\xc6\xd6\xb7", "浦\uFFFD"},
                                {"cut in a letter of four bytes", "x\x82\x35\x8f", "x\uFFFD5\uFFFD"},
                                {"a byte that is none", "\xff\xd2\xf8", "\uFFFD银"},
                                {"a letter cut within", "\xd2 \xd2\xf8 \n", "\uFFFD 银 \n"}});
    }

    void AHostsText()
    {
        QTEST(QByteArray::fromStdString(Decoded(Given("bytes"))), "text");
        QCOMPARE(Decoded("\xd2\xf8"), std::string("银"));  // nothing is left over for the next text
    }

    void AnyBytesGiveSomeText()
    {
        QRandomGenerator random(8);
        for (int i = 0; i < 20'000; ++i) {
            QByteArray bytes;
            for (int length = random.bounded(12); length > 0; --length) {
                bytes += static_cast<char>(random.bounded(256));
            }
            const std::string text = Decoded(bytes + " ");
            QVERIFY(text.back() == ' ' && text.size() > static_cast<std::size_t>(bytes.size()) / 4);
            QCOMPARE(QString::fromStdString(text).toUtf8().toStdString(), text);
        }
    }

    void ACodePage_data()
    {
        // The bytes are 銀 in Big5.
        TextRows("name takenText", {{"Big5", "Big5", "1銀"},
                                    {"UTF-8", "UTF-8", "1\uFFFD\uFFFD"},
                                    {"unknown", "nonsense", "0蝗"},
                                    {"empty", "", "0蝗"},
                                    {"one that doesn't keep ASCII", "UTF-16", "0蝗"}});
    }

    void ACodePage()
    {
        const QByteArray taken = QByteArray::number(panelry::SetHostEncoding(Given("name").toStdString()));
        QTEST(taken + QByteArray::fromStdString(Decoded("\xbb\xc8")), "takenText");
    }

    // As it reaches a panel: with its settings.
    void TheSettingsNameTheCodePage()
    {
        class Module : public ModuleBase
        {
        public:
            void Initialize(int, const char*, const char*, const char*) override {}
            void OnMessage(int, void*) override {}
        };
        static ConfigTable settings{{"system", {{"host_encoding", "Big5"}}}};  // kept for the process's life
        Module().SetConfigTables(&settings, nullptr);
        QCOMPARE(Decoded("\xbb\xc8"), std::string("銀"));
    }

    void ThreadsConvertSideBySide()
    {
        std::atomic<int> wrong{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&wrong] {
                for (int i = 0; i < 2000; ++i) {
                    wrong += Decoded("\xc6\xd6\xb7") != "浦\uFFFD" || Decoded("\xd2\xf8") != "银";
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        QCOMPARE(wrong.load(), 0);
    }
};

PANELRY_TEST(HostTextTest)
#include "host_text_test.moc"
