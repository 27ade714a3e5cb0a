// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callfacts.h"

#include "words.h"

using Ringlet::AudioRoute;

static QString statusOf(const SimulatedCall &call) { return Ringlet::statusName(call.call().status()); }

static QString isShown(const SimulatedCall &call) { return yesNo(call.call().isShown()); }

static QString tonesOf(const SimulatedCall &call) { return call.tones(); }

static QString deviceCount(const SimulatedCall &call) { return QString::number(call.call().audioDevices().size()); }

static QString mutedOf(const AudioRoute &route) { return yesNo(route.microphoneMuted); }

static QString inputOf(const AudioRoute &route) { return route.input; }

static QString outputOf(const AudioRoute &route) { return route.output; }

template <QString (*read)(const AudioRoute &route)>
static QString ofRoute(const SimulatedCall &call)
{
    const auto route = call.call().audioRoute();
    return route ? read(*route) : QStringLiteral("unknown");
}

static const struct
{
    const char *name;
    QString (*read)(const SimulatedCall &call);
} facts[] = {
    {"status", statusOf},
    {"shown", isShown},
    {"tones", tonesOf},
    {"muted", ofRoute<mutedOf>},
    {"input", ofRoute<inputOf>},
    {"output", ofRoute<outputOf>},
    {"devices", deviceCount},
};

QString readFact(const SimulatedCall &call, const QString &fact, QString *value)
{
    QStringList names;
    for (const auto &known : facts) {
        names.append(QLatin1String(known.name));
        if (fact == names.constLast()) {
            *value = known.read(call);
            return {};
        }
    }
    return QStringLiteral("a call has no \"%1\"; it has %2").arg(fact, names.join(QStringLiteral(", ")));
}
