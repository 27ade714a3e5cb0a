// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_RECORDINGHOST_H
#define TESTS_RECORDINGHOST_H

#include <QtCore/QHash>
#include <QtCore/QStringList>
#include <abstractvoicecallhandler.h>
#include <abstractvoicecallprovider.h>
#include <voicecallmanagerinterface.h>

/**
 * A host that writes down, in one list and in order, what the plug-in does to it and what providers and
 * handlers tell it. Tests add lines of their own with note(), where the order between the two matters.
 *
 *     provider added PROVIDER-ID          call added HANDLER-ID      calls changed
 *     provider removed PROVIDER-ID        call removed HANDLER-ID
 *     input ID, output ID, mute BOOL      HANDLER-ID status N, HANDLER-ID duration N, HANDLER-ID dtmf BOOL
 *
 * Handler ids are h1, h2, … in the order of asking.
 */
class RecordingHost : public VoiceCallManagerInterface
{
    Q_OBJECT

public:
    RecordingHost();

    void addProvider(AbstractVoiceCallProvider *provider) override;
    void removeProvider(AbstractVoiceCallProvider *provider) override;
    QString newHandlerId() override;
    AudioRouteState audioRouteState() const override;
    void selectInputDevice(const QString &id) override;
    void selectOutputDevice(const QString &id) override;

    void note(const QString &event) { events.append(event); }

    /** The only call that is up; null when there is none or more than one. */
    AbstractVoiceCallHandler *call() const { return calls.size() == 1 ? *calls.cbegin() : nullptr; }

    QStringList events;
    /** What audioRouteState() gives; change it, then emit the signal. */
    AudioRouteState audio;
    QList<AbstractVoiceCallProvider *> providers;
    /** By handler id; a call is dropped when it is announced as removed. */
    QHash<QString, AbstractVoiceCallHandler *> calls;

private:
    void follow(AbstractVoiceCallHandler *handler);

    int handlers = 0;
};

#endif
