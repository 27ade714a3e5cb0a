// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callchoice.h"

#include "failure.h"
#include "views.h"

#include <algorithm>

static QString listOf(const HostState &state, const QList<CallPath> &paths)
{
    QStringList calls;
    for (const CallPath &path : paths)
        calls.append(Views::brief(state.calls.value(path)));
    return calls.join(QLatin1String(", "));
}

template <typename Condition>
static QList<CallPath> callsWith(const HostState &state, Condition condition)
{
    QList<CallPath> paths;
    for (auto call = state.calls.cbegin(); call != state.calls.cend(); ++call) {
        if (condition(*call))
            paths.append(call.key());
    }
    return paths;
}

static void failWithoutCalls(const HostState &state)
{
    if (state.calls.isEmpty())
        throw Failure(ExitCode::NoSuchCall, QStringLiteral("there is no call"));
}

CallPath CallChoice::named(const HostState &state, const QString &name)
{
    failWithoutCalls(state);
    QList<CallPath> found = callsWith(state, [&](const CallInfo &call) { return call.id() == name; });
    if (found.isEmpty() && !name.isEmpty()) {
        found = callsWith(state, [&](const CallInfo &call) {
            return call.text("LineId").contains(name, Qt::CaseInsensitive)
                || call.text("Uri").contains(name, Qt::CaseInsensitive);
        });
    }
    if (found.size() == 1)
        return found.constFirst();
    if (found.isEmpty()) {
        throw Failure(ExitCode::NoSuchCall,
            QStringLiteral("no call has the id '%1', nor a name or address with that in it; there are: %2")
                .arg(name, listOf(state, state.calls.keys())));
    }
    throw Failure(ExitCode::NoSuchCall,
        QStringLiteral("'%1' fits several calls, name one by its id: %2").arg(name, listOf(state, found)));
}

// --- What makes sense

static bool rings(const CallInfo &call)
{
    return call.status() == QLatin1String("incoming") || call.status() == QLatin1String("waiting");
}

static bool isIn(const CallInfo &call, const char *status) { return call.status() == QLatin1String(status); }

static QString objectionToHold(const CallInfo &call)
{
    if (isIn(call, "held"))
        return QStringLiteral("%1 is held already");
    if (!isIn(call, "active"))
        return QStringLiteral("%1 is not active, and only an active call can be held");
    if (!call.flag("Holdable"))
        return QStringLiteral("%1 cannot be held, and would be ended instead");
    return {};
}

static QString objectionTo(const CallInfo &call, Deed deed)
{
    switch (deed) {
    case Deed::Answer:
        return rings(call) ? QString() : QStringLiteral("%1 does not ring, and only a call that rings can be answered");
    case Deed::Hold:
        return objectionToHold(call);
    case Deed::TakeBack:
        return isIn(call, "held") ? QString() : QStringLiteral("%1 is not held");
    case Deed::SendTones:
        if (!call.flag("SupportsDtmf"))
            return QStringLiteral("%1 takes no tones");
        break;
    case Deed::HangUp:
        break;
    }
    return isIn(call, "disconnected") ? QStringLiteral("%1 has ended already") : QString();
}

QString CallChoice::objection(const CallInfo &call, Deed deed)
{
    const QString objection = objectionTo(call, deed);
    return objection.isEmpty() ? objection : objection.arg(Views::brief(call));
}

void CallChoice::check(const CallInfo &call, Deed deed)
{
    const QString reason = objection(call, deed);
    if (!reason.isEmpty())
        throw Failure(ExitCode::NotDone, reason);
}

static QString participle(Deed deed)
{
    static const QMap<Deed, QString> words = {{Deed::Answer, QStringLiteral("answered")},
        {Deed::HangUp, QStringLiteral("ended")}, {Deed::Hold, QStringLiteral("held")},
        {Deed::TakeBack, QStringLiteral("taken back")}, {Deed::SendTones, QStringLiteral("sent tones")}};
    return words.value(deed);
}

CallPath CallChoice::only(const HostState &state, Deed deed)
{
    failWithoutCalls(state);
    QList<CallPath> sensible
        = callsWith(state, [&](const CallInfo &call) { return objectionTo(call, deed).isEmpty(); });
    // Who hangs up, or types tones, means the call that is talked in.
    if (sensible.size() > 1 && (deed == Deed::HangUp || deed == Deed::SendTones)) {
        const QList<CallPath> talking = callsWith(
            state, [&](const CallInfo &call) { return !isIn(call, "held") && objectionTo(call, deed).isEmpty(); });
        sensible = talking.isEmpty() ? sensible : talking;
    }
    if (sensible.size() == 1)
        return sensible.constFirst();
    if (sensible.size() > 1) {
        throw Failure(ExitCode::NoSuchCall,
            QStringLiteral("several calls can be %1, name one by its id: %2")
                .arg(participle(deed), listOf(state, sensible)));
    }
    if (state.calls.size() == 1)
        return state.calls.firstKey();
    throw Failure(ExitCode::NotDone,
        QStringLiteral("none of the calls can be %1: %2").arg(participle(deed), listOf(state, state.calls.keys())));
}
