// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BARESIP_SOFTPHONECALL_H
#define BARESIP_SOFTPHONECALL_H

#include "command.h"

#include <RingletClient/callmanager.h>

#include <QtCore/QPointer>
#include <optional>

class BaresipControl;

/** What is known of a call of baresip's from its beginning to its end. */
struct CallIdentity
{
    /** The SIP Call-ID, by which baresip finds it. */
    QString id;
    /** Address of record of the account that it belongs to. */
    QString account;
    bool isIncoming = false;
    /** Of the far end. */
    QString address;
    QString name;
};

/** One call, in baresip and in the host: what the host wishes, baresip is told. */
class SoftphoneCall : public QObject
{
    Q_OBJECT
public:
    enum class Origin {
        /** It has been seen from its beginning. */
        New,
        /** It was up already: whether its microphone is muted is not known. */
        Found
    };

    SoftphoneCall(const CallIdentity &identity, Origin origin, BaresipControl &control, Ringlet::CallManager &manager,
        QObject *parent);
    ~SoftphoneCall() override;

    const CallIdentity &identity() const { return m_identity; }
    Ringlet::CallStatus status() const;
    std::optional<Ringlet::AudioRoute> audioRoute() const;

    /** What baresip has told. */
    void setStatus(Ringlet::CallStatus status);

    /** Commands that make it the current call, on which other commands act. */
    QVector<Command> selection() const;

Q_SIGNALS:
    /** baresip was given a command, and may have changed the state of this call and of others. */
    void commandDone();
    void audioRouteChanged();
    void warning(const QString &text);

private:
    void command(const QString &name, const QString &parameter = {});
    void sendTones(const QString &tones);
    void followMute();
    void onMuteToggled(const CommandSequence::Result &result);

    const CallIdentity m_identity;
    BaresipControl &m_control;
    /** Null only when the manager has gone before. */
    QPointer<Ringlet::Call> m_call;
    /** As baresip said last. The user of baresip can change it without a word. */
    std::optional<bool> m_isMuted;
    bool m_isTogglingMute = false;
};

#endif
