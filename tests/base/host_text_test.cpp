#include "base/host_text.h"

#include <QRandomGenerator>
#include <atomic>
#include <thread>

#include "services/module_base.h"
#include "services/records.h"
#include "support/test.h"

using panelry::HostTextToUtf8;

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
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("text");
        const auto row = [](const char* name, const QByteArray& bytes, const char* text) {
            QTest::newRow(name) << bytes << QByteArray(text);
        };
        row("empty", "", "");
        row("ASCII", "600000 A\t~", "600000 A\t~");
        row("a name", "\xc6\xd6\xb7\xa2\xd2\xf8\xd0\xd0", "浦发银行");
        row("a letter of four bytes", "\x82\x35\x8f\x33 x", "\xe9\xbe\xa6 x");
        row("cut in a letter", "\xc6\xd6\xb7", "浦\uFFFD");
        row("cut in a letter of four bytes", "x\x82\x35\x8f", "x\uFFFD5\uFFFD");
        row("a byte that is none", "\xff\xd2\xf8", "\uFFFD银");
        row("a letter cut within", "\xd2 \xd2\xf8", "\uFFFD 银");
        row("blanks and line ends at the end stay", "\xd2\xf8 \n", "银 \n");
    }

    void AHostsText()
    {
        QFETCH(const QByteArray, bytes);
        QTEST(QByteArray::fromStdString(Decoded(bytes)), "text");
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
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("taken");
        QTest::addColumn<QByteArray>("text");  // of the bytes that are 銀 in Big5
        QTest::newRow("Big5") << QByteArray("Big5") << true << QByteArray("銀");
        QTest::newRow("UTF-8") << QByteArray("UTF-8") << true << QByteArray("\uFFFD\uFFFD");
        QTest::newRow("unknown") << QByteArray("nonsense") << false << QByteArray("蝗");
        QTest::newRow("empty") << QByteArray("") << false << QByteArray("蝗");
        QTest::newRow("one that doesn't keep ASCII") << QByteArray("UTF-16") << false << QByteArray("蝗");
    }

    void ACodePage()
    {
        QFETCH(const QByteArray, name);
        QTEST(panelry::SetHostEncoding(name.toStdString()), "taken");
        QTEST(QByteArray::fromStdString(Decoded("\xbb\xc8")), "text");
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
