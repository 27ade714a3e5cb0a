// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_SIMULATEDCALL_H
#define SIMULATOR_SIMULATEDCALL_H

#include "eventlog.h"

#include <RingletClient/call.h>

/** Obeys the host for a call, and tells what happens to it. It goes with the call, whose child it is. */
class SimulatedCall : public QObject
{
    Q_OBJECT
public:
    using Outcome = Ringlet::Call::Outcome;

    /** `label` is what commands and events call it. */
    SimulatedCall(Ringlet::Call &call, const QString &label, EventLog &events);

    QString label() const { return m_label; }

    const Ringlet::Call &call() const { return m_call; }

    /** The tones that the host has asked for so far; of very many the last 10,000. */
    QString tones() const { return m_tones; }

    /** Any number. A disconnected call stays until end(). */
    Outcome setStatus(Ringlet::CallStatus status);

    /** Somebody answers: the user here when the call is incoming, the far end when it is dialing. */
    Outcome answer();

    /** The far end holds or resumes. */
    Outcome setHold(bool hold);

    Outcome requestMute(bool mute);
    Outcome requestRoute(const QString &input, const QString &output);

    void end() { m_call.end(); }

private:
    void onCommand(const QString &method, const QVariantList &arguments);
    void report(const QString &event);
    void reportStatus(const QString &event, Ringlet::CallStatus status);

    Ringlet::Call &m_call;
    const QString m_label;
    EventLog &m_events;
    QString m_tones;
    bool m_isAnnounced = false;
};

/** Number and name as they stand in event lines, for example "5 active". */
QString statusText(Ringlet::CallStatus status);

#endif
