// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "typedvalue.h"

#include "words.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QVector>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusUnixFileDescriptor>
#include <QtDBus/QDBusVariant>
#include <limits>

static const QLatin1Char comma(',');

static bool isObjectPath(const QString &path)
{
    static const QRegularExpression form(QStringLiteral("^(/|(/[A-Za-z0-9_]+)+)$"));
    return form.match(path).hasMatch();
}

// --- One reader for each type. They give an invalid value for a text that is none of theirs.

template <typename Number>
static QVariant readNumber(const QString &text)
{
    bool isNumber = false;
    const qlonglong number = text.toLongLong(&isNumber);
    const bool fits = number >= qlonglong(std::numeric_limits<Number>::min())
        && number <= qlonglong(std::numeric_limits<Number>::max());
    return isNumber && fits ? QVariant::fromValue(Number(number)) : QVariant();
}

static QVariant readUnsignedLong(const QString &text)
{
    bool isNumber = false;
    const qulonglong number = text.toULongLong(&isNumber);
    return isNumber ? QVariant(number) : QVariant();
}

static QVariant readDouble(const QString &text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber ? QVariant(number) : QVariant();
}

static QVariant readBool(const QString &text)
{
    const bool isTrue = text == QLatin1String("true");
    return isTrue || text == QLatin1String("false") ? QVariant(isTrue) : QVariant();
}

static QVariant readText(const QString &text) { return text; }

static QVariant readPath(const QString &text)
{
    return isObjectPath(text) ? QVariant::fromValue(QDBusObjectPath(text)) : QVariant();
}

static QStringList elements(const QString &text) { return text.isEmpty() ? QStringList() : text.split(comma); }

static QVariant readTexts(const QString &text) { return elements(text); }

static QVariant readPaths(const QString &text)
{
    QList<QDBusObjectPath> paths;
    for (const QString &path : elements(text)) {
        if (!isObjectPath(path))
            return {};
        paths.append(QDBusObjectPath(path));
    }
    return QVariant::fromValue(paths);
}

static QVariant readBytes(const QString &text) { return text.toUtf8(); }

static QVariant readNested(const QString &text)
{
    QVariant value;
    return readValue(text, &value).isEmpty() ? QVariant::fromValue(QDBusVariant(value)) : QVariant();
}

static QVariant readDictionary(const QString &text)
{
    QVariantMap dictionary;
    for (const QString &entry : elements(text)) {
        const int equals = entry.indexOf(QLatin1Char('='));
        QVariant value;
        if (equals < 0 || !readValue(entry.mid(equals + 1), &value).isEmpty())
            return {};
        dictionary.insert(entry.left(equals), value);
    }
    return dictionary;
}

static QVariant readDescriptor(const QString &text)
{
    QFile file(text);
    return file.open(QIODevice::ReadOnly) ? QVariant::fromValue(QDBusUnixFileDescriptor(file.handle())) : QVariant();
}

static QVariant readLongText(const QString &text)
{
    bool isNumber = false;
    const int length = text.toInt(&isNumber);
    return isNumber && length >= 0 && length <= 16 * 1024 * 1024 ? QString(length, QLatin1Char('x')) : QVariant();
}

static const struct
{
    const char *code;
    QVariant (*read)(const QString &text);
    const char *description;
} types[] = {
    {"y", readNumber<uchar>, "a number from 0 to 255"},
    {"b", readBool, "true or false"},
    {"n", readNumber<short>, "a number of 16 bits with sign"},
    {"q", readNumber<ushort>, "a number of 16 bits"},
    {"i", readNumber<int>, "a number of 32 bits with sign"},
    {"u", readNumber<uint>, "a number of 32 bits"},
    {"x", readNumber<qlonglong>, "a number of 64 bits with sign"},
    {"t", readUnsignedLong, "a number of 64 bits"},
    {"d", readDouble, "a number"},
    {"s", readText, "any text"},
    {"long", readLongText, "a text (s) of so many letters, up to 16777216"},
    {"o", readPath, "an object path, like /my/calls"},
    {"h", readDescriptor, "a file that can be opened, like /dev/null"},
    {"v", readNested, "another value, like u:3"},
    {"as", readTexts, "texts with commas between them"},
    {"ao", readPaths, "object paths with commas between them"},
    {"ay", readBytes, "a text, sent byte by byte"},
    {"a{sv}", readDictionary, "KEY=TYPE:TEXT with commas between them"},
};

QString readValue(const QString &word, QVariant *value)
{
    const int colon = word.indexOf(QLatin1Char(':'));
    const QString code = word.left(colon);
    QStringList codes;
    for (const auto &type : types) {
        codes.append(QLatin1String(type.code));
        if (colon < 0 || code != codes.constLast())
            continue;
        *value = type.read(word.mid(colon + 1));
        return value->isValid()
            ? QString()
            : QStringLiteral("\"%1\": behind %2: stands %3").arg(word, code, QLatin1String(type.description));
    }
    return QStringLiteral("\"%1\" is no value; one is written TYPE:TEXT, with a type of %2")
        .arg(word, codes.join(QLatin1Char(' ')));
}

QString readValues(const QStringList &words, QVariantList *values)
{
    for (const QString &word : words) {
        QVariant value;
        const QString error = readValue(word, &value);
        if (!error.isEmpty())
            return error;
        values->append(value);
    }
    return {};
}

// --- What came over the bus

static QString signatureOf(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<QDBusArgument>())
        return value.value<QDBusArgument>().currentSignature();
    return QString::fromLatin1(QDBusMetaType::typeToSignature(value.userType()));
}

QString valueText(const QVariant &value)
{
    const QString signature = signatureOf(value) + QLatin1Char(':');
    if (value.userType() == qMetaTypeId<QDBusObjectPath>())
        return signature + value.value<QDBusObjectPath>().path();
    if (value.userType() == QMetaType::QString)
        return signature + quoted(value.toString());
    return signature + value.toString();
}

// --- Names

static QString mismatch(const QString &text, const QRegularExpression &form, const char *what)
{
    return form.match(text).hasMatch() ? QString() : QStringLiteral("\"%1\" is %2").arg(text, QLatin1String(what));
}

QString pathFault(const QString &path)
{
    return isObjectPath(path) ? QString() : QStringLiteral("\"%1\" is no object path; one is like /my/calls").arg(path);
}

QString dottedNameFault(const QString &name)
{
    static const QRegularExpression form(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*(\\.[A-Za-z_][A-Za-z0-9_]*)+$"));
    return mismatch(name, form, "no name with dots; one is like org.example.Name");
}

QString memberFault(const QString &name)
{
    static const QRegularExpression form(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    return mismatch(name, form, "no name of a member; letters, digits and _ only");
}
