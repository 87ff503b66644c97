#pragma once

#include <QObject>
#include <QString>
#include <QtTest>
#include <functional>
#include <memory>
#include <vector>

namespace panelry::test
{

/// The base of all test classes: a Qt warning that nobody announced fails the test function it came in.
class Test : public QObject
{
    Q_OBJECT

protected:
    /// Warnings that match (a regular expression) are expected for the rest of the test function.
    void ExpectWarning(const QString& pattern);

protected Q_SLOTS:
    void init();
    void cleanup();
};

using MakeTest = std::function<std::unique_ptr<QObject>()>;
std::vector<MakeTest>& RegisteredTests();

template <class T>
struct Registration {
    Registration()
    {
        RegisteredTests().push_back([] { return std::make_unique<T>(); });
    }
};

}  // namespace panelry::test

/// Once behind each test class: its executable runs it. Arguments select classes and functions:
/// `program [Class[::function]] [Qt Test options]`.
#define PANELRY_TEST(Class) static const panelry::test::Registration<Class> registered##Class;
