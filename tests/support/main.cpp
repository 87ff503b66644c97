// The main function of every test executable: runs the registered classes, all or the one that is named.

#include <QApplication>
#include <QTest>

#include "support/test.h"

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QStringList arguments = application.arguments();
    QString wanted;
    if (arguments.size() > 1 && !arguments[1].startsWith(QLatin1Char('-'))) {
        wanted = arguments.takeAt(1);
    }
    const QString function = wanted.section(QStringLiteral("::"), 1);
    if (!function.isEmpty()) {
        arguments.append(function);
    }
    int failed = 0;
    int ran = 0;
    for (const panelry::test::MakeTest& make : panelry::test::RegisteredTests()) {
        const std::unique_ptr<QObject> test = make();
        const QString name = QString::fromLatin1(test->metaObject()->className());
        if (wanted.isEmpty() || name == wanted.section(QStringLiteral("::"), 0, 0)) {
            failed += QTest::qExec(test.get(), arguments);
            ++ran;
        }
    }
    return ran == 0 ? 1 : qMin(failed, 255);
}
