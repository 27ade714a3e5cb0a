// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_FAKEHANDLER_H
#define TESTS_FAKEHANDLER_H

#include <abstractvoicecallhandler.h>

#include <QtCore/QVariantMap>
#include <functional>

/** A call that is what its state says, under the names of the host's properties, and records its commands. */
class FakeHandler : public AbstractVoiceCallHandler
{
    Q_OBJECT

public:
    /** `note` takes what is recorded. */
    FakeHandler(const QString &id, const QVariantMap &state, AbstractVoiceCallProvider *provider,
        std::function<void(const QString &)> note);

    /** Takes the entries of `changes` into the state, and emits the signal of this name, if any. */
    void change(const QVariantMap &changes, const QString &signal);

    AbstractVoiceCallProvider *provider() const override { return m_provider; }
    QString handlerId() const override { return m_id; }
    QString lineId() const override { return text("LineId"); }
    QDateTime startedAt() const override { return QDateTime(); }
    int duration() const override { return m_state.value(QStringLiteral("Duration")).toInt(); }
    bool isIncoming() const override { return flag("Incoming"); }
    bool isMultiparty() const override { return flag("Multiparty"); }
    bool isEmergency() const override { return flag("Emergency"); }
    bool isForwarded() const override { return flag("Forwarded"); }
    bool isRemoteHeld() const override { return flag("RemoteHeld"); }
    QString parentHandlerId() const override { return QString(); }
    QList<AbstractVoiceCallHandler *> childCalls() const override { return {}; }
    QString uri() const override { return text("Uri"); }
    QString appId() const override { return text("AppId"); }
    bool supportsDtmf() const override { return flag("SupportsDtmf"); }
    bool supportsMultiparty() const override { return flag("SupportsMultiparty"); }
    bool holdable() const override { return flag("Holdable"); }
    VoiceCallStatus status() const override;

public Q_SLOTS:
    void answer() override { command(QStringLiteral("answer")); }
    void hangup() override;
    void hold(bool on = true) override;
    void deflect(const QString &target) override { command(QStringLiteral("deflect ") + target); }
    void sendDtmf(const QString &tones) override { command(QStringLiteral("dtmf ") + tones); }
    void merge(const QString &callHandle) override { command(QStringLiteral("merge ") + callHandle); }
    void split() override { command(QStringLiteral("split")); }

Q_SIGNALS:
    /** hangup() was called, and the state asks for the call to go at once. */
    void leaving();

private:
    QString text(const char *key) const { return m_state.value(QLatin1String(key)).toString(); }
    bool flag(const char *key) const { return m_state.value(QLatin1String(key)).toBool(); }
    void command(const QString &text) { m_note(m_id + QLatin1Char(' ') + text); }

    QString m_id;
    QVariantMap m_state;
    AbstractVoiceCallProvider *m_provider;
    std::function<void(const QString &)> m_note;
};

#endif
