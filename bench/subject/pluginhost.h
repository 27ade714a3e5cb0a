// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_PLUGINHOST_H
#define BENCH_PLUGINHOST_H

#include "subject.h"

#include <QtCore/QVector>
#include <voicecallmanagerinterface.h>

class AbstractVoiceCallHandler;
class AbstractVoiceCallManagerPlugin;

/** The host's side of the plug-in, which keeps a list of calls and nothing else. */
class CallList : public VoiceCallManagerInterface
{
    Q_OBJECT

public:
    void addProvider(AbstractVoiceCallProvider *provider) override;
    void removeProvider(AbstractVoiceCallProvider *) override { }
    QString newHandlerId() override;
    AudioRouteState audioRouteState() const override;
    void selectInputDevice(const QString &) override { }
    void selectOutputDevice(const QString &) override { }

    const QVector<AbstractVoiceCallHandler *> &calls() const { return m_calls; }

Q_SIGNALS:
    void statusChanged(AbstractVoiceCallHandler *call);
    void callAdded(AbstractVoiceCallHandler *call);
    void callGone();
    void managerGone();

private:
    void addCall(AbstractVoiceCallHandler *call);

    QVector<AbstractVoiceCallHandler *> m_calls;
    int m_ids = 0;
};

/** A host that has loaded the plug-in. */
class PluginHost : public Subject
{
    Q_OBJECT

public:
    PluginHost();

    /** Loads the plug-in and has its service exported; null, with a message, when that fails. */
    static AbstractVoiceCallManagerPlugin *load(const QString &file);

    CallList *callList() { return &m_callList; }

protected:
    void command(Command command, uint32_t call) override;
    void changeRoute() override;
    void changeDevices() override;
    void trace(uint32_t lines) override;

private:
    CallList m_callList;
};

#endif
