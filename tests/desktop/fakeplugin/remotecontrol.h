// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_REMOTECONTROL_H
#define TESTS_REMOTECONTROL_H

#include <QtCore/QMap>
#include <QtCore/QStringList>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusVariant>

class FakeHandler;
class FakeProvider;
class VoiceCallManagerInterface;

/** The interface org.example.FakePlugin, through which a test makes a fake plug-in do things. */
class RemoteControl : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.example.FakePlugin")

public:
    explicit RemoteControl(const QString &path);
    ~RemoteControl() override;

    bool isPublished() const { return m_published; }

    /** From here on what the host signals is recorded. */
    void configure(VoiceCallManagerInterface *manager);

public Q_SLOTS:
    void AddProvider(const QString &id);
    /** The call exists before the host knows the provider. */
    void AddProviderWithCall(const QString &id, const QVariantMap &state);
    /** Another object with an id that is taken; it is gone again when this returns. */
    void AddTwinOfProvider(const QString &id);
    void RemoveProvider(const QString &id);
    /** Deletes it, and tells nobody. */
    void DestroyProvider(const QString &id);

    /** `state` is that of FakeHandler; "HandlerId" in it is used instead of an id of the host's. */
    QString AddCall(const QString &provider, const QVariantMap &state);
    void ChangeCall(const QString &id, const QVariantMap &changes, const QString &signal);
    void RemoveCall(const QString &id);
    /** Removes it, and lets it emit statusChanged with another state before it is deleted. */
    void RemoveCallThatGoesOnTalking(const QString &id);
    /** Deletes it, and tells nobody. */
    void DestroyCall(const QString &id);
    /** Announces it once more. */
    void RepeatCall(const QString &id);
    void AnnounceNull(const QString &provider);

    void RequestMute(bool mute);
    void SelectInput(const QString &id);
    void SelectOutput(const QString &id);
    /** From now on, whenever the devices change, selects this input at once. */
    void SelectInputWheneverDevicesChange(const QString &id);

    /** The host's connection stops reading as soon as one message is unhandled, and the bus library tells nobody. */
    void Deafen();
    /** Lets the host's main thread do nothing else for so many milliseconds. */
    void KeepBusy(int milliseconds);

    /** What was recorded, commands and the host's audio signals, since the last time. */
    QStringList TakeNotes();

private:
    void note(const QString &text) { m_notes.append(text); }
    void noteAudio(const QString &signal);
    FakeProvider *makeProvider(const QString &id);
    FakeHandler *makeHandler(FakeProvider *provider, const QVariantMap &state);
    FakeProvider *providerOf(const QString &id) const;
    FakeHandler *takeCall(const QString &id);

    bool m_published;
    VoiceCallManagerInterface *m_manager = nullptr;
    QMap<QString, FakeProvider *> m_providers;
    QStringList m_notes;
};

#endif
