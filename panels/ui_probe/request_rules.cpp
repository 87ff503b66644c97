#include "ui_probe/request_rules.h"

#include <QHash>
#include <QJsonArray>
#include <QStringList>
#include <climits>
#include <functional>

#include "ui_probe/selector.h"

namespace panelry
{

namespace
{

// What a request needs, and what it may have besides.
struct Keys {
    QStringList needed;
    QStringList allowed;
};

QStringList Words(const char* words)
{
    return QString::fromLatin1(words).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

const QHash<QString, Keys>& KeysOfRequests()
{
    static const QHash<QString, Keys> keys = [] {
        QHash<QString, Keys> all;
        const auto add = [&all](const char* request, const char* needed, const char* allowed) {
            all[QString::fromLatin1(request)] = {Words(needed), Words(allowed)};
        };
        add("tree", "", "root visible depth rows first_row");
        add("find", "selector", "visible rows first_row");
        add("press", "selector", "visible at button double modifiers row column tab entry");
        add("type", "selector text", "visible clear");
        add("key", "key", "selector visible");
        add("set", "selector value", "visible");
        add("wait", "selector", "visible gone enabled focus text contains value timeout");
        return all;
    }();
    return keys;
}

// What a value has to be, and how that is called.
struct Rule {
    std::function<bool(const QJsonValue&)> fits;
    QString name;
};

bool IsNumber(const QJsonValue& value, int most)
{
    return value.toInt(-1) >= 0 && value.toInt() <= most;
}

Rule NumberUpTo(int most)
{
    return {[most](const QJsonValue& value) { return IsNumber(value, most); },
            most == INT_MAX ? QStringLiteral("a whole number from 0")
                            : QStringLiteral("a whole number from 0 to %1").arg(most)};
}

bool IsPlace(const QJsonValue& value)
{
    const QJsonArray place = value.toArray();
    return place.size() == 2 && IsNumber(place[0], INT_MAX) && IsNumber(place[1], INT_MAX);
}

const QHash<QString, Rule>& RulesOfKeys()
{
    static const QHash<QString, Rule> rules = [] {
        QHash<QString, Rule> all;
        const auto add = [&all](const char* keys, const Rule& rule) {
            for (const QString& key : Words(keys)) {
                all[key] = rule;
            }
        };
        add("selector root text button modifiers key contains",
            {&QJsonValue::isString, QStringLiteral("a text")});
        add("visible double clear gone enabled focus",
            {&QJsonValue::isBool, QStringLiteral("true or false")});
        add("depth", NumberUpTo(1'000));
        add("rows", NumberUpTo(10'000));
        add("timeout", NumberUpTo(600'000));
        add("first_row row column", NumberUpTo(INT_MAX - 1));
        add("at", {&IsPlace, QStringLiteral("[x,y]")});
        add("tab entry",
            {[](const QJsonValue& value) { return value.isString() || IsNumber(value, INT_MAX); },
             QStringLiteral("a text or a whole number from 0")});
        add("value",
            {[](const QJsonValue& value) { return value.isString() || value.isBool() || value.isDouble(); },
             QStringLiteral("a text, a number, true or false")});
        return all;
    }();
    return rules;
}

QString KeyProblem(const QString& request, const Keys& keys, const QString& key, const QJsonValue& value)
{
    if (!keys.needed.contains(key) && !keys.allowed.contains(key)) {
        return QStringLiteral("\"%1\" has no \"%2\"").arg(request, key);
    }
    const Rule rule = RulesOfKeys().value(key);
    return rule.fits(value) ? QString() : QStringLiteral("\"%1\" is %2").arg(key, rule.name);
}

}  // namespace

QString RequestProblem(const QJsonObject& request)
{
    const QString name = request[QLatin1String("request")].toString();
    const auto keys = KeysOfRequests().find(name);
    if (keys == KeysOfRequests().end()) {
        return QStringLiteral("\"request\" is tree, find, press, type, key, set or wait");
    }
    for (const QString& needed : keys->needed) {
        if (!request.contains(needed)) {
            return QStringLiteral("\"%1\" needs \"%2\"").arg(name, needed);
        }
    }
    for (auto it = request.begin(); it != request.end(); ++it) {
        const bool envelope = it.key() == QLatin1String("request") || it.key() == QLatin1String("id");
        QString problem = envelope ? QString() : KeyProblem(name, *keys, it.key(), it.value());
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    QString problem;
    if (request.contains(QLatin1String("selector"))) {
        Selector::Read(request[QLatin1String("selector")].toString(), problem);
    }
    return problem;
}

}  // namespace panelry
