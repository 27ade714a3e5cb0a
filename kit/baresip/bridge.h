// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BARESIP_BRIDGE_H
#define BARESIP_BRIDGE_H

#include "audioswitch.h"
#include "callsurvey.h"
#include "softphonecall.h"

#include <QtCore/QHash>
#include <QtCore/QJsonObject>

/** Keeps the calls of the host like those of baresip. */
class Bridge : public QObject
{
    Q_OBJECT
public:
    Bridge(BaresipControl &control, Ringlet::CallManager &manager, const DeviceMap &inputs, const DeviceMap &outputs,
        QObject *parent = nullptr);

Q_SIGNALS:
    void warning(const QString &text);

private:
    void onDisconnected();
    void onEvent(const QJsonObject &event);
    void onSurvey(const QVector<SurveyedCall> &calls);
    void update(const CallIdentity &identity, Ringlet::CallStatus status, SoftphoneCall::Origin origin);
    SoftphoneCall *add(const CallIdentity &identity, SoftphoneCall::Origin origin);
    void remove(const QString &id);
    void followRoute(const SoftphoneCall *call);

    BaresipControl &m_control;
    Ringlet::CallManager &m_manager;
    CallSurvey m_survey;
    AudioSwitch m_audio;
    /** By their SIP Call-IDs. */
    QHash<QString, SoftphoneCall *> m_calls;
};

#endif
