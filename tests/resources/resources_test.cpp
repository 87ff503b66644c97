#include <QFile>
#include <QImage>
#include <QMouseEvent>
#include <QPushButton>
#include <QRegularExpression>
#include <QResource>
#include <QTranslator>
#include <cstdlib>
#include <utility>

#include "resources/embedded.h"
#include "support/test.h"

namespace
{
const QString kThemePath = QStringLiteral(":/Panelry/resources/qss/WhiteTheme.qss");

QString ReadText(const QString& path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// But for what the smoothing of an edge may add.
bool AreAlike(const QColor& one, const QColor& other)
{
    constexpr int kMost = 4;
    return std::abs(one.red() - other.red()) <= kMost && std::abs(one.green() - other.green()) <= kMost &&
           std::abs(one.blue() - other.blue()) <= kMost;
}

/// What `pattern` captures in `text`, one entry a match, sorted.
QStringList Captures(const QString& text, const char* pattern)
{
    QStringList found;
    for (auto match = QRegularExpression(QLatin1String(pattern)).globalMatch(text); match.hasNext();)
        found << match.next().captured(1);
    found.sort();
    return found;
}
}  // namespace

class ResourcesTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { panelry::InitResources(); }

    void EveryKeyIsTranslated_data()
    {
        QTest::addColumn<QString>("firstBid");
        QTest::newRow("zh_CN") << QStringLiteral("买一价");
        QTest::newRow("en") << QStringLiteral("Bid price 1");
    }

    void EveryKeyIsTranslated()
    {
        QTranslator catalogue;
        QVERIFY(catalogue.load(
            QStringLiteral(":/language/DealdeskLanguage_%1.qm").arg(QLatin1String(QTest::currentDataTag()))));
        const QStringList keys = Captures(ReadText(QFINDTESTDATA("catalogue_keys.txt")), "(\\S+)\n");
        QCOMPARE(keys.size(), 321);
        for (const QString& key : keys) {
            const QString text = catalogue.translate("QObject", key.toUtf8().constData());
            QVERIFY2(!text.trimmed().isEmpty() && text != key, qPrintable(key));
            QVERIFY2(Captures(text, "(%\\d)") == Captures(key, "(%\\d)"), qPrintable(key));
        }
        QTEST(catalogue.translate("QObject", "Common_BidPirce1"), "firstBid");
    }

    void ThemeIsCompressedAndItsImagesLoad()
    {
        QCOMPARE(QResource(kThemePath).compressionAlgorithm(), QResource::ZlibCompression);
        QStringList images = Captures(ReadText(kThemePath), "url\\(([^)]*)\\)");
        QVERIFY(images.removeDuplicates() == 0 && images.size() == 5);
        // A close image is stretched over its button; the others are drawn unscaled into 28 by 28.
        for (const QString& path : images)
            QCOMPARE(QImage(path).width(), path.contains(QLatin1String("_close_")) ? 30 : 16);
    }

    void ThemeColoursTheFrame_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("state");
        QTest::addColumn<QPoint>("at");
        QTest::addColumn<QColor>("colour");
        const auto row = [](const QByteArray& name, const QByteArray& state, QPoint at, QRgb colour) {
            QTest::addRow("%s %s at %d", name.data(), state.data(), at.x())
                << name << state << at << QColor(colour);
        };
        row("containerwidget", "border", {0, 14}, 0xaccade);
        row("containerwidget", "inside", {1, 14}, 0xffffff);
        row("containerwidget_titlebar", "normal", {0, 14}, 0xcbe7f8);
        const QPoint cross(13, 13);  // where its lines meet
        for (const auto& [state, colour] :
             {std::pair("normal", 0x113f5dU), {"hovered", 0xe04b4bU}, {"pressed", 0xb52f33U}}) {
            row("closebtn_titlebar", state, {1, 1}, 0xcbe7f8);
            row("closebtn_titlebar", state, cross, colour);
        }
        const QPoint front(8, 12);  // in the upper edge of the front window, with the image centred
        for (const char* state : {"normal", "hovered", "pressed"})
            row("clonebtn_titlebar", state, front, 0x113f5d);
        row("clonebtn_titlebar", "disabled", front, 0x9cbacd);
    }

    void ThemeColoursTheFrame()
    {
        QFETCH(const QByteArray, name);
        QFETCH(const QByteArray, state);
        QFETCH(const QPoint, at);
        QPushButton button;
        QWidget plain;
        QWidget& widget = name.contains("btn_") ? button : plain;
        widget.setObjectName(QString::fromLatin1(name));
        widget.setAttribute(Qt::WA_StyledBackground);
        widget.resize(28, 28);
        widget.setStyleSheet(ReadText(kThemePath));
        widget.ensurePolished();
        button.setDown(state == "pressed");
        widget.setEnabled(state != "disabled");
        widget.setAttribute(Qt::WA_UnderMouse, state == "hovered");
        // A button looks hovered only after a mouse move over it.
        QMouseEvent move(QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &move);
        QFETCH(const QColor, colour);
        const QColor seen = widget.grab().toImage().pixelColor(at);
        QVERIFY2(AreAlike(seen, colour), qPrintable(seen.name()));
    }
};

PANELRY_TEST(ResourcesTest)
#include "resources_test.moc"
