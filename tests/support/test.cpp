#include "support/test.h"

#include <QMutex>
#include <QRegularExpression>
#include <QStringList>

namespace panelry::test
{

namespace
{

QMutex lock;  // warnings come from any thread
QtMessageHandler previous = nullptr;
QStringList expected;
QStringList unexpected;

void Collect(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtWarningMsg || type == QtCriticalMsg) {
        const QMutexLocker locker(&lock);
        bool announced = false;
        for (const QString& pattern : qAsConst(expected)) {
            announced = announced || text.contains(QRegularExpression(pattern));
        }
        if (!announced) {
            unexpected.append(text);
        }
    }
    previous(type, context, text);
}

}  // namespace

void Test::ExpectWarning(const QString& pattern)
{
    const QMutexLocker locker(&lock);
    expected.append(pattern);
}

void Test::init()
{
    const QMutexLocker locker(&lock);
    expected.clear();
    unexpected.clear();
    const QtMessageHandler before = qInstallMessageHandler(&Collect);
    if (before != &Collect) {  // a cleanup that failed half-way leaves ours in place
        previous = before;
    }
}

void Test::cleanup()
{
    qInstallMessageHandler(previous);
    const QMutexLocker locker(&lock);
    QVERIFY2(unexpected.isEmpty(), qPrintable(unexpected.join(QLatin1Char('\n'))));
}

std::vector<MakeTest>& RegisteredTests()
{
    static std::vector<MakeTest> tests;
    return tests;
}

}  // namespace panelry::test
