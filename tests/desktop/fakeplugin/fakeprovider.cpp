// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "fakeprovider.h"

#include "fakehandler.h"

FakeProvider::FakeProvider(const QString &id, QObject *parent) : AbstractVoiceCallProvider(parent), m_id(id) { }

QList<AbstractVoiceCallHandler *> FakeProvider::voiceCalls() const
{
    QList<AbstractVoiceCallHandler *> calls;
    for (FakeHandler *handler : handlers)
        calls.append(handler);
    return calls;
}

bool FakeProvider::dial(const QString &msisdn)
{
    const bool accepted = !msisdn.isEmpty() && msisdn.at(0).isDigit();
    m_error = accepted ? QString() : QStringLiteral("cannot dial '%1'").arg(msisdn);
    return accepted;
}
