// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "newcall.h"

#include "words.h"

#include <QtCore/QRegularExpression>

using Ringlet::CallDescription;
using SetOption = QString (*)(NewCall *call, const QString &value);

template <bool CallDescription::*member>
static QString setFlag(NewCall *call, const QString &value)
{
    return readChoice(value, QStringLiteral("yes"), QStringLiteral("no"), &(call->description.*member));
}

static QString setName(NewCall *call, const QString &value)
{
    call->description.remoteName = value;
    return {};
}

static QString setManager(NewCall *call, const QString &value)
{
    call->manager = value;
    return {};
}

static const struct
{
    const char *key;
    SetOption set;
} options[] = {
    {"name", setName},
    {"tones", setFlag<&CallDescription::tones>},
    {"hold", setFlag<&CallDescription::holdable>},
    {"audio", setFlag<&CallDescription::audioControl>},
    {"manager", setManager},
};

static QString readOption(const QString &word, NewCall *call)
{
    for (const auto &option : options) {
        const QString start = QLatin1String(option.key) + QLatin1Char('=');
        if (!word.startsWith(start))
            continue;
        const QString error = option.set(call, word.mid(start.size()));
        return error.isEmpty() ? error : QStringLiteral("%1: %2").arg(QLatin1String(option.key), error);
    }
    return QStringLiteral("\"%1\" is no option of a call; there are name=, tones=, hold=, audio= and manager=")
        .arg(word);
}

QString nameFault(const QString &what, const QString &name)
{
    static const QRegularExpression element(QStringLiteral("^[A-Za-z0-9_]+$"));
    // Where a call's name can stand, these mean something else.
    static const QStringList taken
        = {QStringLiteral("host"), QStringLiteral("calls"), QStringLiteral("application"), QStringLiteral("please")};
    if (taken.contains(name))
        return QStringLiteral("%1 cannot be named \"%2\"").arg(what, name);
    if (!element.match(name).hasMatch())
        return QStringLiteral("%1 cannot be named \"%2\": letters, digits and _ only").arg(what, name);
    return {};
}

QString applicationOf(const QString &label) { return label.left(qMax(0, label.indexOf(QLatin1Char('/')))); }

QString callOf(const QString &label) { return label.mid(label.indexOf(QLatin1Char('/')) + 1); }

NewCall newCall(bool incoming, const CallDescription &pattern)
{
    NewCall call;
    call.description = pattern;
    call.description.incoming = incoming;
    call.description.localAddress = QStringLiteral("sip:simulator@localhost");
    call.description.localName = QStringLiteral("Ringlet Simulator");
    return call;
}

QString readNewCall(const QStringList &words, NewCall *call)
{
    call->application = applicationOf(words.at(0));
    call->description.name = callOf(words.at(0));
    call->description.address = words.at(1);
    QString error = nameFault(QStringLiteral("a call"), call->description.name);
    for (int i = 2; i < words.size() && error.isEmpty(); ++i)
        error = readOption(words.at(i), call);
    return error;
}
