// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callmanager.h"

#include <utility>

CallManager::CallManager(const QString &path, QObject *parent) : QObject(parent), m_path(path) { }

Call *CallManager::add(const CallDescription &description)
{
    auto *call = new Call(description, this);
    m_calls.insert(description.name, call);
    connect(call, &Call::ended, this, [this, call] { remove(call); });
    if (m_keepsBack)
        m_keptBack.append(call);
    else
        emit published(call);
    return call;
}

Call *CallManager::find(const QString &name) const { return m_calls.value(name); }

void CallManager::keepBack() { m_keepsBack = true; }

void CallManager::letOut()
{
    m_keepsBack = false;
    const QList<Call *> calls = std::exchange(m_keptBack, {});
    for (Call *call : calls)
        emit published(call);
}

// Deleted later, for the call may be in the middle of handling what ended it.
void CallManager::remove(Call *call)
{
    m_calls.remove(call->name());
    if (!m_keptBack.removeOne(call))
        emit withdrawn(call);
    call->deleteLater();
}
