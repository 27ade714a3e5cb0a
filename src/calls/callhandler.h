// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_CALLHANDLER_H
#define RINGLET_CALLHANDLER_H

#include "common/dbustypes.h"
#include "common/host.h"

class CallHandlerPrivate;
class CallProvider;

/**
 * One call object of an application, as a call of the host.
 *
 * Direction, names and addresses are those of the report that first showed the call; they are not
 * refreshed. The status follows the application's StatusChanged signal. Commands are sent and forgotten:
 * what becomes of them shows in the status.
 */
class CallHandler : public AbstractVoiceCallHandler
{
    Q_OBJECT

public:
    /** `interfaces` is the whole report; the handler is `provider`'s child. */
    CallHandler(const QString &handlerId, const DBusCallObject &object, const QVariantMapMap &interfaces,
        CallProvider *provider);
    ~CallHandler() override;

    /** Takes up the interfaces that are new; those known before, and their properties, are passed over. */
    void addInterfaces(const QVariantMapMap &interfaces);

    AbstractVoiceCallProvider *provider() const override;
    QString handlerId() const override;
    QString lineId() const override;

    /** Always invalid: no start time is kept. */
    QDateTime startedAt() const override;

    int duration() const override;
    bool isIncoming() const override;
    bool isMultiparty() const override;
    bool isEmergency() const override;
    bool isForwarded() const override;
    bool isRemoteHeld() const override;
    QString parentHandlerId() const override;
    QList<AbstractVoiceCallHandler *> childCalls() const override;
    QString uri() const override;
    QString appId() const override;
    bool supportsDtmf() const override;
    bool supportsMultiparty() const override;
    bool holdable() const override;
    VoiceCallStatus status() const override;

Q_SIGNALS:
    void validChanged(bool valid);

public Q_SLOTS:
    void answer() override;
    void hangup() override;
    /** A call that cannot be held is rejected first; the request to hold it may follow. */
    void hold(bool on = true) override;
    void deflect(const QString &target) override;
    void sendDtmf(const QString &tones) override;
    void merge(const QString &) override;
    void split() override;

    // The exchange of audio state, in audio/callhandleraudio.cpp.
    void onMuteRequested(bool mute);
    void onAudioRouteRequested(const QString &request_output_device_id, const QString &request_input_device_id);
    void onAudioDevicesChanged();
    void onAudioRouteChanged();

protected:
    void timerEvent(QTimerEvent *event) override;

private Q_SLOTS:
    void onStatusChanged(uint remoteStatus);

private:
    CallHandlerPrivate *d;
    friend class CallHandlerPrivate;
};

#endif
