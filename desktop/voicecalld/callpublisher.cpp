// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callpublisher.h"

#include "busserver/bustree.h"
#include "call.h"
#include "callinterface.h"
#include "voicecallmanager.h"

CallPublisher::CallPublisher(VoiceCallManager *manager, BusTree *tree) : m_tree(tree)
{
    connect(manager, &VoiceCallManager::callAdded, this, &CallPublisher::publish);
    connect(manager, &VoiceCallManager::callRemoved, this, [=](const QString &id) { tree->removeObject(pathOf(id)); });
    for (Call *call : manager->calls())
        publish(call);
}

void CallPublisher::publish(Call *call)
{
    m_tree->addObject(pathOf(call->id()), std::make_unique<CallInterface>(call));
}

static bool isPathCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

QString CallPublisher::pathOf(const QString &handlerId)
{
    QByteArray element;
    const QByteArray bytes = handlerId.toUtf8();
    for (char c : bytes)
        element += isPathCharacter(c) ? QByteArray(1, c) : '_' + QByteArray(1, c).toHex();
    if (element.isEmpty())
        element = "_";
    return QStringLiteral("/org/tarnwickle/voicecall/calls/") + QString::fromLatin1(element);
}
