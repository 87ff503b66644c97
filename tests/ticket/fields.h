#pragma once

#include <QByteArray>
#include <QString>
#include <string>

#include "services/records.h"

namespace panelry::test
{

/// "market=16 stockcode=600000 price=": one field a word, without blanks inside; "~" stands for one.
inline StringMap Fields(const QByteArray& words)
{
    StringMap fields;
    for (const QByteArray& word : words.split(' ')) {
        const int sign = word.indexOf('=');
        if (sign > 0) {
            fields[word.left(sign).toStdString()] = word.mid(sign + 1).replace('~', ' ').toStdString();
        }
    }
    return fields;
}

/// `base` with the fields of `words` in place of its own.
inline StringMap With(StringMap base, const QByteArray& words)
{
    for (const auto& [name, value] : Fields(words)) {
        base[name] = value;
    }
    return base;
}

/// What in `fields` isn't as `words` say, empty if nothing: "name=value" must hold, "!name" must be absent.
inline QString Unlike(const StringMap& fields, const QByteArray& words)
{
    QString unlike;
    for (const QByteArray& word : words.split(' ')) {
        if (word.startsWith('!') && fields.count(word.mid(1).toStdString()) != 0) {
            unlike += QString::fromUtf8(word + " is there; ");
        }
    }
    for (const auto& [name, value] : Fields(words)) {
        const auto found = fields.find(name);
        if (found == fields.end() || found->second != value) {
            const std::string has = found == fields.end() ? "nothing" : '"' + found->second + '"';
            unlike += QString::fromStdString(name + " is " + has + ", not \"" + value + "\"; ");
        }
    }
    return unlike;
}

/// All of `fields`, for comparing a whole map.
inline QString Words(const StringMap& fields)
{
    QString words;
    for (const auto& [name, value] : fields) {
        words += QString::fromStdString(name + '=' + value + ' ');
    }
    return words.trimmed();
}

}  // namespace panelry::test
